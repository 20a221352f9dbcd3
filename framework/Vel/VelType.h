// VelType.h - run-time description of one type: its names, its base, its attributes.
#pragma once

#include <Vel/Export.h>
#include <Vel/PtrInterface.h>

namespace Vel {

class VEL_API VelType : public PtrInterface {
public:
    // `name` is the short name, without namespace; it is borrowed for the life of the process.
    VelType(const char* name, VelType* base) noexcept : name_(name), base_(base) {}

    ~VelType() override;

    const char* name() const noexcept { return name_; }

    VelType* base() const noexcept { return base_; }

private:
    const char* name_;
    VelType* base_;
};

} // namespace Vel

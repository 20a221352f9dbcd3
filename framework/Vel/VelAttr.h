// VelAttr.h - run-time description of one attribute of a type: its name, its id, the type of its value.
//
// Lifetime: that of the process; the type's list owns it (VelType::attrIs).
#pragma once

#include <Vel/AttributeId.h>
#include <Vel/Export.h>
#include <Vel/PtrInterface.h>

namespace Vel {

class VelType;

class VEL_API VelAttr : public PtrInterface {
public:
    // `name` is borrowed for the life of the process; `type` is null for a procedure, which has no value.
    VelAttr(const char* name, AttributeId id, VelType* type) noexcept
        : name_(name), id_(id), type_(type) {}

    ~VelAttr() override;

    const char* name() const noexcept { return name_; }

    AttributeId id() const noexcept { return id_; }

    VelType* type() const noexcept { return type_; }

private:
    const char* name_;
    AttributeId id_;
    VelType* type_;
};

} // namespace Vel

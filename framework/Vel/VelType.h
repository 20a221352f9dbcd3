// VelType.h - run-time description of one type: its names, its base, its attributes.
//
// Lifetime: that of the process.
// Threads:  attributes are added while one thread runs; reading is free for all after that.
#pragma once

#include <Vel/AttributeId.h>
#include <Vel/Export.h>
#include <Vel/Ptr.h>
#include <Vel/PtrInterface.h>
#include <Vel/VelAttr.h>
#include <string_view>
#include <vector>

namespace Vel {

class VEL_API VelType : public PtrInterface {
public:
    // `name` is the short name, without namespace; it is borrowed for the life of the process.
    VelType(const char* name, VelType* base) noexcept : name_(name), base_(base) {}

    ~VelType() override;

    const char* name() const noexcept { return name_; }

    VelType* base() const noexcept { return base_; }

    // Adds an attribute, in the place of one of the same name if there is one.
    void attrIs(const Ptr<VelAttr>& attr);

    // An attribute of this type or, behind its own, of its bases; null if there is none.
    VelAttr* attr(std::string_view name) const noexcept;
    VelAttr* attr(AttributeId id) const noexcept;

private:
    const char* name_;
    VelType* base_;
    std::vector<Ptr<VelAttr>> attrs_; // its own, in the order in which they were added
};

} // namespace Vel

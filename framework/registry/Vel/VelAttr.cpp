#include <Vel/VelAttr.h>

namespace Vel {

VelAttr::VelAttr(Name name, VelType* type, VelAttr* keyAttr, VelAttr* valueAttr, AttrFlags flags,
                 AttributeId id) noexcept
    : name_(name), type_(type), keyAttr_(keyAttr), valueAttr_(valueAttr), id_(id), flags_(flags) {}

VelAttr::~VelAttr() = default;

} // namespace Vel

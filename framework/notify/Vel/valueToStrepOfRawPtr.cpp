#include <Vel/valueToStrepOfRawPtr.h>

#include <Vel/Entity.h>
#include <Vel/VelType.h>
#include <Vel/detail/typeName.h>
#include <Vel/format.h>
#include <Vel/valueToStrep.h>
#include <cstdint>

namespace Vel {

String8 valueToStrepOfRawPtr(const PtrInterface* object, const std::type_info& pointedTo) {
    if (object == nullptr) return "None";
    const VelType* const type = object->fwkType();
    const String8 typeName =
        valueToStrep(type != PtrInterface::_fwkType() ? String8(type->qualifiedName())
                                                      : detail::typeName(pointedTo));
    if (const auto* const entity = dynamic_cast<const Entity*>(object))
        return "Ptr(" + typeName + ", " + valueToStrep(entity->uriPath()) + ")";
    return format("Ptr(%s, 0x%llx)", typeName.charPtr(),
                  0ULL + reinterpret_cast<std::uintptr_t>(object));
}

} // namespace Vel

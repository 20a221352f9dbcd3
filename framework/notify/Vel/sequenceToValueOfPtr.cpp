#include <Vel/sequenceToValueOfPtr.h>

#include <Vel/Entity.h>
#include <Vel/RangeException.h>
#include <Vel/VelType.h>
#include <Vel/format.h>
#include <Vel/needString.h>
#include <Vel/sequenceToValue.h>
#include <Vel/textErrors.h>
#include <Vel/textReading.h>
#include <Vel/valueToStrep.h>
#include <Vel/valueToStrepOfRawPtr.h>
#include <string_view>

namespace Vel {

PtrInterface* sequenceToValueOfPtr(String8::IteratorConst& it, const String8::IteratorConst& end,
                                   PtrInterface*) {
    String8::IteratorConst pos = it;
    needString(pos, end, " ");
    const String8::IteratorConst start = pos;
    const std::string_view left(pos.charPtr(), static_cast<std::size_t>(end - pos));
    if (left.starts_with("None") && (left.size() == 4 || !Text::isWordCharacter(left[4]))) {
        it = pos + 4;
        return nullptr;
    }
    if (!left.starts_with("Ptr")) cannotConvert(it, end, typeid(PtrInterface));
    needString(pos, end, "Ptr ( ");
    const String8 type = sequenceToValue(pos, end, static_cast<String8*>(nullptr));
    needString(pos, end, " , ");
    if (pos != end && *pos.charPtr() >= '0' && *pos.charPtr() <= '9')
        throw RangeException(format("cannot resolve the address at column %lld", pos.column()));
    const String8 path = sequenceToValue(pos, end, static_cast<String8*>(nullptr));
    needString(pos, end, " )");

    const Ptr<Entity> root = Entity::root();
    const Ptr<Entity> found = root ? root->find(path.view()) : nullptr;
    const String8 quoted = valueToStrep(path);
    if (!found)
        throw RangeException(
            format("no entity at %s for column %lld", quoted.charPtr(), start.column()));
    if (valueToStrepOfRawPtr(found.ptr(), typeid(Entity)) !=
        "Ptr(" + valueToStrep(type) + ", " + quoted + ")")
        throw RangeException(format("entity at %s for column %lld is no %s", quoted.charPtr(),
                                    start.column(), valueToStrep(type).charPtr()));
    it = pos;
    return found.ptr();
}

} // namespace Vel

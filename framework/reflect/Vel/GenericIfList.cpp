#include <Vel/GenericIfList.h>

#include <Vel/VelType.h>

namespace Vel {

GenericIf::List::List() : GenericIf(false) {}

GenericIf::List::List(const List& other) = default;

GenericIf::List::~List() = default;

VelType* GenericIf::List::type() const { return _fwkType(); }

VelType* GenericIf::List::_fwkType() {
    static VelType* const type = [] {
        auto* made = new VelType("Vel::GenericIf::List_", nullptr, nullptr, VelTypeFlags());
        made->referencesLeak();
        return made;
    }();
    return type;
}

String8 GenericIf::List::strRep() const {
    String8 text = "[";
    const char* separator = "";
    for (const Ptr<GenericIf>& member : members_) {
        text += separator;
        text += member ? member->strRep() : String8("None");
        separator = ", ";
    }
    return text + "]";
}

const void* GenericIf::List::voidPtr(const VelType* type) const {
    return type == _fwkType() ? this : nullptr;
}

void GenericIf::List::voidPtrIs(const void* value, const VelType* type) {
    if (type != _fwkType()) throwTypeException(_fwkType()->name());
    members_ = static_cast<const List*>(value)->members_;
}

const GenericIf::List& GenericIf::List::of(const GenericIf* arguments) {
    if (arguments == nullptr) throwTypeException("List");
    const void* const list = arguments->voidPtr(_fwkType());
    if (list == nullptr) throwTypeException(_fwkType()->name());
    return *static_cast<const List*>(list);
}

} // namespace Vel

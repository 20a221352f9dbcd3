// PtrInterfaceType.cpp - the descriptor of the class of all objects, which needs none of them.
//
// Test: PtrInterface_test.cpp and VelType_test.cpp.
#include <Vel/PtrInterface.h>
#include <Vel/VelType.h>

namespace Vel {

VelType* PtrInterface::fwkType() const { return _fwkType(); }

namespace {

class ObjectBaseType : public VelType {
public:
    ObjectBaseType() : VelType("PtrInterface", nullptr, nullptr, VelTypeFlags()) {
        qualifiedNameIs("Vel::PtrInterface");
        referencesLeak();
    }
};

} // namespace

VelType* PtrInterface::_fwkType() {
    static VelType* const type = new ObjectBaseType;
    return type;
}

} // namespace Vel

#include <Vel/valueToStrepOfRawPtr.h>

#include <Vel/Entity.h>
#include <Vel/VelType.h>
#include <Vel/format.h>
#include <gtest/gtest.h>

namespace Vel {
namespace {

class Plain : public PtrInterface {};

class Port : public Entity {
public:
    using Entity::Entity;

    VelType* fwkType() const override {
        static const Ptr<VelType> type = new VelType("Port", nullptr, nullptr, VelTypeFlags());
        return type.ptr();
    }
};

TEST(valueToStrepOfRawPtr, NoObjectIsNone) {
    EXPECT_EQ(valueToStrepOfRawPtr(nullptr, typeid(Plain)), "None");
}

TEST(valueToStrepOfRawPtr, AnEntityIsNamedByItsTypeAndPath) {
    const Ptr<Port> root = new Port("system");
    const Ptr<Port> port = new Port("it's");
    port->parentIs(root);
    EXPECT_EQ(valueToStrepOfRawPtr(root.ptr(), typeid(Entity)), "Ptr('Port', '/system')");
    EXPECT_EQ(valueToStrepOfRawPtr(port.ptr(), typeid(Entity)), "Ptr('Port', '/system/it%27s')");
}

TEST(valueToStrepOfRawPtr, AnotherObjectIsNamedByItsAddress) {
    const Ptr<Plain> object = new Plain;
    EXPECT_EQ(valueToStrepOfRawPtr(object.ptr(), typeid(PtrInterface)),
              format("Ptr('Vel::PtrInterface', %p)", static_cast<const void*>(object.ptr())));
}

} // namespace
} // namespace Vel

#include <Vel/GenericIfPtrInterface.h>

#include <Vel/Builtin.h>
#include <Vel/ReflectionException.h>
#include <Vel/VelType.h>
#include <gtest/gtest.h>

namespace Vel {
namespace {

class Plain : public PtrInterface {};

Ptr<GenericIf> wrap(PtrInterface* object, bool isConst = false) {
    return PtrInterface::_fwkType()->genericIf(object, isConst);
}

TEST(GenericIfPtrInterface, KeepsItsObjectAlive) {
    const Ptr<Plain> object = new Plain;
    {
        const Ptr<GenericIf> adapter = wrap(object.ptr());
        EXPECT_EQ(object->references(), 2u);
        EXPECT_EQ(adapter->type(), PtrInterface::_fwkType());
        EXPECT_EQ(adapter->voidPtr(PtrInterface::_fwkType()), object.ptr());
        EXPECT_EQ(adapter->voidPtr(Builtin<U16>::_fwkType()), nullptr);
        EXPECT_EQ(static_cast<GenericIfPtrInterface&>(*adapter->clone()).object(), object.ptr());
    }
    EXPECT_EQ(object->references(), 1u);
}

TEST(GenericIfPtrInterface, ATypeThatIsNoClassOfObjectsWrapsNone) {
    const Ptr<Plain> object = new Plain;
    EXPECT_THROW((void)Builtin<U16>::_fwkType()->genericIf(object.ptr(), false),
                 ReflectionException);
    EXPECT_THROW(
        (void)Builtin<U16>::_fwkType()->genericIf(static_cast<PtrInterface*>(nullptr), false),
        ReflectionException);
    EXPECT_EQ(object->references(), 1u);
}

TEST(GenericIfPtrInterface, MayReferToNothing) {
    const Ptr<GenericIf> adapter = wrap(nullptr);
    EXPECT_EQ(adapter->strRep(), "None");
    EXPECT_EQ(adapter->type(), PtrInterface::_fwkType());
}

TEST(GenericIfPtrInterface, RefersToAnotherObjectFromThenOn) {
    const Ptr<Plain> first = new Plain;
    const Ptr<Plain> second = new Plain;
    const Ptr<GenericIf> adapter = wrap(first.ptr());
    adapter->voidPtrIs(static_cast<PtrInterface*>(second.ptr()), PtrInterface::_fwkType());
    EXPECT_EQ(first->references(), 1u);
    EXPECT_EQ(second->references(), 2u);
    EXPECT_THROW(adapter->voidPtrIs(nullptr, Builtin<U16>::_fwkType()), ReflectionException);
    EXPECT_EQ(second->references(), 2u);
}

TEST(GenericIfPtrInterface, ComparesObjectsByIdentity) {
    const Ptr<Plain> object = new Plain;
    const Ptr<Plain> other = new Plain;
    const Ptr<GenericIf> adapter = wrap(object.ptr(), true);
    const auto equals = [&adapter](const Ptr<GenericIf>& with) {
        const Ptr<GenericIf> result = Builtin<bool>::genericIf(false);
        adapter->attributeOp({0, AttributeOp::compare, with.ptr()}, nullptr, result);
        return result->strRep();
    };
    EXPECT_EQ(equals(wrap(object.ptr())), "True");
    EXPECT_EQ(equals(wrap(other.ptr())), "False");
    EXPECT_THROW((void)equals(Builtin<bool>::genericIf(true)), ReflectionException);
    EXPECT_THROW((void)equals(nullptr), ReflectionException);
}

TEST(GenericIfPtrInterface, HasNoOtherAttribute) {
    const Ptr<Plain> object = new Plain;
    const auto textOf = [&object](bool isConst, AttributeOp::Operation operation) -> String8 {
        try {
            wrap(object.ptr(), isConst)->attributeOp({2, operation}, nullptr, nullptr);
        } catch (const ReflectionException& refused) {
            return refused.text();
        }
        return "it was done";
    };
    EXPECT_EQ(textOf(true, AttributeOp::read), "Vel::PtrInterface has no attribute 2");
    EXPECT_EQ(textOf(false, AttributeOp::set), "Vel::PtrInterface has no attribute 2");
    EXPECT_EQ(textOf(true, AttributeOp::set), "attempting to modify a const instance");
}

} // namespace
} // namespace Vel

#include <Vel/GenericIfList.h>

#include <Vel/Builtin.h>
#include <Vel/ReflectionException.h>
#include <gtest/gtest.h>

namespace Vel {
namespace {

TEST(GenericIfList, KeepsItsMembersInOrder) {
    const Ptr<GenericIf::List> list = new GenericIf::List;
    EXPECT_EQ(list->strRep(), "[]");
    list->push(Builtin<U16>::genericIf(7));
    list->push(nullptr);
    list->push(Builtin<bool>::genericIf(true));
    EXPECT_EQ(list->members(), 3u);
    EXPECT_EQ(list->strRep(), "[7, None, True]");
    EXPECT_EQ(list->iterator().member()->strRep(), "7");
    list->deleteAll();
    EXPECT_EQ(list->members(), 0u);
}

TEST(GenericIfList, ACloneHasTheSameAdapters) {
    const Ptr<GenericIf::List> list = new GenericIf::List;
    list->push(Builtin<U16>::genericIf(7));
    const Ptr<GenericIf> copy = list->clone();
    list->push(Builtin<U16>::genericIf(8));
    EXPECT_EQ(copy->strRep(), "[7]");
    const GenericIf& constant = *list;
    EXPECT_EQ(constant.clone()->strRep(), "[7, 8]");
    EXPECT_EQ(GenericIf::List::of(copy.ptr()).iterator().member().ptr(),
              list->iterator().member().ptr());
}

TEST(GenericIfList, TakesTheMembersOfAnother) {
    const Ptr<GenericIf::List> list = new GenericIf::List;
    list->push(Builtin<U16>::genericIf(7));
    const Ptr<GenericIf::List> other = new GenericIf::List;
    other->voidPtrIs(list->voidPtr(GenericIf::List::_fwkType()), GenericIf::List::_fwkType());
    EXPECT_EQ(other->strRep(), "[7]");
    EXPECT_THROW(other->voidPtrIs(nullptr, Builtin<U16>::_fwkType()), ReflectionException);
}

TEST(GenericIfList, HasATypeOfItsOwnAndNoAttributes) {
    const Ptr<GenericIf> list = new GenericIf::List;
    EXPECT_EQ(list->type()->name(), "Vel::GenericIf::List_");
    EXPECT_EQ(list->voidPtr(Builtin<U16>::_fwkType()), nullptr);
    EXPECT_THROW(list->attributeOp({2, AttributeOp::read}, nullptr, nullptr), ReflectionException);
}

TEST(GenericIfList, SaysWhatIsNoList) {
    const auto textOf = [](const GenericIf* adapter) -> String8 {
        try {
            (void)GenericIf::List::of(adapter);
        } catch (const ReflectionException& refused) {
            return refused.text();
        }
        return "it is one";
    };
    const Ptr<GenericIf> list = new GenericIf::List;
    EXPECT_EQ(textOf(list.ptr()), "it is one");
    EXPECT_EQ(textOf(nullptr), "argument List is missing or of another type");
    EXPECT_EQ(textOf(Builtin<U16>::genericIf(1).ptr()),
              "argument Vel::GenericIf::List_ is missing or of another type");
}

} // namespace
} // namespace Vel

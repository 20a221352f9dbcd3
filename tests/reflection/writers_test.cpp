// Writing through reflection is writing: who listens is told, and what a writer refuses is refused.
#include <Brixo/CacheTableIndex.h>
#include <Brixo/DalProcessingStatusCol.h>
#include <Brixo/TargetMask.h>
#include <Vel/Any.h>
#include <Vel/Builtin.h>
#include <Vel/GenericIfList.h>
#include <Vel/ReflectionException.h>
#include <gtest/gtest.h>
#include <initializer_list>
#include <string>

namespace Brixo {
namespace {

using Vel::Any;
using Vel::AttributeOp;
using Vel::GenericIf;
using Vel::Ptr;

class Listener : public DalProcessingStatusCol::NotifieeConst {
public:
    using NotifieeConst::onProcessingStatus;

    void onProcessingStatus(DalId dalId) override { told += std::to_string(dalId.id()) + " "; }

    std::string told;
};

class Writers : public testing::Test {
protected:
    Writers() {
        listener->notifierIs(col);
        listener->isRegisteredNotifieeIs(true);
    }

    // What an operation on processingStatus is refused with; "" if it is done.
    std::string run(AttributeOp::Operation operation, const Ptr<GenericIf>& argument,
                    const Ptr<GenericIf>& index = nullptr) {
        try {
            adapter->attributeOp(
                {DalProcessingStatusCol::processingStatusId, operation, argument.ptr()}, index,
                nullptr);
            return "";
        } catch (const Vel::ReflectionException& refused) {
            return refused.what();
        }
    }

    static Ptr<GenericIf> dal(const char* id) { return Any::parse("Brixo::DalId", id).adapter(); }

    static Ptr<GenericIf> list(std::initializer_list<Ptr<GenericIf>> members) {
        const Ptr<GenericIf::List> made = new GenericIf::List;
        for (const Ptr<GenericIf>& member : members) made->push(member);
        return made;
    }

    const Ptr<DalProcessingStatusCol> col = new DalProcessingStatusCol;
    const Ptr<Listener> listener = new Listener;
    const Ptr<GenericIf> adapter = DalProcessingStatusCol::_fwkType()->genericIf(col.ptr(), false);
};

TEST_F(Writers, InsertingAndDeletingTellsWhoListens) {
    EXPECT_EQ(run(AttributeOp::set, list({dal("3")})), "");
    EXPECT_EQ(run(AttributeOp::set, list({dal("5")})), "");
    EXPECT_EQ(run(AttributeOp::del, nullptr, dal("3")), "");
    EXPECT_EQ(run(AttributeOp::del, nullptr, dal("3")), "");
    EXPECT_EQ(listener->told, "3 5 3 ");
    EXPECT_EQ(run(AttributeOp::delAll, nullptr), "");
    EXPECT_EQ(listener->told, "3 5 3 5 ");
    EXPECT_EQ(col->processingStatuss(), 0u);
}

TEST_F(Writers, ADeletionAnswersWhatItsDeleterGives) {
    const Ptr<DalProcessingStatus> status = col->processingStatusIs(DalId(3));
    Any any(adapter);
    EXPECT_EQ(any.del("processingStatus", 3).as<Ptr<DalProcessingStatus>>(), status);
    EXPECT_TRUE(any.del("processingStatus", 3).isNull());
    EXPECT_EQ(listener->told, "3 3 ") << "added and removed once";
}

TEST_F(Writers, ADeletionWhoseAnswerCannotBeTakenRemovesNothing) {
    ASSERT_EQ(run(AttributeOp::set, list({dal("3")})), "");
    const Ptr<GenericIf> number = Vel::Builtin<Vel::U8>::genericIf(3);
    EXPECT_THROW(
        adapter->attributeOp({DalProcessingStatusCol::processingStatusId, AttributeOp::del},
                             dal("3"), number),
        Vel::ReflectionException);
    EXPECT_EQ(col->processingStatuss(), 1u);
    EXPECT_EQ(listener->told, "3 ");
}

TEST(WritersOfValues, ADeletionOfABitSaysWhetherItWasSet) {
    Any targets = Any::parse("Brixo::TargetMask", "6");
    EXPECT_TRUE(targets.del("targetId", 2).as<bool>());
    EXPECT_FALSE(targets.del("targetId", 2).as<bool>());
    EXPECT_FALSE(targets.del("targetId", 64).as<bool>()) << "0, which no reading would take";
    EXPECT_TRUE(targets.del("bitId", 65).as<bool>()) << "1";
    EXPECT_EQ(targets.text(), "0");
    Any bits = Any::parse("Orn::U64Bitmask", "9223372036854775808");
    EXPECT_FALSE(bits.del("bitId", 62).as<bool>());
    EXPECT_TRUE(bits.del("bitId", 63).as<bool>());
    EXPECT_EQ(bits.text(), "0");
}

TEST_F(Writers, AnIteratorsDeletionTellsToo) {
    ASSERT_EQ(run(AttributeOp::set, list({dal("3")})), "");
    const Ptr<Vel::AttributeIterator> at =
        adapter->attributeIterator(DalProcessingStatusCol::processingStatusId);
    adapter->attributeIterator_iterDel(at);
    EXPECT_EQ(listener->told, "3 3 ");
    EXPECT_FALSE(adapter->attributeIterator_nonNull(at));
}

TEST_F(Writers, EachWrongInsertionIsRefusedAndTellsNobody) {
    EXPECT_EQ(run(AttributeOp::set, nullptr), "argument List is missing or of another type");
    EXPECT_EQ(run(AttributeOp::set, dal("3")),
              "argument Vel::GenericIf::List_ is missing or of another type");
    EXPECT_EQ(run(AttributeOp::set, list({})), "argument dalId is missing or of another type");
    EXPECT_EQ(run(AttributeOp::set, list({Vel::Builtin<Vel::U8>::genericIf(3)})),
              "argument dalId is missing or of another type");
    EXPECT_EQ(run(AttributeOp::set, list({dal("3"), dal("4")})),
              "processingStatus takes no more arguments");
    EXPECT_EQ(run(AttributeOp::set, list({dal("3")}), dal("3")),
              "attribute processingStatus takes no index");
    EXPECT_EQ(run(AttributeOp::del, nullptr, Vel::Builtin<Vel::U8>::genericIf(3)),
              "argument dalId is missing or of another type");
    EXPECT_EQ(run(AttributeOp::del, nullptr), "argument dalId is missing or of another type");
    EXPECT_EQ(run(77, nullptr), "attribute processingStatus does not support operation 77");
    EXPECT_EQ(listener->told, "");
    EXPECT_EQ(col->processingStatuss(), 0u);
}

TEST_F(Writers, AnAttributeWithAWriterIsWrittenThroughIt) {
    class Progress : public DalProcessingStatus::NotifieeConst {
    public:
        void onLastProcessedCmdIndex() override { ++told; }

        int told = 0;
    };

    const Ptr<DalProcessingStatus> status = col->processingStatusIs(DalId(7));
    const Ptr<Progress> progress = new Progress;
    progress->notifierIs(status);
    progress->isRegisteredNotifieeIs(true);
    Any(DalProcessingStatus::_fwkType()->genericIf(status.ptr(), false))
        .set("lastProcessedCmdIndex", 41);
    EXPECT_EQ(status->lastProcessedCmdIndex(), 41u);
    EXPECT_EQ(progress->told, 1);
}

TEST(WritersOfValues, AnIndexOfATableIsBuiltByDefaultAndThroughItsWriters) {
    Any index = Any::make("Brixo::CacheTableIndex");
    index.set("devId", 4660);
    index.set("resourceId",
              Any::make("Brixo::PhysicalResourceId", {{"type", "tableResource"}, {"id", 9}}));
    EXPECT_EQ(index.as<CacheTableIndex>(),
              CacheTableIndex(DeviceId(4660), PhysicalResourceId(ResourceType::tableResource, 9)));
}

TEST(WritersOfValues, AMaskShowsItsOwnAttributesAndThoseItInherits) {
    const Ptr<GenericIf> mask = Any::parse("Brixo::TargetMask", "5").adapter();
    const auto read = [&mask](Vel::AttributeId id, Vel::VelType* type) {
        const Ptr<GenericIf> result = type->newGenericIf();
        mask->attributeOp({id, AttributeOp::read}, nullptr, result);
        return result->strRep();
    };
    EXPECT_EQ(read(131, Vel::Builtin<Vel::U32>::_fwkType()), "2") << "targets, its own";
    EXPECT_EQ(read(2, Vel::Builtin<Vel::U64>::_fwkType()), "5") << "value, inherited";
    EXPECT_EQ(read(3, Vel::Builtin<Vel::U32>::_fwkType()), "2") << "bits, inherited";
    EXPECT_EQ(mask->attributeId("value"), 2u) << "though its descriptor has no base";
}

} // namespace
} // namespace Brixo

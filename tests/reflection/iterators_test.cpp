// Iterators over every collection of every registered type, while the collection changes under
// them.
#include <Brixo/BrixoTypesModule.h>
#include <Vel/Any.h>
#include <Vel/GenericIfList.h>
#include <Vel/IntrospectionReactor.h>
#include <Vel/ReflectionException.h>
#include <filesystem>
#include <gtest/gtest.h>
#include <string>
#include <unistd.h>
#include <vector>

namespace Vel {
namespace {

using Flags = VelAttr::AttrFlags;
using Names = std::vector<std::string>;

constexpr unsigned most = 20;

std::string text(const Any& any) { return any.text().charPtr(); }

std::string text(const Ptr<GenericIf>& adapter) { return adapter->strRep().charPtr(); }

// A value or object of a type: `number` wherever a number is wanted.
Any sample(VelType& type, unsigned number) {
    if (type.qualifiedName() == "bool") return Any::parse("bool", "True");
    const Arguments& arguments = type.constructorArguments();
    if (type.isEnumType()) return Any(type.newGenericIf());
    if (arguments.empty() && type.attrs().empty())
        return Any::parse(type.qualifiedName(), String8(std::to_string(number).c_str()));
    const Ptr<GenericIf::List> list = new GenericIf::List;
    for (std::size_t i = 0; i < arguments.size(); ++i)
        list->push(sample(Any::type(arguments.typeName(i)), number).adapter());
    return Any(type.genericIfListConstructor(list.ptr()));
}

struct Case {
    const VelType* type;
    const VelAttr* attr;
};

// One collection of one type: empty at first.
class Iterators : public testing::TestWithParam<Case> {
protected:
    static void SetUpTestSuite() {
        directory() = std::filesystem::temp_directory_path() /
                      ("brixo-iterators-" + std::to_string(getpid()));
        std::filesystem::create_directory(directory());
        setenv("PINBUF_DIR", directory().c_str(), 1);
    }

    static void TearDownTestSuite() { std::filesystem::remove_all(directory()); }

    Iterators() { owner.delAll(name); }

    // The number is the member's key, or what its key is made of.
    void insert(unsigned number) {
        const VelAttr& attr = *GetParam().attr;
        if (!attr.arguments().empty()) {
            owner.insert(name, {sample(Any::type(attr.arguments().typeName(0)), number)});
        } else if (attr.keyAttr() != nullptr) {
            owner.insert(name, {sample(*attr.type(), number)});
        } else {
            owner.insert(name, {sample(*attr.keyType(), number), sample(*attr.type(), 1)});
        }
    }

    void insertAll() {
        for (unsigned number = 1; number <= most; ++number) insert(number);
        ASSERT_EQ(owner.count(name), most);
    }

    Any keyOf(const std::string& key) const {
        return Any::parse(GetParam().attr->keyType()->qualifiedName(), String8(key.c_str()));
    }

    // Every key, in order.
    Names keys() const {
        Names all;
        const Ptr<GenericIf::List> list = new GenericIf::List;
        owner.adapter()->attributeOp({GetParam().attr->id(), AttributeOp::keys}, nullptr, list);
        for (const Ptr<GenericIf>& key : *list) all.push_back(text(key));
        return all;
    }

    Ptr<AttributeIterator> iterator() { return adapter().attributeIterator(GetParam().attr->id()); }

    GenericIf& adapter() const { return *owner.adapter(); }

    // What is thrown, behind nothing; the name of the attribute is in it.
    template <class Call>
    std::string refusal(Call call) const {
        try {
            call();
            return "nothing was refused";
        } catch (const ReflectionException& refused) {
            return refused.what();
        }
    }

    // The keys from where the iterator stands.
    Names rest(const Ptr<AttributeIterator>& at) {
        Names all;
        for (; adapter().attributeIterator_nonNull(at); adapter().attributeIterator_iterInc(at))
            all.push_back(text(adapter().attributeIterator_iterKey(at)));
        return all;
    }

    static Names behind(const Names& names, std::size_t first) {
        return {names.begin() + static_cast<std::ptrdiff_t>(first), names.end()};
    }

    Any owner = sample(const_cast<VelType&>(*GetParam().type), 32);
    const Name name = GetParam().attr->name();
    const std::string atEnd =
        "an iterator over " + std::string(name) + " stands behind the last member";

private:
    static std::filesystem::path& directory() {
        static std::filesystem::path path;
        return path;
    }
};

TEST_P(Iterators, StayAtTheEndAndShowNothingThere) {
    insert(1);
    const Ptr<AttributeIterator> at = iterator();
    EXPECT_EQ(rest(at).size(), 1u);
    adapter().attributeIterator_iterInc(at);
    adapter().attributeIterator_iterInc(at);
    EXPECT_FALSE(adapter().attributeIterator_nonNull(at));
    EXPECT_EQ(refusal([&] { (void)adapter().attributeIterator_iterKey(at); }), atEnd);
    EXPECT_EQ(refusal([&] { (void)adapter().attributeIterator_iterObj(at); }), atEnd);
    EXPECT_EQ(refusal([&] { adapter().attributeIterator_iterDel(at); }), atEnd);
    insert(2);
    EXPECT_FALSE(adapter().attributeIterator_nonNull(at)) << "whatever comes";
    EXPECT_FALSE(adapter().attributeIterator_nonNull(adapter().attributeIterator_iterClone(at)));
    EXPECT_EQ(owner.count(name), 2u);
    owner.delAll(name);
    const Ptr<AttributeIterator> none = iterator();
    adapter().attributeIterator_iterInc(none);
    EXPECT_EQ(refusal([&] { (void)adapter().attributeIterator_iterObj(none); }), atEnd);
}

TEST_P(Iterators, GoOnBehindAMemberThatWasRemovedByItsKey) {
    insertAll();
    const Names all = keys();
    const Ptr<AttributeIterator> at = iterator();
    Names seen;
    for (; adapter().attributeIterator_nonNull(at); adapter().attributeIterator_iterInc(at)) {
        const Any key(adapter().attributeIterator_iterKey(at));
        seen.push_back(text(key));
        owner.del(name, key);
    }
    EXPECT_EQ(seen, all);
    EXPECT_EQ(owner.count(name), 0u);
}

TEST_P(Iterators, StandOnTheKeyOfAMemberThatIsGone) {
    insertAll();
    const Names all = keys();
    const Ptr<AttributeIterator> at = iterator();
    adapter().attributeIterator_iterInc(at);
    owner.del(name, keyOf(all[1]));
    EXPECT_TRUE(adapter().attributeIterator_nonNull(at));
    EXPECT_EQ(text(adapter().attributeIterator_iterKey(at)), all[1]);
    EXPECT_EQ(refusal([&] { (void)adapter().attributeIterator_iterObj(at); }),
              "the member of " + std::string(name) + " under " + all[1] + " is gone");
    const Ptr<AttributeIterator> other = adapter().attributeIterator_iterClone(at);
    adapter().attributeIterator_iterDel(at);
    EXPECT_EQ(owner.count(name), most - 1) << "there was nothing to remove";
    EXPECT_EQ(rest(at), behind(all, 2));
    for (const std::size_t gone : {2U, 3U, 4U}) owner.del(name, keyOf(all[gone]));
    adapter().attributeIterator_iterInc(other);
    EXPECT_EQ(rest(other), behind(all, 5));
}

TEST_P(Iterators, RemoveEveryMember) {
    insertAll();
    const Ptr<AttributeIterator> at = iterator();
    unsigned removed = 0;
    for (; adapter().attributeIterator_nonNull(at); ++removed)
        adapter().attributeIterator_iterDel(at);
    EXPECT_EQ(removed, most);
    EXPECT_EQ(owner.count(name), 0u);
}

TEST_P(Iterators, EndWhenAllMembersGo) {
    insertAll();
    const Names all = keys();
    const Ptr<AttributeIterator> at = iterator();
    owner.delAll(name);
    EXPECT_EQ(text(adapter().attributeIterator_iterKey(at)), all[0]);
    adapter().attributeIterator_iterInc(at);
    EXPECT_FALSE(adapter().attributeIterator_nonNull(at));
}

TEST_P(Iterators, MeetWhatComesBehindThemAndNothingTwice) {
    insertAll();
    const Names all = keys();
    owner.delAll(name);
    for (unsigned number = 1; number <= most; number += 2) insert(number);
    const std::string first = keys()[0];
    const Ptr<AttributeIterator> at = iterator();
    for (unsigned number = 2; number <= most; number += 2) insert(number);
    std::size_t start = 0;
    while (all[start] != first) ++start;
    EXPECT_EQ(rest(at), behind(all, start));
}

TEST_P(Iterators, AVisitorMayRemoveAllMembers) {
    insertAll();
    const Names all = keys();
    Names seen;
    owner.forEachMember(name, [&](const Any& key, const Any& value) {
        seen.push_back(text(key));
        owner.delAll(name);
        EXPECT_FALSE(value.text().empty()) << "what is shown stays";
    });
    EXPECT_EQ(seen, Names{all[0]});
}

TEST_P(Iterators, AVisitorMayRemoveAnyMember) {
    insertAll();
    const Names all = keys();
    Names seen;
    Names expected;
    for (std::size_t i = 0; i < all.size(); i += 2) expected.push_back(all[i]);
    owner.forEachMember(name, [&](const Any& key, const Any&) {
        seen.push_back(text(key));
        std::size_t at = 0;
        while (all[at] != seen.back()) ++at;
        if (at + 1 < all.size()) owner.del(name, keyOf(all[at + 1]));
    });
    EXPECT_EQ(seen, expected);
}

TEST_P(Iterators, AVisitorMayAddMembers) {
    insertAll();
    const Names all = keys();
    owner.delAll(name);
    insert(1);
    std::size_t start = 0;
    const std::string first = keys()[0];
    while (all[start] != first) ++start;
    Names seen;
    owner.forEachMember(name, [&](const Any& key, const Any&) {
        seen.push_back(text(key));
        for (unsigned number = 1; number <= most; ++number) insert(number);
    });
    EXPECT_EQ(seen, behind(all, start)) << "each that stands behind the visited one";
    EXPECT_EQ(keys(), all);
}

TEST_P(Iterators, OfAConstAdapterRemoveNothingWhoeverIsAsked) {
    insert(1);
    const Ptr<GenericIf> constant = GetParam().type->genericIf(owner.adapter().ptr(), true);
    const Ptr<AttributeIterator> at = constant->attributeIterator(GetParam().attr->id());
    EXPECT_EQ(refusal([&] { adapter().attributeIterator_iterDel(at); }),
              "attempting to modify a const instance");
    EXPECT_TRUE(adapter().attributeIterator_iterObj(at)->isConst());
    EXPECT_TRUE(constant->attributeIterator_nonNull(at));
}

TEST_P(Iterators, OutliveTheAdapterThatMadeThem) {
    insert(1);
    const std::string key = keys()[0];
    const Ptr<AttributeIterator> at = iterator();
    owner = sample(const_cast<VelType&>(*GetParam().type), 64);
    EXPECT_EQ(text(at->key()), key);
    EXPECT_FALSE(at->obj(true)->strRep().empty());
}

TEST_P(Iterators, AreNotMissing) {
    const Ptr<AttributeIterator> none;
    const std::string missing = "argument iterator is missing or of another type";
    EXPECT_EQ(refusal([&] { (void)adapter().attributeIterator_iterKey(none); }), missing);
    EXPECT_EQ(refusal([&] { (void)adapter().attributeIterator_iterObj(none); }), missing);
    EXPECT_EQ(refusal([&] { adapter().attributeIterator_iterInc(none); }), missing);
    EXPECT_EQ(refusal([&] { adapter().attributeIterator_iterDel(none); }), missing);
    EXPECT_EQ(refusal([&] { (void)adapter().attributeIterator_nonNull(none); }), missing);
    EXPECT_EQ(refusal([&] { (void)adapter().attributeIterator_iterClone(none); }), missing);
}

std::vector<Case> everyCollection() {
    velInitBrixoTypes();
    std::vector<Case> all;
    for (const VelType* const type : IntrospectionReactor::global()->types())
        for (const VelType* at = type; at != nullptr; at = at->inheritsFrom())
            for (const VelAttr* const attr : at->attrs())
                if (attr->flags().has(Flags::collection)) all.push_back({type, attr});
    return all;
}

INSTANTIATE_TEST_SUITE_P(Collections, Iterators, testing::ValuesIn(everyCollection()),
                         [](const auto& test) {
                             return std::string(test.param.type->name()) + "_" +
                                    std::string(test.param.attr->name());
                         });

} // namespace
} // namespace Vel

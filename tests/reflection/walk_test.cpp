// Every registered type through reflection alone: nothing here names a type of the product.
#include <Brixo/BrixoTypesModule.h>
#include <Vel/Any.h>
#include <Vel/Builtin.h>
#include <Vel/GenericIfList.h>
#include <Vel/IntrospectionReactor.h>
#include <Vel/RangeException.h>
#include <Vel/ReflectionException.h>
#include <array>
#include <cstdlib>
#include <filesystem>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace Vel {
namespace {

using Flags = VelAttr::AttrFlags;
using Op = AttributeOp;

// Room for whoever asks for bytes.
std::array<unsigned char, 64> buffer;

// A value of a type by its descriptor: `number` wherever a number is wanted.
Ptr<GenericIf> sample(VelType& type, unsigned number) {
    if (type.isKindOf(Builtin<BytePtr>::_fwkType()))
        return Builtin<BytePtr>::genericIf(buffer.data());
    const Arguments& arguments = type.constructorArguments();
    const bool isBuiltin = arguments.empty() && type.attrs().empty();
    if (type.isKindOf(Builtin<bool>::_fwkType())) return Builtin<bool>::genericIf(true);
    if (isBuiltin) return type.genericIf(String8(std::to_string(number).c_str()), false);
    const Ptr<GenericIf::List> list = new GenericIf::List;
    for (std::size_t i = 0; i < arguments.size(); ++i)
        list->push(sample(Any::type(arguments.typeName(i)), number));
    return type.genericIfListConstructor(list.ptr());
}

Ptr<GenericIf::List> samples(const Arguments& arguments, unsigned number) {
    const Ptr<GenericIf::List> list = new GenericIf::List;
    for (std::size_t i = 0; i < arguments.size(); ++i)
        list->push(sample(Any::type(arguments.typeName(i)), number));
    return list;
}

std::vector<const VelAttr*> attributesOf(const VelType& type) {
    std::vector<const VelAttr*> all;
    for (const VelType* at = &type; at != nullptr; at = at->inheritsFrom())
        all.insert(all.end(), at->attrs().begin(), at->attrs().end());
    return all;
}

std::string refusal(const Ptr<GenericIf>& adapter, const AttributeOp& op,
                    const Ptr<GenericIf>& index, const Ptr<GenericIf>& result) {
    try {
        adapter->attributeOp(op, index, result);
        return "nothing was refused";
    } catch (const ReflectionException& refused) {
        return refused.what();
    }
}

class Walk : public testing::TestWithParam<const VelType*> {
protected:
    static void SetUpTestSuite() {
        directory() =
            std::filesystem::temp_directory_path() / ("brixo-walk-" + std::to_string(getpid()));
        std::filesystem::create_directory(directory());
        setenv("PINBUF_DIR", directory().c_str(), 1);
    }

    static void TearDownTestSuite() { std::filesystem::remove_all(directory()); }

    VelType& type() const { return const_cast<VelType&>(*GetParam()); }

    Ptr<GenericIf> instance() const { return sample(type(), 8); }

private:
    static std::filesystem::path& directory() {
        static std::filesystem::path path;
        return path;
    }
};

TEST_P(Walk, IsConstructedAndRefusesAnArgumentTooManyOrTooFew) {
    const Ptr<GenericIf> made = instance();
    EXPECT_EQ(made->type(), &type());
    EXPECT_FALSE(made->isConst());
    const Arguments& arguments = type().constructorArguments();
    const Ptr<GenericIf::List> more = samples(arguments, 8);
    more->push(made);
    try {
        (void)made->genericIfListConstructor(more);
        ADD_FAILURE() << "an argument too many was taken";
    } catch (const ReflectionException& refused) {
        EXPECT_EQ(refused.text(), String8(type().name()) + " takes no more arguments");
    }
    if (arguments.empty()) return;
    try {
        (void)made->genericIfListConstructor(new GenericIf::List);
        ADD_FAILURE() << "nothing was missed";
    } catch (const ReflectionException& refused) {
        EXPECT_EQ(refused.text(),
                  "argument " + String8(arguments.name(0)) + " is missing or of another type");
    }
}

TEST_P(Walk, EachNameLeadsToTheIdOfItsAttribute) {
    const Ptr<GenericIf> made = instance();
    for (const VelAttr* attr : attributesOf(type())) {
        EXPECT_EQ(made->attributeId(String8(attr->name())), attr->id());
        EXPECT_EQ(type().attr(attr->id()), attr);
    }
    EXPECT_THROW((void)made->attributeId("noSuchAttribute"), ReflectionException);
}

TEST_P(Walk, PlainAttributesAreReadAndWrittenOrRefused) {
    const Ptr<GenericIf> made = instance();
    for (const VelAttr* attr : attributesOf(type())) {
        if (attr->flags().has(Flags::collection) || attr->flags().has(Flags::function)) continue;
        const String8 name(attr->name());
        const Ptr<GenericIf> value = attr->type()->newGenericIf();
        made->attributeOp({attr->id(), Op::read}, nullptr, value);
        EXPECT_EQ(refusal(made, {attr->id(), Op::read}, value, value),
                  std::string(("attribute " + name + " takes no index").charPtr()));
        EXPECT_EQ(refusal(made, {attr->id(), Op::count}, nullptr, value),
                  std::string(("attribute " + name + " does not support operation 2").charPtr()));
        if (attr->flags().has(Flags::writable)) {
            made->attributeOp({attr->id(), Op::set, value.ptr()}, nullptr, nullptr);
            const Ptr<GenericIf> again = attr->type()->newGenericIf();
            made->attributeOp({attr->id(), Op::read}, nullptr, again);
            EXPECT_EQ(again->strRep(), value->strRep()) << attr->name();
        } else {
            EXPECT_EQ(
                refusal(made, {attr->id(), Op::set, value.ptr()}, nullptr, nullptr),
                std::string(("attribute " + name + " does not support operation 128").charPtr()));
        }
    }
}

TEST_P(Walk, AConstAdapterReadsTheSameAndRefusesEveryModification) {
    const Ptr<GenericIf> made = instance();
    const Ptr<GenericIf> constant = type().genericIf(made.ptr(), true);
    ASSERT_TRUE(constant);
    EXPECT_TRUE(constant->isConst());
    EXPECT_EQ(constant->strRep(), made->strRep());
    for (const VelAttr* attr : attributesOf(type()))
        for (const Op::Operation operation : {Op::set, Op::del, Op::delAll, 200U})
            EXPECT_EQ(refusal(constant, {attr->id(), operation}, nullptr, nullptr),
                      "attempting to modify a const instance")
                << attr->name();
}

// Whether an attribute has an operation. Of attribute 0, comparison is the adapter's own.
bool supports(const VelAttr& attr, Op::Operation operation) {
    const Flags& flags = attr.flags();
    if (operation == Op::compare) return attr.id() == 0;
    if (flags.has(Flags::collection))
        return operation <= Op::keys || (operation >= Op::set && operation <= Op::delAll);
    if (flags.has(Flags::function))
        return operation == (flags.has(Flags::changing) ? Op::set : Op::read);
    return operation == Op::read || (operation == Op::set && flags.has(Flags::writable));
}

TEST_P(Walk, AnOperationThatAnAttributeDoesNotHaveIsRefusedByItsName) {
    const Ptr<GenericIf> made = instance();
    const Ptr<GenericIf> index = Builtin<U16>::genericIf(1);
    for (const VelAttr* attr : attributesOf(type())) {
        const std::string name = "attribute " + std::string(attr->name());
        const bool takesIndex = attr->flags().has(Flags::collection);
        for (const Op::Operation operation : {0U, 1U, 2U, 3U, 4U, 99U, 100U, 101U, 127U, 128U, 129U,
                                              130U, 131U, 255U, 0xffffffffU}) {
            if (supports(*attr, operation)) continue;
            const std::string refused =
                name + " does not support operation " + std::to_string(operation);
            EXPECT_EQ(refusal(made, {attr->id(), operation}, nullptr, nullptr), refused);
            EXPECT_EQ(refusal(made, {attr->id(), operation}, index, nullptr),
                      takesIndex ? refused : name + " takes no index");
        }
    }
}

TEST_P(Walk, EachFunctionIsCalled) {
    const Ptr<GenericIf> made = instance();
    for (const VelAttr* attr : attributesOf(type())) {
        if (!attr->flags().has(Flags::function)) continue;
        const Op::Operation call = attr->flags().has(Flags::changing) ? Op::set : Op::read;
        const Ptr<GenericIf::List> arguments = samples(attr->arguments(), 1);
        const Ptr<GenericIf> result =
            attr->type() != nullptr ? attr->type()->newGenericIf() : nullptr;
        made->attributeOp({attr->id(), call, arguments.ptr()}, nullptr, result);
        arguments->push(made);
        EXPECT_EQ(refusal(made, {attr->id(), call, arguments.ptr()}, nullptr, result),
                  std::string(attr->name()) + " takes no more arguments");
        if (attr->arguments().empty()) continue;
        EXPECT_EQ(refusal(made, {attr->id(), call}, nullptr, result),
                  "argument List is missing or of another type");
        EXPECT_EQ(refusal(made, {attr->id(), call, made.ptr()}, nullptr, result),
                  "argument Vel::GenericIf::List_ is missing or of another type");
        const Ptr<GenericIf::List> none = new GenericIf::List;
        EXPECT_EQ(refusal(made, {attr->id(), call, none.ptr()}, nullptr, result),
                  "argument " + std::string(attr->arguments().name(0)) +
                      " is missing or of another type");
    }
}

// Inserts one member and gives its key.
Ptr<GenericIf> insertOne(const Ptr<GenericIf>& made, const VelAttr& attr) {
    const bool holdsKey = attr.keyAttr() != nullptr;
    Ptr<GenericIf::List> arguments = new GenericIf::List;
    if (!attr.arguments().empty()) {
        arguments = samples(attr.arguments(), 5);
    } else if (holdsKey) {
        arguments = samples(attr.type()->constructorArguments(), 5);
    } else {
        arguments->push(sample(*attr.keyType(), 5));
        arguments->push(sample(*attr.type(), 1));
    }
    made->attributeOp({attr.id(), Op::set, arguments.ptr()}, nullptr, nullptr);
    if (!holdsKey) return arguments->iterator().member();
    const Ptr<AttributeIterator> last = made->attributeIterator(attr.id());
    return made->attributeIterator_iterKey(last);
}

TEST_P(Walk, EachCollectionIsWrittenReadIteratedAndEmptied) {
    const Ptr<GenericIf> made = instance();
    for (const VelAttr* attr : attributesOf(type())) {
        if (!attr->flags().has(Flags::collection)) continue;
        SCOPED_TRACE(std::string(attr->name()));
        const auto count = [&made, attr] {
            const Ptr<GenericIf> result = Builtin<U32>::genericIf(0);
            made->attributeOp({attr->id(), Op::count}, nullptr, result);
            return Any(result).as<U32>();
        };
        const auto has = [&made, attr](const Ptr<GenericIf>& key) {
            const Ptr<GenericIf> result = Builtin<bool>::genericIf(false);
            made->attributeOp({attr->id(), Op::has}, key, result);
            return Any(result).as<bool>();
        };
        made->attributeOp({attr->id(), Op::delAll}, nullptr, nullptr);
        EXPECT_EQ(count(), 0u);
        EXPECT_FALSE(made->attributeIterator_nonNull(made->attributeIterator(attr->id())));

        const Ptr<GenericIf> key = insertOne(made, *attr);
        EXPECT_EQ(count(), 1u);
        EXPECT_TRUE(has(key));
        const Ptr<GenericIf::List> keys = new GenericIf::List;
        made->attributeOp({attr->id(), Op::keys}, nullptr, keys);
        EXPECT_EQ(keys->strRep(), "[" + key->strRep() + "]");
        const Ptr<GenericIf> value = attr->type()->newGenericIf();
        made->attributeOp({attr->id(), Op::read}, key, value);
        if (attr->keyAttr() == nullptr)
            made->attributeOp({attr->id(), Op::set, value.ptr()}, key, nullptr);
        EXPECT_EQ(count(), 1u) << "overwritten";

        const Ptr<AttributeIterator> at = made->attributeIterator(attr->id());
        ASSERT_TRUE(made->attributeIterator_nonNull(at));
        EXPECT_EQ(made->attributeIterator_iterKey(at)->strRep(), key->strRep());
        EXPECT_EQ(made->attributeIterator_iterObj(at)->strRep(), value->strRep());
        const Ptr<AttributeIterator> clone = made->attributeIterator_iterClone(at);
        made->attributeIterator_iterInc(at);
        EXPECT_FALSE(made->attributeIterator_nonNull(at));
        ASSERT_TRUE(made->attributeIterator_nonNull(clone));
        made->attributeIterator_iterDel(clone);
        EXPECT_FALSE(made->attributeIterator_nonNull(clone));
        EXPECT_EQ(count(), 0u);

        (void)insertOne(made, *attr);
        made->attributeOp({attr->id(), Op::del}, key, nullptr);
        EXPECT_FALSE(has(key));
        (void)insertOne(made, *attr);
        made->attributeOp({attr->id(), Op::read}, key, value);
        const Ptr<GenericIf> removed = attr->type()->newGenericIf();
        const String8 nothing = removed->strRep();
        made->attributeOp({attr->id(), Op::del}, key, removed);
        EXPECT_EQ(removed->strRep(), value->strRep());
        EXPECT_NE(removed->strRep(), nothing);
        EXPECT_FALSE(has(key));
        made->attributeOp({attr->id(), Op::del}, key, removed);
        EXPECT_EQ(removed->strRep(), nothing);
        EXPECT_EQ(refusal(made, {attr->id(), Op::read}, nullptr, value).substr(0, 9), "argument ");
        EXPECT_EQ(refusal(made, {attr->id(), 99}, key, value),
                  "attribute " + std::string(attr->name()) + " does not support operation 99");
    }
}

TEST_P(Walk, OnlyCollectionsAreIterated) {
    const Ptr<GenericIf> made = instance();
    for (const VelAttr* attr : attributesOf(type()))
        if (!attr->flags().has(Flags::collection)) {
            EXPECT_THROW((void)made->attributeIterator(attr->id()), ReflectionException)
                << attr->name();
        }
}

TEST_P(Walk, ComparesWithItsLikeAlone) {
    const Ptr<GenericIf> made = instance();
    const auto compare = [&made](const Ptr<GenericIf>& other) {
        const Ptr<GenericIf> result = Builtin<bool>::genericIf(false);
        made->attributeOp({0, Op::compare, other.ptr()}, nullptr, result);
        return Any(result).as<bool>();
    };
    EXPECT_TRUE(compare(made));
    EXPECT_TRUE(compare(made->clone()));
    EXPECT_EQ(refusal(made, {0, Op::compare, Builtin<int>::genericIf(1).ptr()}, nullptr,
                      Builtin<bool>::genericIf(false)),
              "argument velOpArg is missing or of another type");
    EXPECT_EQ(refusal(made, {0, Op::compare}, nullptr, Builtin<bool>::genericIf(false)),
              "argument velOpArg is missing or of another type");
    EXPECT_EQ(refusal(made, {0, Op::compare, made.ptr()}, nullptr, nullptr),
              "argument result is missing or of another type");
}

TEST_P(Walk, PrintsAndParses) {
    const Ptr<GenericIf> made = instance();
    const String8 text = made->strRep();
    EXPECT_FALSE(text.empty());
    if (!type().isValue() && !type().isEnumType()) {
        EXPECT_EQ(text.view().substr(0, 5 + type().qualifiedName().size()),
                  "Ptr('" + std::string(type().qualifiedName()));
        return;
    }
    // The bytes of a mask print as None and cannot be read: texts_test.cpp.
    if (text.view().find("None") != std::string_view::npos) return;
    EXPECT_EQ(type().genericIf(text, false)->strRep(), text);
    try {
        (void)type().genericIf(text + "!", false);
        ADD_FAILURE() << "junk was read behind " << text.charPtr();
    } catch (const RangeException& refused) {
        EXPECT_EQ(refused.text(), "junk at column " +
                                      String8(std::to_string(text.length()).c_str()) +
                                      " deserializing " + text + "!");
    }
}

TEST_P(Walk, AnUnknownAttributeIsRefused) {
    const Ptr<GenericIf> made = instance();
    for (const AttributeId id : {98U, 99U, 1000U, 0xffffffffU})
        EXPECT_EQ(refusal(made, {id, Op::read}, nullptr, nullptr),
                  std::string(type().qualifiedName()) + " has no attribute " + std::to_string(id));
}

std::vector<const VelType*> allTypes() {
    velInitBrixoTypes();
    const auto types = IntrospectionReactor::global()->types();
    return {types.begin(), types.end()};
}

INSTANTIATE_TEST_SUITE_P(Types, Walk, testing::ValuesIn(allTypes()),
                         [](const auto& test) { return std::string(test.param->name()); });

} // namespace
} // namespace Vel

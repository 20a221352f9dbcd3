// Once loading is over, threads look at what is registered side by side, though counts are plain
// words.
#include <Brixo/BrixoTypesModule.h>
#include <Vel/Any.h>
#include <Vel/IntrospectionReactor.h>
#include <Vel/RangeException.h>
#include <Vel/ReflectionException.h>
#include <Vel/VFPtrInterface.h>
#include <atomic>
#include <gtest/gtest.h>
#include <string>
#include <thread>
#include <vector>

namespace Vel {
namespace {

constexpr unsigned threads = 4;

// Calls work(number of the thread) in all threads at once.
template <class Work>
void inThreads(Work work) {
    std::atomic<unsigned> ready = 0;
    std::vector<std::thread> all;
    for (unsigned number = 0; number < threads; ++number)
        all.emplace_back([&, number] {
            ++ready;
            while (ready != threads) std::this_thread::yield();
            work(number);
        });
    for (std::thread& thread : all) thread.join();
}

template <class Call>
bool isRefused(Call call) {
    try {
        call();
        return false;
    } catch (const Exception& refused) {
        return !refused.text().empty();
    }
}

// Everything that reads the registry, found or not. Gives the number of surprises.
unsigned readEverything(const VelType& type) {
    unsigned wrong = 0;
    const Name name = type.qualifiedName();
    if (&Any::type(name) != &type) ++wrong;
    if (VelType::typeNode(name) != &type) ++wrong;
    if (IntrospectionReactor::global()->types().empty()) ++wrong;
    if (!isRefused([] { (void)Any::type("Brixo::DeviseId"); })) ++wrong;
    for (const VelAttr* const attr : type.attrs()) {
        if (type.attr(attr->name()) != attr || type.attr(attr->id()) == nullptr) ++wrong;
        if (attr->type() != nullptr && &Any::type(attr->type()->qualifiedName()) != attr->type())
            ++wrong;
    }
    if (!type.isValue() && !type.isEnumType()) return wrong;
    Any value(type.newGenericIf());
    value.forEachAttribute([&](const VelAttr& attr) {
        if (value.adapter()->attributeId(String8(attr.name())) != attr.id()) ++wrong;
    });
    const String8 text = value.text();
    try {
        if (Any::parse(name, text).text() != text) ++wrong;
    } catch (const RangeException& refused) {
        if (refused.text().view().find("its collection") == std::string_view::npos) ++wrong;
    }
    if (!isRefused([&] { (void)value.get("valeu"); })) ++wrong;
    if (!isRefused([&] { value.set("hash", 1); })) ++wrong;
    if (!isRefused([&] { (void)Any::parse(name, "!"); })) ++wrong;
    if (!isRefused([&] { (void)Any::make(name, {{"nothing", 1}}); })) ++wrong;
    return wrong;
}

TEST(Threads, ReadTheRegistrySideBySide) {
    velInitBrixoTypes();
    ASSERT_FALSE(VFPtrInterface::enableThreadSafePointers);
    const Ptr<IntrospectionReactor> registrar = IntrospectionReactor::global();
    const auto types = registrar->types();
    std::vector<U32> before;
    for (const VelType* const type : types) before.push_back(type->references());
    const U32 references = registrar->references();
    std::atomic<unsigned> wrong = 0;
    inThreads([&](unsigned) {
        for (int round = 0; round < 10; ++round)
            for (const VelType* const type : types) wrong += readEverything(*type);
    });
    EXPECT_EQ(wrong, 0u);
    EXPECT_EQ(registrar->references(), references);
    for (std::size_t i = 0; i < types.size(); ++i)
        EXPECT_EQ(types[i]->references(), before[i]) << types[i]->qualifiedName();
}

// Nothing but look-ups that fail: what they count, many threads soon miscount.
TEST(Threads, LookUpsThatFailCountNothing) {
    velInitBrixoTypes();
    const Ptr<IntrospectionReactor> registrar = IntrospectionReactor::global();
    const U32 references = registrar->references();
    std::atomic<unsigned> refused = 0;
    inThreads([&](unsigned) {
        for (int round = 0; round < 500; ++round) {
            (void)IntrospectionReactor::global()->types();
            if (isRefused([] { (void)Any::type("Brixo"); })) ++refused;
        }
    });
    EXPECT_EQ(refused, threads * 500);
    EXPECT_EQ(registrar->references(), references);
}

} // namespace
} // namespace Vel

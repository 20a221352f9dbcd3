// A program that links the framework alone loads the types' library at run time.
#include <Vel/IntrospectionReactor.h>
#include <Vel/TypeSection.h>
#include <Vel/VelType.h>

#include "library_types.h"
#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace {

using Vel::IntrospectionReactor;
using Vel::VelType;

void* load() {
    void* const library = dlopen(LIBRARY, RTLD_NOW | RTLD_LOCAL);
    if (library == nullptr) std::fprintf(stderr, "%s\n", dlerror());
    return library;
}

void call(void* library, const char* routine) {
    using Routine = void (*)();
    void* const address = dlsym(library, routine);
    if (address == nullptr) std::fprintf(stderr, "%s is not there\n", routine);
    reinterpret_cast<Routine>(address)();
}

std::size_t registered() { return IntrospectionReactor::global()->types().size(); }

std::size_t attributes(const char* type) { return VelType::typeNode(type)->attrs().size(); }

// A library is loaded once a process, so each test looks at it in a child and says there what it
// found.
#define EXPECT_IN_CHILD(found, text)                                                               \
    EXPECT_EXIT(                                                                                   \
        {                                                                                          \
            std::fprintf(stderr, "%s", std::string(found).c_str());                                \
            std::exit(0);                                                                          \
        },                                                                                         \
        testing::ExitedWithCode(0), testing::Eq(text))

std::string afterLoading() {
    const std::size_t before = registered();
    load();
    return std::to_string(before) + " " + std::to_string(registered()) + " " +
           std::to_string(attributes("Brixo::CacheTable")) + " " +
           std::to_string(attributes("Orn::U64Bitmask"));
}

TEST(Registrar, LoadingRegistersEveryTypeOfTheLibrary) {
    EXPECT_IN_CHILD(afterLoading(), "0 " + std::to_string(registeredTypes().size()) + " 17 4");
}

std::string inactiveThenActive() {
    IntrospectionReactor::global()->activeIs(false);
    void* const library = load();
    call(library, "velInitBrixoTypes");
    std::string found = std::to_string(registered());
    found += VelType::typeNode("Brixo::DeviceId") != nullptr ? " known" : " unknown";
    found += " " + std::to_string(attributes("Brixo::DeviceId"));
    IntrospectionReactor::global()->activeIs(true);
    for (const char* routine : {"velInitU64Bitmask", "velInitBrixoTypes", "velInitBrixoCacheTable"})
        for (int times = 0; times < 2; ++times) {
            call(library, routine);
            found += " " + std::to_string(registered());
        }
    return found + " " + std::to_string(attributes("Brixo::DeviceId"));
}

TEST(Registrar, AnInactiveRegistrarTakesNothingAndTheRoutinesStayCallable) {
    // The mask types stand between those of the main module and those of the tables.
    const auto types = registeredTypes();
    const auto isMask = [](const std::string& type) { return nameSpaceOf(type) == "Orn"; };
    const auto tables = types.end() - std::find_if(types.rbegin(), types.rend(), isMask).base();
    const auto count = static_cast<std::ptrdiff_t>(types.size());
    const std::string masks =
        " " + std::to_string(std::count_if(types.begin(), types.end(), isMask));
    const std::string all = " " + std::to_string(count);
    const std::string withoutTables = " " + std::to_string(count - tables);
    EXPECT_IN_CHILD(inactiveThenActive(),
                    "0 known 0" + masks + masks + withoutTables + withoutTables + all + all + " 2");
}

std::string switchedOffOutside() {
    setenv("VEL_INTROSPECTION", "off", 1);
    load();
    return std::to_string(registered());
}

TEST(Registrar, TheEnvironmentSwitchesItOffForAWholeProgram) {
    EXPECT_IN_CHILD(switchedOffOutside(), "0");
}

std::string wholeRegistration() {
    IntrospectionReactor::global()->activeIs(false);
    void* const library = load();
    IntrospectionReactor::global()->activeIs(true);
    for (const char* routine : {"velInitBrixoTypes", "velInitU64Bitmask", "velInitBrixoCacheTable"})
        call(library, routine);
    std::string names;
    for (const VelType* type : IntrospectionReactor::global()->types())
        names += std::string(type->name()) + " ";
    return names.substr(0, names.find(' ', names.find(' ') + 1));
}

TEST(Registrar, TypesAreRegisteredInTheOrderOfTheirModule) {
    EXPECT_IN_CHILD(wholeRegistration(), "PhysicalAddr DeviceId");
}

// The linker was told to drop what nothing refers to and, by GCC, to optimise all of it together.
TEST(Registrar, TheSectionIsKeptInOrderWhenTheLinkerTrims) {
    std::string names;
    for (const Vel::String8& name : Vel::typeSectionOfFile(TRIMMED_LIBRARY))
        names += std::string(name.view()) + " ";
    EXPECT_EQ(names, "Net::Table Net::Route Net::Endpoint Net::LowPort Net::Port Net::Protocol "
                     "Bus::Speed Bus::Width ");
}

} // namespace

// EveryType.h - the types of all modules, for what holds for each of them: fuzzers, golden vectors,
// suites. Not installed.
//
// The lists come from the headers that gather a folder each: one that forgets a type's header does
// not compile here.
#pragma once

#include <Brixo/Brixo.h>
#include <Orn/Orn.h>
#include <Vel/PtrInterface.h>
#include <Vel/TypeList.h>
#include <Vel/value/TypeOf.h>
#include <string>
#include <type_traits>
#include <vector>

namespace Brixo::Testing {

// In the order of registration: module by module as they are loaded.
using EveryType = Vel::JoinedTypes<BrixoTypes, Orn::BitmaskTypes, CacheTableTypes>;

// Whether a type is a value or an enumeration, which have a text and a record in the log; the
// others are entities.
template <class T>
struct IsValue : std::negation<std::is_base_of<Vel::PtrInterface, T>> {};

using EveryValue = Vel::TypesThat<IsValue, EveryType>;

// The qualified names of a list.
template <class List>
std::vector<std::string> namesOf() {
    std::vector<std::string> names;
    List::forEach([&names]<class T>() { names.emplace_back(Vel::qualifiedNameOf<T>()); });
    return names;
}

} // namespace Brixo::Testing

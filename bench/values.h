// values.h - the same 64 values for every benchmark of a facet: ours, and as messages of the peer.
// Not installed.
//
// Numbers have 1 to 20 digits, so that neither side learns a length by heart. Fixed seed.
#pragma once

#include <Brixo/CacheTableIndex.h>
#include <Brixo/LogicalResourceId.h>
#include <Brixo/ResourceType.h>
#include <Vel/Integers.h>
#include <array>
#include <cstddef>
#include <random>
#include <vector>
#if BRIXO_HAVE_PROTOBUF
    #include "values.pb.h"
#endif

namespace Bench {

constexpr std::size_t valueCount = 64;

inline std::vector<Vel::U64> numbers() {
    std::mt19937_64 random(11);
    std::vector<Vel::U64> all(valueCount);
    for (Vel::U64& number : all) {
        const Vel::U64 bits = random();
        number = bits >> (random() % 64);
    }
    return all;
}

inline Brixo::ResourceType typeOf(Vel::U64 number) {
    return number % 2 == 0 ? Brixo::ResourceType::tableResource
                           : Brixo::ResourceType::registerResource;
}

template <class T>
T make(Vel::U64 number);

template <>
inline Brixo::LogicalResourceId make(Vel::U64 number) {
    return {typeOf(number), number};
}

template <>
inline Brixo::CacheTableIndex make(Vel::U64 number) {
    return {Brixo::DeviceId(static_cast<Vel::U16>(number)),
            Brixo::PhysicalResourceId(typeOf(number), number)};
}

#if BRIXO_HAVE_PROTOBUF
inline peer::ResourceType peerTypeOf(Vel::U64 number) {
    return static_cast<peer::ResourceType>(typeOf(number));
}

template <>
inline peer::LogicalResourceId make(Vel::U64 number) {
    peer::LogicalResourceId message;
    message.set_type(peerTypeOf(number));
    message.set_id(number);
    return message;
}

template <>
inline peer::CacheTableIndex make(Vel::U64 number) {
    peer::CacheTableIndex message;
    message.set_dev_id(number & 0xffff);
    message.mutable_resource_id()->set_type(peerTypeOf(number));
    message.mutable_resource_id()->set_id(number);
    return message;
}
#endif

template <class T>
std::vector<T> values() {
    std::vector<T> all;
    for (const Vel::U64 number : numbers()) all.push_back(make<T>(number));
    return all;
}

} // namespace Bench

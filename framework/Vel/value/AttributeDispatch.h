// AttributeDispatch.h - from an attribute's id to what it does: one look into a table made at compile time.
#pragma once

#include <Vel/AttributeId.h>
#include <Vel/AttributeIterator.h>
#include <Vel/Integers.h>
#include <Vel/value/CollectionIterator.h>
#include <Vel/value/RunAttribute.h>
#include <algorithm>
#include <array>
#include <cstddef>
#include <utility>

namespace Vel::detail {

template <class T>
class AttributeDispatch {
public:
    struct Entry {
        void (*run)(T&, const AttributeOp&, const GenericIf* index, const Ptr<GenericIf>& result);
        Ptr<AttributeIterator> (*iterate)(const Ptr<GenericIf>& owner, T&); // null: no collection
    };

    // Null for an id that no attribute has.
    static const Entry* find(AttributeId id) noexcept {
        const std::size_t place = id < places.size() ? places[id] : 0;
        return place != 0 ? &entries[place - 1] : nullptr;
    }

private:
    static constexpr std::size_t count = attributeCountOf<T>;

    template <std::size_t index>
    static constexpr Entry entry() {
        Entry result{&runAttribute<T, index>, nullptr};
        if constexpr (CollectionAttribute<T, index>)
            result.iterate = &CollectionIterator<T, index>::make;
        return result;
    }

    template <std::size_t... index>
    static constexpr std::array<Entry, sizeof...(index)> makeEntries(
        std::index_sequence<index...>) {
        return {entry<index>()...};
    }

    static constexpr AttributeId lastId() {
        return std::apply([](const auto&... attribute) { return std::max({attribute.id...}); },
                          schemaOf<T>.attributes);
    }

    template <std::size_t size>
    static constexpr std::array<U8, size> makePlaces() {
        std::array<U8, size> result{};
        std::apply(
            [&result](const auto&... attribute) {
                U8 place = 0;
                ((result[attribute.id] = ++place), ...);
            },
            schemaOf<T>.attributes);
        return result;
    }

    static constexpr auto entries = makeEntries(std::make_index_sequence<count>());
    static constexpr auto places = makePlaces<lastId() + 1>(); // behind the entry's, 0 for none
};

} // namespace Vel::detail

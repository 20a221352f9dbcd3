// AttributeDispatch.h - from an attribute's id to what it does: one look into a table made at
// compile time.
//
// Test: GenericIf_test.cpp.
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
        const AttributeId place = id - firstId; // modulo 2^32
        if (place >= entries.size()) return nullptr;
        const Entry* const entry = &entries[place];
        return entry->run != nullptr ? entry : nullptr;
    }

private:
    template <std::size_t index>
    static constexpr Entry entry() {
        Entry result{&runAttribute<T, index>, nullptr};
        if constexpr (CollectionAttribute<T, index>)
            result.iterate = &CollectionIterator<T, index>::make;
        return result;
    }

    static constexpr auto allIds = [] {
        std::array<AttributeId, attributeCountOf<T>> ids{};
        std::size_t count = 0;
        forEachAttribute<T>([&](const auto& attribute) { ids[count++] = attribute.id; });
        return ids;
    }();
    static constexpr AttributeId firstId = std::ranges::min(allIds);
    static constexpr AttributeId lastId = std::ranges::max(allIds);
    static_assert(lastId - firstId < 1024, "ids lie close together");

    template <std::size_t... index>
    static constexpr auto makeEntries(std::index_sequence<index...>) {
        std::array<Entry, lastId - firstId + 1> result{};
        ((result[attributeAt<T, index>.id - firstId] = entry<index>()), ...);
        return result;
    }

    // By id, from the first one on; empty between.
    static constexpr auto entries = makeEntries(std::make_index_sequence<attributeCountOf<T>>());
};

} // namespace Vel::detail

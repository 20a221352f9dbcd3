// HashMapVTable.h - adapts one kind of entry to the generic map: how it hashes, compares and links.
//
// Slots:     hash, keyEquals, keyLessThan, setNext, in this order from the first slot of the
//            virtual table; then keyRank, which need not be overridden.
// Instances: one for each pair of entry and key type, constant, never destroyed.
// Threads:   holds no state; any thread may call it.
// Cost:      HashMap, which knows the types, comes here only for the order of equal hashes, and to
//            audit.
// ABI:       the slots and their order.
// Test: HashMapGeneric_test.cpp.
#pragma once

#include <Vel/Export.h>
#include <Vel/Integers.h>
#include <Vel/KeyHash.h>
#include <Vel/MapLink.h>

namespace Vel {

// The entries passed in are of the instance's entry type, the keys of its key type.
class VEL_API HashMapVTableGeneric {
public:
    // The hash of the entry's key: its fold, bit-reversed.
    virtual U32 hash(const PtrInterface* entry) const = 0;
    virtual bool keyEquals(const void* key, const PtrInterface* entry) const = 0;
    // Whether the key of `b`, or *key where `b` is null, orders before the key of `a`.
    virtual bool keyLessThan(const void* key, const PtrInterface* a,
                             const PtrInterface* b) const = 0;
    // Writes the entry's chain link; counts references as Ptr::ptrAssign does.
    virtual void setNext(PtrInterface* entry, PtrInterface* next) const = 0;

    // Whether keys of one hash have ranks: numbers that differ where the keys do, and ascend with
    // them. Sets `rank` to that of the key of `entry`, or of *key where `entry` is null.
    virtual bool keyRank(const void*, const PtrInterface*, U32&) const { return false; }

protected:
    constexpr HashMapVTableGeneric() = default;
    ~HashMapVTableGeneric() = default;
};

template <class Entry, class Key>
class HashMapVTable final : public HashMapVTableGeneric {
public:
    static const HashMapVTable& instance() noexcept { return instance_; }

    U32 hash(const PtrInterface* entry) const override { return keyHash<Key>(keyOf(entry)); }

    bool keyEquals(const void* key, const PtrInterface* entry) const override {
        return *static_cast<const Key*>(key) == keyOf(entry);
    }

    bool keyLessThan(const void* key, const PtrInterface* a, const PtrInterface* b) const override {
        return b != nullptr ? keyOf(b) < keyOf(a) : *static_cast<const Key*>(key) < keyOf(a);
    }

    void setNext(PtrInterface* entry, PtrInterface* next) const override {
        static_cast<Entry*>(entry)->fwkNextIs(static_cast<Entry*>(next));
    }

    bool keyRank([[maybe_unused]] const void* key, [[maybe_unused]] const PtrInterface* entry,
                 [[maybe_unused]] U32& rank) const override {
        if constexpr (hasKeyRank<Key>) {
            const Key* const asked = static_cast<const Key*>(key);
            rank = Vel::keyRank<Key>(entry != nullptr ? keyOf(entry) : *asked);
        }
        return hasKeyRank<Key>;
    }

private:
    constexpr HashMapVTable() = default;

    static decltype(auto) keyOf(const PtrInterface* entry) {
        return static_cast<const Entry*>(entry)->fwkKey();
    }

    static const HashMapVTable instance_;
};

template <class Entry, class Key>
constinit const HashMapVTable<Entry, Key> HashMapVTable<Entry, Key>::instance_{};

} // namespace Vel

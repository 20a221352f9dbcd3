// PtrInterface.h - base of every object that counts its own references.
//
// Layout:   the first word after the virtual-table pointer holds the count and two flags:
//             bit 31 0x80000000  marked for deletion
//             bit 29 0x20000000  notification active
//             the other bits     count of references, that is the word AND 0x5fffffff
// Lifetime: born with count 0; the first Ptr makes it 1. When the count falls to 0, handleZeroRef()
//           runs: it tells whoever must know and deletes the object. An object that never had a
//           reference is never deleted.
// Copying:  copies what a subclass holds, never the count or the flags: the copy is born with
//           count 0.
// Memory:   operator new takes from per-thread lists by size class; see VFPtrInterface.h.
// Threads:  counts and flags change by plain stores, or by atomic read-modify-writes with full
//           ordering while VFPtrInterface::enableThreadSafePointers is set.
#pragma once

#include <Vel/Export.h>
#include <Vel/Integers.h>
#include <Vel/VFPtrInterface.h>
#include <atomic>
#include <concepts>
#include <cstddef>
#include <type_traits>

namespace Vel {

class VelType;

class VEL_API PtrInterface : public VFPtrInterface {
public:
    class NotifieeConst; // NotifieeConst.h

    static constexpr U32 referencesMask = 0x5fffffffU;
    static constexpr U32 notificationActiveFlag = 0x20000000U;
    static constexpr U32 markedForDeletionFlag = 0x80000000U;

    PtrInterface() noexcept = default;

    PtrInterface(const PtrInterface&) noexcept : VFPtrInterface() {}

    PtrInterface& operator=(const PtrInterface&) noexcept { return *this; }

    ~PtrInterface() override = default;

    // The descriptor of the object's class. Lives as long as the process.
    virtual VelType* fwkType() const;
    static VelType* _fwkType();

    // How many references there are now; under enableThreadSafePointers a value of the past when
    // you look at it.
    U32 references() const noexcept {
        return word().load(std::memory_order_relaxed) & referencesMask;
    }

    void referencesInc() const noexcept;
    // Calls handleZeroRef() when the count reaches 0; the object is usually gone then.
    void referencesDec() const;
    // Takes a reference that nobody will ever drop; the leak tracker is told when it is on.
    void referencesLeak() const;

    bool hasNotificationActive() const noexcept { return flag(notificationActiveFlag); }

    virtual void hasNotificationActiveIs(bool active);

    bool velMarkedForDeletion() const noexcept { return flag(markedForDeletionFlag); }

    void velMarkedForDeletionIs(bool marked) noexcept { flagIs(markedForDeletionFlag, marked); }

    // How many broken invariants the object can see in itself; `level` says how hard to look (0:
    // cheap checks only).
    virtual unsigned auditErrors(unsigned level) const;
    virtual unsigned velAuditErrors(unsigned level) const;

    // The count has reached 0: tells the notifiees through zeroReferencesIs(true), then deletes the
    // object, unless a notifiee took a new reference meanwhile.
    virtual void handleZeroRef();
    // Hook for classes that are notifiers: told with true, just before the object is deleted.
    virtual void zeroReferencesIs(bool zero);

protected:
    bool flag(U32 bit) const noexcept {
        return (word().load(std::memory_order_relaxed) & bit) != 0;
    }

    void flagIs(U32 bit, bool value) noexcept;

private:
    template <std::derived_from<PtrInterface> T>
    friend void referencesDec(const T& object);

    // Counts one down; whether that was the last.
    [[gnu::always_inline]] bool isLastDec() const noexcept {
        U32 left = 0;
        if (enableThreadSafePointers) [[unlikely]]
            left = word().fetch_sub(1) - 1;
        else
            left = --word_;
        return (left & referencesMask) == 0;
    }

    std::atomic_ref<U32> word() const noexcept { return std::atomic_ref<U32>(word_); }

    mutable U32 word_ = 0;
};

inline void PtrInterface::referencesInc() const noexcept {
    if (enableThreadSafePointers) [[unlikely]]
        word().fetch_add(1);
    else
        ++word_;
}

inline void PtrInterface::referencesDec() const {
    if (isLastDec()) const_cast<PtrInterface*>(this)->handleZeroRef();
}

namespace detail {

template <class T>
concept EndsAsEveryObject = requires {
    { &T::handleZeroRef } -> std::same_as<void (PtrInterface::*)()>;
};

template <class T>
concept EndsAsItsBase = requires {
    { &T::handleZeroRef } -> std::same_as<void (T::PlainEnd::*)()>;
};

// A T that is simply deleted when its last reference goes: its handleZeroRef() is PtrInterface's
// own, or that of a base that is named T::PlainEnd to say so. The call through the virtual table
// can be spared.
template <class T>
concept HasPlainEnd = EndsAsEveryObject<T> || EndsAsItsBase<T>;

// An object of this class is no object of a class derived from it, and its end is told to nobody.
template <class T>
concept EndsPlainly = std::is_final_v<T> && std::destructible<T> && HasPlainEnd<T> && requires {
    { &T::zeroReferencesIs } -> std::same_as<void (PtrInterface::*)(bool)>;
};

} // namespace detail

// object.referencesDec(), by one who knows the object's class: where nobody can be told of its end,
// the object is deleted without a virtual call.
template <std::derived_from<PtrInterface> T>
[[gnu::always_inline]] inline void referencesDec(const T& object) {
    if constexpr (detail::EndsPlainly<T>) {
        if (object.isLastDec()) delete &object;
    } else {
        object.PtrInterface::referencesDec();
    }
}

} // namespace Vel

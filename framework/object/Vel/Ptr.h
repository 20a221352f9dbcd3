// Ptr.h - owning pointer to an object that counts its own references.
//
// Owns:      one reference to its target, or nothing. One machine word.
// Invariant: each non-null Ptr accounts for exactly one count of its target.
// Assign:    takes the new reference before dropping the old one, so assigning through an alias is
//            safe.
// Cost:      copy is one increment; destruction one decrement, plus the target's destructor if it
//            was the last. A move touches no count.
// Threads:   one Ptr belongs to one thread. The target's count may be shared between threads only
//            while VFPtrInterface::enableThreadSafePointers is set; set it before the first object
//            is shared.
// Cycles:    are never collected. A notifiee owns its notifier; the notifier lists its notifiees
//            raw.
#pragma once

#include <compare>
#include <concepts>
#include <cstddef>
#include <string_view> // std::hash
#include <utility>

namespace Vel {

template <class T>
class Ptr {
public:
    using element_type = T;

    constexpr Ptr() noexcept = default;

    constexpr Ptr(std::nullptr_t) noexcept {}

    Ptr(T* target) noexcept : target_(target) { inc(); }

    Ptr(const Ptr& other) noexcept : target_(other.target_) { inc(); }

    Ptr(Ptr&& other) noexcept : target_(std::exchange(other.target_, nullptr)) {}

    template <class U>
        requires std::convertible_to<U*, T*> Ptr(const Ptr<U>& other)
    noexcept : target_(other.ptr()) { inc(); }

    template <class U>
        requires std::convertible_to<U*, T*> Ptr(Ptr<U>&& other)
    noexcept : target_(other.release()) {}

    ~Ptr() {
        if (target_ != nullptr) dec(target_);
    }

    Ptr& operator=(const Ptr& other) {
        ptrAssign(other.target_);
        return *this;
    }

    Ptr& operator=(Ptr&& other) noexcept {
        Ptr moved(std::move(other));
        swap(moved);
        return *this;
    }

    Ptr& operator=(T* target) {
        ptrAssign(target);
        return *this;
    }

    // Assigning what is already held does nothing. Otherwise: count up the new, store it, count
    // down the old.
    void ptrAssign(T* target) {
        if (target == target_) return;
        if (target != nullptr) target->referencesInc();
        T* old = std::exchange(target_, target);
        if (old != nullptr) dec(old);
    }

    // The raw object; the Ptr keeps its reference.
    constexpr T* ptr() const noexcept { return target_; }

    constexpr T* operator->() const noexcept { return target_; }

    constexpr T& operator*() const noexcept { return *target_; }

    constexpr explicit operator bool() const noexcept { return target_ != nullptr; }

    // Gives up the reference without counting down: the caller accounts for it from now on.
    [[nodiscard]] T* release() noexcept { return std::exchange(target_, nullptr); }

    void swap(Ptr& other) noexcept { std::swap(target_, other.target_); }

    template <class U>
    constexpr bool operator==(const Ptr<U>& other) const noexcept {
        return target_ == other.ptr();
    }

    constexpr bool operator==(const T* other) const noexcept { return target_ == other; }

    constexpr bool operator==(std::nullptr_t) const noexcept { return target_ == nullptr; }

    // By address: for ordered containers, without meaning otherwise.
    constexpr std::strong_ordering operator<=>(const Ptr& other) const noexcept {
        return std::compare_three_way{}(target_, other.target_);
    }

private:
    void inc() const noexcept {
        if (target_ != nullptr) target_->referencesInc();
    }

    // A class that knows a shorter way for those who know it brings referencesDec(const T&).
    static void dec(T* target) {
        if constexpr (requires { referencesDec(*target); })
            referencesDec(*target);
        else
            target->referencesDec();
    }

    T* target_ = nullptr;
};

static_assert(sizeof(Ptr<int>) == sizeof(void*));

} // namespace Vel

template <class T>
struct std::hash<Vel::Ptr<T>> {
    std::size_t operator()(const Vel::Ptr<T>& ptr) const noexcept {
        return std::hash<T*>{}(ptr.ptr());
    }
};

// BaseRefCollection.h - objects in the order in which they were added, each held by one reference.
//
// Owns:    one reference to each member; deleting an iterator's position releases it.
// Cost:    append O(1) amortised; deletion O(members behind it).
// Threads: one at a time.
#pragma once

#include <Vel/BaseCollection.h>
#include <Vel/Integers.h>
#include <Vel/Ptr.h>
#include <Vel/valueToStrepOfRawPtr.h>
#include <cstddef>
#include <memory>
#include <typeinfo>
#include <utility>
#include <vector>

namespace Vel {

template <class T>
class BaseRefCollection : public BaseCollection {
public:
    class Iterator;

    U32 members() const override { return static_cast<U32>(members_.size()); }

    // Appends; the same object may be a member more than once.
    void memberIs(Ptr<T> member) { members_.push_back(std::move(member)); }

    // Removes the member on which the iterator stands, which then stands on the one behind.
    void del(const Iterator& it) {
        const Ptr<T> released = *it; // what goes with it may look at the collection
        members_.erase(members_.begin() + static_cast<std::ptrdiff_t>(it.at_));
    }

    void deleteAll() { const auto released = std::exchange(members_, {}); }

    Iterator iterator() const noexcept { return Iterator(*this); }

    auto begin() const noexcept { return members_.begin(); }

    auto end() const noexcept { return members_.end(); }

    std::unique_ptr<StrepIterator> strepIterator() const override;

private:
    std::vector<Ptr<T>> members_;
};

// Positions, not members: it stays valid whatever is added or deleted.
template <class T>
class BaseRefCollection<T>::Iterator {
public:
    explicit Iterator(const BaseRefCollection& collection) noexcept : collection_(&collection) {}

    explicit operator bool() const noexcept { return at_ < collection_->members(); }

    const Ptr<T>& operator*() const noexcept { return collection_->members_[at_]; }

    T* operator->() const noexcept { return (**this).ptr(); }

    Iterator& operator++() noexcept {
        ++at_;
        return *this;
    }

private:
    friend class BaseRefCollection;

    const BaseRefCollection* collection_;
    U32 at_ = 0;
};

template <class T>
std::unique_ptr<BaseCollection::StrepIterator> BaseRefCollection<T>::strepIterator() const {
    class Texts final : public StrepIterator {
    public:
        explicit Texts(Iterator it) noexcept : it_(it) {}

        bool isValid() const override { return static_cast<bool>(it_); }

        String8 strep() const override { return valueToStrepOfRawPtr((*it_).ptr(), typeid(T)); }

        void advance() override { ++it_; }

    private:
        Iterator it_;
    };

    return std::make_unique<Texts>(iterator());
}

} // namespace Vel

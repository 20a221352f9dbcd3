// ListRaw.h - objects that listen to one notifier, in the order in which they registered.
//
// Owns:    nothing but its array; it lists raw pointers. Who is in the list takes itself out before
//          it dies.
// Pass:    a walk over the list as it stood when the walk began: who is removed meanwhile is still
//          visited, who is added is not. The array is copied only if the list changes during a pass
//          (copy on write), so a pass costs one count pair. Who is removed during a pass is kept
//          alive by the outermost running pass, until that ends; one that nobody counts (on the
//          stack, say) calls forget() when it dies.
// Cost:    empty() one load; push() O(1) amortised; del() O(members). An empty list that was never
//          used has no memory.
// Threads: one at a time.
#pragma once

#include <Vel/Assert.h>
#include <Vel/Integers.h>
#include <Vel/Ptr.h>
#include <algorithm>
#include <cstddef>
#include <utility>
#include <vector>

namespace Vel {

template <class T>
class ListRaw {
    struct Array {
        U32 holders = 1; // the list, and each pass over this state of it
        std::vector<T*> members;
    };

public:
    class Iterator;
    class ConstIterator;
    class Pass;

    ListRaw() noexcept = default;
    ListRaw(const ListRaw&) = delete;
    ListRaw& operator=(const ListRaw&) = delete;

    ~ListRaw() {
        VEL_ASSERT(pass_ == nullptr);
        delete array_;
    }

    bool empty() const noexcept { return size_ == 0; }

    U32 size() const noexcept { return size_; }

    bool isInPass() const noexcept { return pass_ != nullptr; }

    // Complexity: O(members).
    bool has(const T* member) const noexcept {
        return array_ != nullptr &&
               std::ranges::find(array_->members, member) != array_->members.end();
    }

    // Appends. The member is not in the list yet.
    void push(T* member) {
        own().members.push_back(member);
        ++size_;
    }

    // Removes the member if it is there; a running pass keeps it alive and visits it still.
    void del(T* member) {
        if (!has(member)) return;
        Pass* const pass = outermostPass();
        if (pass != nullptr && member->references() != 0) pass->kept_.push_back(Ptr<T>(member));
        erase(member);
    }

    // For a member that is being destroyed: removes it, and no running pass visits it any more.
    void forget(T* member) {
        if (has(member)) erase(member);
        for (Pass* pass = pass_; pass != nullptr; pass = pass->outer_)
            std::ranges::replace(pass->array_->members, member, static_cast<T*>(nullptr));
    }

    // Removes every member, one after another.
    void deleteAll() {
        while (!empty()) del(array_->members.back());
    }

    Iterator iterator() noexcept { return Iterator(*this); }

    ConstIterator iterator() const noexcept { return ConstIterator(*this); }

private:
    // The array, unshared: a pass over the present state keeps that state.
    Array& own() {
        if (array_ == nullptr) {
            array_ = new Array;
        } else if (array_->holders > 1) {
            auto* const copy = new Array{1, array_->members};
            --array_->holders;
            array_ = copy;
        }
        return *array_;
    }

    void erase(const T* member) {
        std::vector<T*>& members = own().members;
        members.erase(std::ranges::find(members, member));
        --size_;
    }

    Pass* outermostPass() const noexcept {
        Pass* pass = pass_;
        while (pass != nullptr && pass->outer_ != nullptr) pass = pass->outer_;
        return pass;
    }

    Array* array_ = nullptr;
    Pass* pass_ = nullptr; // the innermost running one
    U32 size_ = 0;
};

// Walks a snapshot of a list that is not empty. Lives on the stack, inside the list's life; passes
// nest.
template <class T>
class ListRaw<T>::Pass {
public:
    explicit Pass(ListRaw& list) noexcept
        : list_(list), array_(list.array_), outer_(list.pass_), begin_(array_->members.data()),
          end_(begin_ + array_->members.size()) {
        ++array_->holders;
        list_.pass_ = this;
    }

    Pass(const Pass&) = delete;
    Pass& operator=(const Pass&) = delete;

    ~Pass() {
        list_.pass_ = outer_;
        if (--array_->holders == 0) delete array_;
    }

    U32 size() const noexcept { return static_cast<U32>(end_ - begin_); }

    // For range-for: each member, or null where one was destroyed since the pass began.
    T* const* begin() const noexcept { return begin_; }

    T* const* end() const noexcept { return end_; }

private:
    friend class ListRaw;

    ListRaw& list_;
    Array* array_;
    Pass* outer_;
    T* const* begin_; // the array does not move while the pass holds it
    T* const* end_;
    std::vector<Ptr<T>> kept_; // released last
};

// Walks the members of the list itself, in order; it may remove what it stands on.
template <class T>
class ListRaw<T>::ConstIterator {
public:
    explicit ConstIterator(const ListRaw& list) noexcept : list_(&list) {}

    explicit operator bool() const noexcept { return at_ < list_->size_; }

    T* ptr() const noexcept { return *this ? list_->array_->members[at_] : nullptr; }

    T* operator->() const noexcept { return ptr(); }

    T& operator*() const noexcept { return *ptr(); }

    ConstIterator& operator++() noexcept {
        ++at_;
        return *this;
    }

protected:
    const ListRaw* list_;
    U32 at_ = 0;
};

template <class T>
class ListRaw<T>::Iterator : public ConstIterator {
public:
    explicit Iterator(ListRaw& list) noexcept : ConstIterator(list), owner_(&list) {}

    Iterator& operator++() noexcept {
        ConstIterator::operator++();
        return *this;
    }

    // Removes the member it stands on, and stands on the one behind.
    void del() { owner_->del(this->ptr()); }

private:
    ListRaw* owner_;
};

} // namespace Vel

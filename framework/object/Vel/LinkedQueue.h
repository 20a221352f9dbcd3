// LinkedQueue.h - an ordered queue of references whose iterators outlive what is deleted under
// them.
//
// Owns:     one reference to each member, through its entry.
// Iterator: holds its entry, which a deletion marks and unlinks; the next increment goes on at the
//           first member behind it that is still in the queue. Members that are appended are
//           visited, unless the iterator already stands behind the last one.
// Copying:  copies the references, in order.
// Cost:     append, deletion and increment O(1) but for the deleted entries that are skipped; one
//           small object a member.
// Threads:  one at a time.
#pragma once

#include <Vel/Integers.h>
#include <Vel/Ptr.h>
#include <Vel/PtrInterface.h>
#include <utility>

namespace Vel {

// One place of a queue.
template <class T, class Pointer = Ptr<T>>
class LinkedQueueEntry : public PtrInterface {
public:
    explicit LinkedQueueEntry(Pointer member) : member_(std::move(member)) {}

    LinkedQueueEntry(const LinkedQueueEntry&) = delete;
    LinkedQueueEntry& operator=(const LinkedQueueEntry&) = delete;

    // One after another, so that a long queue does not need a deep stack.
    ~LinkedQueueEntry() override {
        Ptr<LinkedQueueEntry> rest = std::move(next_);
        while (rest && rest->references() == 1)
            rest = Ptr<LinkedQueueEntry>(std::move(rest->next_));
    }

    const Pointer& member() const noexcept { return member_; }

private:
    template <class Entry, class M, class P>
    friend class LinkedQueue;

    Pointer member_;
    Ptr<LinkedQueueEntry> next_;
    LinkedQueueEntry* previous_ = nullptr;
};

template <class Entry, class T, class Pointer = Ptr<T>>
class LinkedQueue {
public:
    class Iterator;

    LinkedQueue() noexcept = default;

    LinkedQueue(const LinkedQueue& other) {
        for (Iterator it = other.iterator(); it; ++it) push(it.member());
    }

    LinkedQueue& operator=(const LinkedQueue& other) {
        if (this != &other) {
            LinkedQueue copy(other);
            deleteAll();
            std::swap(first_, copy.first_);
            std::swap(last_, copy.last_);
            std::swap(members_, copy.members_);
        }
        return *this;
    }

    ~LinkedQueue() { deleteAll(); }

    bool empty() const noexcept { return members_ == 0; }

    U32 members() const noexcept { return members_; }

    // Appends. Throws std::bad_alloc; the queue is as it was then.
    void push(Pointer member) {
        const Ptr<Entry> entry = new Entry(std::move(member));
        entry->previous_ = last_;
        (last_ != nullptr ? last_->next_ : first_) = entry;
        last_ = entry.ptr();
        ++members_;
    }

    // Removes the member on which the iterator stands, if it is still there; the iterator keeps its
    // place.
    void del(const Iterator& it) {
        const Ptr<Entry> entry = it.entry_;
        if (!entry || entry->velMarkedForDeletion()) return;
        unlink(*entry);
    }

    void deleteAll() {
        while (first_) {
            const Ptr<Entry> entry = first_;
            unlink(*entry);
        }
    }

    Iterator iterator() const noexcept { return Iterator(first_); }

    // For range-for: each member's reference.
    Iterator begin() const noexcept { return iterator(); }

    Iterator end() const noexcept { return Iterator(); }

private:
    // The entry keeps its own link, so that an iterator on it finds the way on.
    void unlink(Entry& entry) {
        entry.velMarkedForDeletionIs(true);
        if (entry.next_)
            entry.next_->previous_ = entry.previous_;
        else
            last_ = entry.previous_;
        (entry.previous_ != nullptr ? entry.previous_->next_ : first_) = entry.next_;
        --members_;
    }

    Ptr<Entry> first_;
    Entry* last_ = nullptr;
    U32 members_ = 0;
};

template <class Entry, class T, class Pointer>
class LinkedQueue<Entry, T, Pointer>::Iterator {
public:
    Iterator() noexcept = default;

    explicit Iterator(const Ptr<Entry>& entry) noexcept : entry_(entry) {}

    explicit operator bool() const noexcept { return entry_ != nullptr; }

    const Pointer& member() const noexcept { return entry_->member(); }

    const Pointer& operator*() const noexcept { return member(); }

    T* operator->() const noexcept { return &*member(); }

    Iterator& operator++() {
        do entry_ = Ptr<Entry>(entry_->next_);
        while (entry_ && entry_->velMarkedForDeletion());
        return *this;
    }

    bool operator==(const Iterator& other) const noexcept { return entry_ == other.entry_; }

private:
    friend class LinkedQueue;

    Ptr<Entry> entry_;
};

} // namespace Vel

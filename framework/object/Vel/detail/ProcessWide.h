// ProcessWide.h - the only T of the process: made on first use, never destroyed, and whole in the
// child of a fork().
//
//     class Switchboard {
//         friend class ProcessWide<Switchboard>;
//         Switchboard();
//         void beforeFork();              // takes every lock
//         void afterFork(bool isChild);   // gives them back
//     };
//     ProcessWide<Switchboard>::only().add(handle);
//
// Fork:    fork() waits until it holds every lock of the T, so that no thread that the child lacks
//          keeps one there. A child that was forked while another thread was just making the T
//          makes one of its own.
// Order:   fork() takes the locks of what was made last first. A T whose locks are taken by those
//          who hold a lock of another T must be made before that.
// Errors:  what T's constructor throws; std::bad_alloc if the fork handlers cannot be registered.
//          The next call tries again.
// Threads: any.
#pragma once

#include <memory>
#include <mutex>
#include <new>
#include <pthread.h>

namespace Vel::detail {

template <class T>
class ProcessWide {
public:
    static T& only() {
        // Unlike the guard of a local static, the C library's is free in a child that was forked
        // while it was held.
        static constinit std::once_flag isMade;
        std::call_once(isMade, make);
        return *only_;
    }

private:
    static void make() {
        std::unique_ptr<T> made(new T);
        only_ = made.get();
        if (pthread_atfork(beforeFork, afterForkInParent, afterForkInChild) != 0) {
            only_ = nullptr;
            throw std::bad_alloc();
        }
        static_cast<void>(made.release());
    }

    // A child that makes its own registers them again: the outer pair counts.
    static void beforeFork() {
        if (depth_++ == 0) only_->beforeFork();
    }

    static void afterForkInParent() {
        if (--depth_ == 0) only_->afterFork(false);
    }

    static void afterForkInChild() {
        if (--depth_ == 0) only_->afterFork(true);
    }

    static inline constinit T* only_ = nullptr;
    static inline constinit thread_local int depth_ =
        0; // of handlers that the forking thread is in
};

} // namespace Vel::detail

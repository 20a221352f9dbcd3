// Module.h - the types that one source module brings: one ordered list, from which all that loading
// does is made.
//
//     // Net_module.cpp
//     VEL_MODULE(velInitNet, Vel::TypeList<Net::DeviceId, Net::Table>)
//
// Made from the list:
//   - the module's part of the library's section .vel.type (TypeSection.h): the qualified names,
//   NUL-terminated; namespace by
//     namespace, and in each the last type first;
//   - a static initialiser that makes the types known by name and registers them;
//   - the registration routine velInitNet(), C linkage: callable any number of times, effective
//   once. While the registrar is
//     not active it does nothing and stays callable.
//
// Names:   two types of one qualified name are a fatal assertion that names it, whichever modules
//          and libraries they come from, where the second one is bound.
// Cost:    loading with an inactive registrar stores one pointer. Types are bound to their names at
//          the first look-up.
// Threads: the loader's thread; the guard is a plain byte. Any number of threads may look types up
//          when nothing is loaded: the first of them binds what is unbound, behind a lock.
#pragma once

#include <Vel/Export.h>
#include <Vel/Name.h>
#include <Vel/TypeDescription.h>
#include <span>

namespace Vel {

class VEL_API Module {
public:
    // In the order of registration: types of one namespace stand together. Borrowed for the life of
    // the process.
    constexpr explicit Module(std::span<const TypeDescription* const> types) noexcept
        : types_(types) {}

    Module(const Module&) = delete;
    Module& operator=(const Module&) = delete;

    // What a static initialiser does, for a module that lives as long as the process:
    // holdStreams(), then makes the types known by their names, then registers them.
    void load();

    // Makes the standard streams ready before any type may write to one, and flushes them when the
    // process ends.
    static void holdStreams();

    // The registration routine. What a registrar throws leaves the guard set.
    void registerTypes();

    bool isRegistered() const noexcept { return isRegistered_; }

    std::span<const TypeDescription* const> types() const noexcept { return types_; }

    // Binds the types of every module that was loaded and not looked at since.
    static void bindPending();

private:
    std::span<const TypeDescription* const> types_;
    Module* nextPending_ = nullptr;
    bool isPending_ = false;
    bool isRegistered_ = false;
};

} // namespace Vel

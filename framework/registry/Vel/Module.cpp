#include <Vel/Module.h>

#include <Vel/Assert.h>
#include <Vel/IntrospectionReactor.h>
#include <Vel/VelType.h>
#include <atomic>
#include <cstddef>
#include <cstdlib>
#include <ios>
#include <mutex>
#include <string>

namespace Vel {

namespace {

// Modules that were loaded and whose types are not bound yet. Null, seen without the lock, tells
// that all are.
constinit std::atomic<Module*> firstPending = nullptr;
constinit std::mutex pendingLock;

// Keeps a namespace open, also when what stands in it throws. Null: the types stand in none.
class OpenScope {
public:
    OpenScope(IntrospectionReactor* reactor, const std::string& nameSpace) : reactor_(reactor) {
        if (reactor_ != nullptr) reactor_->handleNameSpace(nameSpace.c_str());
    }

    OpenScope(const OpenScope&) = delete;
    OpenScope& operator=(const OpenScope&) = delete;

    ~OpenScope() noexcept(false) {
        if (reactor_ != nullptr) reactor_->handleScopeExit();
    }

private:
    IntrospectionReactor* reactor_;
};

} // namespace

void Module::holdStreams() {
    static const std::ios_base::Init* const streams = [] {
        std::atexit([] { delete streams; });
        return new std::ios_base::Init;
    }();
    VEL_ASSERT(streams != nullptr);
}

void Module::load() {
    holdStreams();
    if (!isPending_) {
        isPending_ = true;
        const std::lock_guard lock(pendingLock);
        nextPending_ = firstPending.load(std::memory_order_relaxed);
        firstPending.store(this, std::memory_order_release);
    }
    registerTypes();
}

void Module::bindPending() {
    if (firstPending.load(std::memory_order_acquire) == nullptr) return;
    const std::lock_guard lock(pendingLock);
    while (Module* const module = firstPending.load(std::memory_order_relaxed)) {
        for (const TypeDescription* const type : module->types_)
            VelType::typeNodeIs(type->type(), type->qualifiedName);
        firstPending.store(module->nextPending_, std::memory_order_release);
    }
}

void Module::registerTypes() {
    if (isRegistered_) return;
    // Held: whoever is told of a type may put another registrar in its place.
    const Ptr<IntrospectionReactor> reactor = IntrospectionReactor::global();
    if (!reactor->active()) return;
    isRegistered_ = true;
    bindPending();
    std::string nameSpace;
    for (std::size_t i = 0; i < types_.size();) {
        const Name open = types_[i]->nameSpace();
        nameSpace = open;
        const OpenScope scope(open.empty() ? nullptr : reactor.ptr(), nameSpace);
        for (; i < types_.size() && types_[i]->nameSpace() == open; ++i)
            registerType(*reactor, *types_[i]);
    }
}

} // namespace Vel

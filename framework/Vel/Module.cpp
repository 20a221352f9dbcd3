#include <Vel/Module.h>

#include <Vel/Assert.h>
#include <Vel/IntrospectionReactor.h>
#include <Vel/VelType.h>
#include <cstddef>
#include <cstdlib>
#include <ios>
#include <string>
#include <utility>

namespace Vel {

namespace {

Module* firstPending = nullptr;

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
        nextPending_ = std::exchange(firstPending, this);
    }
    registerTypes();
}

void Module::bindPending() {
    while (Module* const module = firstPending) {
        firstPending = module->nextPending_;
        for (const TypeDescription* const type : module->types_)
            VelType::typeNodeIs(type->type(), type->qualifiedName);
    }
}

void Module::registerTypes() {
    if (isRegistered_) return;
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

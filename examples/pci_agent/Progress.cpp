#include "Progress.h"

#include <cstdio>

namespace PciAgent {

using Brixo::DalId;
using Brixo::DalProcessingStatus;
using Brixo::DalProcessingStatusCol;
using Vel::Ptr;
using Vel::U64;

namespace {

U64 errorsOf(const DalProcessingStatus& status) {
    U64 errors = 0;
    for (const auto& [bucket, count] : status.errorBucket()) errors += count;
    return errors;
}

} // namespace

class Progress::DalWatcher final : public DalProcessingStatus::NotifieeConst {
public:
    explicit DalWatcher(Progress& progress) : progress_(progress) {}

    void onLastProcessedCmdIndex() override { progress_.advanced(); }

private:
    Progress& progress_;
};

class Progress::ColWatcher final : public DalProcessingStatusCol::NotifieeConst {
public:
    explicit ColWatcher(Progress& progress) : progress_(progress) {}

    using NotifieeConst::onProcessingStatus;

    void onProcessingStatus(DalId dalId) override { progress_.watch(dalId); }

private:
    Progress& progress_;
};

Progress::Progress(const Ptr<DalProcessingStatusCol>& dals, U64 commands)
    : dals_(dals), commands_(commands), colWatcher_(new ColWatcher(*this)) {
    colWatcher_->notifierIs(dals_);
    colWatcher_->isRegisteredNotifieeIs(true);
    for (const auto& [dalId, status] : dals_->processingStatus()) watch(dalId);
}

Progress::~Progress() {
    colWatcher_->notifierIs(nullptr);
    for (const Ptr<DalWatcher>& watcher : dalWatchers_) watcher->notifierIs(nullptr);
}

void Progress::watch(DalId dalId) {
    const Ptr<DalProcessingStatus> status = dals_->processingStatus(dalId);
    if (!status) return; // it has gone
    dalWatchers_.push_back(new DalWatcher(*this));
    dalWatchers_.back()->notifierIs(status);
    dalWatchers_.back()->isRegisteredNotifieeIs(true);
}

void Progress::advanced() {
    if (++finished_ % commands_ != 0) return;
    U64 errors = 0;
    for (const auto& [dalId, status] : dals_->processingStatus()) errors += errorsOf(*status);
    std::printf("  watcher: %u DALs have finished %llu commands, %llu errors\n",
                dals_->processingStatuss(), finished_, errors);
    std::fflush(stdout);
}

void Progress::printStatus() const {
    U64 enqueued = 0;
    U64 processed = 0;
    U64 errors = 0;
    for (const auto& [dalId, status] : dals_->processingStatus()) {
        enqueued += status->lastEnqueuedCmdIndex();
        processed += status->lastProcessedCmdIndex();
        errors += errorsOf(*status);
    }
    std::printf(
        "  Its %u DALs, the access layers of the devices: %llu commands enqueued, %llu processed, "
        "%llu errors.\n",
        dals_->processingStatuss(), enqueued, processed, errors);
    if (errors == 0) return;
    for (unsigned id = 0; id < DalId::invalidId();
         ++id) // for people, by number: not in the map's order
        if (const auto status = dals_->processingStatus(DalId(static_cast<Vel::U8>(id))))
            if (const U64 own = errorsOf(*status))
                std::printf("    DAL %u: %llu errors\n", id, own);
}

} // namespace PciAgent

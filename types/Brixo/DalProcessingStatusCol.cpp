#include <Brixo/DalProcessingStatusCol.h>

#include <Vel/RangeException.h>
#include <Vel/value/ObjectType.h>
#include <vector>

namespace Brixo {

VEL_DEFINE_ENTITY(DalProcessingStatusCol)

using Vel::Ptr;

DalProcessingStatusCol::NotifieeConst::NotifieeConst() = default;

DalProcessingStatusCol::NotifieeConst::~NotifieeConst() = default;

void DalProcessingStatusCol::NotifieeConst::onProcessingStatus(DalId) {}

void DalProcessingStatusCol::NotifieeConst::onProcessingStatus() {}

void DalProcessingStatusCol::NotifieeConst::onProcessingStatusvelImmediate() {}

DalProcessingStatusCol::DalProcessingStatusCol() = default;

DalProcessingStatusCol::~DalProcessingStatusCol() = default;

Ptr<DalProcessingStatus> DalProcessingStatusCol::newProcessingStatus(DalId dalId) {
    return processingStatus_.create(dalId);
}

Ptr<DalProcessingStatus> DalProcessingStatusCol::processingStatusIs(DalId dalId) {
    Ptr<DalProcessingStatus> status = processingStatus(dalId);
    if (status) return status;
    status = newProcessingStatus(dalId);
    processingStatusNotify(dalId);
    if (!status) Vel::throwRangeException("null ValidPtr");
    return status;
}

Ptr<DalProcessingStatus> DalProcessingStatusCol::processingStatusDel(DalId dalId) {
    Ptr<DalProcessingStatus> status = processingStatus_.del(dalId);
    if (status) processingStatusNotify(dalId);
    return status;
}

// A callback may remove whatever is behind the member, add to it, and drop the collection.
Ptr<DalProcessingStatus> DalProcessingStatusCol::processingStatusDel(
    ProcessingStatus::Iterator& position) {
    const auto alive = kept();
    Ptr<DalProcessingStatus> status = processingStatus_.del(position.key());
    processingStatusNotify(status->dalId());
    position = alive && references() == 1 ? ProcessingStatus::Iterator()
                                          : processingStatus_.behind(status->dalId());
    return status;
}

// Over a list of its own: a callback may add and remove statuses, and what it adds stays.
void DalProcessingStatusCol::processingStatusDelAll() {
    const auto alive = kept();
    std::vector<Ptr<DalProcessingStatus>> present;
    present.reserve(processingStatus_.count());
    for (const auto& [dalId, status] : processingStatus_) present.push_back(status);
    for (const Ptr<DalProcessingStatus>& status : present)
        if (processingStatus_.find(status->dalId()) == status.ptr())
            processingStatusDel(status->dalId());
}

void DalProcessingStatusCol::processingStatusNotify(DalId dalId) {
    notify(processingStatusId,
           [dalId](NotifieeConst& notifiee) { notifiee.onProcessingStatus(dalId); });
}

} // namespace Brixo

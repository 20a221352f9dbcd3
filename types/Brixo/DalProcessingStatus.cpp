#include <Brixo/DalProcessingStatus.h>

#include <Vel/value/ObjectType.h>

namespace Brixo {

VEL_DEFINE_ENTITY(DalProcessingStatus)

using Vel::U32;
using Vel::U64;

DalProcessingStatus::NotifieeConst::NotifieeConst() = default;

DalProcessingStatus::NotifieeConst::~NotifieeConst() = default;

void DalProcessingStatus::NotifieeConst::onLastProcessedCmdIndex() {}

DalProcessingStatus::DalProcessingStatus(DalId dalId) : dalId_(dalId) {}

DalProcessingStatus::~DalProcessingStatus() = default;

Vel::Ptr<DalProcessingStatus> dalProcessingStatusFactory(DalId dalId) {
    return new DalProcessingStatus(dalId);
}

void DalProcessingStatus::lastProcessedCmdIndexIs(const U64& index) {
    if (index == lastProcessedCmdIndex_) return;
    lastProcessedCmdIndex_ = index;
    notify(lastProcessedCmdIndexId,
           [](NotifieeConst& notifiee) { notifiee.onLastProcessedCmdIndex(); });
}

U32 DalProcessingStatus::errorBucketInc(int bucket, U32 delta) {
    VelErrorBucket* entry = errorBucket_.find(bucket);
    if (entry == nullptr) entry = newErrorBucket(bucket, 0).ptr(); // the collection holds it
    entry->valueIs(entry->value() + delta);
    return entry->value();
}

} // namespace Brixo

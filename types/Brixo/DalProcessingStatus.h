// DalProcessingStatus.h - how far one DAL has got with its commands, and what went wrong.
//
// Owns:     its error entries, a node each. It lists its notifiees raw; each of them holds a
//           reference to it.
// Key:      dalId(), fixed for its life: a status is its own member in a DalProcessingStatusCol,
//           and of one at most.
// Notifies: lastProcessedCmdIndex alone. Nothing checks that an index grows, or that it stays
//           behind the other.
// Lifetime: a collection's entry, a factory's result and a notifiee's notifier() each hold one
//           reference; leaving the collection destroys nothing that others hold.
// Threads:  one at a time; docs/notification.md.
#pragma once

#include <Brixo/DalId.h>
#include <Brixo/Export.h>
#include <Vel/CollectionAttribute.h>
#include <Vel/Integers.h>
#include <Vel/MapLink.h>
#include <Vel/Notifiee.h>
#include <Vel/Notifier.h>
#include <Vel/Ptr.h>
#include <Vel/value/DeclareEntity.h>
#include <Vel/value/Schema.h>

namespace Brixo {

class BRIXO_API DalProcessingStatus : public Vel::Notifier<DalProcessingStatus, Vel::MapLink> {
public:
    VEL_ENTITY(DalProcessingStatus)

    using Key = DalId;
    using Value = Vel::Ptr<DalProcessingStatus>;

    // Who wants to know how far the DAL has got.
    class BRIXO_API NotifieeConst : public Vel::Notifiee<DalProcessingStatus> {
    public:
        NotifieeConst();
        ~NotifieeConst() override;

        // notifier()->lastProcessedCmdIndex() has changed. Does nothing unless overridden.
        virtual void onLastProcessedCmdIndex();
    };

    // Indices 0, no errors, trackErrors() false, nobody listening.
    explicit DalProcessingStatus(DalId dalId);
    DalProcessingStatus(const DalProcessingStatus&) = delete;
    DalProcessingStatus& operator=(const DalProcessingStatus&) = delete;
    ~DalProcessingStatus() override;

    DalId dalId() const noexcept { return dalId_; }

    const DalId& fwkKey() const noexcept { return dalId_; }

    // The last command that was put on the queue.
    Vel::U64 lastEnqueuedCmdIndex() const noexcept { return lastEnqueuedCmdIndex_; }

    void lastEnqueuedCmdIndexIs(const Vel::U64& index) noexcept { lastEnqueuedCmdIndex_ = index; }

    // The last command that was finished.
    Vel::U64 lastProcessedCmdIndex() const noexcept { return lastProcessedCmdIndex_; }

    // Tells every notifiee; the present value changes nothing and tells nobody.
    void lastProcessedCmdIndexIs(const Vel::U64& index);

    // Whether the DAL is asked to record errors. The DAL looks at it; writing an entry does not.
    bool trackErrors() const noexcept { return trackErrors_; }

    void trackErrorsIs(bool track) noexcept { trackErrors_ = track; }

    // A count or a tag, as the DAL chooses, under an error code.
    VEL_COLLECTION(BRIXO_API, errorCode, ErrorCode, Vel::U64, int);

    // How often something of one kind happened.
    VEL_COLLECTION(BRIXO_API, errorBucket, ErrorBucket, int, Vel::U32);

    // Adds to a counter, modulo 2^32, and returns it. One look-up when the bucket is there; else it
    // is created first.
    Vel::U32 errorBucketInc(int bucket, Vel::U32 delta);

    static constexpr Vel::AttributeId lastProcessedCmdIndexId = 132;

    static constexpr auto schema();

private:
    DalId dalId_;
    bool trackErrors_ = false;
    Vel::U64 lastEnqueuedCmdIndex_ = 0;
    Vel::U64 lastProcessedCmdIndex_ = 0;
    ErrorCode errorCode_;
    ErrorBucket errorBucket_;
};

// A new status, with one reference.
BRIXO_API Vel::Ptr<DalProcessingStatus> dalProcessingStatusFactory(DalId dalId);

constexpr auto DalProcessingStatus::schema() {
    return Vel::entitySchema<DalProcessingStatus>("Brixo::DalProcessingStatus")
        .stored(130, "dalId", &DalProcessingStatus::dalId_)
        .stored(131, "lastEnqueuedCmdIndex", &DalProcessingStatus::lastEnqueuedCmdIndex_,
                &DalProcessingStatus::lastEnqueuedCmdIndexIs)
        .stored(lastProcessedCmdIndexId, "lastProcessedCmdIndex",
                &DalProcessingStatus::lastProcessedCmdIndex_,
                &DalProcessingStatus::lastProcessedCmdIndexIs)
        .stored(133, "trackErrors", &DalProcessingStatus::trackErrors_,
                &DalProcessingStatus::trackErrorsIs)
        .collection(134, "errorCode", &DalProcessingStatus::errorCode_)
        .collection(135, "errorBucket", &DalProcessingStatus::errorBucket_)
        .computed(0, "fwkKey", &DalProcessingStatus::fwkKey, Vel::Introspection::plain)
        .constructedFrom("dalId");
}

} // namespace Brixo

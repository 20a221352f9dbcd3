// DalProcessingStatus.h - how far one DAL has got with its commands, and what went wrong.
//
// Owns:     its error entries, a node each. It lists its notifiees raw; each of them holds a reference to it.
// Key:      dalId(), fixed for its life: a status is its own member in a DalProcessingStatusCol, and of one at most.
// Notifies: lastProcessedCmdIndex alone. Nothing checks that an index grows, or that it stays behind the other.
// Lifetime: a collection's entry, a factory's result and a notifiee's notifier() each hold one reference; leaving the
//           collection destroys nothing that others hold.
// Threads:  one at a time; docs/notification.md.
#pragma once

#include <Brixo/DalId.h>
#include <Brixo/Export.h>
#include <Vel/Integers.h>
#include <Vel/KeyedCollection.h>
#include <Vel/MapLink.h>
#include <Vel/MapMember.h>
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

    // A count or a tag, as the DAL chooses, under an error code.
    class BRIXO_API VelErrorCode final : public Vel::MapMember<Vel::U64, int> {
    public:
        using MapMember::MapMember;
    };

    // How often something of one kind happened.
    class BRIXO_API VelErrorBucket final : public Vel::MapMember<int, Vel::U32> {
    public:
        using MapMember::MapMember;
    };

    // Who wants to know how far the DAL has got.
    class BRIXO_API NotifieeConst : public Vel::Notifiee<DalProcessingStatus> {
    public:
        NotifieeConst();
        ~NotifieeConst() override;

        // notifier()->lastProcessedCmdIndex() has changed. Does nothing unless overridden.
        virtual void onLastProcessedCmdIndex();
    };

    using ErrorCode = Vel::KeyedCollection<VelErrorCode>;
    using ErrorBucket = Vel::KeyedCollection<VelErrorBucket>;

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

    const ErrorCode& errorCode() const noexcept { return errorCode_; }

    int errorCode(const Vel::U64& code) const { return errorCode_.value(code); }

    Vel::U32 errorCodes() const noexcept { return errorCode_.count(); }

    Vel::Ptr<VelErrorCode> newErrorCode(const Vel::U64& code, int value) {
        return errorCode_.create(code, value);
    }

    void errorCodeIs(const Vel::U64& code, int value) { errorCode_.set(code, value); }

    void errorCodeDel(const Vel::U64& code) { errorCode_.del(code); }

    void errorCodeDel(ErrorCode::Iterator& position) { errorCode_.del(position); }

    void errorCodeDelAll() noexcept { errorCode_.delAll(); }

    void errorCodeNotify(const Vel::U64&) noexcept {}

    const ErrorBucket& errorBucket() const noexcept { return errorBucket_; }

    Vel::U32 errorBucket(int bucket) const { return errorBucket_.value(bucket); }

    Vel::U32 errorBuckets() const noexcept { return errorBucket_.count(); }

    Vel::Ptr<VelErrorBucket> newErrorBucket(int bucket, Vel::U32 value) {
        return errorBucket_.create(bucket, value);
    }

    void errorBucketIs(int bucket, Vel::U32 value) { errorBucket_.set(bucket, value); }

    // Adds to a counter, modulo 2^32, and returns it. One look-up when the bucket is there; else it is created first.
    Vel::U32 errorBucketInc(int bucket, Vel::U32 delta);

    void errorBucketDel(int bucket) { errorBucket_.del(bucket); }

    void errorBucketDel(ErrorBucket::Iterator& position) { errorBucket_.del(position); }

    void errorBucketDelAll() noexcept { errorBucket_.delAll(); }

    void errorBucketNotify(int) noexcept {}

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

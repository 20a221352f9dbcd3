// DalProcessingStatusCol.h - the processing status of each DAL, by its id.
//
// Owns:     one reference to each status, which is its own member here: it is in no other
//           collection.
// Notifies: onProcessingStatus(id) when a status has come or gone, behind the change.
// Threads:  one at a time; docs/notification.md.
#pragma once

#include <Brixo/DalId.h>
#include <Brixo/DalProcessingStatus.h>
#include <Brixo/Export.h>
#include <Vel/CollectionAttribute.h>
#include <Vel/KeyedCollection.h>
#include <Vel/Notifiee.h>
#include <Vel/Notifier.h>
#include <Vel/Ptr.h>
#include <Vel/value/DeclareEntity.h>
#include <Vel/value/Schema.h>

namespace Brixo {

class BRIXO_API DalProcessingStatusCol : public Vel::Notifier<DalProcessingStatusCol> {
public:
    VEL_ENTITY(DalProcessingStatusCol)

    // Who wants to know which statuses there are. Each does nothing unless overridden.
    class BRIXO_API NotifieeConst : public Vel::Notifiee<DalProcessingStatusCol> {
    public:
        NotifieeConst();
        ~NotifieeConst() override;

        // A status with this id was added or removed.
        virtual void onProcessingStatus(DalId dalId);
        // For those who forward notifications without an id, or without delay. The collection calls
        // neither.
        virtual void onProcessingStatus();
        virtual void onProcessingStatusvelImmediate();
    };

    using ProcessingStatus = Vel::KeyedCollection<DalProcessingStatus>;

    DalProcessingStatusCol();
    DalProcessingStatusCol(const DalProcessingStatusCol&) = delete;
    DalProcessingStatusCol& operator=(const DalProcessingStatusCol&) = delete;
    ~DalProcessingStatusCol() override;

    // Null where there is none.
    VEL_COLLECTION_READERS(processingStatus, ProcessingStatus);

    // Makes and adds a status for an id that has none; tells nobody. A refinement may make one of
    // its own class.
    virtual Vel::Ptr<DalProcessingStatus> newProcessingStatus(DalId dalId);
    // The status of that id, which is made if there is none; then the notifiees are told. Throws
    // Vel::RangeException "null ValidPtr" if newProcessingStatus() has made nothing.
    Vel::Ptr<DalProcessingStatus> processingStatusIs(DalId dalId);
    // Removes a status and tells the notifiees. Returns it; null, and nobody is told, when there is
    // none.
    Vel::Ptr<DalProcessingStatus> processingStatusDel(DalId dalId);
    // The same of the status on which the iterator stands. When the notifiees have been told, it
    // stands on the first member behind the removed one of those that are there then, whatever the
    // callbacks removed or added; at the end if there is none, or if a callback dropped the last
    // reference to the collection, which is gone on return.
    Vel::Ptr<DalProcessingStatus> processingStatusDel(ProcessingStatus::Iterator& position);
    // Removes every status that is there now, one after another in the map's order; the notifiees
    // are told of each. What they add meanwhile stays. Throws std::bad_alloc and changes nothing if
    // there is no memory for the list of those to remove.
    void processingStatusDelAll();
    // Tells the notifiees that something has happened to the status of that id.
    void processingStatusNotify(DalId dalId);

    static constexpr Vel::AttributeId processingStatusId = 130;

    static constexpr auto schema();

private:
    ProcessingStatus processingStatus_;
};

constexpr auto DalProcessingStatusCol::schema() {
    using Self = DalProcessingStatusCol;
    using Delete = Vel::Ptr<DalProcessingStatus> (Self::*)(DalId);
    return Vel::entitySchema<Self>("Brixo::DalProcessingStatusCol")
        .collection(processingStatusId, "processingStatus", &Self::processingStatus_,
                    &Self::processingStatusIs, Delete(&Self::processingStatusDel),
                    &Self::processingStatusDelAll);
}

} // namespace Brixo

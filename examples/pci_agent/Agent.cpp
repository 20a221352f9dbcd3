#include "Agent.h"

#include <Brixo/CacheTableIndex.h>
#include <Brixo/PhysicalRegisterId.h>
#include <Vel/format.h>
#include <algorithm>
#include <cstring>
#include <system_error>

namespace PciAgent {

using Vel::U32;

namespace {

Vel::Ptr<Brixo::CacheTable> openTable(Brixo::AgentId agent, const HardwareDevice& device) {
    const Brixo::PhysicalRegisterId resource(device.domain());
    return Brixo::cacheTableFactory(agent, Brixo::CacheTableIndex(device.id(), resource),
                                    device.registerCount(), MirroredDevice::registerBytes);
}

} // namespace

bool MirroredDevice::mirrored(unsigned registerIndex, U32& value) const {
    const unsigned char* entry = table->entry(key(registerIndex));
    if (entry != nullptr) std::memcpy(&value, entry, sizeof(value));
    return entry != nullptr;
}

Agent::Agent(Brixo::AgentId id, WriteJournal& journal) : id_(id), journal_(&journal) {
    for (auto& device : findDevices()) {
        if (devices_.size() ==
            std::min<std::size_t>(WriteJournal::maxTables, Brixo::DalId::invalidId()))
            break;
        if (device->registerCount() > WriteJournal::maxRegisters) continue;
        Vel::Ptr<Brixo::CacheTable> table = openTable(id, *device);
        const unsigned recovered = table->keyToIndexs();
        const Brixo::DalId dalId(static_cast<Vel::U8>(devices_.size()));
        const auto status = dals_->processingStatusIs(dalId);
        status->trackErrorsIs(true);
        devices_.push_back({std::move(device), std::move(table), status, recovered});
    }
}

std::string Agent::regionName(const MirroredDevice& mirrored) const {
    const Brixo::CacheTableIndex& tableId = mirrored.table->tableId();
    return Vel::format("CacheTable-%u-%u-%u", unsigned{id_.value()},
                       unsigned{tableId.devId().value()}, tableId.resourceId().hash())
        .charPtr();
}

void Agent::refresh(unsigned writes) {
    for (unsigned table = 0; table < devices_.size(); ++table) {
        if (!read(devices_[table])) continue;
        Brixo::DalProcessingStatus& status = *devices_[table].status;
        status.lastEnqueuedCmdIndexIs(status.lastEnqueuedCmdIndex() + writes);
        for (unsigned n = 0; n < writes; ++n) {
            mirror(table);
            status.lastProcessedCmdIndexIs(status.lastProcessedCmdIndex() + 1);
        }
    }
}

bool Agent::read(const MirroredDevice& mirrored) {
    try {
        mirrored.device->read(registers_);
        return true;
    } catch (const std::system_error& failure) {
        if (mirrored.status->trackErrors())
            mirrored.status->errorBucketInc(failure.code().value(), 1);
        return false;
    }
}

// Writes the registers that were just read into their table; the journal states each write before and after.
void Agent::mirror(unsigned table) {
    const MirroredDevice& mirrored = devices_[table];
    const auto count = std::min<std::size_t>(registers_.size(), mirrored.device->registerCount());
    for (unsigned i = 0; i < count; ++i) {
        unsigned char bytes[sizeof(U32)];
        std::memcpy(bytes, &registers_[i], sizeof(bytes));
        journal_->begin(table, i, registers_[i]);
        mirrored.table->entryIs(MirroredDevice::key(i), bytes);
        journal_->completed();
    }
}

} // namespace PciAgent

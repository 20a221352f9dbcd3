#include "Agent.h"

#include "HardwareDevice.h"
#include <Brixo/CacheTableIndex.h>
#include <Brixo/PhysicalRegisterId.h>
#include <Vel/format.h>
#include <algorithm>
#include <cstring>
#include <system_error>
#include <thread>

namespace PciAgent {

using Vel::U32;

namespace {

Vel::Ptr<Brixo::CacheTable> openTable(Brixo::AgentId agent, const Device& device) {
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

Agent::Agent(Brixo::AgentId id, const std::string& sysfs, WriteJournal& journal)
    : id_(id), journal_(&journal) {
    auto own = std::make_unique<OwnRegisters>();
    own_ = own.get();
    open(std::move(own));
    U32 life = 0;
    U32 round = 0;
    if (devices_[0].mirrored(OwnRegisters::life, life)) {
        devices_[0].mirrored(OwnRegisters::round, round);
        own_->goOnFrom(life, round);
    }
    for (auto& device : findDevices(sysfs)) {
        if (devices_.size() ==
            std::min<std::size_t>(WriteJournal::maxTables, Brixo::DalId::invalidId()))
            break;
        if (device->registerCount() <= WriteJournal::maxRegisters) open(std::move(device));
    }
}

void Agent::open(std::unique_ptr<Device> device) {
    Vel::Ptr<Brixo::CacheTable> table = openTable(id_, *device);
    const unsigned recovered = table->keyToIndexs();
    const auto status =
        dals_->processingStatusIs(Brixo::DalId(static_cast<Vel::U8>(devices_.size())));
    status->trackErrorsIs(true);
    devices_.push_back({std::move(device), std::move(table), status, recovered, {}});
}

unsigned Agent::registerCount() const noexcept {
    unsigned count = 0;
    for (const MirroredDevice& mirrored : devices_) count += mirrored.device->registerCount();
    return count;
}

void Agent::spreadFillOver(std::chrono::microseconds whole) {
    unsigned missing = registerCount();
    for (const MirroredDevice& mirrored : devices_) missing -= mirrored.table->keyToIndexs();
    if (missing != 0) pauseBeforeNewEntry_ = whole / missing;
}

std::string Agent::regionName(const MirroredDevice& mirrored) const {
    const Brixo::CacheTableIndex& tableId = mirrored.table->tableId();
    return Vel::format("CacheTable-%u-%u-%u", unsigned{id_.value()},
                       unsigned{tableId.devId().value()}, tableId.resourceId().hash())
        .charPtr();
}

void Agent::refresh(unsigned rounds) {
    std::vector<unsigned> readable;
    for (unsigned table = 0; table < devices_.size(); ++table) {
        if (!read(devices_[table])) continue;
        Brixo::DalProcessingStatus& status = *devices_[table].status;
        status.lastEnqueuedCmdIndexIs(status.lastEnqueuedCmdIndex() + rounds);
        readable.push_back(table);
    }
    for (unsigned n = 0; n < rounds; ++n) {
        own_->nextRound();
        own_->read(devices_[0].registers);
        for (const unsigned table : readable) {
            mirror(table);
            Brixo::DalProcessingStatus& status = *devices_[table].status;
            status.lastProcessedCmdIndexIs(status.lastProcessedCmdIndex() + 1);
        }
    }
}

bool Agent::read(MirroredDevice& mirrored) {
    try {
        mirrored.device->read(mirrored.registers);
        return true;
    } catch (const std::system_error& failure) {
        if (mirrored.status->trackErrors())
            mirrored.status->errorBucketInc(failure.code().value(), 1);
        return false;
    }
}

// Writes a device's registers as they were read last into its table; the journal states each write
// before and after.
void Agent::mirror(unsigned table) {
    const MirroredDevice& mirrored = devices_[table];
    const auto count =
        std::min<std::size_t>(mirrored.registers.size(), mirrored.device->registerCount());
    for (unsigned i = 0; i < count; ++i) {
        const Brixo::DeviceOffset key = MirroredDevice::key(i);
        if (pauseBeforeNewEntry_.count() != 0 && mirrored.table->entry(key) == nullptr)
            std::this_thread::sleep_for(pauseBeforeNewEntry_);
        unsigned char bytes[sizeof(U32)];
        std::memcpy(bytes, &mirrored.registers[i], sizeof(bytes));
        journal_->begin(table, i, mirrored.registers[i]);
        mirrored.table->entryIs(key, bytes);
        journal_->completed();
    }
}

} // namespace PciAgent

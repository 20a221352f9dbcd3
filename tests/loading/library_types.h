// library_types.h - the types that libBrixoTypes says it has, in the order in which it says so.
#pragma once

#include <array>
#include <string_view>

inline constexpr std::array<std::string_view, 28> libraryTypes = {
    "PhysicalAddr",
    "Brixo::IoMemType",
    "Brixo::TargetMask",
    "Brixo::TargetId",
    "Brixo::Command",
    "Brixo::UserMode",
    "Brixo::AgentId",
    "Brixo::ResourceIdToDataMaskMap",
    "Brixo::PhysicalResourceIdCol",
    "Brixo::LogicalRemoteResourceIdCol",
    "Brixo::LogicalRemoteResourceId",
    "Brixo::RequesterDataMask",
    "Brixo::PhysicalRegisterId",
    "Brixo::LogicalRegisterId",
    "Brixo::PhysicalTableId",
    "Brixo::LogicalTableId",
    "Brixo::DalProcessingStatusCol",
    "Brixo::DalProcessingStatus",
    "Brixo::DalId",
    "Brixo::PhysicalResourceId",
    "Brixo::LogicalResourceId",
    "Brixo::ResourceType",
    "Brixo::DeviceOffset",
    "Brixo::DeviceId",
    "Orn::U64Bitmask",
    "Orn::BitId",
    "Brixo::CacheTable",
    "Brixo::CacheTableIndex",
};

// BrixoTypes.h - the ids, enumerations, resource names, masks, status and collections: each type of
// this folder, once.
//
// Order:   that of registration. The library's file names them the other way round
//          (docs/type-section.md).
// Made of: an include and a line in the list for each type. What has to know every type takes it
//          from here: the build, the module, <Brixo/Brixo.h>, the fuzzers, the golden vectors and
//          the suites that hold for every type.
// Test: tests/reflection.
#pragma once

#include <Brixo/AgentId.h>
#include <Brixo/Command.h>
#include <Brixo/DalId.h>
#include <Brixo/DalProcessingStatus.h>
#include <Brixo/DalProcessingStatusCol.h>
#include <Brixo/DeviceId.h>
#include <Brixo/DeviceOffset.h>
#include <Brixo/IoMemType.h>
#include <Brixo/LogicalRegisterId.h>
#include <Brixo/LogicalRemoteResourceId.h>
#include <Brixo/LogicalRemoteResourceIdCol.h>
#include <Brixo/LogicalResourceId.h>
#include <Brixo/LogicalTableId.h>
#include <Brixo/PhysicalAddr.h>
#include <Brixo/PhysicalRegisterId.h>
#include <Brixo/PhysicalResourceId.h>
#include <Brixo/PhysicalResourceIdCol.h>
#include <Brixo/PhysicalTableId.h>
#include <Brixo/RequesterDataMask.h>
#include <Brixo/ResourceIdToDataMaskMap.h>
#include <Brixo/ResourceType.h>
#include <Brixo/TargetId.h>
#include <Brixo/TargetMask.h>
#include <Brixo/UserMode.h>
#include <Vel/TypeList.h>

namespace Brixo {

using BrixoTypes = Vel::TypeList< //
    PhysicalAddr,                 //
    DeviceId,                     //
    DeviceOffset,                 //
    ResourceType,                 //
    LogicalResourceId,            //
    PhysicalResourceId,           //
    DalId,                        //
    DalProcessingStatus,          //
    DalProcessingStatusCol,       //
    LogicalTableId,               //
    PhysicalTableId,              //
    LogicalRegisterId,            //
    PhysicalRegisterId,           //
    RequesterDataMask,            //
    LogicalRemoteResourceId,      //
    LogicalRemoteResourceIdCol,   //
    PhysicalResourceIdCol,        //
    ResourceIdToDataMaskMap,      //
    AgentId,                      //
    UserMode,                     //
    Command,                      //
    TargetId,                     //
    TargetMask,                   //
    IoMemType>;

} // namespace Brixo

// Brixo.h - every type of the product.
#pragma once

#include <Brixo/AgentId.h>
#include <Brixo/CacheTable.h>
#include <Brixo/CacheTableIndex.h>
#include <Brixo/Command.h>
#include <Brixo/DalId.h>
#include <Brixo/DeviceId.h>
#include <Brixo/DeviceOffset.h>
#include <Brixo/IoMemType.h>
#include <Brixo/LogicalRegisterId.h>
#include <Brixo/LogicalRemoteResourceId.h>
#include <Brixo/LogicalResourceId.h>
#include <Brixo/LogicalTableId.h>
#include <Brixo/PhysicalAddr.h>
#include <Brixo/PhysicalRegisterId.h>
#include <Brixo/PhysicalResourceId.h>
#include <Brixo/PhysicalTableId.h>
#include <Brixo/RequesterDataMask.h>
#include <Brixo/ResourceType.h>
#include <Brixo/TargetId.h>
#include <Brixo/UserMode.h>
#include <Brixo/constants.h>

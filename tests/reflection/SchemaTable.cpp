#include "SchemaTable.h"

namespace Brixo::testing {

namespace {

constexpr unsigned stored = 2;
constexpr unsigned procedural = 8;

constexpr auto value = TypeRow::value;
constexpr auto enumeration = TypeRow::enumeration;
constexpr auto entity = TypeRow::entity;
constexpr std::string_view object = "Vel::PtrInterface";

constexpr std::string_view agentId = "Brixo::AgentId";
constexpr std::string_view bitId = "Orn::BitId";
constexpr std::string_view bytes = "Vel::BytePtr";
constexpr std::string_view command = "Brixo::Command";
constexpr std::string_view dalId = "Brixo::DalId";
constexpr std::string_view dataMask = "Brixo::RequesterDataMask";
constexpr std::string_view deviceId = "Brixo::DeviceId";
constexpr std::string_view ioMemType = "Brixo::IoMemType";
constexpr std::string_view logicalId = "Brixo::LogicalResourceId";
constexpr std::string_view offset = "Brixo::DeviceOffset";
constexpr std::string_view physicalId = "Brixo::PhysicalResourceId";
constexpr std::string_view registerId = "Brixo::LogicalRegisterId";
constexpr std::string_view remoteId = "Brixo::LogicalRemoteResourceId";
constexpr std::string_view resourceType = "Brixo::ResourceType";
constexpr std::string_view status = "Brixo::DalProcessingStatus";
constexpr std::string_view tableId = "Brixo::LogicalTableId";
constexpr std::string_view tableIndex = "Brixo::CacheTableIndex";
constexpr std::string_view targetId = "Brixo::TargetId";
constexpr std::string_view targetMask = "Brixo::TargetMask";
constexpr std::string_view userMode = "Brixo::UserMode";

} // namespace

const std::vector<TypeRow>& schemaTable() {
    static const std::vector<TypeRow> table = {
        {"PhysicalAddr", "", value, {{"value", "U32"}}, {{"value", 2, "U32", stored}}},
        {deviceId,
         "",
         value,
         {{"value", "U16"}},
         {{"value", 2, "U16", stored}, {"hash", 3, "U16"}}},
        {offset,
         "",
         value,
         {{"value", "U32"}},
         {{"value", 2, "U32", stored}, {"hash", 3, "U32"}, {"null", 4, "U32"}}},
        {resourceType,
         "",
         enumeration,
         {},
         {{"invalidResource", 0, resourceType},
          {"tableResource", 1, resourceType},
          {"registerResource", 2, resourceType}}},
        {logicalId,
         "",
         value,
         {{"type", resourceType}, {"id", "U64"}},
         {{"type", 2, resourceType, stored},
          {"id", 3, "U64", stored},
          {"hash", 4, "U32", procedural}}},
        {physicalId,
         "",
         value,
         {{"type", resourceType}, {"id", "U64"}},
         {{"type", 2, resourceType, stored},
          {"id", 3, "U64", stored},
          {"hash", 4, "U32", procedural}}},
        {dalId,
         "",
         value,
         {{"id", "U8"}},
         {{"id", 2, "U8", stored}, {"invalidId", 3, "U8"}, {"hash", 4, "U32", procedural}}},
        {status,
         object,
         entity,
         {{"dalId", dalId}},
         {{"dalId", 130, dalId, stored},
          {"lastEnqueuedCmdIndex", 131, "U64", stored},
          {"lastProcessedCmdIndex", 132, "U64", stored},
          {"trackErrors", 133, "bool", stored},
          {"errorCode", 134, "int", stored, {}, "U64"},
          {"errorBucket", 135, "U32", stored, {}, "int"},
          {"fwkKey", 0, dalId}}},
        {"Brixo::DalProcessingStatusCol",
         object,
         entity,
         {},
         {{"processingStatus", 130, status, 0, {{"dalId", dalId}}, dalId, "dalId"}}},
        {tableId, logicalId, value, {{"id", "U64"}}, {}},
        {"Brixo::PhysicalTableId", physicalId, value, {{"id", "U64"}}, {}},
        {registerId, logicalId, value, {{"id", "U64"}}, {}},
        {"Brixo::PhysicalRegisterId", physicalId, value, {{"id", "U64"}}, {}},
        {dataMask,
         "",
         value,
         {{"valid", "bool"}},
         {{"valid", 2, "bool", stored},
          {"mask", 3, "U8", stored, {}, "U16"},
          {"setBitRange", 4, "", 0, {{"start", "U16"}, {"end", "U16"}}},
          {"setBitOffsetAndLength", 5, "", 0, {{"start", "U16"}, {"len", "U16"}}},
          {"fillMaskToBuf", 6, "", 0, {{"buf", bytes}, {"size", "U16"}}}}},
        {remoteId,
         "",
         value,
         {{"id", logicalId}, {"mask", dataMask}},
         {{"id", 2, logicalId, stored},
          {"mask", 3, dataMask, stored},
          {"hash", 4, "U32", procedural}}},
        {"Brixo::LogicalRemoteResourceIdCol",
         object,
         entity,
         {},
         {{"tableIdIs", 130, "", 0, {{"tid", tableId}}},
          {"tableIdWithMaskIs", 131, "", 0, {{"tid", tableId}, {"mask", dataMask}}},
          {"registerIdIs", 132, "", 0, {{"rid", registerId}}},
          {"registerIdWithMaskIs", 133, "", 0, {{"rid", registerId}, {"mask", dataMask}}},
          {"resourceId", 134, remoteId, 0, {}, logicalId, "id"}}},
        {"Brixo::PhysicalResourceIdCol",
         object,
         entity,
         {},
         {{"resourceId", 130, physicalId, 0, {}, "U64", "id"}}},
        {"Brixo::ResourceIdToDataMaskMap",
         object,
         entity,
         {},
         {{"dataMask", 130, dataMask, stored, {}, physicalId}}},
        {agentId,
         "",
         value,
         {{"value", "U16"}},
         {{"value", 2, "U16", stored}, {"hash", 3, "U16"}, {"null", 4, "U16"}}},
        {userMode, "", enumeration, {}, {{"requester", 0, userMode}, {"serializer", 1, userMode}}},
        {command,
         "",
         enumeration,
         {},
         {{"writeCmd", 0, command},
          {"readCmd", 1, command},
          {"bulkWriteCmd", 2, command},
          {"bulkReadCmd", 3, command},
          {"bulkInitReadCmd", 4, command},
          {"bulkInitFreeCmd", 5, command}}},
        {targetId,
         bitId,
         value,
         {{"value", "U8"}},
         {{"min", 130, "U8"},
          {"anyTarget", 131, "U8"},
          {"allTargets", 132, "U8"},
          {"max", 133, "U8"},
          {"hash", 134, "U8"},
          {"alias", 135, "bool", procedural}}},
        {targetMask,
         "",
         value,
         {{"value", "U64"}},
         {{"maskFromDevId", 130, targetMask, 0, {{"devId", deviceId}}},
          {"targets", 131, "U32", procedural},
          {"targetId", 132, "bool", 0, {}, targetId},
          {"nextTargetId", 133, targetId, 0, {{"targetId", targetId}}}}},
        {ioMemType, "", enumeration, {}, {{"pinbufMem", 0, ioMemType}, {"mmapMem", 1, ioMemType}}},
        {bitId, "", value, {{"value", "U8"}}, {{"value", 2, "U8", stored}, {"null", 3, "U8"}}},
        {"Orn::U64Bitmask",
         "",
         value,
         {{"value", "U64"}},
         {{"value", 2, "U64", stored},
          {"bits", 3, "U32", procedural},
          {"bitId", 4, "bool", 0, {}, bitId},
          {"nextBitId", 5, bitId, 0, {{"bitId", bitId}}}}},
        {tableIndex,
         "",
         value,
         {},
         {{"devId", 2, deviceId, stored},
          {"resourceId", 3, physicalId, stored},
          {"hash", 4, "U32", procedural}}},
        {"Brixo::CacheTable",
         object,
         entity,
         {{"agentId", agentId}, {"tableId", tableIndex}, {"size", "U32"}, {"entrySize", "U32"}},
         {{"agentId", 130, agentId, stored},
          {"tableId", 131, tableIndex, stored},
          {"size", 132, "U32", stored},
          {"entrySize", 133, "U32", stored},
          {"entry", 134, bytes, 0, {{"key", offset}}},
          {"entryIs", 135, "", 0, {{"key", offset}, {"data", bytes}}},
          {"entryDel", 136, "", 0, {{"key", offset}}},
          {"entry_py", 137, "U64", 0, {{"key", offset}}},
          {"entryIs_py", 138, "", 0, {{"key", offset}, {"data", "U64"}}},
          {"pinbufPtr", 139, bytes, stored},
          {"pinbufSize", 140, "U32", stored},
          {"entryPtr", 141, bytes, 0, {{"index", "U32"}}},
          {"keyToIndex", 142, "U32", stored, {}, offset},
          {"freeIndex", 143, "bool", stored, {}, "U32"},
          {"doRestart", 144, "", procedural},
          {"initialized", 145, "bool", stored},
          {"handleInitialized", 146, "", procedural}}},
    };
    return table;
}

} // namespace Brixo::testing

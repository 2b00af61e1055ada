// The operations of CUserData on interfaces: the two maps, their order, and the document interFace.json.

#include "config/DocumentBackup.h"
#include "config/JsonNumber.h"
#include "platform/GeneratorId.h"
#include "platform/RavLog.h"
#include "userdata/UserData.h"

#include <algorithm>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace {

using nlohmann::json;

constexpr const char* kListKey = "configList";

template <typename Map>
bool CopyRecord(CSharedMutex& mutex, const Map& map, std::int32_t nodeId, typename Map::mapped_type& record) {
    const CSharedLock lock(mutex);
    const auto found = map.find(nodeId);
    if (found == map.end()) {
        return false;
    }
    record = found->second;
    return true;
}

template <typename Map>
void StoreRecord(CSharedMutex& mutex, Map& map, std::int32_t nodeId,
                 const typename Map::mapped_type& record) {
    const CLock lock(mutex);
    map[nodeId] = record;
}

template <typename Map>
bool EraseRecord(CSharedMutex& mutex, Map& map, std::int32_t nodeId) {
    const CLock lock(mutex);
    return map.erase(nodeId) != 0;
}

/** True when a record other than the excluded one meets the condition. */
template <typename Map, typename Condition>
bool AnyRecord(const Map& map, bool exists, std::int32_t nodeId, Condition condition) {
    return std::any_of(map.begin(), map.end(), [&](const auto& entry) {
        return !(exists && entry.first == nodeId) && condition(entry.second);
    });
}

/** The kind that an element of the list declares. */
struct SElement {
    std::int32_t nodeId = 0;
    std::string kind;
    const json* body = nullptr;  ///< the object that the kind names, or null
};

bool ReadElement(const json& source, SElement& element) {
    const auto controlType = source.find("controlType");
    const auto nodeId = source.find("nodeId");
    if (controlType == source.end() || nodeId == source.end() || !nodeId->is_number_integer()) {
        return false;
    }
    element.nodeId = JsonToInt32(*nodeId);
    element.kind = controlType->is_string() ? controlType->get<std::string>() : std::string();
    const auto body = source.find(element.kind);
    element.body = body != source.end() && body->is_object() ? &*body : nullptr;
    return true;
}

/** Logs what the next save of the interfaces will drop, and keeps the file as it is. */
void TellUnused(const std::string& what, const std::string& path, CJsonFileWriter& writer) {
    writer.KeepBeforeNextSave(path);
    RavLog::WriteSystemLog(RavLog::Error, "UpdateNetSerialMap",
                           path + " holds " + what +
                               ": correct it while the server is stopped, the next change of an interface "
                               "drops what can't be used" +
                               KeepUnusableDocument(path));
}

}  // namespace

bool CUserData::GetNetPortConfig(std::int32_t nodeId, SNetPortConfig& record) const {
    return CopyRecord(netPortMutex, netPortMap, nodeId, record);
}

bool CUserData::GetSerialPortConfig(std::int32_t nodeId, SSerialPortConfig& record) const {
    return CopyRecord(serialPortMutex, serialPortMap, nodeId, record);
}

void CUserData::SetNetPortConfig(std::int32_t nodeId, const SNetPortConfig& record) {
    const CLock changing(interfaceChangeMutex);
    StoreRecord(netPortMutex, netPortMap, nodeId, record);
    AddInterfaceOrder(nodeId, true);
    SaveInterfaceDocument();
}

void CUserData::SetSerialPortConfig(std::int32_t nodeId, const SSerialPortConfig& record) {
    const CLock changing(interfaceChangeMutex);
    StoreRecord(serialPortMutex, serialPortMap, nodeId, record);
    AddInterfaceOrder(nodeId, false);
    SaveInterfaceDocument();
}

NetPortMap CUserData::GetNetPortMap() const {
    return CopyUnder(netPortMutex, netPortMap);
}

std::vector<SInterfaceOrderEntry> CUserData::GetInterfaceOrder() const {
    return CopyUnder(orderMutex, interfaceOrder);
}

void CUserData::RemoveInterface(std::int32_t nodeId, int mode) {
    {
        const CLock changing(interfaceChangeMutex);
        const bool isFound = EraseRecord(netPortMutex, netPortMap, nodeId) ||
                             EraseRecord(serialPortMutex, serialPortMap, nodeId);
        RemoveInterfaceOrder(nodeId);
        if (!isFound || mode != RemovalDeleted) {
            return;
        }
        SaveInterfaceDocument();
    }
    RemovePortCommands(nodeId);
}

void CUserData::ClearInterfaces() {
    const CLock changing(interfaceChangeMutex);
    StoreInterfaceList(json::array());
    {
        const CLock lock(netPortMutex);
        netPortMap.clear();
    }
    {
        const CLock lock(serialPortMutex);
        serialPortMap.clear();
    }
    const CLock lock(orderMutex);
    interfaceOrder.clear();
    orderedIds.clear();
}

bool CUserData::IsInterfaceNameUsed(const std::string& name, bool exists, std::int32_t nodeId) const {
    return AnyRecord(CopyUnder(netPortMutex, netPortMap), exists, nodeId,
                     [&name](const SNetPortConfig& record) { return record.netPortName == name; }) ||
           AnyRecord(CopyUnder(serialPortMutex, serialPortMap), exists, nodeId,
                     [&name](const SSerialPortConfig& record) { return record.comName == name; });
}

bool CUserData::IsNetConfigDuplicate(const SNetPortConfig& record, bool exists, std::int32_t nodeId) const {
    const CSharedLock lock(netPortMutex);
    return AnyRecord(netPortMap, exists, nodeId, [&record](const SNetPortConfig& other) {
        return other.ipAddress == record.ipAddress && other.dstIpAddress == record.dstIpAddress &&
               other.port == record.port && other.dstPort == record.dstPort &&
               other.netMode == record.netMode;
    });
}

bool CUserData::IsSerialConfigDuplicate(const SSerialPortConfig& record, bool exists,
                                        std::int32_t nodeId) const {
    const CSharedLock lock(serialPortMutex);
    return AnyRecord(serialPortMap, exists, nodeId, [&record](const SSerialPortConfig& other) {
        return other.comPort == record.comPort && other.baudRate == record.baudRate &&
               other.wordLength == record.wordLength && other.parity == record.parity &&
               other.stopBits == record.stopBits;
    });
}

void CUserData::UpdateNetSerialMap() {
    const json list = interfaceDocument.Read([](const json& document) {
        const auto member = document.find(kListKey);
        return member == document.end() ? json() : *member;
    });
    if (!list.is_array()) {
        TellUnused("no array configList", interfaceDocument.Path(), writer);
        return;
    }
    std::set<int> usedIds;
    std::size_t unusable = 0;
    const CLock changing(interfaceChangeMutex);
    for (const json& source : list) {
        SElement element;
        if (!ReadElement(source, element)) {
            ++unusable;
            continue;
        }
        usedIds.insert(element.nodeId);  // an element with an invalid body keeps its id nevertheless
        SSerialPortConfig serialPort;
        SNetPortConfig netPort;
        const bool hasBody = element.body != nullptr;
        if (hasBody && element.kind == "comInfo" && ParseSerialPortRequest(*element.body, serialPort)) {
            AddInterfaceOrder(element.nodeId, false);
            StoreRecord(serialPortMutex, serialPortMap, element.nodeId, serialPort);
        } else if (hasBody && element.kind == "netPortInfo" && ParseNetPortRequest(*element.body, netPort)) {
            AddInterfaceOrder(element.nodeId, true);
            StoreRecord(netPortMutex, netPortMap, element.nodeId, netPort);
        } else {
            ++unusable;
        }
    }
    if (unusable > 0) {
        TellUnused(std::to_string(unusable) + " of " + std::to_string(list.size()) +
                       " elements that are no interfaces",
                   interfaceDocument.Path(), writer);
    }
    CGeneratorId::getInstance()->Initialize(usedIds);
}

void CUserData::AddInterfaceOrder(std::int32_t nodeId, bool isNet) {
    const CLock lock(orderMutex);
    if (orderedIds.insert(nodeId).second) {
        try {
            interfaceOrder.push_back({nodeId, isNet});
        } catch (...) {
            orderedIds.erase(nodeId);
            throw;
        }
        return;
    }
    const auto entry =
        std::find_if(interfaceOrder.begin(), interfaceOrder.end(),
                     [nodeId](const SInterfaceOrderEntry& other) { return other.nodeId == nodeId; });
    if (entry != interfaceOrder.end()) {
        entry->isNet = isNet;
    }
}

void CUserData::RemoveInterfaceOrder(std::int32_t nodeId) {
    const CLock lock(orderMutex);
    orderedIds.erase(nodeId);
    std::erase_if(interfaceOrder,
                  [nodeId](const SInterfaceOrderEntry& entry) { return entry.nodeId == nodeId; });
}

void CUserData::SaveInterfaceDocument() {
    const std::vector<SInterfaceOrderEntry> order = GetInterfaceOrder();
    const SerialPortMap serialPorts = CopyUnder(serialPortMutex, serialPortMap);
    const NetPortMap netPorts = CopyUnder(netPortMutex, netPortMap);
    json list = json::array();
    for (const auto& [nodeId, isNet] : order) {
        if (isNet) {
            if (const auto port = netPorts.find(nodeId); port != netPorts.end()) {
                list.push_back(MakeNetPortElement(nodeId, port->second));
            }
        } else if (const auto port = serialPorts.find(nodeId); port != serialPorts.end()) {
            list.push_back(MakeSerialPortElement(nodeId, port->second));
        }
    }
    StoreInterfaceList(std::move(list));
}

void CUserData::StoreInterfaceList(nlohmann::json list) {
    interfaceDocument.Update([&list](json& document) {
        if (!document.is_object()) {
            document = json::object();  // the file held no interfaces; the start has logged that
        }
        document[kListKey] = std::move(list);
    });
}

#pragma once

#include "config/JsonFileWriter.h"
#include "platform/Mutex.h"
#include "userdata/CommandMap.h"
#include "userdata/Document.h"
#include "userdata/InterfaceModel.h"
#include "versions/Generations.h"

#include <atomic>
#include <cstdint>
#include <functional>
#include <string>
#include <unordered_set>
#include <vector>

#include <nlohmann/json.hpp>

/** Pages, materials and component interactions. */
struct SProject {  // NOLINT(bugprone-exception-escape): the JSON library moves without throwing
    nlohmann::json layout;
    nlohmann::json materials;
    nlohmann::json componentConfig;
};

/** States of the documents at about the same moment; none is null. */
struct SProjectStates {
    CDocument::State layout;
    CDocument::State materials;
    CDocument::State componentConfig;
    CDocument::State interfaces;
};

/**
 * Everything that the user has configured: documents, interfaces, commands, language. One object per process.
 *
 * The constructor loads the documents. They are held in memory, handed out as copies, and saved in the
 * background on every change. All operations may be called from any thread at any time; no caller waits for
 * the disk. A failed save is reported on standard output and in the system log, not to the caller.
 *
 * Each document and each map has a lock of its own. No two are held at once, with two exceptions. The
 * writer's mutex is taken inside a document's lock. And two mutexes are taken before all others: one lets a
 * single thread at a time change the interfaces together with their document, the other the component
 * interactions together with the command map. So of two changes at the same moment the later one's list
 * stays, and no command is lost. Changes of pages, materials and component interactions share one more lock,
 * taken before even these, which the replacement of all three has for itself.
 */
class CUserData {
  public:
    /**
     * The only store; the first call loads all documents from user_data_path.
     * @throw nlohmann::json::type_error when materials.json or interFace.json is an empty array, or when
     * setting.json is neither empty nor an object with values of the right types; the next call tries again
     */
    static CUserData& GetInstance();

    CUserData(const CUserData&) = delete;
    CUserData& operator=(const CUserData&) = delete;

    /** Waits until all saves are on the disk. */
    virtual ~CUserData();

    /** Page layout; null when none was stored yet. The setters replace the document and save it. */
    nlohmann::json GetLayout() const;
    void SetLayout(nlohmann::json document);

    /** Materials; an object with an empty materialList when none were stored yet. */
    nlohmann::json GetMaterials() const;
    void SetMaterials(nlohmann::json document);

    /** Component interactions; null when none were stored yet. */
    nlohmann::json GetComponentConfig() const;

    /**
     * Replaces and saves the component interactions, then rebuilds the command map.
     * @throw nlohmann::json::type_error as UpdateCmdMap; the document is replaced and saved nevertheless
     */
    void SetComponentConfig(nlohmann::json document);

    /** Control boards. The setter writes apiList.json, which is never read. */
    nlohmann::json GetApiList() const;
    void SetApiList(nlohmann::json document);

    /** Infrared commands; null when none were stored yet. */
    nlohmann::json GetInfraredCom() const;
    void SetInfraredCom(nlohmann::json document);

    /** The document of interFace.json: an object with the array configList. It changes with the interfaces.
     */
    nlohmann::json GetInterfaceConfig() const;

    /**
     * The documents in the form in which they are sent, with their tags; made once for each change, never
     * copied.
     */
    CDocument::State GetLayoutState();
    CDocument::State GetMaterialsState();
    CDocument::State GetComponentConfigState();
    CDocument::State GetInterfaceConfigState();
    CDocument::State GetApiListState();

    /**
     * As the setters, but only when the present state passes the check: see CDocument::ReplaceIf.
     * @throw nlohmann::json::type_error as SetComponentConfig
     */
    [[nodiscard]] CDocument::State ReplaceLayout(nlohmann::json document, const CDocument::StateCheck& check);
    [[nodiscard]] CDocument::State ReplaceMaterials(nlohmann::json document,
                                                    const CDocument::StateCheck& check);
    [[nodiscard]] CDocument::State ReplaceComponentConfig(nlohmann::json document,
                                                          const CDocument::StateCheck& check);

    SProjectStates GetProjectStates();

    /**
     * Replaces pages, materials and component interactions at once, saves them, and rebuilds the command map,
     * but only while these documents and the interfaces are in the given states. The interfaces stay.
     * @return false when another state is stored; nothing has changed then
     * @throw nlohmann::json::type_error as UpdateCmdMap; nothing has changed then
     */
    [[nodiscard]] bool ReplaceProject(SProject project, const SProjectStates& present);

    /** The document of the values that devices say. Only its file and its state belong to this store. */
    CDocument& EquipmentDocument() { return equipmentDocument; }

    /** How the saves of the documents stand. */
    SSaveCounts GetSaveCounts() { return writer.Counts(); }

    /** The earlier states of the documents. */
    CGenerations& GetGenerations() { return generations; }

    /** The language in force: 0 Chinese, 1 any other. */
    std::int32_t GetLanguage() const;

    /** True while the language follows the system. */
    bool GetIsAutoLanguage() const;

    /** Stores and saves the language. With isAuto the caller passes the system's. */
    void SetLanguage(std::int32_t newLanguage, bool isAuto);

    /** Copies an interface. False when there is none of this id and kind; the record is unchanged then. */
    [[nodiscard]] bool GetNetPortConfig(std::int32_t nodeId, SNetPortConfig& record) const;
    [[nodiscard]] bool GetSerialPortConfig(std::int32_t nodeId, SSerialPortConfig& record) const;

    /** Adds or replaces an interface and saves the interfaces. A new one goes to the end of the order. */
    void SetNetPortConfig(std::int32_t nodeId, const SNetPortConfig& record);
    void SetSerialPortConfig(std::int32_t nodeId, const SSerialPortConfig& record);

    /** All interfaces in the order that the user sees. */
    std::vector<SInterfaceOrderEntry> GetInterfaceOrder() const;

    /** A copy of all network interfaces. */
    NetPortMap GetNetPortMap() const;

    /** Modes of RemoveInterface. */
    enum EnRemoval : int {
        RemovalReplaced = 0,  ///< the caller stores a new record under this id at once; nothing is saved
        RemovalDeleted = 1,   ///< the interface is gone, and its commands with it; both are saved
    };

    /** Removes an interface; an unknown id is no error. @param mode  an EnRemoval */
    void RemoveInterface(std::int32_t nodeId, int mode);

    /** Removes all interfaces and saves that. The commands stay. */
    void ClearInterfaces();

    /**
     * Whether an interface of either kind has this name.
     * @param exists  true: the interface nodeId is being edited, and is left out of the comparison
     */
    bool IsInterfaceNameUsed(const std::string& name, bool exists, std::int32_t nodeId) const;

    /** Whether a network interface has the same end points and mode; exists as above. */
    bool IsNetConfigDuplicate(const SNetPortConfig& record, bool exists, std::int32_t nodeId) const;

    /** Whether a serial interface has the same port and line settings; exists as above. */
    bool IsSerialConfigDuplicate(const SSerialPortConfig& record, bool exists, std::int32_t nodeId) const;

    /**
     * Reads the interfaces from their document and passes the used ids to CGeneratorId. The system log lists
     * unusable elements. At start only.
     */
    void UpdateNetSerialMap();

    /** The commands of a component for a kind of trigger, in sending order; empty when there are none. */
    std::vector<SCommandConfig> GetCommands(std::int32_t componentId, const std::string& triggerType) const;

    /**
     * Rebuilds the command map from the component interactions; a document without them changes nothing.
     * Called at start, and at the end of SetComponentConfig, which meanwhile prevents other changes.
     * @throw nlohmann::json::type_error when a command holds a value of the wrong type; the map is unchanged
     * then
     */
    void UpdateCmdMap();

    /** Removes the commands of one interface from the map and from the component interactions, and saves. */
    void RemovePortCommands(std::int32_t nodeId);

  protected:
    /** Loads all documents. Throws as GetInstance describes. */
    CUserData();

  private:
    // The order belongs to the change of a record: with the lock taken later, a record that is stored while
    // all are being deleted stays in its map and misses from the list.
    void AddInterfaceOrder(std::int32_t nodeId, bool isNet) REQUIRES_LOCK(interfaceChangeMutex);
    void RemoveInterfaceOrder(std::int32_t nodeId) REQUIRES_LOCK(interfaceChangeMutex);
    void SaveInterfaceDocument() REQUIRES_LOCK(interfaceChangeMutex);
    void StoreInterfaceList(nlohmann::json list) REQUIRES_LOCK(interfaceChangeMutex);
    void SyncComponentConfig() REQUIRES_LOCK(componentChangeMutex);

    CGenerations generations;
    CJsonFileWriter writer{SSavePauses(), [this](const std::string& path) { generations.BeforeSave(path); }};
    CSharedMutex projectMutex;  // taken before all others
    mutable CSharedMutex layoutMutex;
    nlohmann::json layout GUARDED_BY(layoutMutex);
    mutable CSharedMutex materialsMutex;
    nlohmann::json materials GUARDED_BY(materialsMutex);
    CMutex componentChangeMutex;  // taken before all but projectMutex
    mutable CSharedMutex componentMutex;
    nlohmann::json componentConfig GUARDED_BY(componentMutex);
    mutable CSharedMutex apiListMutex;
    nlohmann::json apiList GUARDED_BY(apiListMutex);
    mutable CSharedMutex cmdMapMutex;
    CmdMap cmdMap GUARDED_BY(cmdMapMutex);
    CSharedMutex settingMutex;
    std::atomic<bool> isAutoLanguage{true};
    std::atomic<std::int32_t> language{0};
    CMutex interfaceChangeMutex;  // taken before all others
    mutable CSharedMutex interfaceMutex;
    nlohmann::json interfaceConfig GUARDED_BY(interfaceMutex);
    mutable CSharedMutex netPortMutex;
    NetPortMap netPortMap GUARDED_BY(netPortMutex);
    mutable CSharedMutex serialPortMutex;
    SerialPortMap serialPortMap GUARDED_BY(serialPortMutex);
    mutable CSharedMutex orderMutex;
    std::vector<SInterfaceOrderEntry> interfaceOrder GUARDED_BY(orderMutex);
    std::unordered_set<std::int32_t> orderedIds GUARDED_BY(orderMutex);  ///< those in interfaceOrder
    mutable CSharedMutex infraredMutex;
    nlohmann::json infraredCom GUARDED_BY(infraredMutex);
    mutable CSharedMutex equipmentMutex;
    nlohmann::json equipment GUARDED_BY(equipmentMutex);

    // The way to the documents above, once they are loaded.
    CDocument layoutDocument{layoutMutex, layout, writer, "/layout.json"};
    CDocument equipmentDocument{equipmentMutex, equipment, writer, "/equipment.json"};
    CDocument materialsDocument{materialsMutex, materials, writer, "/materials.json"};
    CDocument componentDocument{componentMutex, componentConfig, writer, "/componentConfig.json"};
    CDocument apiListDocument{apiListMutex, apiList, writer, "/apiList.json"};
    CDocument interfaceDocument{interfaceMutex, interfaceConfig, writer, "/interFace.json"};
    CDocument infraredDocument{infraredMutex, infraredCom, writer, "/infraredCom.json"};
};

/**
 * Sets document[key] to an empty array when the document is null or empty; any other document stays.
 * @throw nlohmann::json::type_error 305 when the document is an empty array
 */
void EnsureArrayMember(nlohmann::json& document, const std::string& key);

#include "userdata/UserData.h"

#include "config/DocumentBackup.h"
#include "config/JsonFile.h"
#include "config/UnusableFile.h"
#include "include/GlobalConfig.h"
#include "platform/ProcessEnd.h"
#include "server/LogText.h"
#include "userdata/DocumentPath.h"
#include "userdata/LanguageSetting.h"

#include <exception>
#include <utility>

namespace {

using nlohmann::json;

constexpr const char* kSettingName = "/setting.json";

/** The list of control boards that browsers get: one board, always the same. */
json CreateDefaultBoardInfo() {
    const json boardMark = {{"boardClass", "centralControl"},
                            {"boardId", 4112},
                            {"boardIndex", 12},
                            {"boardType", "centralControlBoard"}};
    const json placeholder = {{"interfaceInfo", ""}, {"interfaceMark", ""}};
    const json board = {{"boardDataType", "centralControlBoard"},
                        {"centralControlBoardInfo",
                         {{"boardMark", boardMark}, {"interfaceInfoArr", json::array({placeholder})}}},
                        {"isExistBoard", 1},
                        {"isPositionAbnormal", 0},
                        {"statusCode", 0}};
    return {{"centralControlBoardCount", 1}, {"centralControlBoardInfoArr", json::array({board})}};
}

void LogLoadFailure(const char* what, const std::exception& error) {
    WriteRootLog(RavLog::Error, "CUserData::CUserData", FormatLogText(what, error.what()));
}

}  // namespace

void EnsureArrayMember(nlohmann::json& document, const std::string& key) {
    if (document.is_null()) {
        document = json::object();
    }
    if (document.empty()) {
        document[key] = json::array();
    }
}

CUserData& CUserData::GetInstance() {
    static CUserData instance;
    // The destructor of a module's object runs too late for a wait on some systems.
    [[maybe_unused]] static const bool waitsForSaves = [] {
        CallAtProcessEnd([] { GetInstance().writer.WaitAll(); });
        return true;
    }();
    return instance;
}

CUserData::CUserData() {
    apiList = CreateDefaultBoardInfo();
    layoutDocument.Load();
    materialsDocument.Load();
    UseFile(materialsDocument.Path(), [this] { EnsureArrayMember(materials, "materialList"); });
    componentDocument.Load();
    interfaceDocument.Load();
    UseFile(interfaceDocument.Path(), [this] { EnsureArrayMember(interfaceConfig, "configList"); });
    infraredDocument.Load();
    if (equipmentDocument.IsStored()) {
        equipmentDocument.Load();
    }
    try {
        UpdateCmdMap();
    } catch (const std::exception& error) {
        LogLoadFailure("[Load File] Failed UpdateCmdMap!", error);
    }
    try {
        UpdateNetSerialMap();
    } catch (const std::exception& error) {
        LogLoadFailure("[Load File] Failed UpdateNetSerialMap!", error);
    }
    const std::string settingPath = DocumentPath(kSettingName);
    UseFile(settingPath, [this, &settingPath] {
        const SLanguageSetting setting = ParseLanguageSetting(
            LoadJsonFromFile(RestoreFromBackup(settingPath)), GetConfigInstance().system_language, 0);
        isAutoLanguage = setting.isAuto;
        language = setting.language;
    });
}

CUserData::~CUserData() {
    writer.WaitAll();
}

nlohmann::json CUserData::GetLayout() const {
    return layoutDocument.Copy();
}

void CUserData::SetLayout(nlohmann::json document) {
    const CSharedLock sharing(projectMutex);
    layoutDocument.Set(std::move(document));
}

nlohmann::json CUserData::GetMaterials() const {
    return materialsDocument.Copy();
}

void CUserData::SetMaterials(nlohmann::json document) {
    const CSharedLock sharing(projectMutex);
    materialsDocument.Set(std::move(document));
}

nlohmann::json CUserData::GetComponentConfig() const {
    return componentDocument.Copy();
}

void CUserData::SetComponentConfig(nlohmann::json document) {
    const CSharedLock sharing(projectMutex);
    const CLock changing(componentChangeMutex);
    componentDocument.Set(std::move(document));
    UpdateCmdMap();
}

nlohmann::json CUserData::GetApiList() const {
    return apiListDocument.Copy();
}

void CUserData::SetApiList(nlohmann::json document) {
    apiListDocument.Set(std::move(document));
}

nlohmann::json CUserData::GetInfraredCom() const {
    return infraredDocument.Copy();
}

void CUserData::SetInfraredCom(nlohmann::json document) {
    infraredDocument.Set(std::move(document));
}

nlohmann::json CUserData::GetInterfaceConfig() const {
    return interfaceDocument.Copy();
}

CDocument::State CUserData::ReplaceLayout(nlohmann::json document, const CDocument::StateCheck& check) {
    const CSharedLock sharing(projectMutex);
    return layoutDocument.ReplaceIf(std::move(document), check);
}

CDocument::State CUserData::ReplaceMaterials(nlohmann::json document, const CDocument::StateCheck& check) {
    const CSharedLock sharing(projectMutex);
    return materialsDocument.ReplaceIf(std::move(document), check);
}

CDocument::State CUserData::ReplaceComponentConfig(nlohmann::json document,
                                                   const CDocument::StateCheck& check) {
    const CSharedLock sharing(projectMutex);
    const CLock changing(componentChangeMutex);
    auto stored = componentDocument.ReplaceIf(std::move(document), check);
    if (stored) {
        UpdateCmdMap();
    }
    return stored;
}

CDocument::State CUserData::GetLayoutState() {
    return layoutDocument.GetState();
}

CDocument::State CUserData::GetMaterialsState() {
    return materialsDocument.GetState();
}

CDocument::State CUserData::GetComponentConfigState() {
    return componentDocument.GetState();
}

CDocument::State CUserData::GetInterfaceConfigState() {
    return interfaceDocument.GetState();
}

CDocument::State CUserData::GetApiListState() {
    return apiListDocument.GetState();
}

std::int32_t CUserData::GetLanguage() const {
    return language;
}

bool CUserData::GetIsAutoLanguage() const {
    return isAutoLanguage;
}

void CUserData::SetLanguage(std::int32_t newLanguage, bool isAuto) {
    // Around all of it: of two choices at once the same one is in force, whole, and on the disk.
    const CLock lock(settingMutex);
    language = newLanguage;
    isAutoLanguage = isAuto;
    writer.SaveAsync({{"IsAutoLanguage", isAuto}, {"Language", newLanguage}}, DocumentPath(kSettingName));
}

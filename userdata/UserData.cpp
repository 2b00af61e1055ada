#include "userdata/UserData.h"

#include "config/DocumentBackup.h"
#include "config/JsonFile.h"
#include "config/JsonRelease.h"
#include "config/UnusableFile.h"
#include "include/GlobalConfig.h"
#include "platform/ProcessEnd.h"
#include "server/LogText.h"
#include "userdata/BoardInfo.h"
#include "userdata/DocumentPath.h"
#include "userdata/LanguageSetting.h"

#include <exception>
#include <utility>

namespace {

using nlohmann::json;

json LoadDocument(const char* name) {
    return LoadJsonFromFile(RestoreFromBackup(DocumentPath(name)));
}

json CopyDocument(CSharedMutex& mutex, const json& held) {
    const CSharedLock lock(mutex);
    return held;
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
    static const bool waitsForSaves = (CallAtProcessEnd([] { GetInstance().writer.WaitAll(); }), true);
    static_cast<void>(waitsForSaves);
    return instance;
}

CUserData::CUserData() {
    apiList = CreateDefaultBoardInfo();
    layout = LoadDocument("/layout.json");
    materials = LoadDocument("/materials.json");
    UseFile(DocumentPath("/materials.json"), [this] { EnsureArrayMember(materials, "materialList"); });
    componentConfig = LoadDocument("/componentConfig.json");
    interfaceConfig = LoadDocument("/interFace.json");
    UseFile(DocumentPath("/interFace.json"), [this] { EnsureArrayMember(interfaceConfig, "configList"); });
    infraredCom = LoadDocument("/infraredCom.json");
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
    UseFile(DocumentPath("/setting.json"), [this] {
        const SLanguageSetting setting =
            ParseLanguageSetting(LoadDocument("/setting.json"), GetConfigInstance().system_language, 0);
        isAutoLanguage = setting.isAuto;
        language = setting.language;
    });
}

CUserData::~CUserData() {
    writer.WaitAll();
}

void CUserData::SetDocument(CSharedMutex& mutex, nlohmann::json& held, CDocument* text,
                            nlohmann::json document, const char* name) {
    const CJsonRelease release(document);
    json saved = document;
    const std::string path = DocumentPath(name);
    const CLock lock(mutex);
    if (text != nullptr) {
        text->Forget();
    }
    held.swap(document);  // what was held is destroyed after the lock
    writer.SaveAsync(std::move(saved), path);
}

CDocument::State CUserData::ReplaceDocument(CSharedMutex& mutex, nlohmann::json& held, CDocument& text,
                                            nlohmann::json document, const char* name,
                                            const StateCheck& check) {
    const CJsonRelease release(document);
    auto next = std::make_shared<const CDocumentState>(document);
    json saved = document;
    const std::string path = DocumentPath(name);
    for (;;) {
        const CDocument::State present = text.Get(mutex, held);
        if (!check(present->Tag())) {
            return nullptr;
        }
        const CLock lock(mutex);
        if (text.Is(present)) {  // else another write was faster, and its state is the one to look at
            text.Replace(next);
            held.swap(document);
            writer.SaveAsync(std::move(saved), path);
            return next;
        }
    }
}

nlohmann::json CUserData::GetLayout() const {
    return CopyDocument(layoutMutex, layout);
}

void CUserData::SetLayout(nlohmann::json document) {
    SetDocument(layoutMutex, layout, &layoutText, std::move(document), "/layout.json");
}

nlohmann::json CUserData::GetMaterials() const {
    return CopyDocument(materialsMutex, materials);
}

void CUserData::SetMaterials(nlohmann::json document) {
    SetDocument(materialsMutex, materials, &materialsText, std::move(document), "/materials.json");
}

nlohmann::json CUserData::GetComponentConfig() const {
    return CopyDocument(componentMutex, componentConfig);
}

void CUserData::SetComponentConfig(nlohmann::json document) {
    const CLock changing(componentChangeMutex);
    SetDocument(componentMutex, componentConfig, &componentText, std::move(document),
                "/componentConfig.json");
    UpdateCmdMap();
}

nlohmann::json CUserData::GetApiList() const {
    return CopyDocument(apiListMutex, apiList);
}

void CUserData::SetApiList(nlohmann::json document) {
    SetDocument(apiListMutex, apiList, &apiListText, std::move(document), "/apiList.json");
}

nlohmann::json CUserData::GetInfraredCom() const {
    return CopyDocument(infraredMutex, infraredCom);
}

void CUserData::SetInfraredCom(nlohmann::json document) {
    SetDocument(infraredMutex, infraredCom, nullptr, std::move(document), "/infraredCom.json");
}

nlohmann::json CUserData::GetInterfaceConfig() const {
    return CopyDocument(interfaceMutex, interfaceConfig);
}

CDocument::State CUserData::ReplaceLayout(nlohmann::json document, const StateCheck& check) {
    return ReplaceDocument(layoutMutex, layout, layoutText, std::move(document), "/layout.json", check);
}

CDocument::State CUserData::ReplaceMaterials(nlohmann::json document, const StateCheck& check) {
    return ReplaceDocument(materialsMutex, materials, materialsText, std::move(document), "/materials.json",
                           check);
}

CDocument::State CUserData::ReplaceComponentConfig(nlohmann::json document, const StateCheck& check) {
    const CLock changing(componentChangeMutex);
    auto stored = ReplaceDocument(componentMutex, componentConfig, componentText, std::move(document),
                                  "/componentConfig.json", check);
    if (stored) {
        UpdateCmdMap();
    }
    return stored;
}

CDocument::State CUserData::GetLayoutState() {
    return layoutText.Get(layoutMutex, layout);
}

CDocument::State CUserData::GetMaterialsState() {
    return materialsText.Get(materialsMutex, materials);
}

CDocument::State CUserData::GetComponentConfigState() {
    return componentText.Get(componentMutex, componentConfig);
}

CDocument::State CUserData::GetInterfaceConfigState() {
    return interfaceText.Get(interfaceMutex, interfaceConfig);
}

CDocument::State CUserData::GetApiListState() {
    return apiListText.Get(apiListMutex, apiList);
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
    writer.SaveAsync({{"IsAutoLanguage", isAuto}, {"Language", newLanguage}}, DocumentPath("/setting.json"));
}

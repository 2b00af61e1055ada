#include "versions/api/Restoring.h"

#include "config/JsonDepth.h"
#include "equipment/values/ConfigStore.h"
#include "equipment/values/EquipmentConfig.h"
#include "include/GlobalConfig.h"
#include "platform/Mutex.h"
#include "userdata/UserData.h"
#include "versions/VersionProblem.h"

#include <utility>

namespace {

using nlohmann::json;

/** How often a restoration begins anew when others change the documents meanwhile. */
constexpr int kAttempts = 3;

CMutex g_restoring;

/** A document of a generation; null when it did not exist then. */
json Parse(const DocumentTexts& texts, const std::string& name) {
    const auto text = texts.find(name);
    if (text == texts.end()) {
        return {};
    }
    if (IsNestedTooDeep(text->second)) {
        throw CVersionProblem(EnVersionProblem::Torn, name + " is nested too deep");
    }
    try {
        return json::parse(text->second);
    } catch (const json::parse_error& error) {
        throw CVersionProblem(EnVersionProblem::Torn, name + ": " + error.what());
    }
}

/** @throw CVersionProblem also for commands that the server could not use */
SProject ParseProject(const DocumentTexts& texts) {
    SProject project{Parse(texts, "layout.json"), Parse(texts, "materials.json"),
                     Parse(texts, "componentConfig.json")};
    try {
        static_cast<void>(CommandsOf(project.componentConfig));
    } catch (const json::type_error& error) {
        throw CVersionProblem(EnVersionProblem::BadCommands, error.what());
    }
    if (project.materials.is_null()) {
        EnsureArrayMember(project.materials, "materialList");
    }
    return project;
}

/** What devices were asked; without such a document, nothing. */
json ParseEquipment(const DocumentTexts& texts) {
    json equipment = Parse(texts, "equipment.json");
    return equipment.is_null() ? json{{"version", 1}, {"devices", json::array()}} : equipment;
}

/** @throw CVersionProblem when devices can't be asked by this document */
void Check(const json& equipment) {
    try {
        static_cast<void>(ParseEquipmentConfig(equipment));
    } catch (const CConfigProblem& problem) {
        throw CVersionProblem(EnVersionProblem::Torn, std::string("equipment.json: ") + problem.what());
    }
}

std::string Keep(const SProjectStates& states, const CDocument::State& equipment) {
    DocumentTexts texts;
    for (const auto& [name, state] :
         {std::pair("layout.json", states.layout), std::pair("materials.json", states.materials),
          std::pair("componentConfig.json", states.componentConfig),
          std::pair("interFace.json", states.interfaces), std::pair("equipment.json", equipment)}) {
        if (!state->Json().empty()) {
            texts.emplace(name, state->Json());
        }
    }
    try {
        return CUserData::GetInstance().GetGenerations().Keep(GetConfigInstance().user_data_path, texts);
    } catch (const std::exception& error) {
        throw CVersionProblem(EnVersionProblem::NotKept, error.what());
    }
}

}  // namespace

std::string KeepPresent() {
    CUserData& data = CUserData::GetInstance();
    return Keep(data.GetProjectStates(), data.EquipmentDocument().GetState());
}

SRestored RestoreVersion(const std::string& id) {
    const CLock lock(g_restoring);
    const DocumentTexts texts = CGenerations::Read(GetConfigInstance().user_data_path, id);
    const json interfaces = Parse(texts, "interFace.json");
    CUserData& data = CUserData::GetInstance();
    for (int attempt = 0; attempt < kAttempts; ++attempt) {
        SProject project = ParseProject(texts);
        json equipment = ParseEquipment(texts);
        const SProjectStates present = data.GetProjectStates();
        const CDocument::State presentEquipment = data.EquipmentDocument().GetState();
        const json now = json::parse(present.interfaces->Json());
        SRestored restored;
        restored.missing = FitCommands(project.componentConfig, interfaces, now);
        FitDevices(equipment, interfaces, now);
        Check(equipment);
        restored.kept = Keep(present, presentEquipment);
        const auto replace = [&] { return data.ReplaceProject(std::move(project), present); };
        const bool isConcerned = texts.contains("equipment.json") || !presentEquipment->Json().empty();
        if (isConcerned ? StoreEquipmentConfigWith(std::move(equipment), presentEquipment, replace)
                        : replace()) {
            return restored;
        }
    }
    throw CVersionProblem(EnVersionProblem::Busy, "others keep changing the documents");
}

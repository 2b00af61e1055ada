#include "versions/api/Restoring.h"

#include "config/JsonDepth.h"
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

std::string Keep(const SProjectStates& states) {
    DocumentTexts texts;
    for (const auto& [name, state] :
         {std::pair("layout.json", states.layout), std::pair("materials.json", states.materials),
          std::pair("componentConfig.json", states.componentConfig),
          std::pair("interFace.json", states.interfaces),
          std::pair("equipment.json", CUserData::GetInstance().EquipmentDocument().GetState())}) {
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
    return Keep(CUserData::GetInstance().GetProjectStates());
}

SRestored RestoreVersion(const std::string& id) {
    const CLock lock(g_restoring);
    const DocumentTexts texts = CGenerations::Read(GetConfigInstance().user_data_path, id);
    const json interfaces = Parse(texts, "interFace.json");
    CUserData& data = CUserData::GetInstance();
    for (int attempt = 0; attempt < kAttempts; ++attempt) {
        SProject project = ParseProject(texts);
        const SProjectStates present = data.GetProjectStates();
        SRestored restored;
        restored.missing =
            FitCommands(project.componentConfig, interfaces, json::parse(present.interfaces->Json()));
        restored.kept = Keep(present);
        if (data.ReplaceProject(std::move(project), present)) {
            return restored;
        }
    }
    throw CVersionProblem(EnVersionProblem::Busy, "others keep changing the documents");
}

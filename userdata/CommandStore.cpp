// The operations of CUserData on the command map and the component interactions behind it.

#include "userdata/DocumentPath.h"
#include "userdata/UserData.h"

#include <utility>

namespace {

using nlohmann::json;

constexpr const char* kInteractionKey = "componentInteractionInfo";

/** The component interactions of a document; null when it has none that can be walked. */
const json* FindInteractions(const json& componentConfig) {
    const auto interactions = componentConfig.find(kInteractionKey);
    if (interactions == componentConfig.end()) {
        return nullptr;
    }
    const auto components = interactions->find("componentArr");
    return components != interactions->end() && components->is_array() ? &*interactions : nullptr;
}

}  // namespace

std::vector<SCommandConfig> CUserData::GetCommands(std::int32_t componentId,
                                                   const std::string& triggerType) const {
    const CSharedLock lock(cmdMapMutex);
    const auto triggers = cmdMap.find(componentId);
    if (triggers == cmdMap.end()) {
        return {};
    }
    const auto commands = triggers->second.find(triggerType);
    return commands == triggers->second.end() ? std::vector<SCommandConfig>() : commands->second;
}

void CUserData::UpdateCmdMap() {
    CmdMap built;
    {
        // Read in place: a copy would take ten times as long, under the same lock.
        const CSharedLock lock(componentMutex);
        const json* interactions = FindInteractions(componentConfig);
        if (interactions == nullptr) {
            return;
        }
        BuildCmdMap(*interactions, built);
    }
    const CLock lock(cmdMapMutex);
    cmdMap.swap(built);
}

void CUserData::RemovePortCommands(std::int32_t nodeId) {
    const CLock changing(componentChangeMutex);
    {
        const CLock lock(cmdMapMutex);
        RemoveCommandsOfPort(cmdMap, nodeId);
    }
    SyncComponentConfig();
}

void CUserData::SyncComponentConfig() {
    json interactions;
    {
        const CSharedLock lock(componentMutex);
        const json* found = FindInteractions(componentConfig);
        if (found == nullptr) {
            return;
        }
        interactions = *found;
    }
    CmdMap commands;
    {
        const CSharedLock lock(cmdMapMutex);
        commands = cmdMap;
    }
    PruneCommandArrays(interactions, commands);
    const CLock lock(componentMutex);
    componentText.Forget();
    componentConfig[kInteractionKey].swap(interactions);
    writer.SaveAsync(componentConfig, DocumentPath("/componentConfig.json"));
}

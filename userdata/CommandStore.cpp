// The operations of CUserData on the command map and the component interactions behind it.

#include "userdata/DocumentPath.h"
#include "userdata/UserData.h"

#include <mutex>
#include <utility>

namespace {

using nlohmann::json;

constexpr const char* g_interactionKey = "componentInteractionInfo";

/** A copy of the component interactions; null when the document has none that can be walked. */
json CopyInteractions(std::shared_mutex& mutex, const json& componentConfig) {
    json interactions;
    {
        const std::shared_lock lock(mutex);
        if (const auto member = componentConfig.find(g_interactionKey); member != componentConfig.end()) {
            interactions = *member;
        }
    }
    const auto components = interactions.find("componentArr");
    return components != interactions.end() && components->is_array() ? interactions : json();
}

}  // namespace

std::vector<SCommandConfig> CUserData::GetCommands(std::int32_t componentId,
                                                   const std::string& triggerType) const {
    const std::shared_lock lock(cmdMapMutex);
    const auto triggers = cmdMap.find(componentId);
    if (triggers == cmdMap.end()) {
        return {};
    }
    const auto commands = triggers->second.find(triggerType);
    return commands == triggers->second.end() ? std::vector<SCommandConfig>() : commands->second;
}

void CUserData::UpdateCmdMap() {
    const json interactions = CopyInteractions(componentMutex, componentConfig);
    if (interactions.is_null()) {
        return;
    }
    CmdMap built;
    BuildCmdMap(interactions, built);
    const std::unique_lock lock(cmdMapMutex);
    cmdMap.swap(built);
}

void CUserData::RemovePortCommands(std::int32_t nodeId) {
    {
        const std::unique_lock lock(cmdMapMutex);
        RemoveCommandsOfPort(cmdMap, nodeId);
    }
    SyncComponentConfig();
}

void CUserData::SyncComponentConfig() {
    json interactions = CopyInteractions(componentMutex, componentConfig);
    if (interactions.is_null()) {
        return;
    }
    CmdMap commands;
    {
        const std::shared_lock lock(cmdMapMutex);
        commands = cmdMap;
    }
    PruneCommandArrays(interactions, commands);
    const std::unique_lock lock(componentMutex);
    componentConfig[g_interactionKey].swap(interactions);
    writer.SaveAsync(componentConfig, DocumentPath("/componentConfig.json"));
}

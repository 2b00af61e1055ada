// The operations of CUserData on the command map and on the component interactions from which it is built.

#include "userdata/UserData.h"

#include <utility>

namespace {

using nlohmann::json;

constexpr const char* kInteractionKey = "componentInteractionInfo";

/** The component interactions of a document; null when there are none of the right shape. */
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
    // Read in place: a copy would take ten times as long, under the same lock.
    const bool isFound = componentDocument.Read([&built](const json& document) {
        const json* interactions = FindInteractions(document);
        if (interactions != nullptr) {
            BuildCmdMap(*interactions, built);
        }
        return interactions != nullptr;
    });
    if (!isFound) {
        return;
    }
    const CLock lock(cmdMapMutex);
    cmdMap.swap(built);
}

void CUserData::RemovePortCommands(std::int32_t nodeId) {
    const CSharedLock sharing(projectMutex);
    const CLock changing(componentChangeMutex);
    {
        const CLock lock(cmdMapMutex);
        RemoveCommandsOfPort(cmdMap, nodeId);
    }
    SyncComponentConfig();
}

void CUserData::SyncComponentConfig() {
    json interactions = componentDocument.Read([](const json& document) {
        const json* found = FindInteractions(document);
        return found == nullptr ? json() : *found;
    });
    if (interactions.is_null()) {
        return;
    }
    PruneCommandArrays(interactions, CopyUnder(cmdMapMutex, cmdMap));
    componentDocument.Update(
        [&interactions](json& document) { document[kInteractionKey].swap(interactions); });
}

// The operations of CUserData on pages, materials and component interactions together.

#include "userdata/UserData.h"

#include <utility>

SProjectStates CUserData::GetProjectStates() {
    return {GetLayoutState(), GetMaterialsState(), GetComponentConfigState(), GetInterfaceConfigState()};
}

bool CUserData::ReplaceProject(SProject project, const SProjectStates& present) {
    CmdMap commands = CommandsOf(project.componentConfig);
    const CLock replacing(projectMutex);
    const CLock changing(componentChangeMutex);
    const SProjectStates stored = GetProjectStates();
    if (stored.layout->Tag() != present.layout->Tag() ||
        stored.materials->Tag() != present.materials->Tag() ||
        stored.componentConfig->Tag() != present.componentConfig->Tag() ||
        stored.interfaces->Tag() != present.interfaces->Tag()) {
        return false;
    }
    materialsDocument.Set(std::move(project.materials));
    componentDocument.Set(std::move(project.componentConfig));
    {
        const CLock lock(cmdMapMutex);
        cmdMap.swap(commands);
    }
    // The layout comes last: a panel that reads in between never meets a page without its commands.
    layoutDocument.Set(std::move(project.layout));
    return true;
}

// Any saved document: the store comes up or refuses it, holds what was whole, and the forms that are derived
// from it agree with it. The first byte says which document it is.
#include "config/JsonDepth.h"
#include "tests/fuzz/FuzzHome.h"
#include "tests/fuzz/FuzzTarget.h"
#include "userdata/UserData.h"

#include <array>
#include <tuple>

namespace {

using nlohmann::json;

constexpr std::string_view kFirst = "lmcairs";
constexpr std::array<const char*, 7> kNames = {"layout.json",  "materials.json", "componentConfig.json",
                                               "apiList.json", "interFace.json", "infraredCom.json",
                                               "setting.json"};

struct Store : CUserData {};

auto Fields(const SCommandConfig& command) {
    return std::tie(command.portIndex, command.controlType, command.content, command.commandName,
                    command.interfaceName, command.contentFormat, command.asciiEncode);
}

bool AreEqual(const std::vector<SCommandConfig>& left, const std::vector<SCommandConfig>& right) {
    return std::equal(left.begin(), left.end(), right.begin(), right.end(),
                      [](const auto& a, const auto& b) { return Fields(a) == Fields(b); });
}

/** A port's commands are removed from the map and from the document: both agree then. */
void CheckCommands(json interactions) {
    CmdMap map;
    BuildCmdMap(interactions, map);
    for (const auto& [id, triggers] : CmdMap(map)) {
        for (const auto& [trigger, commands] : triggers) {
            if (!commands.empty()) {
                RemoveCommandsOfPort(map, commands.front().portIndex);
            }
        }
        PruneCommandArrays(interactions, map);
        CmdMap again;
        BuildCmdMap(interactions, again);
        for (const auto& [trigger, commands] : triggers) {
            Require(AreEqual(map[id][trigger], again[id][trigger]));
        }
    }
}

/** An interface that was read is the same after it was written and read again. */
void CheckInterfaces(const json& list) {
    for (const json& element : list) {
        SNetPortConfig net;
        SSerialPortConfig serial;
        if (ParseNetPortRequest(element.value("netPortInfo", json()), net)) {
            const json written = MakeNetPortElement(1, net);
            Require(ParseNetPortRequest(written["netPortInfo"], net) &&
                    written == MakeNetPortElement(1, net));
        }
        if (ParseSerialPortRequest(element.value("comInfo", json()), serial)) {
            const json written = MakeSerialPortElement(1, serial);
            Require(ParseSerialPortRequest(written["comInfo"], serial) &&
                    written == MakeSerialPortElement(1, serial));
        }
    }
}

}  // namespace

FUZZ_TARGET(documents) {
    const std::size_t which = bytes.empty() ? bytes.npos : kFirst.find(bytes[0]);
    if (which == bytes.npos) {
        return;
    }
    const std::string text(bytes.substr(1));
    std::filesystem::remove_all(FuzzHome());
    simulation::WriteFile(FuzzHome() / kNames[which], text);
    const json document = IsNestedTooDeep(text) ? json() : json::parse(text, nullptr, false);
    try {
        Store store;
        for (const auto read : {&CUserData::GetLayout, &CUserData::GetMaterials, &CUserData::GetApiList,
                                &CUserData::GetComponentConfig, &CUserData::GetInterfaceConfig}) {
            Require(!(store.*read)().dump().empty());  // what was read can be sent and saved
        }
        Require(which != 0 || document.is_discarded() || store.GetLayout() == document);
        Require(which != 5 || document.is_discarded() || store.GetInfraredCom() == document);
    } catch (const json::type_error&) {
        Require(which == 1 || which == 4 || which == 6);  // materials, interfaces, settings
    }
    try {
        CheckCommands(document);
        CheckInterfaces(document);
    } catch (const json::type_error&) {
        return;  // a value of another type
    }
}

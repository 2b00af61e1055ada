#include "userdata/CommandMap.h"

#include "config/JsonNumber.h"

#include <algorithm>
#include <utility>

namespace {

using nlohmann::json;

/** The member of an object; null when the value is not an object or has no such key. */
const json* Find(const json& object, const char* key) {
    const auto member = object.find(key);
    return member == object.end() ? nullptr : &*member;
}

json* Find(json& object, const char* key) {
    const auto member = object.find(key);
    return member == object.end() ? nullptr : &*member;
}

/** The array member of an object; null when there is none. */
template <typename Json>
Json* FindArray(Json& object, const char* key) {
    Json* member = Find(object, key);
    return member != nullptr && member->is_array() ? member : nullptr;
}

/** The integer member of an object; null when there is none. */
const json* FindInteger(const json& object, const char* key) {
    const json* member = Find(object, key);
    return member != nullptr && member->is_number_integer() ? member : nullptr;
}

std::string TextOrEmpty(const json* value) {
    return value != nullptr && value->is_string() ? value->get<std::string>() : std::string();
}

/** A number that may be missing. @throw type_error 302 for any other type, booleans included */
std::int32_t OptionalNumber(const json& object, const char* key) {
    const json* value = Find(object, key);
    if (value == nullptr) {
        return 0;
    }
    if (!value->is_number()) {
        static_cast<void>(value->get<double>());  // raises the type error of the JSON library
    }
    return JsonToInt32(*value);
}

/** The interface's name. @throw type_error 302 when a value of either spelling is not a text */
std::string InterfaceNameOf(const json& command) {
    const json* name = Find(command, "interfaceName");
    const json* otherName = Find(command, "interFaceName");
    const std::string otherText = otherName != nullptr ? otherName->get<std::string>() : "Unnamed";
    return name != nullptr ? name->get<std::string>() : otherText;
}

std::vector<SCommandConfig> ParseCommands(const json& commands) {
    std::vector<SCommandConfig> records;
    records.reserve(commands.size());
    for (const json& command : commands) {
        SCommandConfig record;
        if (ParseCommand(command, record)) {
            records.push_back(std::move(record));
        }
    }
    return records;
}

/**
 * The ports of lists of records, in ascending order: computed once for a list that many interactions can
 * share.
 */
class CPortLists {
  public:
    const std::vector<std::int32_t>& Of(const std::vector<SCommandConfig>& records) {
        const auto [list, isNew] = m_lists.try_emplace(&records, records.size());
        std::vector<std::int32_t>& ports = list->second;
        if (isNew) {
            std::transform(records.begin(), records.end(), ports.begin(),
                           [](const SCommandConfig& record) { return record.portIndex; });
            std::sort(ports.begin(), ports.end());
        }
        return ports;
    }

  private:
    std::unordered_map<const std::vector<SCommandConfig>*, std::vector<std::int32_t>> m_lists;
};

/** Removes the commands that have none of the ports. */
void PruneCommands(json& commands, const std::vector<std::int32_t>& ports) {
    const auto isForgotten = [&ports](const json& command) {
        const json* portIndex = FindInteger(command, "portIndex");
        return portIndex != nullptr &&
               !std::binary_search(ports.begin(), ports.end(), JsonToInt32(*portIndex));
    };
    auto& elements = commands.get_ref<json::array_t&>();
    elements.erase(std::remove_if(elements.begin(), elements.end(), isForgotten), elements.end());
}

}  // namespace

bool ParseCommand(const nlohmann::json& command, SCommandConfig& record) {
    const json* portIndex = FindInteger(command, "portIndex");
    if (portIndex == nullptr) {
        return false;
    }
    record.portIndex = JsonToInt32(*portIndex);
    const json* controlType = Find(command, "controlType");
    const std::string kind = controlType != nullptr ? TextOrEmpty(controlType) : std::string();
    if (kind != "comInfo" && kind != "netPortInfo") {
        return false;
    }
    record.controlType = kind == "comInfo" ? 0 : 1;
    const json* inner = Find(command, kind.c_str());
    const json* content = inner != nullptr ? Find(*inner, "content") : nullptr;
    if (content == nullptr) {
        return false;
    }
    record.content = content->get<std::string>();
    record.commandName = TextOrEmpty(Find(command, "commandName"));
    record.interfaceName = InterfaceNameOf(command);
    record.contentFormat = OptionalNumber(command, "contentFormat");
    record.asciiEncode = OptionalNumber(command, "asciiEncode");
    return true;
}

void BuildCmdMap(const nlohmann::json& document, CmdMap& cmdMap) {
    CmdMap built;
    if (const json* components = FindArray(document, "componentArr")) {
        built.reserve(components->size());
        for (const json& component : *components) {
            const json* componentId = FindInteger(component, "componentId");
            const json* interactions = FindArray(component, "interactionArr");
            if (componentId == nullptr || interactions == nullptr) {
                continue;
            }
            CmdMap::mapped_type triggers;
            for (const json& interaction : *interactions) {
                const json* triggerType = Find(interaction, "triggerType");
                const json* commands = FindArray(interaction, "commandArr");
                if (triggerType != nullptr && triggerType->is_string() && commands != nullptr) {
                    triggers[triggerType->get<std::string>()] = ParseCommands(*commands);
                }
            }
            built[JsonToInt32(*componentId)] = std::move(triggers);
        }
    }
    cmdMap.swap(built);
}

CmdMap CommandsOf(const nlohmann::json& componentConfig) {
    CmdMap commands;
    if (const json* interactions = Find(componentConfig, "componentInteractionInfo")) {
        BuildCmdMap(*interactions, commands);
    }
    return commands;
}

void RemoveCommandsOfPort(CmdMap& cmdMap, std::int32_t nodeId) {
    for (auto& [componentId, triggers] : cmdMap) {
        for (auto& [triggerType, records] : triggers) {
            std::erase_if(records,
                          [nodeId](const SCommandConfig& record) { return record.portIndex == nodeId; });
        }
    }
}

void PruneCommandArrays(nlohmann::json& document, const CmdMap& cmdMap) {
    json* components = FindArray(document, "componentArr");
    if (components == nullptr) {
        return;
    }
    CPortLists ports;
    for (json& component : *components) {
        const json* componentId = FindInteger(component, "componentId");
        json* interactions = FindArray(component, "interactionArr");
        if (componentId == nullptr || interactions == nullptr) {
            continue;
        }
        const auto triggers = cmdMap.find(JsonToInt32(*componentId));
        if (triggers == cmdMap.end()) {
            continue;
        }
        for (json& interaction : *interactions) {
            const json* triggerType = Find(interaction, "triggerType");
            json* commands = FindArray(interaction, "commandArr");
            if (triggerType == nullptr || commands == nullptr) {
                continue;
            }
            const auto records = triggers->second.find(TextOrEmpty(triggerType));
            if (records != triggers->second.end()) {
                PruneCommands(*commands, ports.Of(records->second));
            }
        }
    }
}

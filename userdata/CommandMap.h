#pragma once

#include <cstdint>
#include <string>
#include <unordered_map>
#include <vector>

#include <nlohmann/json.hpp>

/** One command that a component sends. */
struct SCommandConfig {
    std::int32_t portIndex = 0;      ///< node id of the interface that sends it
    std::string interfaceName;       ///< that interface's name, for messages
    std::int32_t controlType = 0;    ///< 0: serial interface; 1: network interface
    std::string content;             ///< what to send, in the form of contentFormat
    std::string commandName;         ///< the command's name, for messages
    std::int32_t contentFormat = 0;  ///< 0: text; any other: hexadecimal digits
    std::int32_t asciiEncode = 0;    ///< encoding of text, as CComManager defines it
};

/** Commands by component id and kind of trigger, in sending order. */
using CmdMap = std::unordered_map<std::int32_t, std::unordered_map<std::string, std::vector<SCommandConfig>>>;

/**
 * Reads one command of a component. Keeps no state; any thread.
 * @return false for a command of the wrong shape, which the caller leaves out without a message
 * @throw nlohmann::json::type_error 302 when content, the interface's name, contentFormat or asciiEncode has
 * the wrong type
 */
[[nodiscard]] bool ParseCommand(const nlohmann::json& command, SCommandConfig& record);

/**
 * Builds the map of all commands from the value of componentInteractionInfo and replaces cmdMap by it. A
 * document without an array componentArr gives an empty map.
 * @throw nlohmann::json::type_error as ParseCommand; cmdMap is unchanged then
 */
void BuildCmdMap(const nlohmann::json& document, CmdMap& cmdMap);

/** The map of a whole document of component interactions. @throw nlohmann::json::type_error as ParseCommand
 */
CmdMap CommandsOf(const nlohmann::json& componentConfig);

/** Removes the commands of one interface. Lists that become empty remain under their keys. */
void RemoveCommandsOfPort(CmdMap& cmdMap, std::int32_t nodeId);

/**
 * Removes each command from the value of componentInteractionInfo whose interface has no command left in the
 * same component and trigger of the map. Anything that has another shape, or is not in the map, stays.
 */
void PruneCommandArrays(nlohmann::json& document, const CmdMap& cmdMap);

#pragma once

#include "platform/PortRecords.h"

#include <cstdint>
#include <string>
#include <unordered_map>
#include <vector>

#include <nlohmann/json.hpp>

/** Position of one interface in the order that the user sees. */
struct SInterfaceOrderEntry {
    std::int32_t nodeId = 0;  ///< key of the interface
    bool isNet = false;       ///< true: a network interface; false: a serial one
};

/** Network interfaces by node id. */
using NetPortMap = std::unordered_map<std::int32_t, SNetPortConfig>;

/** Serial interfaces by node id. */
using SerialPortMap = std::unordered_map<std::int32_t, SSerialPortConfig>;

/**
 * Reads a network interface from its JSON form: netMode, netPortName, ipAddress, dstIpAddress (texts), port,
 * dstPort (numbers), all required. Only the types of the values are checked. An unknown netMode counts as
 * "TCP_Client".
 *
 * @return false when a key is missing or has the wrong type. One line on standard output says why, and the
 * record keeps the values read so far. Any thread; throws only for lack of memory.
 */
[[nodiscard]] bool ParseNetPortRequest(nlohmann::json object, SNetPortConfig& record);

/**
 * Reads a serial interface from its JSON form: comName, comPort, parity (texts), wordLength, stopBits,
 * baudRate (numbers), all required. comPort is converted to upper case, and wordLength keeps its low 8 bits.
 * An unknown parity counts as none, an unknown number of stop bits as one. Failures are as for
 * ParseNetPortRequest.
 */
[[nodiscard]] bool ParseSerialPortRequest(nlohmann::json object, SSerialPortConfig& record);

/** One element of the configList of interFace.json for a network interface. */
nlohmann::json MakeNetPortElement(std::int32_t nodeId, const SNetPortConfig& record);

/** One element of the configList of interFace.json for a serial interface. */
nlohmann::json MakeSerialPortElement(std::int32_t nodeId, const SSerialPortConfig& record);

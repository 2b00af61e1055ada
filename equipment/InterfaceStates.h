#pragma once

#include "platform/PortReports.h"

#include <cstdint>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

/** One interface and what its port has done. */
struct SInterfaceReport {
    std::int32_t nodeId = 0;
    bool isNet = false;  ///< true: a network interface; false: a serial one
    std::string name;
    SPortReport port;
};

/** All interfaces in the order that the user sees. Opens nothing and waits for no device. Any thread. */
std::vector<SInterfaceReport> InterfaceReports();

/** Name of a state in replies: "open". */
const char* NameOf(EnPortState state);

/**
 * What the interfaces are doing: an array in the order that the user sees, in the form that docs/http-api.md
 * describes. Opens nothing and waits for no device. Any thread.
 */
nlohmann::json InterfaceStates();

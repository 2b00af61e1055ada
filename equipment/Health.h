#pragma once

#include "equipment/InterfaceStates.h"
#include "userdata/UserData.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

/** How the server is at one moment. */
struct SHealth {
    std::string version;                          ///< of the product
    std::chrono::system_clock::time_point since;  ///< when the module was loaded
    SSaveCounts saves;
    std::uint64_t lostRecords = 0;  ///< records that no log file could take
    std::size_t channels = 0;       ///< open WebSocket connections
    std::uint64_t memory = 0;       ///< resident bytes of the process; 0: unknown
    std::vector<SInterfaceReport> interfaces;

    /** How many interfaces are in each state. All states are there. */
    std::map<std::string, int> InterfacesByState() const;
};

/** Opens nothing and waits for no device and no disk. Any thread. */
SHealth HealthNow();

/** The form in which a client gets it (docs/http-api.md). */
nlohmann::json MakeHealth(const SHealth& health);

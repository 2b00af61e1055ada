#pragma once

#include <nlohmann/json.hpp>

/**
 * What the interfaces are doing: an array in the order that the user sees, in the form that docs/http-api.md
 * describes. Opens nothing and waits for no device. Any thread.
 */
nlohmann::json InterfaceStates();

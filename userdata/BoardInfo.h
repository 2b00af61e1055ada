#pragma once

#include <nlohmann/json.hpp>

/** The list of control boards that the browser is told: one board, always the same. */
nlohmann::json CreateDefaultBoardInfo();

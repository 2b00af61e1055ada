#pragma once

#include <nlohmann/json.hpp>

/** The list of control boards for the browser: one board, always the same. */
nlohmann::json CreateDefaultBoardInfo();

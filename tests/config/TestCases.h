#pragma once

#include "support/TemporaryFolder.h"

#include <string>

#include <nlohmann/json.hpp>

/** A list of cases from the file TestCases.json beside the test. */
inline nlohmann::json TestCases(const std::string& name) {
    return nlohmann::json::parse(support::ReadFile(TEST_CASES_FILE)).at(name);
}

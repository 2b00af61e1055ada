#pragma once

#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

using nlohmann::json;
namespace fs = std::filesystem;

/** A list of cases from the file TestCases.json beside the test. */
inline json TestCases(const std::string& name) {
    return json::parse(support::ReadFile(TEST_CASES_FILE)).at(name);
}

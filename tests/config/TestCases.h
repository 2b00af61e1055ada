#pragma once

#include "simulation/TemporaryFolder.h"

#include <tuple>
#include <vector>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

using nlohmann::json;
namespace fs = std::filesystem;
using simulation::ReadFile;
using simulation::WriteFile;

/** What an action fails with; empty when it does not. */
template <typename Action>
std::string FailureOf(Action action) try {
    action();
    return {};
} catch (const std::exception& error) {
    return error.what();
}

/** A list of cases from the file TestCases.json beside the test. */
inline json TestCases(const std::string& name) {
    return json::parse(ReadFile(TEST_CASES_FILE)).at(name);
}

/** The same as rows of values of these types; the first is the name of a row. */
template <typename... Values>
std::vector<std::tuple<Values...>> Rows(const std::string& name) {
    return TestCases(name).template get<std::vector<std::tuple<Values...>>>();
}

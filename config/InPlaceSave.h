#pragma once

#include <functional>
#include <optional>
#include <ostream>
#include <string>

#include <nlohmann/json.hpp>

/** Why a save is not done, or not yet. */
struct SSaveProblem {
    std::string line;         ///< for standard output; empty: none
    std::string text;         ///< for the system log
    bool canBeTried = false;  ///< another try may help
};

/** The text of a document as it stands in a file. @throw nlohmann::json::type_error for bad UTF-8 */
std::string SerialiseDocument(const nlohmann::json& document);

/**
 * Empties or creates a file, and writes it in place, in text mode.
 * @param write  writes the text when the file is open and empty; an exception from it is a permanent problem
 * @return nothing when the stream has taken all
 * @throw std::bad_alloc
 */
[[nodiscard]] std::optional<SSaveProblem> WriteInPlace(const std::string& path,
                                                       const std::function<void(std::ostream&)>& write);

/** Reports a failed save: on standard output if the problem has a line for it, and in the system log. */
void TellSaveProblem(const SSaveProblem& problem, const std::string& path);

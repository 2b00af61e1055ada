#pragma once

#include <exception>
#include <string>

/**
 * Tells the operator, on standard error and in the system log, which file keeps the server from starting,
 * why, and what to do about it. Any thread.
 */
void TellUnusableFile(const std::string& path, const std::exception& error);

/**
 * Runs a step of the start that uses a file, or a part of it that path names as well; an exception is told
 * with that name and passes on.
 */
template <typename Step>
void UseFile(const std::string& path, Step step) {
    try {
        step();
    } catch (const std::exception& error) {
        TellUnusableFile(path, error);
        throw;
    }
}

#pragma once

#include <exception>
#include <string>

/**
 * Reports to the operator, on standard error and in the system log, which file keeps the server from
 * starting, why, and what to do about it. Any thread.
 */
void TellUnusableFile(const std::string& path, const std::exception& error);

/**
 * Runs a step of the start that uses a file. If the step throws, TellUnusableFile reports the exception
 * together with path, and the exception goes on to the caller.
 * @param path  the file, or a part of it (the file and a key)
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

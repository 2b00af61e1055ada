#pragma once

#include <string>

/**
 * The text for a command that could not be sent, in the user's language: names and error number, followed by
 * the system's text of the error.
 */
std::string BuildSendFailureText(bool isNet, int errorCode, const std::string& interfaceName,
                                 const std::string& commandName);

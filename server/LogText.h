#pragma once

#include "platform/RavLog.h"

#include <string>
#include <string_view>
#include <type_traits>

/**
 * Text of a log message: each argument, a text or an int, in square brackets followed by a blank:
 * FormatLogText("Client connected", "10.0.0.5:51234") gives "[Client connected] [10.0.0.5:51234] ".
 */
template <typename... Args>
std::string FormatLogText(const Args&... args) {
    std::string text;
    [[maybe_unused]] const auto append = [&text](const auto& arg) {
        text += '[';
        using Type = std::remove_cvref_t<decltype(arg)>;
        if constexpr (std::is_integral_v<Type> || std::is_enum_v<Type>) {
            text += std::to_string(arg);
        } else {
            text += std::string_view(arg);
        }
        text += "] ";
    };
    (append(args), ...);
    return text;
}

/**
 * Writes one event of the server to the application log; function is the place, "Class::Function". Does
 * nothing when there is no logger, or below its threshold. Any thread.
 */
void WriteRootLog(RavLog::EnLogLevel level, const std::string& function, const std::string& text);

/**
 * Writes one entry to the operation log: the arrival of a request (empty text) or its outcome. Otherwise like
 * WriteRootLog.
 */
void WriteOperationLog(const std::string& client, const std::string& path, const std::string& text);

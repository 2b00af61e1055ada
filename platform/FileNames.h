#pragma once

#include <string_view>

/**
 * Whether Windows takes one element of a path for a device, whatever follows its first dot or colon: "CON",
 * "nul.txt", "COM1". Such a name is treated alike on every system, so that a folder of files means the same
 * on each. Any thread.
 * @param name  UTF-8, without separators
 */
bool IsDeviceName(std::string_view name);

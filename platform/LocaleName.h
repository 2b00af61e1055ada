#pragma once

#include <string>

/**
 * Name of the user's locale: language and region joined by a hyphen ("zh-CN", "en-US"); empty when the system
 * has none. Any thread, as long as nothing changes the environment meanwhile.
 */
std::wstring GetSystemLocaleName();

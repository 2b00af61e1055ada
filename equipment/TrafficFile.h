#pragma once

#include "equipment/TrafficRing.h"

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>

/**
 * Writes the traffic of an interface to Traffic.log, from now on. A thread of its own reads what is kept, so
 * that no send waits for it; what has been dropped before it was read is told in the file.
 * @param until  when it ends by itself; a time that is over: it ends now
 */
void WriteTrafficFile(std::int32_t nodeId, std::chrono::system_clock::time_point until);

/** Until when the traffic of an interface is written to the file; nothing: it is not. Any thread. */
std::optional<std::chrono::system_clock::time_point> TrafficFileUntil(std::int32_t nodeId);

/** An entry as a line of the file: its milliseconds, bytes as digits and as text, and who sent it. */
std::string TrafficLine(const STrafficEntry& entry);

/** Bytes as digits, upper case. @param between  stands between two bytes */
std::string HexOf(std::string_view bytes, std::string_view between);

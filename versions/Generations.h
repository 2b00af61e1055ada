#pragma once

#include "platform/LocalClock.h"
#include "platform/Mutex.h"

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <vector>

/** Name of the folder of a generation: "2026-11-22_14-05-33", local time. The names sort by time. */
std::string GenerationName(std::chrono::local_seconds time);

/** The time that such a name tells; nothing for any other name. */
std::optional<std::chrono::local_seconds> GenerationTime(const std::string& name);

/**
 * Which generations are too many: all but the 12 latest, the first of each of the 12 latest days that have
 * one, and the first of each of the 6 latest months that have one. So 30 stay at most.
 * @param times  ascending
 */
std::vector<std::chrono::local_seconds> SuperfluousGenerations(
    const std::vector<std::chrono::local_seconds>& times);

/** When generations are made, and how much room they take. */
struct SGenerationLimits {
    std::chrono::seconds apart{3600};    ///< the least time between two of one day
    std::uintmax_t bytes = 256U << 20U;  ///< of all generations together; the oldest make way
    std::uintmax_t spareFactor = 4;      ///< none is made where less than so many times its size is free
};

/**
 * Keeps the pages, materials, component interactions and interfaces as they were, all four together, in the
 * folders Backup/<name of the generation>/ below the user data.
 *
 * A generation is made before the first save of a day, and before a save that comes an hour or more after the
 * last generation. It is there whole or not at all, also after a power cut.
 */
class CGenerations {
  public:
    explicit CGenerations(std::function<std::chrono::local_seconds()> clock = LocalClockNow,
                          const SGenerationLimits& limits = SGenerationLimits());

    /**
     * Makes a generation of a document's folder when one is due, and removes those that are too many. To be
     * called before a save writes anything. Blocks for the disk, and while another thread makes one. A
     * problem is told in the system log, once until there is none. Any thread.
     * @param path  the document to be saved; nothing is done for one that is none of the four above
     */
    void BeforeSave(const std::string& path) noexcept;

  private:
    void KeepIfDue(const std::filesystem::path& folder) const;

    const std::function<std::chrono::local_seconds()> m_clock;
    const SGenerationLimits m_limits;
    CMutex m_mutex;
    bool m_isTold GUARDED_BY(m_mutex) = false;  ///< the problem of now stands in the log
};

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

/** The time in such a name; nothing for any other name. */
std::optional<std::chrono::local_seconds> GenerationTime(const std::string& name);

/**
 * The generations to remove: all but the 12 latest, the first of each of the 12 latest days that have one,
 * and the first of each of the 6 latest months that have one. So at most 30 stay.
 * @param times  ascending
 */
std::vector<std::chrono::local_seconds> SuperfluousGenerations(
    const std::vector<std::chrono::local_seconds>& times);

/** When generations are made, and how much space they take. */
struct SGenerationLimits {
    std::chrono::seconds apart{3600};    ///< the least time between two of one day
    std::uintmax_t bytes = 256U << 20U;  ///< of all generations together; the oldest are deleted first
    std::uintmax_t spareFactor = 4;      ///< none is made when less than this many times its size is free
};

/**
 * Keeps earlier states of pages, materials, component interactions and interfaces, all four together, in the
 * folders Backup/<name of the generation>/ below the user data.
 *
 * A generation is made before the first save of a day, and before a save that comes an hour or more after the
 * last generation. It is either complete or absent, also after a power cut.
 */
class CGenerations {
  public:
    explicit CGenerations(std::function<std::chrono::local_seconds()> clock = LocalClockNow,
                          const SGenerationLimits& limits = SGenerationLimits());

    /**
     * Makes a generation of a document's folder when one is due, and removes superfluous ones. Call it before
     * a save writes anything. Blocks for the disk, and while another thread makes one. The system log reports
     * a problem once, until there is none. Any thread.
     * @param path  the document to be saved; nothing is done if it is not one of the four above
     */
    void BeforeSave(const std::string& path) noexcept;

  private:
    void KeepIfDue(const std::filesystem::path& folder) const;

    const std::function<std::chrono::local_seconds()> m_clock;
    const SGenerationLimits m_limits;
    CMutex m_mutex;
    bool m_isTold GUARDED_BY(m_mutex) = false;  ///< the present problem is in the log
};

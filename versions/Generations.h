#pragma once

#include "platform/LocalClock.h"
#include "platform/Mutex.h"
#include "versions/GenerationFolder.h"
#include "versions/VersionNames.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <map>
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
    std::uintmax_t bytes = 256U << 20U;  ///< of all that have no name; the oldest are deleted first
    std::uintmax_t spareFactor = 4;      ///< none is made when less than this many times its size is free
    std::size_t named = 200;             ///< most that have a name; together they take at most bytes, too
};

/** A generation as it is listed. */
struct SVersion {
    std::string id;                               ///< the name of its folder
    std::string name;                             ///< given by a user; empty: none
    std::map<std::string, std::uintmax_t> sizes;  ///< of its documents in bytes, by file name
};

/**
 * Keeps earlier states of pages, materials, component interactions, interfaces and what devices say, all five
 * together, in the folders Backup/<name of the generation>/ below the user data.
 *
 * A generation is made before the first save of a day, and before a save that comes an hour or more after the
 * last generation. It is either complete or absent, also after a power cut. Those with a name are not thinned
 * out. In all operations, folder is the user data folder. Any thread.
 */
class CGenerations {
  public:
    explicit CGenerations(std::function<std::chrono::local_seconds()> clock = LocalClockNow,
                          const SGenerationLimits& limits = SGenerationLimits());

    /**
     * Makes a generation of a document's folder when one is due, and removes superfluous ones. Call it before
     * a save writes anything. Blocks for the disk, and while another thread makes one. The system log reports
     * a problem once, until there is none. Any thread.
     * @param path  the document to be saved; nothing is done if it is not one of the five above
     */
    void BeforeSave(const std::string& path) noexcept;

    /**
     * Makes a generation of these documents now, and removes superfluous ones. Blocks as BeforeSave does.
     * @return its id
     * @throw std::exception when it can't be written, or would take too much room; there is none then
     */
    [[nodiscard]] std::string Keep(const std::string& folder, const DocumentTexts& documents);

    /** All generations, the latest first. */
    std::vector<SVersion> List(const std::string& folder);

    /**
     * The documents of a generation.
     * @throw CVersionProblem when there is no such generation, or a document can't be read
     */
    static DocumentTexts Read(const std::string& folder, const std::string& id);

    /** The path of a document of a generation. @throw CVersionProblem when there is none */
    static std::string PathOf(const std::string& folder, const std::string& id, const std::string& document);

    /**
     * Gives a generation a name, or takes it away.
     * @param name  empty: none
     * @throw CVersionProblem when there is no such generation, or the name can't be taken
     */
    void SetName(const std::string& folder, const std::string& id, const std::string& name);

  private:
    void KeepIfDue(const std::filesystem::path& folder) const REQUIRES_LOCK(m_mutex);
    std::string Make(const std::filesystem::path& folder, std::chrono::local_seconds now,
                     const DocumentTexts& documents) const REQUIRES_LOCK(m_mutex);

    const std::function<std::chrono::local_seconds()> m_clock;
    const SGenerationLimits m_limits;
    CMutex m_mutex;
    bool m_isTold GUARDED_BY(m_mutex) = false;  ///< the present problem is in the log
    CVersionNames m_names;
};

#pragma once

#include "platform/Mutex.h"

#include <cstddef>
#include <map>
#include <string>

/** Longest name of a generation, in characters. */
inline constexpr std::size_t kLongestVersionName = 80;

/**
 * The name as it is stored: without blanks at its ends.
 * @throw CVersionProblem when it is too long or has control characters
 */
std::string CheckedVersionName(const std::string& name);

/**
 * The names that users gave to generations: the file versions.json in the user data folder. It is read at
 * each use, so it can be edited while the server runs. Any thread, but one write at a time.
 */
class CVersionNames {
  public:
    using Names = std::map<std::string, std::string>;  ///< by id of the generation

    /** What the file says; empty for a missing or damaged one. The system log reports damage once. */
    Names Read(const std::string& folder);

    /**
     * Whether a generation has a name. One whose id stands in a damaged file counts as named, so that nothing
     * is removed because of the damage.
     */
    static bool IsNamed(const std::string& folder, const std::string& id);

    /**
     * Replaces the file; a power cut leaves the old or the new one. A damaged one is kept as .broken before.
     * @throw std::system_error
     */
    static void Write(const std::string& folder, const Names& names);

  private:
    CMutex m_mutex;
    bool m_isTold GUARDED_BY(m_mutex) = false;  ///< the damage is in the log
};

#pragma once

#include <cstdint>
#include <string>

/**
 * The exclusive right of a process to a folder, by a lock on the file Server.lock in it. The system releases
 * the lock when the process ends, in whatever way; the file stays. Two objects for one folder exclude each
 * other even within a process, and whatever path they use for the folder.
 */
class CFolderLock {
  public:
    enum class EnState {
        Held,
        Taken,       ///< another process, or another object, has the folder
        Unavailable  ///< the folder can't be locked: it is not writable, or its file system has no locks
    };

    /** Tries to take the folder, and creates it when it is missing. Does not wait. Any thread. */
    explicit CFolderLock(const std::string& folder);
    ~CFolderLock();
    CFolderLock(const CFolderLock&) = delete;
    CFolderLock& operator=(const CFolderLock&) = delete;

    EnState State() const { return m_state; }

    /** Number of the process that has the folder; empty unless it is taken and that number is known. */
    const std::string& Owner() const { return m_owner; }

    /** Why the folder can't be locked, in the system's words; empty unless the state is Unavailable. */
    const std::string& Problem() const { return m_problem; }

  private:
    void Take(const std::string& path);

    EnState m_state = EnState::Unavailable;
    std::string m_owner;
    std::string m_problem;
    std::intptr_t m_file = -1;  ///< descriptor or handle of the open file
};

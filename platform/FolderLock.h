#pragma once

#include <cstdint>
#include <string>

/**
 * The sole right of a process to a folder, by a lock on the file Server.lock in it. The system drops the lock
 * with the process, however that ends; the file stays. Two objects for one folder exclude each other also
 * within a process, and by whatever path they name the folder.
 */
class CFolderLock {
  public:
    enum class EnState {
        Held,
        Taken,       ///< another process, or another object, has the folder
        Unavailable  ///< the folder can't be locked: it can't be written, or its file system has no locks
    };

    /** Tries to take the folder, which is made when it is missing; does not wait. Any thread. */
    explicit CFolderLock(const std::string& folder);
    ~CFolderLock();
    CFolderLock(const CFolderLock&) = delete;
    CFolderLock& operator=(const CFolderLock&) = delete;

    EnState State() const { return m_state; }

    /** Number of the process that has the folder; empty unless it is taken and that number is known. */
    const std::string& Owner() const { return m_owner; }

    /** Why the folder can't be locked, in the system's words; empty unless that is so. */
    const std::string& Problem() const { return m_problem; }

  private:
    void Take(const std::string& path);

    EnState m_state = EnState::Unavailable;
    std::string m_owner;
    std::string m_problem;
    std::intptr_t m_file = -1;  ///< descriptor or handle of the open file
};

#pragma once

#include "platform/Mutex.h"

#include <set>

/**
 * The pool of node ids, the keys of interfaces. One object per process; all operations may be called from any
 * thread.
 *
 * Ids start at 1 and grow: the next id is one above the highest that this process has seen, so that a
 * forgotten command can't reach a new interface within one run. At the end of the range the lowest free id is
 * taken.
 */
class CGeneratorId {
  public:
    /** The only pool; built on first use, never null. */
    static CGeneratorId* getInstance();

    CGeneratorId(const CGeneratorId&) = delete;
    CGeneratorId& operator=(const CGeneratorId&) = delete;

    /** Marks exactly the given ids as taken. */
    void Initialize(const std::set<int>& ids);

    /** Takes a free id, 1 or more. @throw std::length_error when all of them are taken. */
    int GetId();

    /** Returns an id to the pool; an id that was never taken is no error. */
    void ReleaseId(int id);

    /** Forgets all taken ids. GetId still returns ids above all earlier ones afterwards. */
    void Clean();

  private:
    CGeneratorId() = default;

    /** Raises the highest seen id to this one, if it is higher. */
    void See(int id) REQUIRES_LOCK(m_mutex);

    CMutex m_mutex;
    std::set<int> m_taken GUARDED_BY(m_mutex);
    int m_highest GUARDED_BY(m_mutex) = 0;
};

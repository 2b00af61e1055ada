#pragma once

#include <mutex>
#include <shared_mutex>

// Mutexes that know what they guard. In scripts/lint, Clang checks at compile time that a member marked with
// GUARDED_BY is touched only under its lock (https://clang.llvm.org/docs/ThreadSafetyAnalysis.html). Other
// compilers see plain mutexes. A condition variable waits with the Native() of a CUniqueLock:
//
//     CUniqueLock lock(m_mutex);
//     m_changed.wait(lock.Native(), [this]() REQUIRES_LOCK(m_mutex) { return m_isReady; });
#if defined(__clang__)
#define THREAD_ATTRIBUTE(attribute) __attribute__((attribute))
#else
#define THREAD_ATTRIBUTE(attribute)
#endif

/** Of a member: it is read with this mutex held, at least shared, and written with it held exclusively. */
#define GUARDED_BY(mutex) THREAD_ATTRIBUTE(guarded_by(mutex))

/** Of a function: its caller holds this mutex, exclusively. */
#define REQUIRES_LOCK(mutex) THREAD_ATTRIBUTE(requires_capability(mutex))

/** Of a function: its caller holds this mutex, which the check can't know. */
#define ASSERTS_LOCK(mutex) THREAD_ATTRIBUTE(assert_capability(mutex))

/** A mutex for GUARDED_BY. */
class THREAD_ATTRIBUTE(capability("mutex")) CMutex : public std::mutex {};

/** A reader-writer lock for GUARDED_BY. */
class THREAD_ATTRIBUTE(capability("mutex")) CSharedMutex : public std::shared_mutex {
  public:
    /**
     * Takes the lock once, since MinGW's makes itself at its first use: two threads that come first at the
     * same moment would both get it.
     */
    CSharedMutex() {
        lock();
        unlock();
    }
};

/** Holds a CMutex or a CSharedMutex exclusively for the length of a scope. */
template <typename Mutex>
class THREAD_ATTRIBUTE(scoped_lockable) CLock {
  public:
    explicit CLock(Mutex& mutex) THREAD_ATTRIBUTE(acquire_capability(mutex)) : m_lock(mutex) {}
    ~CLock() THREAD_ATTRIBUTE(release_capability()) = default;
    CLock(const CLock&) = delete;
    CLock& operator=(const CLock&) = delete;

  private:
    const std::lock_guard<Mutex> m_lock;
};

/** Chooses the constructor of CUniqueLock that looks again for some microseconds before it sleeps. */
struct SSpinFirst {};

/** Holds a CMutex exclusively, and can give it up for a while. */
class THREAD_ATTRIBUTE(scoped_lockable) CUniqueLock {
  public:
    explicit CUniqueLock(CMutex& mutex) THREAD_ATTRIBUTE(acquire_capability(mutex)) : m_lock(mutex) {}

    /**
     * For a mutex that many threads want and each holds for some microseconds: to sleep and to be woken takes
     * two system calls and a change of threads, which is more than the wait.
     */
    CUniqueLock(CMutex& mutex, SSpinFirst /*tag*/) THREAD_ATTRIBUTE(acquire_capability(mutex))
        : m_lock(mutex, std::defer_lock) {
        constexpr int kLooks = 60;  // together about 10 us
        constexpr int kPausesOfALook = 10;
        for (int look = 0; look < kLooks; ++look) {
            if (m_lock.try_lock()) {
                return;
            }
            for (int pause = 0; pause < kPausesOfALook; ++pause) {
                PauseProcessor();
            }
        }
        m_lock.lock();
    }

    ~CUniqueLock() THREAD_ATTRIBUTE(release_capability()) = default;
    CUniqueLock(const CUniqueLock&) = delete;
    CUniqueLock& operator=(const CUniqueLock&) = delete;

    void Lock() THREAD_ATTRIBUTE(acquire_capability()) { m_lock.lock(); }
    void Unlock() THREAD_ATTRIBUTE(release_capability()) { m_lock.unlock(); }

    /** For a std::condition_variable. */
    std::unique_lock<std::mutex>& Native() { return m_lock; }

  private:
    /** Leaves the other thread of this core more of it. */
    static void PauseProcessor() {
#if defined(__x86_64__)
        __builtin_ia32_pause();
#elif defined(__aarch64__)
        asm volatile("yield");
#endif
    }

    std::unique_lock<std::mutex> m_lock;
};

/** Holds a CSharedMutex together with other readers for the length of a scope. */
class THREAD_ATTRIBUTE(scoped_lockable) CSharedLock {
  public:
    explicit CSharedLock(CSharedMutex& mutex) THREAD_ATTRIBUTE(acquire_shared_capability(mutex))
        : m_lock(mutex) {}
    ~CSharedLock() THREAD_ATTRIBUTE(release_capability()) = default;
    CSharedLock(const CSharedLock&) = delete;
    CSharedLock& operator=(const CSharedLock&) = delete;

  private:
    const std::shared_lock<std::shared_mutex> m_lock;
};

/** A copy of a value, taken under the lock that guards it. */
template <typename Value>
Value CopyUnder(CSharedMutex& mutex, const Value& value) {
    const CSharedLock lock(mutex);
    return value;
}

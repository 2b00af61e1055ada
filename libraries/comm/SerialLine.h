#pragma once

#include "libraries/comm/ErrorNumbers.h"
#include "libraries/comm/Port.h"
#include "libraries/comm/SerialSession.h"
#include "platform/PortRecords.h"

#include <memory>
#include <string>
#include <string_view>

namespace comm {

/**
 * A serial line, opened when it is needed and kept open, since closing resets some devices. A driver can hang
 * in any call. So the line has a thread of its own for its device, from the first call until the device is
 * closed again. A call waits for that thread no longer than its limit, and nothing else waits for it. Any
 * thread may call.
 */
class CSerialLine final : public CPort, public std::enable_shared_from_this<CSerialLine> {
  public:
    /** @param former  a line of this name that may still be closing its device; the first call waits for it
     */
    CSerialLine(const SCommSettings& settings, const std::string& comPort,
                std::shared_ptr<CSerialLine> former);

    /** Checks whether the line can be used with the settings of a record. @return 0 or an error number */
    [[nodiscard]] EnError Check(const SSerialPortConfig& config);

    /** Sends at least one byte, and waits until all have left. @return 0 or an error number */
    [[nodiscard]] EnError Send(const SSerialPortConfig& config, std::string_view bytes);

    void Close() override;

    /** Waits until the device is closed, after Close. @return false when it isn't at the deadline */
    [[nodiscard]] bool WaitClosed(Clock::time_point deadline);

    /** True when the object can be dropped: its device is closed, and so is that of a former line. */
    bool IsUnused();

  private:
    /** A task of a call for the line's thread. It stays with the thread when the call gives up. */
    struct SJob {
        SSerialPortConfig config;
        std::string bytes;  ///< empty for a check
        Clock::time_point bound;
        bool isDone = false;
        EnError error = ErrorNone;
    };

    /** Waits until no call is under way; fails at once while the driver hangs. @return as WaitUntil */
    [[nodiscard]] EnError WaitForTurn(Lock& lock, Clock::time_point deadline) REQUIRES_LOCK(m_mutex);

    /** Gives the thread a job and waits for its end. @return 0 or an error number */
    [[nodiscard]] EnError Do(Lock& lock, SJob job) REQUIRES_LOCK(m_mutex);
    void StartThread() REQUIRES_LOCK(m_mutex);

    /** The line's thread. */
    void Run(CSerialSession& session);

    /** Sends as Send describes. */
    [[nodiscard]] EnError Deliver(const SSerialPortConfig& config, std::string_view bytes);

    /** Notes the state of the line after a job, or after news of the device. */
    void NoteState(const CSerialSession& session, EnError error);

    /** Does a job; without one, waits for news of the device. */
    EnError Act(CSerialSession& session, const SJob* job);

    const SCommSettings m_settings;
    const std::string m_comPort;
    std::shared_ptr<CSerialLine> m_former;  ///< the thread's own
    std::shared_ptr<CSerialSession> m_session
        GUARDED_BY(m_mutex);  ///< null while there is no thread, or the thread is about to end
    std::shared_ptr<SJob> m_job GUARDED_BY(m_mutex);  ///< the job under way, or the next one
    bool m_hangs GUARDED_BY(m_mutex) = false;         ///< the job has passed its limit
    int m_threads GUARDED_BY(m_mutex) = 0;
};

}  // namespace comm

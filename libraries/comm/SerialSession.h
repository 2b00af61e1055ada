#pragma once

#include "libraries/comm/CommSettings.h"
#include "libraries/comm/ErrorNumbers.h"
#include "libraries/comm/PortTally.h"
#include "libraries/comm/SerialHandle.h"
#include "platform/PortRecords.h"

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include <boost/asio/executor_work_guard.hpp>
#include <boost/asio/io_context.hpp>

namespace comm {

/**
 * The operations on the device of one serial line. Each may take as long as a driver likes, so all of them
 * run on the line's own thread. Other threads may call only the marked ones.
 */
class CSerialSession {
  public:
    /** Receives texts for the system log. */
    using Note = std::function<void(const std::string& text)>;

    /** @param tally  counts what the device sends; outlives the session */
    CSerialSession(const SCommSettings& settings, std::string comPort, CPortTally& tally, Note note);
    ~CSerialSession();
    CSerialSession(const CSerialSession&) = delete;
    CSerialSession& operator=(const CSerialSession&) = delete;

    /**
     * Checks whether the line can be used with the settings of a record, and leaves it open only if it was.
     * @return 0 or an error number
     */
    [[nodiscard]] EnError Check(const SSerialPortConfig& config);

    /** Sends bytes, and waits until the system has passed all of them on: 0 or an error number. */
    [[nodiscard]] EnError Send(const SSerialPortConfig& config, std::string_view bytes,
                               Clock::time_point bound);

    /** Closes the device. */
    void Drop();

    /** Sleeps until the device has news, or Wake is called. */
    void WaitForNews();

    /** True while the device is open. Any thread. */
    bool IsOpen() const { return m_isOpen; }

    /** True when the open device went away; the next operation closes it. */
    bool IsGone() const { return m_gone; }

    /** Ends WaitForNews. Any thread. */
    void Wake();

    /** Ends the operation under way with ErrorCut, unless it hangs in a driver. Any thread. */
    void Cut();

  private:
    /** Opens the device if needed, and applies the settings. */
    [[nodiscard]] EnError MakeReady(const SSerialPortConfig& config, Clock::time_point deadline);
    [[nodiscard]] EnError Apply(const SSerialPortConfig& config);

    /** Closes a handle whose device went away or no longer has the name. @return true when there was one */
    bool DropStale(const std::string& device);

    [[nodiscard]] EnError Write(std::string_view bytes, Clock::time_point deadline, bool& taken);

    /** Waits until the system has handed all bytes to the device. */
    [[nodiscard]] EnError WaitForQueue(Clock::time_point deadline);

    /** Waits until the device has put its last byte on the line, too. */
    [[nodiscard]] EnError WaitForDevice(Clock::time_point deadline);

    /** Records that bytes written at this time have been handed to the device by now. */
    void NoteSent(std::size_t bytes, Clock::time_point begun);
    void Watch();

    /** Waits until ready() holds: 0, ErrorSerialTimedOut or ErrorCut. */
    template <typename Ready>
    EnError WaitUntil(Clock::time_point deadline, Ready ready);

    const SCommSettings m_settings;
    const std::string m_comPort;
    CPortTally& m_tally;
    const Note m_note;
    boost::asio::io_context m_io;
    boost::asio::executor_work_guard<boost::asio::io_context::executor_type> m_work;
    std::unique_ptr<CSerialHandle> m_handle;  ///< null while the line is closed
    std::uint64_t m_generation = 0;  ///< distinguishes handlers of an earlier handle from those of this one
    bool m_gone = false;             ///< the handle's device went away
    bool m_writable = false;
    SSerialPortConfig m_applied;   ///< settings of the open handle
    Clock::time_point m_silentAt;  ///< when all sent bytes have left the device, by calculation
    std::atomic<bool> m_isOpen = false;
    std::atomic<bool> m_cut = false;
};

}  // namespace comm

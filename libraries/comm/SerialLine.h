#pragma once

#include "libraries/comm/Port.h"
#include "libraries/comm/SerialHandle.h"
#include "platform/PortRecords.h"

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

namespace comm {

/** A serial line, opened when it is needed and kept open, since closing resets some devices. Any thread may
 * call. */
class CSerialLine final : public CPort, public std::enable_shared_from_this<CSerialLine> {
  public:
    CSerialLine(boost::asio::io_context& io, const SCommSettings& settings, const std::string& comPort);

    /** Tells whether the line can be used with the settings of a record: 0 or an error number. */
    int Check(const SSerialPortConfig& config);

    /** Sends bytes, at least one, and waits until they have left: 0 or an error number. */
    int Send(const SSerialPortConfig& config, std::string_view bytes);

    void Close() override;

  private:
    /** Opens the device where that is needed, and applies the settings. */
    int MakeReady(const SSerialPortConfig& config);
    int Apply(const SSerialPortConfig& config);

    /** Closes a handle whose device went away or is no longer meant by the name. @return true when there was
     * one */
    bool DropStale(const std::string& device);

    int Write(Lock& lock, std::string_view bytes, Clock::time_point deadline, bool& taken);
    int WaitForLine(Lock& lock, Clock::time_point deadline);
    void Watch();
    void Drop();

    boost::asio::io_context& m_io;
    const SCommSettings& m_settings;
    const std::string m_comPort;
    std::unique_ptr<CSerialHandle> m_handle;  ///< null while the line is closed
    std::uint64_t m_generation = 0;           ///< tells handlers of an earlier handle from those of this one
    bool m_gone = false;                      ///< the device of the handle went away
    bool m_writable = false;
    SSerialPortConfig m_applied;  ///< settings of the open handle
};

}  // namespace comm

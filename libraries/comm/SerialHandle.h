#pragma once

#include "libraries/comm/ErrorNumbers.h"
#include "libraries/comm/PortTally.h"
#include "platform/PortRecords.h"

#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include <boost/asio/io_context.hpp>

namespace comm {

/**
 * An open serial device. Nothing here waits by itself, but a driver may hang in any call. All calls and
 * handlers belong to the thread that runs io. Results are 0 or an error number; ErrorUnplugged when the
 * device went away.
 */
class CSerialHandle {
  public:
    /** State of the bytes that the device itself holds, after the system's queue. */
    enum class EnTransmitter {
        Unknown,  ///< the driver doesn't report it
        Busy,
        Empty,  ///< the last bit is on the line
    };

    explicit CSerialHandle(boost::asio::io_context& io);
    ~CSerialHandle();
    CSerialHandle(const CSerialHandle&) = delete;
    CSerialHandle& operator=(const CSerialHandle&) = delete;

    /** Opens the device for this process alone. */
    [[nodiscard]] EnError Open(const std::string& device);

    /** Applies line settings that CheckSettings accepts, and checks whether the device took them. */
    [[nodiscard]] EnError Apply(const SSerialPortConfig& config);

    /** True while the path still leads to the open device. */
    bool IsStill(const std::string& device) const;

    /** Reads and counts received bytes; the tally passes them on. @return false when the device went away */
    [[nodiscard]] bool Drain(CPortTally& tally);

    /** Writes what the device takes at once, and removes it from rest. */
    [[nodiscard]] EnError Write(std::string_view& rest);

    /** Number of written bytes that the device has not taken yet. */
    [[nodiscard]] EnError Pending(std::size_t& bytes) const;

    EnTransmitter Transmitter() const;

    /** Calls handler() when there is something to read or the device went away. */
    void WhenReadable(std::function<void()> handler);

    /** Calls handler() when the device may take bytes again. */
    void WhenWritable(std::function<void()> handler);

  private:
    struct SDevice;
    std::shared_ptr<SDevice> m_device;
};

}  // namespace comm

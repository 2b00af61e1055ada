#pragma once

#include "platform/PortRecords.h"

#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include <boost/asio/io_context.hpp>

namespace comm {

/**
 * An open serial device. Nothing here waits; the owner does that, and guards the handle with its lock.
 * Results are 0 or an error number; ErrorUnplugged when the device went away.
 */
class CSerialHandle {
  public:
    explicit CSerialHandle(boost::asio::io_context& io);
    ~CSerialHandle();
    CSerialHandle(const CSerialHandle&) = delete;
    CSerialHandle& operator=(const CSerialHandle&) = delete;

    /** Opens the device for this process alone. */
    int Open(const std::string& device);

    /** Applies line settings that CheckSettings finds good, and looks whether the device took them. */
    int Apply(const SSerialPortConfig& config);

    /** True while the path still leads to the device that is open here. */
    bool IsStill(const std::string& device) const;

    /** Reads and drops what came in. @return false when the device went away */
    bool Drain();

    /** Writes what the device takes at once, and takes it off rest. */
    int Write(std::string_view& rest);

    /** Number of bytes that have been written and have not left yet. */
    int Pending(std::size_t& bytes) const;

    /** Calls handler(), on the library's thread, when there is something to read or the device went away. */
    void WhenReadable(std::function<void()> handler);

    /** The same for when the device may take bytes again. */
    void WhenWritable(std::function<void()> handler);

  private:
    struct SDevice;
    std::shared_ptr<SDevice> m_device;
};

}  // namespace comm

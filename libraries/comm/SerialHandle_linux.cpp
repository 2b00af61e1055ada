#include "libraries/comm/ErrorNumbers.h"
#include "libraries/comm/SerialHandle.h"
#include "libraries/comm/SerialSettings.h"

#include <array>
#include <cerrno>

#include <boost/asio/posix/stream_descriptor.hpp>

#include <asm/termbits.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

namespace comm {

namespace {

constexpr int kReadsAtOnce = 16;

/** A pseudo terminal has neither parity nor word length: it keeps 8 bits whatever is asked for. */
bool IsPseudoTerminal(int descriptor) {
    struct stat status {};
    // Majors 136 to 143 are the ends of pseudo terminals (Linux, Documentation/admin-guide/devices.txt).
    return fstat(descriptor, &status) == 0 && major(status.st_rdev) >= 136 && major(status.st_rdev) <= 143;
}

}  // namespace

struct CSerialHandle::SDevice {
    explicit SDevice(boost::asio::io_context& io) : stream(io) {}

    int Descriptor() { return stream.native_handle(); }

    boost::asio::posix::stream_descriptor stream;
    bool ours = false;  ///< locked: until then the device may be another program's, and is left alone
};

CSerialHandle::CSerialHandle(boost::asio::io_context& io) : m_device(std::make_shared<SDevice>(io)) {}

CSerialHandle::~CSerialHandle() {
    if (m_device->ours) {
        // Without the flush, closing waits up to 30 s for a line that doesn't move.
        ioctl(m_device->Descriptor(), TCFLSH, TCIOFLUSH);
        ioctl(m_device->Descriptor(), TIOCNXCL);
    }
}

EnError CSerialHandle::Open(const std::string& device) {
    const int descriptor = open(device.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
    if (descriptor < 0) {
        // A device that is listed and fails as it is opened has just gone, or has no hardware behind it.
        return errno == EIO ? ErrorNoSuchPort : SerialError(errno);
    }
    boost::system::error_code code;
    m_device->stream.assign(descriptor, code);
    if (code) {
        close(descriptor);
        return SerialError(code.value());
    }
    // The lock keeps out programs that look for it, the flag all others.
    if (flock(descriptor, LOCK_EX | LOCK_NB) != 0 || ioctl(descriptor, TIOCEXCL) != 0) {
        return SerialError(errno);
    }
    m_device->ours = true;
    return ErrorNone;
}

EnError CSerialHandle::Apply(const SSerialPortConfig& config) {
    const int descriptor = m_device->Descriptor();
    termios2 asked{};
    termios2 taken{};
    if (ioctl(descriptor, TCGETS2, &asked) != 0) {
        return SerialError(errno);
    }
    BuildSettings(config, asked);
    if (ioctl(descriptor, TCSETS2, &asked) != 0 || ioctl(descriptor, TCGETS2, &taken) != 0) {
        return SerialError(errno);
    }
    return IsPseudoTerminal(descriptor) || HasTaken(asked, taken) ? ErrorNone : ErrorBadSetting;
}

bool CSerialHandle::IsStill(const std::string& device) const {
    struct stat there {};
    struct stat here {};
    return !device.empty() && stat(device.c_str(), &there) == 0 &&
           fstat(m_device->Descriptor(), &here) == 0 && there.st_rdev == here.st_rdev &&
           there.st_ino == here.st_ino && there.st_dev == here.st_dev;
}

bool CSerialHandle::Drain(CPortTally& tally) {
    std::array<char, 4096> bytes;  // NOLINT(cppcoreguidelines-pro-type-member-init): only written to
    for (int reads = 0; reads < kReadsAtOnce; ++reads) {
        const auto got = read(m_device->Descriptor(), bytes.data(), bytes.size());
        if (got == 0 || (got < 0 && errno != EINTR)) {
            return got < 0 && errno == EAGAIN;
        }
        if (got > 0) {
            tally.CountReceived({bytes.data(), static_cast<std::size_t>(got)}, [] { return SPortPeer(); });
        }
    }
    return true;
}

EnError CSerialHandle::Write(std::string_view& rest) {
    while (!rest.empty()) {
        const auto written = write(m_device->Descriptor(), rest.data(), rest.size());
        if (written > 0) {
            rest.remove_prefix(static_cast<std::size_t>(written));
        } else if (written == 0 || errno == EAGAIN) {
            return ErrorNone;
        } else if (errno != EINTR) {
            return SerialError(errno) == ErrorNoSuchPort ? ErrorUnplugged : SerialError(errno);
        }
    }
    return ErrorNone;
}

EnError CSerialHandle::Pending(std::size_t& bytes) const {
    int count = 0;
    if (ioctl(m_device->Descriptor(), TIOCOUTQ, &count) != 0) {
        return ErrorUnplugged;
    }
    bytes = static_cast<std::size_t>(count);
    return ErrorNone;
}

CSerialHandle::EnTransmitter CSerialHandle::Transmitter() const {
    unsigned int status = 0;
    if (ioctl(m_device->Descriptor(), TIOCSERGETLSR, &status) != 0) {
        return EnTransmitter::Unknown;  // drivers of on-board ports and some of converters have this call
    }
    return (status & TIOCSER_TEMT) != 0 ? EnTransmitter::Empty : EnTransmitter::Busy;
}

void CSerialHandle::WhenReadable(std::function<void()> handler) {
    m_device->stream.async_wait(boost::asio::posix::stream_descriptor::wait_read,
                                [handler = std::move(handler)](const boost::system::error_code& code) {
                                    if (!code) {
                                        handler();
                                    }
                                });
}

void CSerialHandle::WhenWritable(std::function<void()> handler) {
    m_device->stream.async_wait(boost::asio::posix::stream_descriptor::wait_write,
                                [handler = std::move(handler)](const boost::system::error_code& code) {
                                    if (!code) {
                                        handler();
                                    }
                                });
}

}  // namespace comm

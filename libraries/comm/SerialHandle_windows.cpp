#include "libraries/comm/ErrorNumbers.h"
#include "libraries/comm/SerialHandle.h"
#include "libraries/comm/SerialSettings_windows.h"
#include "platform/Paths.h"

#include <array>
#include <utility>

#include <boost/asio/buffer.hpp>
#include <boost/asio/post.hpp>
#include <boost/asio/windows/overlapped_ptr.hpp>
#include <boost/asio/windows/stream_handle.hpp>

namespace comm {

namespace {

constexpr DWORD kLongestWrite = 10000;  // milliseconds: no send takes longer (SCommSettings::serialBound)

/** Number of a failed operation on a device that was there: what refuses it now means that it went away. */
EnError DeviceError(DWORD code) {
    const EnError error = SerialError(static_cast<int>(code));
    return error == ErrorNoSuchPort || error == ErrorNoPermission ? ErrorUnplugged : error;
}

}  // namespace

/**
 * The device's handle, and the operations under way on it. The system reads and writes in the background, so
 * the buffers live until it is done with them: each operation holds the object.
 */
struct CSerialHandle::SDevice : std::enable_shared_from_this<CSerialHandle::SDevice> {
    explicit SDevice(boost::asio::io_context& context) : io(context), stream(context) {}

    /** Begins the write of outgoing. @return 0 or an error number, when it did not begin */
    EnError BeginWrite();
    void EndWrite(const boost::system::error_code& code, std::size_t written);

    boost::asio::io_context& io;
    boost::asio::windows::stream_handle stream;
    std::array<char, 4096> incoming{};
    std::size_t received = 0;  // of them: what Drain has not counted yet; no read is under way then

    bool gone = false;
    std::string outgoing;  // not empty while a write is under way
    EnError writeError = ErrorNone;
    std::function<void()> whenWritable;
};

EnError CSerialHandle::SDevice::BeginWrite() {
    boost::asio::windows::overlapped_ptr operation(
        io.get_executor(),
        [self = shared_from_this()](const boost::system::error_code& code, std::size_t written) {
            self->EndWrite(code, written);
        });
    const BOOL isDone = WriteFile(stream.native_handle(), outgoing.data(),
                                  static_cast<DWORD>(outgoing.size()), nullptr, operation.get());
    const DWORD code = isDone != FALSE ? ERROR_SUCCESS : GetLastError();
    if (code != ERROR_SUCCESS && code != ERROR_IO_PENDING) {
        outgoing.clear();
        return DeviceError(code);  // the operation is dropped with its handler
    }
    operation.release();
    return ErrorNone;
}

void CSerialHandle::SDevice::EndWrite(const boost::system::error_code& code, std::size_t written) {
    if (code) {
        writeError = DeviceError(static_cast<DWORD>(code.value()));
    } else if (written < outgoing.size()) {
        writeError = ErrorSerialTimedOut;
    }
    outgoing.clear();
    if (const auto handler = std::exchange(whenWritable, nullptr)) {
        handler();
    }
}

CSerialHandle::CSerialHandle(boost::asio::io_context& io) : m_device(std::make_shared<SDevice>(io)) {}

CSerialHandle::~CSerialHandle() {
    if (m_device->stream.is_open()) {
        // Without the purge, closing waits for a line that doesn't move.
        PurgeComm(m_device->stream.native_handle(),
                  PURGE_TXABORT | PURGE_RXABORT | PURGE_TXCLEAR | PURGE_RXCLEAR);
        boost::system::error_code ignored;
        m_device->stream.close(ignored);
    }
    m_device->whenWritable = nullptr;
}

EnError CSerialHandle::Open(const std::string& device) {
    const HANDLE handle = CreateFileW(PathFromNarrow(device).c_str(), GENERIC_READ | GENERIC_WRITE, 0,
                                      nullptr, OPEN_EXISTING, FILE_FLAG_OVERLAPPED, nullptr);
    if (handle == INVALID_HANDLE_VALUE) {
        const EnError error = SerialError(static_cast<int>(GetLastError()));
        // A device that is listed and fails as it is opened has just gone, or has no hardware behind it.
        return error == ErrorUnplugged ? ErrorNoSuchPort : error;
    }
    boost::system::error_code code;
    m_device->stream.assign(handle, code);
    if (code) {
        CloseHandle(handle);
        return SerialError(code.value());
    }
    // A read waits for the first byte and takes what is there.
    COMMTIMEOUTS times{MAXDWORD, MAXDWORD, MAXDWORD - 1, 0, kLongestWrite};
    if (SetCommTimeouts(handle, &times) == FALSE) {
        return ErrorNoSuchPort;
    }
    return ErrorNone;
}

EnError CSerialHandle::Apply(const SSerialPortConfig& config) {
    const HANDLE handle = m_device->stream.native_handle();
    DCB asked{};
    DCB taken{};
    taken.DCBlength = sizeof taken;
    BuildSettings(config, asked);
    if (SetCommState(handle, &asked) == FALSE || GetCommState(handle, &taken) == FALSE) {
        return DeviceError(GetLastError());
    }
    return HasTaken(asked, taken) ? ErrorNone : ErrorBadSetting;
}

// The handle of an unplugged device fails; a device that comes back under the name gets a handle of its own
// then.
bool CSerialHandle::IsStill(const std::string& /*device*/) const {
    return true;
}

bool CSerialHandle::Drain(CPortTally& tally) {
    const std::size_t size = std::exchange(m_device->received, 0);
    tally.CountReceived({m_device->incoming.data(), size}, [] { return SPortPeer(); });
    return !m_device->gone;
}

EnError CSerialHandle::Write(std::string_view& rest) {
    if (m_device->writeError != ErrorNone || !m_device->outgoing.empty()) {
        return m_device->writeError;
    }
    m_device->outgoing = rest;
    const EnError error = m_device->BeginWrite();
    if (error == ErrorNone) {
        rest = {};
    }
    return error;
}

EnError CSerialHandle::Pending(std::size_t& bytes) const {
    if (m_device->writeError != ErrorNone) {
        return m_device->writeError;
    }
    DWORD errors = 0;
    COMSTAT status{};
    if (ClearCommError(m_device->stream.native_handle(), &errors, &status) == FALSE) {
        return ErrorUnplugged;
    }
    bytes = status.cbOutQue;
    if (bytes == 0) {
        bytes = m_device->outgoing.size();
    }
    return ErrorNone;
}

// The system reports when the queue is empty (EV_TXEMPTY), and so does the queue's length.
CSerialHandle::EnTransmitter CSerialHandle::Transmitter() const {
    return EnTransmitter::Unknown;
}

void CSerialHandle::WhenReadable(std::function<void()> handler) {
    m_device->stream.async_read_some(boost::asio::buffer(m_device->incoming),
                                     [device = m_device, handler = std::move(handler)](
                                         const boost::system::error_code& code, std::size_t size) {
                                         if (code || size == 0) {
                                             device->gone = true;
                                         }
                                         device->received = size;
                                         handler();
                                     });
}

void CSerialHandle::WhenWritable(std::function<void()> handler) {
    if (m_device->outgoing.empty()) {
        boost::asio::post(m_device->io, std::move(handler));
    } else {
        m_device->whenWritable = std::move(handler);
    }
}

}  // namespace comm

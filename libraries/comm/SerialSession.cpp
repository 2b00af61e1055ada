#include "libraries/comm/SerialSession.h"

#include "libraries/comm/ErrorNumbers.h"
#include "libraries/comm/SerialSettings.h"
#include "platform/SerialNames.h"

#include <algorithm>
#include <utility>

#include <boost/asio/post.hpp>

namespace comm {

namespace {

/** Some drivers don't report when they take bytes again, so a writer checks now and then. */
constexpr std::chrono::milliseconds kLongestNap{50};
constexpr std::chrono::milliseconds kShortestNap{1};

/** Bytes that a device may hold behind the system's queue: 16 in a PC's port, 4096 in the largest converters.
 */
constexpr std::size_t kLargestBuffer = 4096;

/** How long a converter takes from getting bytes to sending the first: some frames of USB. */
constexpr std::chrono::milliseconds kDeviceDelay{5};

/** How long bytes take on the line at most: a device's speed may be off by 3 % (HasTaken). */
std::chrono::microseconds LongestTimeOnLine(const SSerialPortConfig& config, std::size_t bytes) {
    return TimeOnLine(config, bytes) * 103 / 100;
}

}  // namespace

CSerialSession::CSerialSession(const SCommSettings& settings, std::string comPort, CPortTally& tally,
                               Note note)
    : m_settings(settings),
      m_comPort(std::move(comPort)),
      m_tally(tally),
      m_note(std::move(note)),
      m_work(boost::asio::make_work_guard(m_io)) {}

CSerialSession::~CSerialSession() {
    Drop();
}

EnError CSerialSession::Check(const SSerialPortConfig& config) {
    DropStale(FindSerialDevice(m_comPort));
    const bool wasOpen = m_handle != nullptr;
    const EnError error = MakeReady(config, Clock::now() + m_settings.checkBound);
    if (!wasOpen) {
        Drop();
    }
    // It is there and open, and still sends what it was given.
    return wasOpen && error == ErrorSerialTimedOut ? ErrorNone : error;
}

EnError CSerialSession::Send(const SSerialPortConfig& config, std::string_view bytes,
                             Clock::time_point bound) {
    bool stale = DropStale(FindSerialDevice(m_comPort));
    for (;;) {
        const bool wasOpen = m_handle != nullptr;
        bool taken = false;
        EnError error = MakeReady(config, bound);
        if (error == ErrorNone) {
            const auto need = TimeOnLine(config, bytes.size()) + m_settings.serialMargin;
            error = Write(bytes, std::min(bound, Clock::now() + need), taken);
        }
        if (error == ErrorNone || error == ErrorCut) {
            return error;
        }
        Drop();
        if (error == ErrorUnplugged && wasOpen && !taken && !stale) {
            stale = true;
            continue;  // once: the handle may be of a device that was plugged in again
        }
        return error == ErrorNoSuchPort && stale ? ErrorUnplugged : error;
    }
}

void CSerialSession::Drop() {
    m_handle.reset();
    m_isOpen = false;
    m_gone = false;
    ++m_generation;
}

void CSerialSession::WaitForNews() {
    m_io.run_one();
}

void CSerialSession::Wake() {
    boost::asio::post(m_io, [] {});
}

void CSerialSession::Cut() {
    m_cut = true;
    m_io.stop();  // needs no memory, so that a line can always be closed
}

bool CSerialSession::DropStale(const std::string& device) {
    if (!m_handle || (!m_gone && m_handle->Drain(m_tally) && m_handle->IsStill(device))) {
        return false;
    }
    m_note("unplugged");
    Drop();
    return true;
}

EnError CSerialSession::MakeReady(const SSerialPortConfig& config, Clock::time_point deadline) {
    if (m_handle) {
        if (SameSettings(config, m_applied)) {
            return ErrorNone;
        }
        const EnError error = WaitForDevice(deadline);
        return error == ErrorNone ? Apply(config) : error;
    }
    const std::string device = FindSerialDevice(m_comPort);
    if (device.empty()) {
        return ErrorNoSuchPort;
    }
    auto handle = std::make_unique<CSerialHandle>(m_io);
    if (const EnError error = handle->Open(device); error != ErrorNone) {
        return error;
    }
    m_handle = std::move(handle);
    m_silentAt = {};
    if (const EnError error = Apply(config); error != ErrorNone) {
        return error;
    }
    m_isOpen = true;
    m_note("opened " + device);
    Watch();
    return ErrorNone;
}

EnError CSerialSession::Apply(const SSerialPortConfig& config) {
    m_applied.baudRate = 0;  // equal to no good settings, should this fail halfway
    const EnError error = m_handle->Apply(config);
    if (error == ErrorNone) {
        m_applied = config;
    }
    return error;
}

template <typename Ready>
EnError CSerialSession::WaitUntil(Clock::time_point deadline, Ready ready) {
    while (!m_cut && !ready()) {
        if (Clock::now() >= deadline) {
            return ErrorSerialTimedOut;
        }
        m_io.run_one_until(deadline);
    }
    return m_cut ? ErrorCut : ErrorNone;
}

EnError CSerialSession::Write(std::string_view bytes, Clock::time_point deadline, bool& taken) {
    const auto begun = Clock::now();
    std::string_view rest = bytes;
    for (;;) {
        if (m_cut) {
            return ErrorCut;
        }
        if (Clock::now() >= deadline) {
            return ErrorSerialTimedOut;
        }
        const EnError error = m_handle->Write(rest);
        taken = rest.size() < bytes.size();
        if (error != ErrorNone) {
            return error;
        }
        if (rest.empty()) {
            const EnError left = WaitForQueue(deadline);
            NoteSent(bytes.size(), begun);
            return left;
        }
        m_writable = false;
        m_handle->WhenWritable(
            [this, generation = m_generation] { m_writable = m_writable || generation == m_generation; });
        const auto nap = std::min(deadline, Clock::now() + kLongestNap);
        if (WaitUntil(nap, [this] { return m_writable || m_gone; }) == ErrorCut) {
            return ErrorCut;
        }
        if (m_gone) {
            return ErrorUnplugged;
        }
    }
}

EnError CSerialSession::WaitForQueue(Clock::time_point deadline) {
    for (;;) {
        std::size_t pending = 0;
        if (const EnError error = m_handle->Pending(pending); error != ErrorNone || pending == 0) {
            return error;
        }
        if (m_gone) {
            return ErrorUnplugged;
        }
        const auto now = Clock::now();
        if (now >= deadline) {
            return ErrorSerialTimedOut;
        }
        const auto need = std::max<Clock::duration>(TimeOnLine(m_applied, pending), kShortestNap);
        if (WaitUntil(std::min(deadline, now + need), [this] { return m_gone; }) == ErrorCut) {
            return ErrorCut;
        }
    }
}

EnError CSerialSession::WaitForDevice(Clock::time_point deadline) {
    for (;;) {
        const auto state = m_handle->Transmitter();
        const auto now = Clock::now();
        const bool isSilent = state == CSerialHandle::EnTransmitter::Unknown
                                  ? now >= m_silentAt
                                  : state == CSerialHandle::EnTransmitter::Empty;
        if (isSilent || m_gone) {
            return m_gone ? ErrorUnplugged : ErrorNone;
        }
        if (now >= deadline) {
            return ErrorSerialTimedOut;
        }
        const auto next = state == CSerialHandle::EnTransmitter::Unknown ? m_silentAt : now + kShortestNap;
        if (WaitUntil(std::min(deadline, next), [this] { return m_gone; }) == ErrorCut) {
            return ErrorCut;
        }
    }
}

void CSerialSession::NoteSent(std::size_t bytes, Clock::time_point begun) {
    const auto begins = std::max(m_silentAt, begun + kDeviceDelay);
    const auto atLast = Clock::now() + kDeviceDelay + LongestTimeOnLine(m_applied, kLargestBuffer);
    m_silentAt = std::min(begins + LongestTimeOnLine(m_applied, bytes), atLast);
}

void CSerialSession::Watch() {
    m_handle->WhenReadable([this, generation = m_generation] {
        if (generation != m_generation) {
            return;
        }
        if (m_handle->Drain(m_tally)) {
            Watch();
        } else {
            m_gone = true;
        }
    });
}

}  // namespace comm

#include "libraries/comm/SerialLine.h"

#include "libraries/comm/SerialSettings.h"
#include "platform/SerialNames.h"

#include <algorithm>

namespace comm {

namespace {

/** Some drivers don't tell when they take bytes again, so a writer looks by itself now and then. */
constexpr std::chrono::milliseconds g_longestNap{50};
constexpr std::chrono::milliseconds g_shortestNap{1};

}  // namespace

CSerialLine::CSerialLine(boost::asio::io_context& io, const SCommSettings& settings,
                         const std::string& comPort)
    : CPort("serial " + comPort), m_io(io), m_settings(settings), m_comPort(comPort) {}

int CSerialLine::Check(const SSerialPortConfig& config) {
    if (const int error = CheckSettings(config); error != ErrorNone) {
        return error;
    }
    CTurn turn(*this, Clock::now() + m_settings.checkBound);
    if (turn.Error() == ErrorTimedOut) {
        return ErrorNone;  // busy with a command, so it is there and open
    }
    if (turn.Error() != ErrorNone) {
        return turn.Error();
    }
    DropStale(FindSerialDevice(m_comPort));
    const bool wasOpen = m_handle != nullptr;
    const int error = MakeReady(config);
    if (!wasOpen) {
        Drop();
    }
    return error;
}

int CSerialLine::Send(const SSerialPortConfig& config, std::string_view bytes) {
    const auto bound = Clock::now() + m_settings.serialBound;
    if (const int error = CheckSettings(config); error != ErrorNone) {
        return error;
    }
    CTurn turn(*this, bound);
    if (turn.Error() != ErrorNone) {
        return turn.Error() == ErrorTimedOut ? ErrorSerialTimedOut : turn.Error();
    }
    const auto deadline =
        std::min(bound, Clock::now() + TimeOnLine(config, bytes.size()) + m_settings.serialMargin);
    bool stale = DropStale(FindSerialDevice(m_comPort));
    for (;;) {
        const bool wasOpen = m_handle != nullptr;
        bool taken = false;
        int error = MakeReady(config);
        if (error == ErrorNone) {
            error = Write(turn.GetLock(), bytes, deadline, taken);
        }
        if (error == ErrorNone || error == ErrorCut) {
            return error;
        }
        Drop();
        if (error == ErrorUnplugged && wasOpen && !taken && !stale) {
            stale = true;
            continue;  // once: the handle may be of a device that was plugged in again
        }
        if (error == ErrorNoSuchPort && stale) {
            error = ErrorUnplugged;
        }
        m_log.Failed("can't send", error);
        return error;
    }
}

void CSerialLine::Close() {
    const Lock lock(m_mutex);
    m_closed = true;
    Drop();
    m_changed.notify_all();
}

bool CSerialLine::DropStale(const std::string& device) {
    if (!m_handle || (!m_gone && m_handle->Drain() && m_handle->IsStill(device))) {
        return false;
    }
    m_log.Note("unplugged");
    Drop();
    return true;
}

int CSerialLine::MakeReady(const SSerialPortConfig& config) {
    if (m_handle) {
        return SameSettings(config, m_applied) ? ErrorNone : Apply(config);
    }
    const std::string device = FindSerialDevice(m_comPort);
    if (device.empty()) {
        return ErrorNoSuchPort;
    }
    auto handle = std::make_unique<CSerialHandle>(m_io);
    if (const int error = handle->Open(device); error != ErrorNone) {
        return error;
    }
    m_handle = std::move(handle);
    if (const int error = Apply(config); error != ErrorNone) {
        return error;
    }
    m_log.Note("opened " + device);
    Watch();
    return ErrorNone;
}

int CSerialLine::Apply(const SSerialPortConfig& config) {
    m_applied.baudRate = 0;  // equal to no good settings, should this fail halfway
    const int error = m_handle->Apply(config);
    if (error == ErrorNone) {
        m_applied = config;
    }
    return error;
}

int CSerialLine::Write(Lock& lock, std::string_view bytes, Clock::time_point deadline, bool& taken) {
    std::string_view rest = bytes;
    for (;;) {
        int error = m_handle->Write(rest);
        taken = rest.size() < bytes.size();
        if (error != ErrorNone) {
            return error;
        }
        if (rest.empty()) {
            return WaitForLine(lock, deadline);
        }
        m_writable = false;
        m_handle->WhenWritable([self = shared_from_this(), this, generation = m_generation] {
            const Lock writable(m_mutex);
            m_writable = m_writable || generation == m_generation;
            m_changed.notify_all();
        });
        const auto nap = std::min(deadline, Clock::now() + g_longestNap);
        error = WaitUntil(lock, nap, [this] { return m_writable || m_gone; });
        if (error == ErrorCut) {
            return error;
        }
        if (m_gone) {
            return ErrorUnplugged;
        }
        if (Clock::now() >= deadline) {
            return ErrorSerialTimedOut;
        }
    }
}

int CSerialLine::WaitForLine(Lock& lock, Clock::time_point deadline) {
    for (;;) {
        std::size_t pending = 0;
        if (const int error = m_handle->Pending(pending); error != ErrorNone || pending == 0) {
            return error;
        }
        if (m_gone) {
            return ErrorUnplugged;
        }
        const auto now = Clock::now();
        if (now >= deadline) {
            return ErrorSerialTimedOut;
        }
        const auto need = std::max<Clock::duration>(TimeOnLine(m_applied, pending), g_shortestNap);
        if (WaitUntil(lock, std::min(deadline, now + need), [this] { return m_gone; }) == ErrorCut) {
            return ErrorCut;
        }
    }
}

void CSerialLine::Watch() {
    m_handle->WhenReadable([self = shared_from_this(), this, generation = m_generation] {
        const Lock lock(m_mutex);
        if (generation != m_generation) {
            return;
        }
        if (m_handle->Drain()) {
            Watch();
        } else {
            m_gone = true;
            m_changed.notify_all();
        }
    });
}

void CSerialLine::Drop() {
    m_handle.reset();
    m_gone = false;
    ++m_generation;
}

}  // namespace comm

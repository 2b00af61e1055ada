#include "libraries/comm/SerialLine.h"

#include "libraries/comm/SerialSettings.h"

#include <exception>
#include <new>
#include <thread>
#include <utility>

namespace comm {

namespace {

/** Time for the thread to end a job at its bound by itself. */
constexpr std::chrono::milliseconds kGrace{200};

}  // namespace

CSerialLine::CSerialLine(const SCommSettings& settings, const std::string& comPort,
                         std::shared_ptr<CSerialLine> former)
    : CPort("serial " + comPort), m_settings(settings), m_comPort(comPort), m_former(std::move(former)) {}

EnError CSerialLine::Check(const SSerialPortConfig& config) {
    if (const EnError error = CheckSettings(config); error != ErrorNone) {
        return error;
    }
    const auto start = Clock::now();
    const auto bound = start + m_settings.serialBound;
    Lock lock(m_mutex);
    EnError error = WaitForTurn(lock, start + m_settings.checkBound);
    if (error == ErrorTimedOut) {
        if (!m_hangs && m_session && m_session->IsOpen()) {
            return ErrorNone;  // busy with a command, so it is there and open
        }
        error = WaitForTurn(lock, bound);
    }
    if (error == ErrorNone) {
        error = Do(lock, {.config = config, .bytes = {}, .bound = bound});
    }
    return error == ErrorTimedOut ? ErrorSerialTimedOut : error;
}

EnError CSerialLine::Send(const SSerialPortConfig& config, std::string_view bytes) {
    const auto begin = Clock::now();
    const EnError error = Deliver(config, bytes);
    m_tally.CountCommand(bytes.size(), error, Clock::now() - begin);
    m_tally.TellCommand(bytes, error);
    return error;
}

EnError CSerialLine::Deliver(const SSerialPortConfig& config, std::string_view bytes) {
    const auto bound = Clock::now() + m_settings.serialBound;
    if (const EnError error = CheckSettings(config); error != ErrorNone) {
        return error;
    }
    Lock lock(m_mutex);
    EnError error = WaitForTurn(lock, bound);
    if (error == ErrorTimedOut) {
        return ErrorSerialTimedOut;
    }
    if (error == ErrorNone) {
        error = Do(lock, {.config = config, .bytes = std::string(bytes), .bound = bound});
        if (error != ErrorNone && error != ErrorCut) {
            m_log.Failed("can't send", error);
        }
    }
    return error;
}

void CSerialLine::Close() {
    const Lock lock(m_mutex);
    m_closed = true;
    if (m_session) {
        m_session->Cut();
    }
    m_changed.notify_all();
}

bool CSerialLine::WaitClosed(Clock::time_point deadline) {
    Lock lock(m_mutex);
    return m_changed.wait_until(lock.Native(), deadline,
                                [this]() REQUIRES_LOCK(m_mutex) { return m_threads == 0; });
}

bool CSerialLine::IsUnused() {
    const Lock lock(m_mutex);
    return !m_session && !m_former;
}

EnError CSerialLine::WaitForTurn(Lock& lock, Clock::time_point deadline) {
    const EnError error =
        WaitUntil(lock, deadline, [this]() REQUIRES_LOCK(m_mutex) { return !m_job || m_hangs; });
    return error == ErrorNone && m_hangs ? ErrorTimedOut : error;
}

EnError CSerialLine::Do(Lock& lock, SJob job) {
    const auto mine = std::make_shared<SJob>(std::move(job));
    if (!m_session) {
        StartThread();
    }
    m_session->Wake();  // before the thread has the job, since this may fail
    m_job = mine;
    EnError error = WaitUntil(lock, mine->bound + kGrace, [&mine] { return mine->isDone; });
    if (error == ErrorTimedOut) {
        m_hangs = true;
        m_changed.notify_all();
        m_log.Failed("the driver hangs", ErrorSerialTimedOut);
        m_tally.Become(EnPortState::Failed, ErrorSerialTimedOut);
        error = ErrorSerialTimedOut;
    }
    return error == ErrorNone ? mine->error : error;
}

void CSerialLine::StartThread() {
    auto session =
        std::make_shared<CSerialSession>(m_settings, m_comPort, m_tally, [this](const std::string& text) {
            const Lock lock(m_mutex);
            m_log.Note(text);
        });
    // Not joined: nobody may have to wait for a driver that hangs.
    std::thread([self = shared_from_this(), session] { self->Run(*session); }).detach();
    ++m_threads;
    m_session = std::move(session);
}

void CSerialLine::Run(CSerialSession& session) {
    Lock lock(m_mutex);
    while (!m_closed && (m_job || session.IsOpen())) {
        const auto job = m_job;
        lock.Unlock();
        const EnError error = Act(session, job.get());
        NoteState(session, error);
        lock.Lock();
        if (job) {
            job->error = error;
            job->isDone = true;
            m_job.reset();
            m_hangs = false;
            m_changed.notify_all();
        }
    }
    m_session.reset();
    lock.Unlock();
    session.Drop();
    lock.Lock();
    --m_threads;
    m_changed.notify_all();
}

void CSerialLine::NoteState(const CSerialSession& session, EnError error) {
    if (session.IsGone()) {
        m_tally.Become(EnPortState::Failed, ErrorUnplugged);
    } else if (session.IsOpen()) {
        m_tally.Become(EnPortState::Open);
    } else if (error != ErrorNone) {
        m_tally.Become(EnPortState::Failed, error);
    } else {
        m_tally.Become(EnPortState::Closed);
    }
}

EnError CSerialLine::Act(CSerialSession& session, const SJob* job) try {
    if (job == nullptr) {
        session.WaitForNews();
        return ErrorNone;
    }
    if (const auto former = std::exchange(m_former, nullptr); former && !former->WaitClosed(job->bound)) {
        return ErrorSerialTimedOut;
    }
    return job->bytes.empty() ? session.Check(job->config)
                              : session.Send(job->config, job->bytes, job->bound);
} catch (const std::bad_alloc&) {
    return ErrorNoMemory;
} catch (const std::exception& error) {
    RavLog::WriteSystemLog(RavLog::Error, "serial " + m_comPort, error.what());
    return ErrorGeneral;
}

}  // namespace comm

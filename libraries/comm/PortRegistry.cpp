#include "libraries/comm/PortRegistry.h"

#include "libraries/comm/Content.h"
#include "libraries/comm/TcpClient.h"
#include "libraries/comm/TcpServer.h"
#include "libraries/comm/UdpPort.h"
#include "platform/PortsTogether.h"
#include "platform/RavLog.h"
#include "platform/SerialNames.h"
#include "platform/VainWaits.h"

#include <exception>
#include <new>
#include <utility>

namespace comm {

namespace {

/** Runs an operation; what it throws becomes an error number. */
template <typename Operation>
EnError Guarded(Operation operation) noexcept {
    try {
        return operation();
    } catch (const std::bad_alloc&) {
        return ErrorNoMemory;
    } catch (const boost::system::system_error& error) {
        return SocketError(error.code());
    } catch (const std::exception& error) {
        RavLog::WriteSystemLog(RavLog::Error, "ports", error.what());
        return ErrorGeneral;
    }
}

bool IsMode(EnNetMode mode) {
    return mode == NetModeTcpClient || mode == NetModeTcpServer || mode == NetModeUdp;
}

/** Longest host name: 253 characters (RFC 1035), and a dot at its end. An address literal is shorter. */
constexpr std::size_t kLongestHost = 254;

/** Whether a network port can have this record at all. */
EnError CheckRecord(const SNetPortConfig& record) {
    if (!IsMode(record.netMode)) {
        return ErrorBadSetting;
    }
    if (record.ipAddress.size() > kLongestHost) {
        return ErrorNoAddress;
    }
    return record.dstIpAddress.size() > kLongestHost ? ErrorNoHost : ErrorNone;
}

/** Notes a send in vain where the thread keeps to a bound for such. @return its error number */
EnError NoteSend(EnError error, Clock::time_point begin) {
    if (CVainWaits* waits = CVainWaits::OfThread(); waits != nullptr && error != ErrorNone) {
        waits->Add(Clock::now() - begin);
    }
    return error;
}

}  // namespace

CPortRegistry::CPortRegistry(const SCommSettings& settings, CNameResolver::Ask ask)
    : m_settings(settings),
      m_work(boost::asio::make_work_guard(m_io)),
      m_resolver(settings, std::move(ask)),
      m_thread(&CPortRegistry::Run, this) {}

CPortRegistry::~CPortRegistry() {
    Stop();
}

void CPortRegistry::Run() {
    while (!m_io.stopped()) {
        try {
            m_io.run();
        } catch (const std::exception& error) {
            // The port of the handler that failed loses its watch, and finds out at its next send.
            RavLog::WriteSystemLog(RavLog::Error, "ports", error.what());
        }
    }
}

EnError CPortRegistry::OpenNet(const SNetPortConfig& record) {
    return Guarded([&] {
        if (const EnError error = CheckRecord(record); error != ErrorNone) {
            return error;
        }
        auto port = NetPortInHand(record);
        if (!port) {
            return ErrorCut;
        }
        const auto opening = port->BeginOpen(record);
        CPortsTogether* const together = CPortsTogether::OfThread();
        if (together != nullptr && opening.attempt != 0) {
            together->Leave(
                [this, record, opening, port = std::make_shared<CPortInHand<CNetPort>>(std::move(port))] {
                    FinishOpen(record, *port, opening, true);
                });
            return ErrorNone;
        }
        return FinishOpen(record, port, opening, together != nullptr);
    });
}

EnError CPortRegistry::FinishOpen(const SNetPortConfig& record, const CPortInHand<CNetPort>& port,
                                  const CNetPort::SOpening& opening, bool isSaved) {
    return Guarded([&] {
        const EnError error = port->FinishOpen(record, opening);
        if (error != ErrorNone && !isSaved) {
            const CLock lock(m_mutex);
            ForgetUnused(m_netPorts, EndPointOf(record), port);
        }
        return error;
    });
}

EnError CPortRegistry::SendNet(const SNetPortConfig& record, std::string_view content, bool isText,
                               int asciiEncode) {
    const auto begin = Clock::now();
    const EnError result = Guarded([&] {
        if (const EnError error = CheckRecord(record); error != ErrorNone) {
            return error;
        }
        std::string storage;
        std::string_view bytes;
        if (const EnError error = ContentToBytes(content, isText, asciiEncode, storage, bytes);
            error != ErrorNone || bytes.empty()) {
            return error;
        }
        const auto port = NetPortInHand(record);
        return port ? port->Send(record, bytes) : ErrorCut;
    });
    return NoteSend(result, begin);
}

EnError CPortRegistry::CheckSerial(const SSerialPortConfig& config) {
    return Guarded([&] {
        if (SerialNumber(config.comPort) == 0) {
            return ErrorNoSuchPort;
        }
        const auto line = SerialLineInHand(config.comPort);
        const EnError error = line ? line->Check(config) : ErrorCut;
        if (error != ErrorNone) {
            const CLock lock(m_mutex);
            ForgetUnused(m_serialLines, config.comPort, line);
        }
        return error;
    });
}

EnError CPortRegistry::SendSerial(const SSerialPortConfig& config, std::string_view content, bool isText,
                                  int asciiEncode) {
    const auto begin = Clock::now();
    CVainWaits* waits = CVainWaits::OfThread();
    const EnError result = Guarded([&] {
        std::string storage;
        std::string_view bytes;
        if (const EnError error = ContentToBytes(content, isText, asciiEncode, storage, bytes);
            error != ErrorNone || bytes.empty()) {
            return error;
        }
        if (SerialNumber(config.comPort) == 0) {
            return ErrorNoSuchPort;
        }
        if (waits != nullptr && waits->IsUsedUp() && waits->IsStuckLine(config.comPort)) {
            return ErrorSerialTimedOut;
        }
        const auto line = SerialLineInHand(config.comPort);
        const EnError error = line ? line->Send(config, bytes) : ErrorCut;
        if (waits != nullptr && error == ErrorSerialTimedOut) {
            waits->NoteStuckLine(config.comPort);
        }
        return error;
    });
    return NoteSend(result, begin);
}

void CPortRegistry::DeleteTcp(const SNetPortConfig& record) {
    if (record.netMode != NetModeTcpClient && record.netMode != NetModeTcpServer) {
        return;
    }
    Guarded([&] {
        std::shared_ptr<CNetPort> port;
        {
            const CLock lock(m_mutex);
            const auto found = m_netPorts.find(EndPointOf(record));
            if (found == m_netPorts.end() || !found->second->Release(record)) {
                return ErrorNone;
            }
            port = std::move(found->second);
            m_netPorts.erase(found);
        }
        port->Close();
        return ErrorNone;
    });
}

void CPortRegistry::DeleteAll() {
    Guarded([&] {
        NetPorts netPorts;
        SerialLines serialLines;
        {
            const CLock lock(m_mutex);
            for (const auto& [name, line] : m_serialLines) {
                m_formerLines.insert_or_assign(name, line);
            }
            netPorts.swap(m_netPorts);
            serialLines.swap(m_serialLines);
        }
        for (const auto& [point, port] : netPorts) {
            port->Close();
        }
        for (const auto& [name, line] : serialLines) {
            line->Close();
        }
        const auto closed = Clock::now() + m_settings.closeBound;
        std::erase_if(serialLines, [closed](const auto& entry) { return !entry.second->WaitClosed(closed); });
        const CLock lock(m_mutex);
        std::erase_if(m_formerLines, [&serialLines](const auto& former) {
            const auto line = serialLines.find(former.first);
            return line != serialLines.end() && line->second == former.second;
        });
        return ErrorNone;
    });
}

void CPortRegistry::Stop() {
    {
        const CLock lock(m_mutex);
        if (m_stopped) {
            return;
        }
        m_stopped = true;
    }
    DeleteAll();
    m_work.reset();
    m_io.stop();
    m_thread.join();
}

SPortReport CPortRegistry::Report(const SNetPortConfig& record) {
    std::shared_ptr<CNetPort> port;
    {
        const CSharedLock lock(m_mutex);
        const auto found = m_netPorts.find(EndPointOf(record));
        if (found == m_netPorts.end()) {
            return {};
        }
        port = found->second;
    }
    SPortReport report = port->Report();
    report.peers = port->PeersOf(record);
    return report;
}

SPortReport CPortRegistry::Report(const SSerialPortConfig& config) {
    const CSharedLock lock(m_mutex);
    const auto found = m_serialLines.find(config.comPort);
    return found == m_serialLines.end() ? SPortReport() : found->second->Report();
}

std::size_t CPortRegistry::PortCount() {
    const CSharedLock lock(m_mutex);
    return m_netPorts.size() + m_serialLines.size();
}

template <typename Ports, typename Key, typename Port>
void CPortRegistry::ForgetUnused(Ports& ports, const Key& key, const CPortInHand<Port>& port) {
    const auto found = ports.find(key);
    if (found != ports.end() && port.Is(found->second) && port->CountCalls(0) == 1 && port->IsUnused()) {
        ports.erase(found);
    }
}

CPortInHand<CNetPort> CPortRegistry::NetPortInHand(const SNetPortConfig& record) {
    const SEndPointView point = EndPointOf(record);
    {
        const CSharedLock lock(m_mutex);
        if (const auto found = m_netPorts.find(point); found != m_netPorts.end()) {
            return CPortInHand(found->second);
        }
    }
    const CLock lock(m_mutex);
    if (m_stopped) {
        return CPortInHand<CNetPort>(nullptr);
    }
    if (const auto found = m_netPorts.find(point); found != m_netPorts.end()) {
        return CPortInHand(found->second);
    }
    auto port = MakeNetPort(record);
    ShareLocalPort(record, *port);
    return CPortInHand(m_netPorts.emplace(SEndPoint(point), std::move(port)).first->second);
}

void CPortRegistry::ShareLocalPort(const SNetPortConfig& record, CNetPort& made) {
    if (record.netMode != NetModeUdp || record.port == 0) {
        return;
    }
    for (const auto& [point, port] : m_netPorts) {
        if (point.mode == NetModeUdp && point.localPort == record.port) {
            port->Share();
            made.Share();
        }
    }
}

std::shared_ptr<CNetPort> CPortRegistry::MakeNetPort(const SNetPortConfig& record) {
    const SNetContext context{m_io, m_resolver, m_settings, m_probes};
    switch (record.netMode) {
        case NetModeTcpClient:
            return std::make_shared<CTcpClient>(context, record);
        case NetModeTcpServer:
            return std::make_shared<CTcpServer>(context, record);
        case NetModeUdp:
            break;
    }
    return std::make_shared<CUdpPort>(context, record);
}

CPortInHand<CSerialLine> CPortRegistry::SerialLineInHand(const std::string& comPort) {
    {
        const CSharedLock lock(m_mutex);
        if (const auto found = m_serialLines.find(comPort); found != m_serialLines.end()) {
            return CPortInHand(found->second);
        }
    }
    const CLock lock(m_mutex);
    if (m_stopped) {
        return CPortInHand<CSerialLine>(nullptr);
    }
    auto& line = m_serialLines[comPort];
    if (!line) {
        const auto former = m_formerLines.extract(comPort);
        line = std::make_shared<CSerialLine>(m_settings, comPort, former ? former.mapped() : nullptr);
    }
    return CPortInHand(line);
}

}  // namespace comm

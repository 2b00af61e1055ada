#pragma once

#include "libraries/comm/CommSettings.h"
#include "libraries/comm/EndPoint.h"
#include "libraries/comm/ErrorNumbers.h"
#include "libraries/comm/NameResolver.h"
#include "libraries/comm/NetPort.h"
#include "libraries/comm/SerialLine.h"
#include "platform/Mutex.h"
#include "platform/PortRecords.h"
#include "platform/PortReports.h"

#include <atomic>
#include <memory>
#include <string>
#include <string_view>
#include <thread>
#include <unordered_map>

#include <boost/asio/executor_work_guard.hpp>
#include <boost/asio/io_context.hpp>

namespace comm {

/**
 * All ports of the process, and the thread that watches their sockets and lines. Implements what CComManager
 * offers, with error numbers throughout. Any thread may call; nothing throws.
 */
class CPortRegistry {
  public:
    /** @param ask  resolves host names; replaced by tests */
    explicit CPortRegistry(const SCommSettings& settings, CNameResolver::Ask ask = AskSystem);
    ~CPortRegistry();
    CPortRegistry(const CPortRegistry&) = delete;
    CPortRegistry& operator=(const CPortRegistry&) = delete;

    /** Under a CPortsTogether an opening that would wait gives 0 when it has begun. */
    [[nodiscard]] EnError OpenNet(const SNetPortConfig& record);
    [[nodiscard]] EnError SendNet(const SNetPortConfig& record, std::string_view content, bool isText,
                                  int asciiEncode);
    [[nodiscard]] EnError CheckSerial(const SSerialPortConfig& config);
    [[nodiscard]] EnError SendSerial(const SSerialPortConfig& config, std::string_view content, bool isText,
                                     int asciiEncode);
    void DeleteTcp(const SNetPortConfig& record);
    void DeleteAll();

    /** Ends the library: closes everything. Calls under way and later ones end with ErrorCut. */
    void Stop();

    /** See ReportOfPort (platform/PortReports.h). */
    SPortReport Report(const SNetPortConfig& record);
    SPortReport Report(const SSerialPortConfig& config);

    /** Number of ports and lines that have an object. */
    std::size_t PortCount();

  private:
    using NetPorts = std::unordered_map<SEndPoint, std::shared_ptr<CNetPort>, SEndPointHash, SEndPointEqual>;
    using SerialLines = std::unordered_map<std::string, std::shared_ptr<CSerialLine>>;

    /** The port of a record, created when there is none; null after Stop. */
    CPortInHand<CNetPort> NetPortInHand(const SNetPortConfig& record);
    std::shared_ptr<CNetPort> MakeNetPort(const SNetPortConfig& record);

    /**
     * Waits for a port that is being opened.
     * @param isSaved  the record is that of a saved interface: its port stays when it fails, for its report
     * @return 0, or an error number; the port is forgotten then, unless isSaved
     */
    EnError FinishOpen(const SNetPortConfig& record, const CPortInHand<CNetPort>& port,
                       const CNetPort::SOpening& opening, bool isSaved);

    /**
     * Allows a new UDP port to have a local port that other ports with another local address hold. Nothing
     * reports when a UDP record is deleted or edited, so their sockets may be left over.
     */
    void ShareLocalPort(const SNetPortConfig& record, CNetPort& made) REQUIRES_LOCK(m_mutex);
    CPortInHand<CSerialLine> SerialLineInHand(const std::string& comPort);

    /** Removes the object of a refused port, if nothing is left of it and no other call uses it. */
    template <typename Ports, typename Key, typename Port>
    void ForgetUnused(Ports& ports, const Key& key, const CPortInHand<Port>& port) REQUIRES_LOCK(m_mutex);
    void Run();

    const SCommSettings m_settings;
    boost::asio::io_context m_io;
    boost::asio::executor_work_guard<boost::asio::io_context::executor_type> m_work;
    CNameResolver m_resolver;
    CSharedMutex m_mutex;  ///< never held while a device is waited for
    NetPorts m_netPorts GUARDED_BY(m_mutex);
    SerialLines m_serialLines GUARDED_BY(m_mutex);
    SerialLines m_formerLines GUARDED_BY(m_mutex);  ///< deleted, and may still be closing their devices
    bool m_stopped GUARDED_BY(m_mutex) = false;
    std::atomic<int> m_probes = 0;
    std::thread m_thread;
};

}  // namespace comm

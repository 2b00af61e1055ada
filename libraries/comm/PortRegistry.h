#pragma once

#include "libraries/comm/CommSettings.h"
#include "libraries/comm/EndPoint.h"
#include "libraries/comm/NameResolver.h"
#include "libraries/comm/NetPort.h"
#include "libraries/comm/SerialLine.h"
#include "platform/Mutex.h"
#include "platform/PortRecords.h"

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
 * All ports of the process, and the thread that their sockets and lines are watched on. What CComManager
 * offers, with error numbers throughout. Any thread may call; nothing throws.
 */
class CPortRegistry {
  public:
    /** @param ask  what resolves host names, for tests */
    explicit CPortRegistry(const SCommSettings& settings, CNameResolver::Ask ask = AskSystem);
    ~CPortRegistry();
    CPortRegistry(const CPortRegistry&) = delete;
    CPortRegistry& operator=(const CPortRegistry&) = delete;

    int OpenNet(const SNetPortConfig& record);
    int SendNet(const SNetPortConfig& record, std::string_view content, bool isText, int asciiEncode);
    int CheckSerial(const SSerialPortConfig& config);
    int SendSerial(const SSerialPortConfig& config, std::string_view content, bool isText, int asciiEncode);
    void DeleteTcp(const SNetPortConfig& record);
    void DeleteAll();

    /** Ends the library: closes everything, and has calls under way and later ones end with ErrorCut. */
    void Stop();

    /** Ports and lines that it has objects for. */
    std::size_t PortCount();

  private:
    using NetPorts = std::unordered_map<SEndPoint, std::shared_ptr<CNetPort>, SEndPointHash, SEndPointEqual>;
    using SerialLines = std::unordered_map<std::string, std::shared_ptr<CSerialLine>>;

    /** The port of a record, made when there is none; null after Stop. */
    CPortInHand<CNetPort> NetPortInHand(const SNetPortConfig& record);
    std::shared_ptr<CNetPort> MakeNetPort(const SNetPortConfig& record);

    /**
     * Lets a new UDP port have a local port that others of another local address hold: nobody tells when a
     * UDP record is deleted or edited, so their sockets may be left over.
     */
    void ShareLocalPort(const SNetPortConfig& record, CNetPort& made) REQUIRES_LOCK(m_mutex);
    CPortInHand<CSerialLine> SerialLineInHand(const std::string& comPort);

    /** Forgets the object of a refused port, when nothing is left of it and no other call has it in hand. */
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

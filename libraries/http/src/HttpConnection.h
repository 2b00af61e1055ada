#pragma once

#include "libraries/http/src/RequestReader.h"
#include "libraries/http/src/Server.h"

#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include <boost/asio/ip/tcp.hpp>
#include <hv/HttpMessage.h>

namespace hv::internal {

/**
 * An HTTP connection: reads requests, has them answered, and writes the replies, in order. On a WebSocket
 * server it reads the upgrade request and passes on the socket. It holds no buffers while it waits for a
 * request.
 */
class HttpConnection final : public ServerConnection,
                             public BlockingTask,
                             public std::enable_shared_from_this<HttpConnection> {
  public:
    HttpConnection(ServerLoop& loop, Socket socket, const boost::asio::ip::tcp::endpoint& peer);

    /** Begins to read. */
    void Start();

    void Close() override;
    void Expire() override;
    void Stop() override;
    bool IsExpendable() const override;

    void Waits() override;
    void Run() noexcept override;
    void Done() override;

  private:
    enum class Phase { Idle, Header, Body, Handling, Writing, Draining, Closed };
    enum class Written { All, Blocked, Failed };

    /**
     * Work for another thread than the loop's: a handler, or something that may have to wait for the disk.
     */
    enum class Work { Handler, Reply, FilePieces };

    /** One request and its reply; there is none between requests. */
    struct Exchange {
        explicit Exchange(Server& server) : owner(server), reader(*request, server.Bounds()) {}
        ~Exchange() {
            if (isLarge) {
                owner.Memory().Note();
            }
        }
        Exchange(const Exchange&) = delete;
        Exchange& operator=(const Exchange&) = delete;

        Server& owner;

        std::shared_ptr<HttpRequest> request = std::make_shared<HttpRequest>();
        HttpResponse response;
        RequestReader reader;
        Clock::time_point begun;  // when the body, then the reply, began to move
        std::uint64_t moved = 0;  // bytes of it so far
        bool isLarge = false;     // the request or the reply
        bool decided = false;
        bool refused = false;  // by its rule, which answers instead of the handler
        const http_sync_handler* handler = nullptr;
        const SBodyRule* rule = nullptr;
        MemoryShare share;                                     // of the body, and of what is made of it
        Clock::time_point staleAt = Clock::time_point::max();  // when a write has waited too long
        bool asksForFile = false;                              // and it is still unknown whether there is one
        FilePart file;
        Work work = Work::Handler;
        Written written = Written::Blocked;  // state of the reply so far
    };

    void ExpectBytes(Limits::Time stall);
    void WaitForInput();
    void OnReadable();
    bool Receive(std::string_view& input);
    void Process(std::string_view input);
    void ProcessKept();
    void Keep(std::string_view rest);
    bool OnHeader();
    void Decide();
    bool AdmitBody();
    bool TakeCost();
    bool IsForeign();
    void Dispatch();
    void Upgrade();
    bool IsStale();
    void DropStale(std::string_view reason);
    void CallHandler();
    void Refuse(int status);
    void TellLackOfMemory();
    void Reply();
    bool FindFile(DiskWait wait);
    bool PrepareReply(DiskWait wait);
    void LeaveToDiskThreads(Work work);
    Written WritePieces();
    std::array<std::string_view, 5> Output() const;
    Written Write();
    void Continue(Written written);
    void WaitForOutput();
    std::ptrdiff_t ReadFilePart(DiskWait wait);
    void FinishReply();
    void Drain();
    std::string_view Path() const;
    bool IsDone() const { return m_phase == Phase::Closed; }

    Socket m_socket;
    const boost::asio::ip::tcp::endpoint m_peer;
    const std::string m_peerIp;
    Phase m_phase = Phase::Header;
    bool m_keepAlive = true;
    std::string m_kept;  // received, not yet understood
    std::string m_head;  // of the reply
    std::size_t m_sent = 0;
    std::unique_ptr<Exchange> m_exchange;
};

}  // namespace hv::internal

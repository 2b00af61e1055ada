#pragma once

#include "platform/PortRecords.h"

#include <string>

/**
 * The port communication library: opens, holds and closes the connections to the equipment and writes to
 * serial lines.
 *
 * There is one object per process. All operations may be called from any thread at any time. A device that
 * hangs delays only the calls that name it. A TCP client is identified by both address pairs of its record. A
 * TCP server and a UDP socket are identified by their local pair, so records that differ only in the remote
 * pair share them. A serial line is identified by its port. The names of interfaces play no part. No
 * operation throws, and no record is changed. After the end of the process's main all operations fail at
 * once, sends with 995.
 *
 * Send results are 0 or a Windows error number, on every platform
 * (docs/decisions/0009-windows-error-numbers.md). These are the usual ones (docs/ports.md says what to do
 * about each): 2 no such port, 5 no permission, or another program has the serial port open, 13 content that
 * can't be turned into bytes, 87 a setting that no port has, 121 serial write timed out, 995 cut off by
 * DeleteUserTcp or DeleteAllConnect, 1167 unplugged, 10013 forbidden by a route or firewall, 10040 datagram
 * too long, 10048 address in use, 10049 address not available, 10051 network unreachable, 10054 reset by the
 * peer, 10057 not connected, 10060 timed out, 10061 refused, 10065 no route, 11001 unknown host name.
 */
class CComManager {
  public:
    /** The only object; built on first use, never null. */
    static CComManager* getInstance();

    CComManager(const CComManager&) = delete;
    CComManager& operator=(const CComManager&) = delete;

    /**
     * Makes a network port ready: connects a TCP client, lets a TCP server listen, binds a UDP socket. Blocks
     * for at most 3 s, and not at all under a CPortsTogether (platform/PortsTogether.h). End points that are
     * ready already give true at once.
     * @return false when it failed; nothing stays open then.
     */
    [[nodiscard]] bool InitNetSocket(SNetPortConfig& config);

    /**
     * Whether a serial line can be used: the port exists, accepts the settings, and can be opened or is open
     * here already. Blocks for at most 200 ms. Leaves nothing open that was not open before.
     */
    [[nodiscard]] bool CheckSerial(SSerialPortConfig& config);

    /**
     * Sends one command to a network port, and connects first if needed. Blocks for at most 3 s, and for less
     * under a CVainWaits (platform/VainWaits.h). Only one call at a time waits for a device that doesn't
     * answer or doesn't read; other calls to it soon get an error number. When a call has waited for a
     * connection in vain, the device is tried in the background, and sends fail at once until it answers.
     * @param content      the command as stored; text or hexadecimal digits. Empty content succeeds.
     * @param isText       true: sends the characters of content; false: sends the bytes that its digits name
     * @param asciiEncode  of text: 0 UTF-8, 1 one byte for each character up to U+00FF, 2 GB18030
     * @return 0 when the system has taken all bytes, otherwise an error number of the list above
     */
    [[nodiscard]] int SendNetData(SNetPortConfig& config, std::string& content, bool isText, int asciiEncode);

    /**
     * Sends one command over a serial line; opens the line and applies the settings if needed. Returns when
     * the bytes have left, or when the time that they need plus 0.5 s is over (at most 10 s). Parameters and
     * result as for SendNetData.
     */
    [[nodiscard]] int SendSerialData(SSerialPortConfig& config, std::string& content, bool isText,
                                     int asciiEncode);

    /**
     * Closes everything that is open for the end points of a TCP record; a send under way there ends with
     * 995. Anything that other records use too stays open for these. Does nothing for a UDP record.
     */
    void DeleteUserTcp(SNetPortConfig& config);

    /** Closes every connection, listener, socket and serial line; sends under way end with 995. */
    void DeleteAllConnect();

  private:
    CComManager();
    ~CComManager() = default;
};

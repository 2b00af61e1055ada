#pragma once

#include "platform/PortRecords.h"

#include <string>

/**
 * The port communication library: opens, holds and closes the connections to the equipment and writes to
 * serial lines.
 *
 * There is one object a process. All operations may be called from any thread at any time; a device that
 * hangs delays only the calls that name it. A TCP client is told from others by both address pairs of its
 * record; a TCP server and a UDP socket by their local pair, so that records which differ only in the remote
 * pair share them; a serial line by its port. The names of interfaces play no part. No operation throws, and
 * no record is changed. After the end of the process's main all of them fail at once, sends with 995.
 *
 * Send results are 0 or a Windows error number, on every platform, so that a message reads the same
 * everywhere. These are the usual ones (docs/ports.md says what to do about each): 2 no such port, 5 no
 * permission, or a serial port that another program has, 13 content that can't be turned into bytes, 87 a
 * setting that no port has, 121 serial write timed out, 995 cut off by DeleteUserTcp or DeleteAllConnect,
 * 1167 unplugged, 10013 forbidden by a route or firewall, 10040 datagram too long, 10048 address in use,
 * 10049 address not available, 10051 network unreachable, 10054 reset by the peer, 10057 not connected, 10060
 * timed out, 10061 refused, 10065 no route, 11001 unknown host name.
 */
class CComManager {
  public:
    /** The one object; built on first use, never null. */
    static CComManager* getInstance();

    CComManager(const CComManager&) = delete;
    CComManager& operator=(const CComManager&) = delete;

    /**
     * Makes a network port ready: a TCP client is connected, a TCP server listens, a UDP socket is bound.
     * Blocks for 3 s at most. End points that are ready already give true at once.
     * @return false when it could not be done; nothing stays open then.
     */
    bool InitNetSocket(SNetPortConfig& config);

    /**
     * Tells whether a serial line can be used: the port exists, takes the settings, and can be opened or is
     * open here already. Blocks for 200 ms at most. Leaves nothing open that was not open before.
     */
    bool CheckSerial(SSerialPortConfig& config);

    /**
     * Sends one command to a network port, connecting first where that is needed. Blocks for 3 s at most, and
     * for less under a CVainWaits (platform/VainWaits.h). One call at a time waits for a device that doesn't
     * answer or doesn't read; others that meet it get an error number soon. A device that has let a call wait
     * for its connection in vain is tried in the background, and sends fail at once until it answers.
     * @param content      the command as stored; text or hexadecimal digits. Empty content succeeds.
     * @param isText       true: the characters of content go out; false: the bytes that its digits name
     * @param asciiEncode  of text: 0 UTF-8, 1 one byte for each character up to U+00FF, 2 GB18030
     * @return 0 when the system has taken all bytes, otherwise an error number of the list above
     */
    int SendNetData(SNetPortConfig& config, std::string& content, bool isText, int asciiEncode);

    /**
     * Sends one command over a serial line, opening it and applying the settings where that is needed.
     * Returns when the bytes have left, or when the time that they need plus 0.5 s is over (10 s at most).
     * Parameters and result as for SendNetData.
     */
    int SendSerialData(SSerialPortConfig& config, std::string& content, bool isText, int asciiEncode);

    /**
     * Closes what is open for the end points of a TCP record; a send under way there ends with 995. What
     * other records use as well stays open for these. Nothing happens for a UDP record.
     */
    void DeleteUserTcp(SNetPortConfig& config);

    /** Closes every connection, listener, socket and serial line; sends under way end with 995. */
    void DeleteAllConnect();

  private:
    CComManager();
    ~CComManager() = default;
};

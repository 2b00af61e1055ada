#pragma once

#include <cstdint>
#include <string>

/** Kind of a network interface. */
enum EnNetMode : std::int32_t {
    NetModeTcpClient = 0,  ///< connects to the remote pair
    NetModeTcpServer = 1,  ///< listens on the local pair
    NetModeUdp = 2,        ///< binds the local pair, sends datagrams to the remote pair
};

/** Parity of a serial line. */
enum EnParity : std::uint8_t {
    ParityNone = 0,
    ParityOdd = 1,
    ParityEven = 2,
    ParityMark = 3,
    ParitySpace = 4,
};

/** Stop bits of a serial line. */
enum EnStopBits : std::uint8_t {
    StopBitsOne = 0,
    StopBitsOneAndHalf = 1,
    StopBitsTwo = 2,
};

/** One network interface. The values are not checked for range: CComManager decides what they mean. */
struct SNetPortConfig {
    std::string netPortName;               ///< name shown to the user
    std::string ipAddress;                 ///< local address; empty: any
    std::string dstIpAddress;              ///< remote address or host name
    std::int32_t port = 0;                 ///< local port, 0: any
    std::int32_t dstPort = 0;              ///< remote port
    EnNetMode netMode = NetModeTcpClient;  ///< kind of socket
};

/** One serial interface with its line settings. */
struct SSerialPortConfig {
    std::string comName;                ///< name shown to the user
    std::string comPort;                ///< name of the system's port, upper case, such as "COM3"
    std::uint32_t baudRate = 9600;      ///< bits a second
    std::uint8_t wordLength = 8;        ///< data bits
    EnParity parity = ParityNone;       ///< parity
    EnStopBits stopBits = StopBitsOne;  ///< stop bits
};

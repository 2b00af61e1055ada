#pragma once

#include <boost/system/error_code.hpp>

namespace comm {

/**
 * Windows error numbers that the library returns on every platform
 * (docs/decisions/0009-windows-error-numbers.md).
 */
enum EnError : int {
    ErrorNone = 0,
    ErrorNoSuchPort = 2,            ///< ERROR_FILE_NOT_FOUND
    ErrorTooManyFiles = 4,          ///< ERROR_TOO_MANY_OPEN_FILES
    ErrorNoPermission = 5,          ///< ERROR_ACCESS_DENIED: also a serial port that another program holds
    ErrorNoMemory = 8,              ///< ERROR_NOT_ENOUGH_MEMORY
    ErrorBadContent = 13,           ///< ERROR_INVALID_DATA
    ErrorGeneral = 31,              ///< ERROR_GEN_FAILURE: the system gave a code that has no counterpart
    ErrorBadSetting = 87,           ///< ERROR_INVALID_PARAMETER
    ErrorSerialTimedOut = 121,      ///< ERROR_SEM_TIMEOUT
    ErrorCut = 995,                 ///< ERROR_OPERATION_ABORTED
    ErrorUnplugged = 1167,          ///< ERROR_DEVICE_NOT_CONNECTED
    ErrorSocketPermission = 10013,  ///< WSAEACCES
    ErrorInvalid = 10022,           ///< WSAEINVAL
    ErrorTooManySockets = 10024,    ///< WSAEMFILE
    ErrorTooLong = 10040,           ///< WSAEMSGSIZE
    ErrorNoFamily = 10047,          ///< WSAEAFNOSUPPORT
    ErrorAddressInUse = 10048,      ///< WSAEADDRINUSE
    ErrorNoAddress = 10049,         ///< WSAEADDRNOTAVAIL
    ErrorNetworkDown = 10050,       ///< WSAENETDOWN
    ErrorNoNetwork = 10051,         ///< WSAENETUNREACH
    ErrorAborted = 10053,           ///< WSAECONNABORTED
    ErrorReset = 10054,             ///< WSAECONNRESET
    ErrorNoBuffers = 10055,         ///< WSAENOBUFS
    ErrorNotConnected = 10057,      ///< WSAENOTCONN
    ErrorTimedOut = 10060,          ///< WSAETIMEDOUT
    ErrorRefused = 10061,           ///< WSAECONNREFUSED
    ErrorNoRoute = 10065,           ///< WSAEHOSTUNREACH
    ErrorNoHost = 11001,            ///< WSAHOST_NOT_FOUND
};

/** Number of a failed socket operation; 0 for success. The end of a stream counts as a reset. */
EnError SocketError(const boost::system::error_code& code);

/** Number of a failed serial operation, from the system's own code (errno on Linux); 0 for success. */
EnError SerialError(int systemCode);

}  // namespace comm

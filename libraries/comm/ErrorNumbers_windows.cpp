#include "libraries/comm/ErrorNumbers.h"

#include <algorithm>
#include <array>

#include <boost/asio/error.hpp>

#include <windows.h>

namespace comm {

namespace {

constexpr int kNoSuchDevice = 433;  // ERROR_NO_SUCH_DEVICE, which the headers lack

/** The numbers that are returned unchanged; any other becomes ErrorGeneral, as on other systems. */
constexpr auto kTold = std::to_array<EnError>(
    {ErrorSocketPermission, ErrorInvalid, ErrorTooManySockets, ErrorTooLong, ErrorNoFamily, ErrorAddressInUse,
     ErrorNoAddress, ErrorNetworkDown, ErrorNoNetwork, ErrorAborted, ErrorReset, ErrorNoBuffers,
     ErrorNotConnected, ErrorTimedOut, ErrorRefused, ErrorNoRoute, ErrorCut, ErrorNoHost});

EnError Told(int code) {
    const auto* const found = std::find(kTold.begin(), kTold.end(), code);
    return found == kTold.end() ? ErrorGeneral : *found;
}

}  // namespace

EnError SocketError(const boost::system::error_code& code) {
    if (!code) {
        return ErrorNone;
    }
    if (code == boost::asio::error::eof) {
        return ErrorReset;
    }
    // What overlapped operations report in the numbers of the I/O system.
    switch (code.value()) {
        case ERROR_NETNAME_DELETED:
        case WSAENETRESET:
        case WSAEDISCON:
            return ErrorReset;
        case ERROR_CONNECTION_REFUSED:
        case ERROR_PORT_UNREACHABLE:
            return ErrorRefused;
        case ERROR_NETWORK_UNREACHABLE:
            return ErrorNoNetwork;
        case ERROR_HOST_UNREACHABLE:
        case WSAEHOSTDOWN:
            return ErrorNoRoute;
        case ERROR_SEM_TIMEOUT:
            return ErrorTimedOut;
        case ERROR_CONNECTION_ABORTED:
            return ErrorAborted;
        case ERROR_ACCESS_DENIED:
            return ErrorSocketPermission;
        case ERROR_NOT_ENOUGH_MEMORY:
        case ERROR_NO_SYSTEM_RESOURCES:
            return ErrorNoBuffers;
        case WSATRY_AGAIN:
        case WSANO_RECOVERY:
        case WSANO_DATA:
            return ErrorNoHost;
        default:
            return Told(code.value());
    }
}

EnError SerialError(int systemCode) {
    switch (systemCode) {
        case ERROR_SUCCESS:
            return ErrorNone;
        case ERROR_FILE_NOT_FOUND:
        case ERROR_PATH_NOT_FOUND:
        case ERROR_BAD_PATHNAME:
        case ERROR_INVALID_NAME:
        case ERROR_INVALID_FUNCTION:  // a device that is no serial line
            return ErrorNoSuchPort;
        case ERROR_ACCESS_DENIED:
        case ERROR_SHARING_VIOLATION:
        case ERROR_BUSY:
            return ErrorNoPermission;
        case ERROR_TOO_MANY_OPEN_FILES:
            return ErrorTooManyFiles;
        case ERROR_NOT_ENOUGH_MEMORY:
        case ERROR_OUTOFMEMORY:
        case ERROR_NO_SYSTEM_RESOURCES:
            return ErrorNoMemory;
        case ERROR_INVALID_PARAMETER:
            return ErrorBadSetting;
        case ERROR_NOT_READY:
        case ERROR_BAD_COMMAND:
        case ERROR_GEN_FAILURE:
        case kNoSuchDevice:
        case ERROR_DEV_NOT_EXIST:
        case ERROR_DEVICE_REMOVED:
        case ERROR_DEVICE_NOT_CONNECTED:
        case ERROR_HANDLE_EOF:
        case ERROR_IO_DEVICE:
            return ErrorUnplugged;
        case ERROR_TIMEOUT:
        case ERROR_SEM_TIMEOUT:
            return ErrorSerialTimedOut;
        default:
            return ErrorGeneral;
    }
}

}  // namespace comm

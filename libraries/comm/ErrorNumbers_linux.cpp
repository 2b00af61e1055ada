#include "libraries/comm/ErrorNumbers.h"

#include <cerrno>

#include <boost/asio/error.hpp>

namespace comm {

namespace {

EnError SocketErrno(int code) {
    switch (code) {
        case EACCES:
        case EPERM:
            return ErrorSocketPermission;
        case EINVAL:
            return ErrorInvalid;
        case EMFILE:
        case ENFILE:
            return ErrorTooManySockets;
        case EMSGSIZE:
            return ErrorTooLong;
        case EAFNOSUPPORT:
            return ErrorNoFamily;
        case EADDRINUSE:
            return ErrorAddressInUse;
        case EADDRNOTAVAIL:
            return ErrorNoAddress;
        case ENETDOWN:
            return ErrorNetworkDown;
        case ENETUNREACH:
            return ErrorNoNetwork;
        case ECONNABORTED:
            return ErrorAborted;
        case ECONNRESET:
        case EPIPE:
            return ErrorReset;
        case ENOBUFS:
        case ENOMEM:
            return ErrorNoBuffers;
        case ENOTCONN:
            return ErrorNotConnected;
        case ETIMEDOUT:
            return ErrorTimedOut;
        case ECONNREFUSED:
            return ErrorRefused;
        case EHOSTUNREACH:
        case EHOSTDOWN:
            return ErrorNoRoute;
        case ECANCELED:
            return ErrorCut;
        default:
            return ErrorGeneral;
    }
}

}  // namespace

EnError SocketError(const boost::system::error_code& code) {
    if (!code) {
        return ErrorNone;
    }
    if (code == boost::asio::error::eof) {
        return ErrorReset;
    }
    if (code.category() == boost::asio::error::get_netdb_category() ||
        code.category() == boost::asio::error::get_addrinfo_category()) {
        return ErrorNoHost;
    }
    return SocketErrno(code.value());
}

EnError SerialError(int systemCode) {
    switch (systemCode) {
        case 0:
            return ErrorNone;
        case ENOENT:
        case ENODEV:
        case ENXIO:
        case ENOTDIR:
        case ENOTTY:
        case ELOOP:
            return ErrorNoSuchPort;
        case EACCES:
        case EPERM:
        case EBUSY:
        case EWOULDBLOCK:
            return ErrorNoPermission;
        case EMFILE:
        case ENFILE:
            return ErrorTooManyFiles;
        case ENOMEM:
            return ErrorNoMemory;
        case EINVAL:
            return ErrorBadSetting;
        case EIO:
            return ErrorUnplugged;
        default:
            return ErrorGeneral;
    }
}

}  // namespace comm

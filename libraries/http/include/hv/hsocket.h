#pragma once

#if defined(_WIN32)
#include <winsock2.h>
#include <ws2tcpip.h>
#else
#include <netinet/in.h>
#include <sys/socket.h>
#endif

/** A socket address of either family. */
union sockaddr_u {
    struct sockaddr sa;
    struct sockaddr_in sin;
    struct sockaddr_in6 sin6;
};

/**
 * Writes "ip:port", or "[ip]:port" for IPv6, into the buffer, cut to len - 1 characters and a NUL.
 * @return the buffer
 */
const char* sockaddr_str(sockaddr_u* addr, char* buf, int len);

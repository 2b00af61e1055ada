#pragma once

struct sockaddr;

/** The input and output side of a connection. */
struct hio_t;

/** Address of the peer, valid as long as the io handle; null for a null handle. */
struct sockaddr* hio_peeraddr(hio_t* io);

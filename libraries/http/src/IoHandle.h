#pragma once

#include <hv/hloop.h>
#include <hv/hsocket.h>

/** What a connection's io handle knows. */
struct hio_t {
    sockaddr_u peer{};
};

#pragma once

#include <cstdint>
#include <string>

#include <hv/HttpMessage.h>

namespace hv::internal {

/** What the connection knows of a reply, beyond what the handler filled in. */
struct ReplyFrame {
    std::uint64_t contentLength = 0;
    bool http10 = false;
    bool close = false;
};

/**
 * Writes the head of a reply behind the text. Headers that frame the message (Content-Length, Connection,
 * Transfer-Encoding, Date) are the library's own: a handler's are left out, as are headers that hold line
 * breaks.
 */
void AppendReplyHead(std::string& text, const HttpResponse& response, const ReplyFrame& frame);

/** Whether a reply of this status may have a body (RFC 9110, 6.4.1). */
bool MayHaveBody(int status);

}  // namespace hv::internal

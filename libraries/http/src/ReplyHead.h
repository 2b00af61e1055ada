#pragma once

#include <cstdint>
#include <string>

#include <hv/HttpMessage.h>

namespace hv::internal {

/** What the connection knows about a reply, beyond what the handler filled in. */
struct ReplyFrame {
    std::uint64_t contentLength = 0;
    bool http10 = false;
    bool close = false;
};

/**
 * Appends the head of a reply to the text. Headers that frame the message (Content-Length, Connection,
 * Transfer-Encoding, Date) come from the library: those of a handler are left out, as are headers with line
 * breaks.
 */
void AppendReplyHead(std::string& text, const HttpResponse& response, const ReplyFrame& frame);

/** Whether a reply of this status may have a body (RFC 9110, 6.4.1). */
bool MayHaveBody(int status);

}  // namespace hv::internal

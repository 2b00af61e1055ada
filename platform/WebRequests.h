#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

class HttpRequest;
class HttpResponse;

namespace hv {
struct HttpService;
}

// What the server needs from the HTTP library beyond the interface of libhv. The bundled library does
// everything that is described here. For an installed libhv there is a simple stand-in (libraries/libhv), and
// each function says what the stand-in does instead.

/**
 * Sets the body of a reply to head, text and tail, one after the other. The text is not copied: all replies
 * under way share it, however slowly their clients read. A body that is set afterwards replaces it. With
 * libhv the reply gets a copy.
 * @param text  null: an empty one
 */
void SetReplyText(HttpResponse* response, std::string head, std::shared_ptr<const std::string> text,
                  std::string tail);

/**
 * Limits for the body of a request, before the handler sees it. A body is large when it exceeds 64 KiB, or
 * when its length is not known in advance. All functions may be null; any thread of the server may call them.
 */
struct SBodyRule {
    /** Maximum number of bytes; more is answered 413. */
    std::uint64_t limit = std::uint64_t{1} << 20;

    /**
     * Called for a large body when the header is complete; answers at once. If it returns false, the body is
     * discarded as it arrives, and refuse answers instead of the handler.
     */
    std::function<bool(const HttpRequest&)> admits;
    std::function<int(HttpRequest*, HttpResponse*)> refuse;

    /**
     * Bytes of memory that the handler needs for a large body, in addition to the body itself. May take long.
     */
    std::function<std::uint64_t(const std::string& body)> cost;
};

/**
 * Sets a rule for the POST requests of a path, before the server runs. Large bodies of all requests share one
 * budget, together with their costs: a third of the machine's memory, or what the system still allocates if
 * that is less. A request beyond it is answered 503 with "Retry-After" and reported in the system log; small
 * requests go on. A path without a rule has only the limit.
 *
 * With libhv this does nothing: libhv's own limits apply.
 */
void SetBodyRule(hv::HttpService& service, const char* path, SBodyRule rule);

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

// What the server asks of the HTTP library beyond the interface of libhv. The bundled library does all that
// is told here; for an installed libhv there is a plain stand-in (libraries/libhv), and each function tells
// what that one does instead.

/**
 * Makes head, text and tail, one behind the other, the body of a reply. The text is not copied: all replies
 * that are on their way share it, however slowly their clients read. A body that is set afterwards takes its
 * place. With libhv the reply gets a copy.
 * @param text  null: an empty one
 */
void SetReplyText(HttpResponse* response, std::string head, std::shared_ptr<const std::string> text,
                  std::string tail);

/**
 * What the body of a request has to keep to, before the handler sees it. A body is large above 64 KiB, or
 * when its length is not told beforehand. All functions may be null, and are called by any thread of the
 * server.
 */
struct SBodyRule {
    /** Most bytes: 413 beyond. */
    std::uint64_t limit = std::uint64_t{1} << 20;

    /** Asked about a large body when the header is in, and answers at once. If not, the body is thrown away
     * as it comes, and refuse answers in place of the handler. */
    std::function<bool(const HttpRequest&)> admits;
    std::function<int(HttpRequest*, HttpResponse*)> refuse;

    /** Bytes of memory that the handler makes of a large body, beside the body itself. May take long. */
    std::function<std::uint64_t(const std::string& body)> cost;
};

/**
 * Gives the POST requests of a path a rule, before the server runs. Large bodies of all requests share one
 * budget, together with their costs: a third of the machine's memory, or what the system still hands out when
 * that is less. Beyond it a request is answered 503 with "Retry-After", told in the system log, and small
 * requests go on. A path without a rule has the limit alone.
 *
 * With libhv this does nothing: its own limits hold.
 */
void SetBodyRule(hv::HttpService& service, const char* path, SBodyRule rule);

#pragma once

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <string_view>

#include <hv/httpdef.h>

namespace hv::internal {
class FileHandle;
}

namespace hv {

/** Orders header names, ignoring case (RFC 9110, 5.1). */
struct StringCaseLess {
    using is_transparent = void;
    bool operator()(std::string_view left, std::string_view right) const;
};

/** Address of the other side of a connection. */
struct NetAddr {
    std::string ip;  ///< "192.168.1.20" or "fe80::1", without brackets
    int port = 0;
};

using QueryParams = std::map<std::string, std::string>;

/** A body of three pieces; the middle one is shared with other replies. */
struct ReplyPieces {
    std::string head;
    std::shared_ptr<const std::string> text;  ///< null: an empty one
    std::string tail;

    std::size_t Size() const { return head.size() + (text ? text->size() : 0) + tail.size(); }
};

}  // namespace hv

using http_headers = std::map<std::string, std::string, hv::StringCaseLess>;
using http_body = std::string;

/** The common part of requests and replies. A message belongs to one connection and one thread at a time. */
class HttpMessage {
  public:
    virtual ~HttpMessage() = default;

    http_headers headers;
    http_body body;

    /** Sets or replaces a header. Line breaks and NUL in the value become blanks (RFC 9110, 5.5). */
    void SetHeader(const char* key, const std::string& value);

    /** Value of a header, or defvalue when it is absent. */
    std::string GetHeader(const char* key, const std::string& defvalue = std::string()) const;

    /** Sets the body to a copy of the text. */
    void SetBody(const std::string& text);

    /** Sets the header "Content-Type". */
    void SetContentType(const char* type);
    void SetContentType(http_content_type type);
};

/** One request, as a handler sees it. */
class HttpRequest : public HttpMessage {
  public:
    http_method method = HTTP_GET;
    std::string path;  ///< as sent: percent-encoded, with "?query"; without scheme and host
    hv::QueryParams
        query_params;  ///< of the query and of "{name}" in the route; the latter still percent-encoded
    hv::NetAddr client_addr;

    /** Value of a query or path parameter, or defvalue when it is absent. */
    std::string GetParam(const char* key, const std::string& defvalue = std::string()) const;
};

/** One reply, which a handler fills. */
class HttpResponse : public HttpMessage {
  public:
    http_status status_code = HTTP_STATUS_OK;

    /**
     * Makes a file the body. A file of up to 64 KiB is read at once. A larger one stays open and is read
     * while it is sent, so that its size costs no memory. As many bytes are sent as the file has now; if it
     * has lost some by then, the connection is closed. The content type follows the suffix unless one was set
     * before.
     * @return 200, or 404 when the file can't be opened or read
     */
    int File(const char* filepath);

    /** The larger file that File has opened; a body that is set afterwards replaces it. */
    std::shared_ptr<hv::internal::FileHandle> file;

    /**
     * The body in pieces, as set by SetReplyText (platform/WebRequests.h); a body that is set afterwards
     * replaces it.
     */
    hv::ReplyPieces pieces;
};

using HttpRequestPtr = std::shared_ptr<HttpRequest>;
using HttpResponsePtr = std::shared_ptr<HttpResponse>;

/** A handler: fills the reply and returns its status. Runs on one of the server's worker threads, may block.
 */
using http_sync_handler = std::function<int(HttpRequest*, HttpResponse*)>;

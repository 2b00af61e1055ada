#include "libraries/http/src/RequestReader.h"

#include "libraries/http/src/Text.h"
#include "libraries/http/src/UrlText.h"

#include <algorithm>

namespace hv::internal {

namespace http = boost::beast::http;

namespace {

// "0", two line ends. The parser must not be asked again with less once it has seen a part of the last chunk.
constexpr std::size_t kShortestChunk = 5;

http_method MethodOf(http::verb method) {
    switch (method) {
        case http::verb::get:
            return HTTP_GET;
        case http::verb::head:
            return HTTP_HEAD;
        case http::verb::post:
            return HTTP_POST;
        case http::verb::put:
            return HTTP_PUT;
        case http::verb::delete_:
            return HTTP_DELETE;
        case http::verb::options:
            return HTTP_OPTIONS;
        case http::verb::patch:
            return HTTP_PATCH;
        default:
            return HTTP_CUSTOM_METHOD;
    }
}

// A line that begins with a blank continues the previous line, or some programs take it so (RFC 9112, 5.2).
// For some, a bare line feed ends a line (2.2). The text begins at the beginning of a line.
bool HasOddLine(std::string_view lines) {
    for (std::size_t at = lines.find('\n'); at != std::string_view::npos; at = lines.find('\n', at + 1)) {
        const char next = at + 1 < lines.size() ? lines[at + 1] : '\r';
        if (next == ' ' || next == '\t' || at == 0 || lines[at - 1] != '\r') {
            return true;
        }
    }
    return false;
}

bool IsDigit(char c) {
    return c >= '0' && c <= '9';
}

// A host name or address with or without a port (RFC 9112, 3.2; RFC 3986, 3.2), or nothing at all.
bool IsHostText(std::string_view text) {
    const bool isLiteral = text.starts_with('[');
    const std::size_t end = std::min(isLiteral ? text.find(']') : text.find(':'), text.size());
    std::string_view name = text.substr(0, end);
    std::string_view port = text.substr(end);
    if (isLiteral) {
        if (port.empty()) {
            return false;
        }
        name.remove_prefix(1);
        port.remove_prefix(1);
    }
    const std::string_view marks = isLiteral ? "-._~!$&'()*+,;=:%" : "-._~!$&'()*+,;=%";
    return std::all_of(
               name.begin(), name.end(),
               [&](char c) { return IsLetterOrDigit(c) || marks.find(c) != std::string_view::npos; }) &&
           (isLiteral || PercentDecoded(name)) && (!name.empty() || text.empty()) &&
           (port.empty() || (port.front() == ':' && std::all_of(port.begin() + 1, port.end(), IsDigit)));
}

// Removes "http://host:port" from the front of a target in absolute form (RFC 9112, 3.2.2). Nothing when it
// has none, or an invalid one.
std::string_view TakeAuthority(std::string_view& target) {
    for (const std::string_view scheme : {"http://", "https://"}) {
        if (EqualsCaseless(target.substr(0, scheme.size()), scheme)) {
            const std::string_view rest = target.substr(scheme.size());
            const std::string_view authority = rest.substr(0, rest.find_first_of("/?"));
            target = rest.substr(authority.size());
            return IsHostText(authority) ? authority : std::string_view();
        }
    }
    return {};
}

// 0, or the status for the codings of a body: the last must be "chunked" (RFC 9112, 6.1 and 6.3).
int FaultOfCodings(std::string_view list) {
    bool isChunked = false;
    bool hasOther = false;
    while (!list.empty()) {
        if (isChunked) {
            return 400;
        }
        isChunked = EqualsCaseless(Trimmed(TakeUntil(list, ',')), "chunked");
        hasOther = hasOther || !isChunked;
    }
    return !isChunked ? 400 : hasOther ? 501 : 0;
}

}  // namespace

RequestReader::RequestReader(HttpRequest& request, const Limits& limits)
    : m_request(request), m_limits(limits) {
    header_limit(static_cast<std::uint32_t>(limits.headerBytes));
    body_limit(limits.bodyBytes);
    m_bodyLimit = limits.bodyBytes;
}

RequestReader::State RequestReader::Put(std::string_view& input) {
    if (!is_header_done()) {
        const State got = PutHeader(input);
        if (got != State::Done || is_done()) {
            return got;
        }
    }
    if (!m_headerTold) {
        m_headerTold = true;
        return State::Header;
    }
    return PutBody(input);
}

// The parser waits for the rest of a line without a version, and takes no version above 1.1.
RequestReader::State RequestReader::CheckRequestLine(std::string_view input, std::string& replaced) {
    constexpr std::string_view ending = " HTTP/1.1\r";
    const std::size_t end = input.find('\n');
    if (std::min(end, input.size()) > m_limits.headerBytes) {
        return Fail(414);
    }
    if (end == std::string_view::npos) {
        return State::NeedMore;
    }
    const std::string_view last = input.substr(end - std::min(end, ending.size()), ending.size());
    if (last.size() != ending.size() || !last.starts_with(" HTTP/") || !IsDigit(last[6]) || last[7] != '.' ||
        !IsDigit(last[8])) {
        return Fail(400);
    }
    if (last[6] == '1' && last[8] > '1') {
        replaced = input;
        replaced[end - 2] = '1';  // a higher minor version is answered as the highest known (RFC 9110, 2.5)
    }
    m_lineChecked = true;
    return State::Done;
}

RequestReader::State RequestReader::PutHeader(std::string_view& input) {
    std::string replaced;
    if (!m_lineChecked) {
        if (const State line = CheckRequestLine(input, replaced); line != State::Done) {
            return line;
        }
    }
    Error error;
    const char* const bytes = replaced.empty() ? input.data() : replaced.data();
    const std::size_t taken = put(boost::asio::const_buffer(bytes, input.size()), error);
    m_headerBytes += taken;
    if (HasOddLine(is_header_done() ? input.substr(0, taken) : input)) {
        return Fail(400);
    }
    input.remove_prefix(taken);
    if (error && error != http::error::need_more) {
        return Fail(error == http::error::header_limit ? 431
                    : error == http::error::body_limit ? 413
                                                       : m_failStatus);
    }
    const std::size_t pending = is_header_done() ? 0 : input.size();
    if (m_headerBytes + pending > m_limits.headerBytes) {
        return Fail(431);
    }
    return is_header_done() ? State::Done : State::NeedMore;
}

RequestReader::State RequestReader::PutBody(std::string_view& input) {
    while (!is_done() && !input.empty()) {
        if (chunked() && m_chunkLeft == 0 && input.size() < kShortestChunk) {
            return State::NeedMore;
        }
        Error error;
        const std::size_t taken = put(boost::asio::const_buffer(input.data(), input.size()), error);
        input.remove_prefix(taken);
        if (error == http::error::need_more) {
            return input.size() > m_limits.chunkOverheadBytes ? Fail(400) : State::NeedMore;
        }
        if (error) {
            return Fail(error == http::error::body_limit        ? 413
                        : error == http::error::buffer_overflow ? 503
                                                                : 400);
        }
    }
    return is_done() ? State::Done : State::NeedMore;
}

RequestReader::State RequestReader::Fail(int status) {
    m_failStatus = status;
    return State::Failed;
}

void RequestReader::on_request_impl(http::verb method, Text /*name*/, Text target, int version,
                                    Error& error) {
    std::string_view path(target.data(), target.size());
    if (!path.starts_with('/')) {
        m_authority = TakeAuthority(path);
        if (m_authority.empty()) {
            error = http::error::bad_target;
            return;
        }
    }
    m_version = version;
    m_request.method = MethodOf(method);
    m_request.path.assign(path.starts_with('/') ? "" : "/").append(path);
}

void RequestReader::on_field_impl(Field field, Text name, Text value, Error& error) {
    if (is_header_done()) {
        return;  // a trailer: nothing that a handler could trust
    }
    const std::string_view text(value.data(), value.size());
    CheckKnownField(field, text, error);
    if (error) {
        return;
    }
    const auto [row, added] = m_request.headers.try_emplace(std::string(name.data(), name.size()), text);
    if (!added) {
        row->second.append(field == Field::cookie ? "; " : ", ").append(text);
    }
}

void RequestReader::CheckKnownField(Field field, std::string_view value, Error& error) {
    switch (field) {
        case Field::host:
            if (std::exchange(m_hasHost, true) || !IsHostText(value)) {
                error = http::error::bad_field;
            }
            break;
        case Field::content_length:
            if (std::exchange(m_hasLength, true) || value.find(',') != std::string_view::npos) {
                error = http::error::multiple_content_length;
            }
            break;
        case Field::transfer_encoding:
            if (m_version == 10) {
                error = http::error::bad_transfer_encoding;
            }
            break;
        case Field::expect:
            m_expectsContinue = EqualsCaseless(value, "100-continue");
            if (!m_expectsContinue) {
                m_failStatus = 417;
                error = http::error::bad_value;
            }
            break;
        default:
            break;
    }
}

void RequestReader::on_header_impl(Error& error) {
    if (!m_hasHost && m_version != 10) {
        error = http::error::bad_field;
    }
    if (!m_authority.empty()) {
        m_request.headers["Host"] = m_authority;
    }
    if (const auto codings = m_request.headers.find(std::string_view("Transfer-Encoding"));
        codings != m_request.headers.end()) {
        if (const int fault = FaultOfCodings(codings->second); fault != 0) {
            m_failStatus = fault;
            error = http::error::bad_transfer_encoding;
        }
    }
    m_expectsContinue = m_expectsContinue && m_version != 10;
}

void RequestReader::LimitBody(std::uint64_t bytes, MemoryShare& share) {
    m_bodyLimit = std::min(bytes, m_limits.bodyBytes);
    m_share = &share;
}

void RequestReader::on_body_init_impl(boost::optional<std::uint64_t> const& length, Error& /*error*/) {
    if (length && !m_discard) {
        m_announced = *length;
        m_request.body.reserve(
            static_cast<std::size_t>(std::min<std::uint64_t>(*length, m_limits.largeBodyBytes)));
    }
}

// Memory for a large body is taken from the share before it is allocated: all at once when the length is
// known, otherwise as the body grows, with the old buffer beside the new one while the text moves.
bool RequestReader::MakeRoom(std::size_t bytes) {
    std::string& body = m_request.body;
    const std::size_t needed = body.size() + bytes;
    if (m_share == nullptr || needed <= std::max(body.capacity(), m_limits.largeBodyBytes)) {
        return true;
    }
    const std::uint64_t room = m_announced ? *m_announced : std::min<std::uint64_t>(2 * needed, m_bodyLimit);
    const std::uint64_t before = m_share->Bytes();
    if (!m_share->Take(room, m_limits.memoryBudget)) {
        return false;
    }
    body.reserve(static_cast<std::size_t>(room));
    m_share->GiveBack(before);
    return true;
}

std::size_t RequestReader::on_body_impl(Text body, Error& error) {
    m_bodyBytes += body.size();
    if (m_discard) {
        return body.size();
    }
    if (m_bodyBytes > m_bodyLimit) {
        error = http::error::body_limit;
    } else if (!MakeRoom(body.size())) {
        error = http::error::buffer_overflow;
    } else {
        m_request.body.append(body.data(), body.size());
    }
    return body.size();
}

void RequestReader::on_chunk_header_impl(std::uint64_t size, Text extensions, Error& error) {
    m_chunkLeft = size;
    m_chunkOverhead += extensions.size();
    if (m_chunkOverhead > m_limits.chunkOverheadBytes) {
        error = http::error::bad_chunk_extension;
    }
}

std::size_t RequestReader::on_chunk_body_impl(std::uint64_t remain, Text body, Error& error) {
    m_chunkLeft = remain - body.size();
    return on_body_impl(body, error);
}

}  // namespace hv::internal

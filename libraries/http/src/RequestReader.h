#pragma once

#include "libraries/http/src/Limits.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include <boost/beast/http/basic_parser.hpp>
#include <hv/HttpMessage.h>

namespace hv::internal {

/**
 * Parses one request, piece by piece as it comes from the socket, into an HttpRequest. Refuses requests that
 * two programs could understand differently (RFC 9112, 11.2), and those that exceed the limits.
 */
class RequestReader final : public boost::beast::http::basic_parser<true> {
  public:
    enum class State {
        NeedMore,  ///< pass the rest of the input again, followed by more
        Header,    ///< header complete, body missing; returned once
        Done,
        Failed,
    };

    RequestReader(HttpRequest& request, const Limits& limits);

    /** Parses as much as possible, and removes it from the front of the input. */
    State Put(std::string_view& input);

    int FailStatus() const { return m_failStatus; }  ///< 400, 413, 414, 417, 431, 501 or 503, after Failed
    bool IsHttp10() const { return m_version == 10; }
    bool ExpectsContinue() const { return m_expectsContinue; }

    std::uint64_t BodyBytes() const { return m_bodyBytes; }  ///< of the body, received so far

    /** Has the body read and discarded. */
    void DiscardBody() { m_discard = true; }

    /** Whether the body is larger than this many bytes, or may be. After the header. */
    bool MayExceed(std::uint64_t bytes) const { return chunked() || content_length().value_or(0) > bytes; }

    /** Sets the maximum of bytes; a large body takes its memory from the share. After the header. */
    void LimitBody(std::uint64_t bytes, MemoryShare& share);

  private:
    using Error = boost::beast::error_code;
    using Text = boost::beast::string_view;
    using Field = boost::beast::http::field;

    void on_request_impl(boost::beast::http::verb method, Text name, Text target, int version,
                         Error& error) override;
    void on_response_impl(int, Text, int, Error&) override {}
    void on_field_impl(Field field, Text name, Text value, Error& error) override;
    void on_header_impl(Error& error) override;
    void on_body_init_impl(boost::optional<std::uint64_t> const& length, Error& error) override;
    std::size_t on_body_impl(Text body, Error& error) override;
    void on_chunk_header_impl(std::uint64_t size, Text extensions, Error& error) override;
    std::size_t on_chunk_body_impl(std::uint64_t remain, Text body, Error& error) override;
    void on_finish_impl(Error&) override {}

    State CheckRequestLine(std::string_view input, std::string& replaced);
    State PutHeader(std::string_view& input);
    State PutBody(std::string_view& input);
    State Fail(int status);
    bool MakeRoom(std::size_t bytes);
    void CheckKnownField(Field field, std::string_view value, Error& error);

    HttpRequest& m_request;
    const Limits& m_limits;
    std::size_t m_headerBytes = 0;
    std::size_t m_chunkOverhead = 0;
    std::uint64_t m_chunkLeft = 0;
    std::uint64_t m_bodyBytes = 0;
    std::uint64_t m_bodyLimit = 0;
    std::optional<std::uint64_t> m_announced;  // length of a body that is kept
    MemoryShare* m_share = nullptr;
    int m_version = 0;
    int m_failStatus = 400;
    std::string m_authority;  // of a target in absolute form; takes the place of Host
    bool m_lineChecked = false;
    bool m_hasHost = false;
    bool m_hasLength = false;
    bool m_headerTold = false;
    bool m_expectsContinue = false;
    bool m_discard = false;
};

}  // namespace hv::internal

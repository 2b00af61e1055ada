#pragma once

/** HTTP methods that the server knows. */
enum http_method {
    HTTP_DELETE = 0,
    HTTP_GET = 1,
    HTTP_HEAD = 2,
    HTTP_POST = 3,
    HTTP_PUT = 4,
    HTTP_OPTIONS = 6,
    HTTP_PATCH = 28,
    HTTP_CUSTOM_METHOD = 255,
};

/** HTTP status codes that the code uses by name; any other number may be cast to it (RFC 9110, 15). */
enum http_status {
    HTTP_STATUS_OK = 200,
    HTTP_STATUS_NOT_MODIFIED = 304,
    HTTP_STATUS_NOT_FOUND = 404,
    HTTP_STATUS_PRECONDITION_FAILED = 412,
    HTTP_STATUS_INTERNAL_SERVER_ERROR = 500,
    HTTP_STATUS_SERVICE_UNAVAILABLE = 503,
};

/** Content types that file suffixes map to. */
enum http_content_type {
    CONTENT_TYPE_NONE,
    CONTENT_TYPE_UNDEFINED,
    TEXT_PLAIN,
    TEXT_HTML,
    TEXT_CSS,
    APPLICATION_JAVASCRIPT,
    APPLICATION_JSON,
    APPLICATION_OCTET_STREAM,
};

/** Text of a content type, such as "application/json"; empty for CONTENT_TYPE_NONE and unknown values. */
const char* http_content_type_str(enum http_content_type type);

/** Content type of a text such as "text/html; charset=utf-8"; CONTENT_TYPE_UNDEFINED when there is none. */
enum http_content_type http_content_type_enum(const char* text);

/** Content type text of a suffix without dot, lower case: "png" gives "image/png". Empty when unknown. */
const char* http_content_type_str_by_suffix(const char* suffix);

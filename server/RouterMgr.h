#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <variant>

#include <hv/HttpMessage.h>
#include <nlohmann/json.hpp>

/** The "code" of a reply: 2xxxx success, 301xx refused, 302xx not sent to a device, 303xx interface not
 * accepted. */
enum EnResponseCode : int {
    CodeSuccess = 20000,
    CodeNoConnection = 30100,         ///< the client's address holds no open WebSocket connection
    CodeBadRequest = 30101,           ///< empty or unparsable body, missing key, wrong type, any exception
    CodeSerialSendFailed = 30200,     ///< a command could not be sent over a serial port
    CodeTcpSendFailed = 30201,        ///< a command could not be sent over a TCP interface
    CodeUdpSendFailed = 30202,        ///< a command could not be sent over a UDP interface
    CodeNothingSent = 30203,          ///< no command could be sent
    CodeSerialCheckFailed = 30300,    ///< the serial port can't be used
    CodeUdpInitFailed = 30301,        ///< the UDP interface can't be opened
    CodeTcpClientInitFailed = 30302,  ///< the TCP client interface can't be opened
    CodeTcpServerInitFailed = 30303,  ///< the TCP server interface can't be opened
    CodeNameTaken = 30304,            ///< another interface has the name
    CodeDuplicateConfig = 30306,      ///< another interface has the same end points or serial settings
};

// The JSON library moves without throwing, which the check cannot see.
/** What a handler puts into its reply. */
struct SResponseData {    // NOLINT(bugprone-exception-escape)
    nlohmann::json data;  ///< left out of the reply while null
    std::string message;  ///< text for the user; only set when commands could not be sent
};

/** The data of a reply as an existing JSON text, never null. An empty text is left out of the reply. */
struct SDataText {
    std::shared_ptr<const std::string> json;
};

/** The whole envelope of a reply, compressed with gzip, never null; for clients that accept it. */
struct SGzipEnvelope {
    std::shared_ptr<const std::string> bytes;
};

/** What a handler puts into a successful reply whose text exists already, instead of SResponseData. */
using ReadyContent = std::variant<SDataText, SGzipEnvelope>;

/** The parts of an envelope before and after the data. */
struct SEnvelopeFrame {
    std::string head;
    std::string tail;
};

/** The identity of one request in the operation log. */
struct SRequestTrace {
    std::string client;  ///< as MakeClientId makes it
    std::string path;    ///< as the client sent it
    std::string detail;  ///< reason of a failure: for the log, never for the client
};

/** IP text and port of the client, without a separator: "10.0.0.551234". */
std::string MakeClientId(const HttpRequest& request);

/**
 * Parses a request body. Nesting beyond the limit of IsNestedTooDeep is refused before anything is parsed.
 * @throw std::exception with the reason
 */
nlohmann::json ParseBody(const std::string& body);

/**
 * All route handlers, and their common functions. Handlers run on the HTTP server's worker threads, keep no
 * state, and return the HTTP status of the reply: 200 for every JSON reply, whose "code" distinguishes
 * success from failure.
 */
class RouterMgr {
  public:
    /**
     * Logs the outcome of a request, with the trace's detail, and writes the envelope. Returns 200.
     * @throw nlohmann::json::type_error 316 when content holds invalid UTF-8; the outcome is logged then
     */
    static int Respond(HttpResponse* response, int code, SResponseData& content, SRequestTrace& trace);

    /** As above, for a reply that consists only of its code. */
    static int Respond(HttpResponse* response, int code, SRequestTrace& trace);

    /** Logs the success of a request and writes its envelope, with an empty message. Returns 200. */
    static int RespondReady(HttpResponse* response, ReadyContent content, const SRequestTrace& trace);

    /**
     * How often each code has been sent since the start; other numbers count under 0. Any thread.
     */
    static std::map<int, std::uint64_t> ReplyCounts();

    /** The envelope without its data. @param hasData  whether there is data */
    static SEnvelopeFrame FrameEnvelope(int code, bool hasData, const std::string& message = {});

    /** Writes the envelope without logging. Returns 200. @throw as Respond; the body is unchanged then */
    static int WriteEnvelope(HttpResponse* response, int code, SResponseData& content);

    /**
     * The first step of the write routes: logs the arrival, and refuses a client without a WebSocket
     * connection (30100) and an empty body (30101).
     * @return true: continue; false: the reply is written (unless request or response is null), return 200
     */
    [[nodiscard]] static bool CheckWriteRequest(HttpRequest* request, HttpResponse* response,
                                                SRequestTrace& trace);

    /**
     * Answers a write instead of its handler, when the client's address has no open WebSocket connection and
     * the body has therefore not been read: logs the arrival and replies 30100. Returns 200.
     */
    static int RefuseUnconnected(HttpRequest* request, HttpResponse* response);

    // Documents (webapi/)
    static int GetPageLayoutInfo(HttpRequest* request, HttpResponse* response);
    static int GetMaterialList(HttpRequest* request, HttpResponse* response);
    static int GetComponentInteractionInfo(HttpRequest* request, HttpResponse* response);
    static int GetCentralControlInterfaceList(HttpRequest* request, HttpResponse* response);
    static int GetConfigList(HttpRequest* request, HttpResponse* response);
    static int SetCentralControlWebLayout(HttpRequest* request, HttpResponse* response);
    static int SetMaterialList(HttpRequest* request, HttpResponse* response);
    static int UpdateComponentInteraction(HttpRequest* request, HttpResponse* response);

    // Files by name (webapi/)
    static int IndexPageHandler(HttpRequest* request, HttpResponse* response);
    static int GetResourceHandler(HttpRequest* request, HttpResponse* response);
    static int FallbackFileHandler(HttpRequest* request, HttpResponse* response);

    // Server information and language (webapi/)
    static int GetServerVersion(HttpRequest* request, HttpResponse* response);
    static int GetUserLanguage(HttpRequest* request, HttpResponse* response);
    static int SetUserLanguage(HttpRequest* request, HttpResponse* response);

    // Diagnostics (webapi/)
    static int SetDeveloperMode(HttpRequest* request, HttpResponse* response);
    static int ReportClientError(HttpRequest* request, HttpResponse* response);

    // Infrared commands, which don't exist (webapi/): 404, and not a line in the log
    static int UseInfraredCommand(HttpRequest* request, HttpResponse* response);
    static int DeleteInfraredCommand(HttpRequest* request, HttpResponse* response);
    static int EditInfraredCommandName(HttpRequest* request, HttpResponse* response);
    static int ImportInfraredCommandFile(HttpRequest* request, HttpResponse* response);
    static int ExportInfraredCommandFile(HttpRequest* request, HttpResponse* response);

    // Interfaces (device/)
    static int AddComInfo(HttpRequest* request, HttpResponse* response);
    static int AddNetPortInfo(HttpRequest* request, HttpResponse* response);
    static int EditComInfo(HttpRequest* request, HttpResponse* response);
    static int EditNetPortInfo(HttpRequest* request, HttpResponse* response);
    static int DeleteInterfaceConfig(HttpRequest* request, HttpResponse* response);
    static int DeleteAllInterfaceConfig(HttpRequest* request, HttpResponse* response);

    // Commands (device/)
    static int UseComponent(HttpRequest* request, HttpResponse* response);

    // Serial ports of the machine (device/)
    static int GetServerComList(HttpRequest* request, HttpResponse* response);

    /** What a write route does with the parsed body; replies and returns the status. Exceptions end in 30101.
     */
    using WriteWork = std::function<int(nlohmann::json& body, SRequestTrace& trace)>;

    /** What HandleWrite does beside the work of a route. */
    struct SWriteForm {
        /** Top-level key that the body must have, else 30101; null: any JSON will do. */
        const char* requiredKey = nullptr;
        /** When an exception comes up: text for standard output, followed by the exception's; null: none. */
        const char* errorLine = nullptr;
    };

    /** The form of the write routes: head, parse, look-up of the required key, work. */
    static int HandleWrite(HttpRequest* request, HttpResponse* response, const SWriteForm& form,
                           const WriteWork& work);

    /** What a read route puts into its reply; may set the trace's detail. */
    using ReadWork = std::function<void(SResponseData& content, SRequestTrace& trace)>;

    /** The form of the read routes: logs the arrival, replies with what read gives. Its exceptions pass. */
    static int HandleRead(HttpRequest* request, HttpResponse* response, const ReadWork& read);
};

// The routes for finding faults: the debug console, and the errors that browsers report.

#include "platform/DebugConsole.h"
#include "server/LogText.h"
#include "server/RouterMgr.h"
#include "webapi/ClientErrorLog.h"

#include <array>
#include <sstream>

namespace {

constexpr std::array<const char*, 10> kFields = {"source",       "code",      "message",   "url",
                                                 "method",       "timestamp", "userAgent", "rawError",
                                                 "responseBody", "stack"};

std::string ReportLine(const nlohmann::json& report, const SRequestTrace& trace) {
    std::ostringstream line;
    line << "[ClientError] client=" << trace.client << " path=" << trace.path;
    for (const char* field : kFields) {
        AppendClientField(line, field, report);
    }
    if (report.is_object() && report.contains("extra") && !report["extra"].is_null()) {
        line << " extra=" << report["extra"].dump();
    }
    return line.str();
}

/** Switches the console according to the body. @return the code of the reply; sets the trace's detail */
EnResponseCode SwitchConsole(const std::string& text, SRequestTrace& trace) {
    const nlohmann::json body = ParseBody(text);
    if (!body.is_object() || !body.contains("data")) {
        return CodeBadRequest;
    }
    const nlohmann::json& data = body["data"];
    if (!data.is_object() || !data.contains("isDeveloperMode")) {
        trace.detail = "isDeveloperMode not exist";
        return CodeBadRequest;
    }
    SetDebugConsole(data["isDeveloperMode"].get<bool>());
    return CodeSuccess;
}

}  // namespace

int RouterMgr::SetDeveloperMode(HttpRequest* request, HttpResponse* response) {
    if (request == nullptr || response == nullptr) {
        return HTTP_STATUS_OK;
    }
    SRequestTrace trace{MakeClientId(*request), request->path, {}};
    WriteOperationLog(trace.client, trace.path, std::string());
    if (request->body.empty()) {
        trace.detail = "body empty";
        return Respond(response, CodeBadRequest, trace);
    }
    try {
        return Respond(response, SwitchConsole(request->body, trace), trace);
    } catch (const std::exception& error) {
        WriteOperationLog(trace.client, trace.path, FormatLogText(CodeBadRequest, error.what()));
        return Respond(response, CodeBadRequest, trace);
    }
}

int RouterMgr::ReportClientError(HttpRequest* request, HttpResponse* response) {
    return HandleWrite(request, response, {}, [response](auto& body, auto& trace) {
        const bool isWrapped = body.is_object() && body.contains("data");
        const std::string line = ReportLine(isWrapped ? body["data"] : body, trace);
        AppendClientErrorLog(line);
        WriteRootLog(RavLog::Error, "RouterMgr::ReportClientError", FormatLogText(line));
        trace.detail = "client error logged";
        return Respond(response, CodeSuccess, trace);
    });
}

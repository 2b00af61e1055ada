#include "server/RouterMgr.h"

#include "config/JsonDepth.h"
#include "config/JsonRelease.h"
#include "config/StandardOutput.h"
#include "platform/WebRequests.h"
#include "server/ClientsManager.h"
#include "server/LogText.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <exception>
#include <stdexcept>
#include <utility>

namespace {

/** Size up to which a reply copies a document: less work than sending it in pieces. */
constexpr std::size_t kCopiedAtMost = std::size_t{16} * 1024;

constexpr const char* kJsonType = "application/json; charset=utf-8";

struct SCodeCount {
    int code;
    std::atomic<std::uint64_t> count;
};

/** The last one is for all other numbers. */
constinit std::array<SCodeCount, 14> g_replies{{
    {CodeSuccess, 0},
    {CodeNoConnection, 0},
    {CodeBadRequest, 0},
    {CodeSerialSendFailed, 0},
    {CodeTcpSendFailed, 0},
    {CodeUdpSendFailed, 0},
    {CodeNothingSent, 0},
    {CodeSerialCheckFailed, 0},
    {CodeUdpInitFailed, 0},
    {CodeTcpClientInitFailed, 0},
    {CodeTcpServerInitFailed, 0},
    {CodeNameTaken, 0},
    {CodeDuplicateConfig, 0},
    {0, 0},
}};

void CountReply(int code) {
    const auto row = std::find_if(g_replies.begin(), g_replies.end() - 1,
                                  [code](const SCodeCount& entry) { return entry.code == code; });
    row->count.fetch_add(1, std::memory_order_relaxed);
}

std::string Joined(SEnvelopeFrame frame, const std::string& data) {
    std::string& text = frame.head;
    text.reserve(text.size() + data.size() + frame.tail.size());
    text.append(data).append(frame.tail);
    return std::move(text);
}

}  // namespace

std::string MakeClientId(const HttpRequest& request) {
    return request.client_addr.ip + std::to_string(request.client_addr.port);
}

nlohmann::json ParseBody(const std::string& body) {
    if (IsNestedTooDeep(body)) {
        throw std::invalid_argument("the JSON text is nested too deep");
    }
    return nlohmann::json::parse(body);
}

// The text is put together here, with the keys in the order of the JSON library, so that the data is neither
// copied nor moved through an object of its own: that took longer than all the rest of a small reply.
SEnvelopeFrame RouterMgr::FrameEnvelope(int code, bool hasData, const std::string& message) {
    return {"{\"code\":" + std::to_string(code) + (hasData ? ",\"data\":" : ""),
            ",\"message\":" + (message.empty() ? "\"\"" : nlohmann::json(message).dump()) + "}"};
}

std::map<int, std::uint64_t> RouterMgr::ReplyCounts() {
    std::map<int, std::uint64_t> counts;
    for (const SCodeCount& entry : g_replies) {
        counts[entry.code] = entry.count.load(std::memory_order_relaxed);
    }
    return counts;
}

int RouterMgr::WriteEnvelope(HttpResponse* response, int code, SResponseData& content) {
    CountReply(code);
    const std::string data = content.data.is_null() ? std::string() : content.data.dump();
    SEnvelopeFrame frame = FrameEnvelope(code, !data.empty(), content.message);
    response->SetHeader("Content-Type", kJsonType);
    response->body = Joined(std::move(frame), data);
    return HTTP_STATUS_OK;
}

// A large text goes out as it is.
int RouterMgr::RespondReady(HttpResponse* response, ReadyContent content, const SRequestTrace& trace) {
    WriteOperationLog(trace.client, trace.path, FormatLogText(CodeSuccess, trace.detail));
    CountReply(CodeSuccess);
    response->SetHeader("Content-Type", kJsonType);
    if (auto* envelope = std::get_if<SGzipEnvelope>(&content)) {
        response->SetHeader("Content-Encoding", "gzip");
        SetReplyText(response, {}, std::move(envelope->bytes), {});
        return HTTP_STATUS_OK;
    }
    std::shared_ptr<const std::string>& data = std::get<SDataText>(content).json;
    SEnvelopeFrame frame = FrameEnvelope(CodeSuccess, !data->empty());
    if (data->size() > kCopiedAtMost) {
        SetReplyText(response, std::move(frame.head), std::move(data), std::move(frame.tail));
    } else {
        response->body = Joined(std::move(frame), *data);
    }
    return HTTP_STATUS_OK;
}

int RouterMgr::Respond(HttpResponse* response, int code, SResponseData& content, SRequestTrace& trace) {
    WriteOperationLog(trace.client, trace.path, FormatLogText(code, trace.detail));
    return WriteEnvelope(response, code, content);
}

int RouterMgr::Respond(HttpResponse* response, int code, SRequestTrace& trace) {
    SResponseData empty;
    return Respond(response, code, empty, trace);
}

bool RouterMgr::CheckWriteRequest(HttpRequest* request, HttpResponse* response, SRequestTrace& trace) {
    if (request == nullptr || response == nullptr) {
        return false;
    }
    WriteOperationLog(trace.client, trace.path, std::string());
    if (!CClientsManager::GetInstance()->IsClientConnected(request->client_addr.ip)) {
        Respond(response, CodeNoConnection, trace);
        return false;
    }
    if (request->body.empty()) {
        Respond(response, CodeBadRequest, trace);
        return false;
    }
    return true;
}

int RouterMgr::RefuseUnconnected(HttpRequest* request, HttpResponse* response) {
    if (request == nullptr || response == nullptr) {
        return HTTP_STATUS_OK;
    }
    SRequestTrace trace{MakeClientId(*request), request->path, {}};
    WriteOperationLog(trace.client, trace.path, std::string());
    return Respond(response, CodeNoConnection, trace);
}

int RouterMgr::HandleWrite(HttpRequest* request, HttpResponse* response, const SWriteForm& form,
                           const WriteWork& work) {
    if (request == nullptr || response == nullptr) {
        return HTTP_STATUS_OK;
    }
    SRequestTrace trace{MakeClientId(*request), request->path, {}};
    if (!CheckWriteRequest(request, response, trace)) {
        return HTTP_STATUS_OK;
    }
    try {
        nlohmann::json body = ParseBody(request->body);
        const CJsonRelease release(body);
        std::string().swap(request->body);  // may be large, and is not needed any more
        if (form.requiredKey != nullptr && (!body.is_object() || !body.contains(form.requiredKey))) {
            return Respond(response, CodeBadRequest, trace);
        }
        return work(body, trace);
    } catch (const std::exception& error) {
        if (form.errorLine != nullptr) {
            PrintLine(std::string(form.errorLine) + error.what());
        }
        trace.detail = error.what();
        return Respond(response, CodeBadRequest, trace);
    }
}

int RouterMgr::HandleRead(HttpRequest* request, HttpResponse* response, const ReadWork& read) {
    if (request == nullptr || response == nullptr) {
        return HTTP_STATUS_OK;
    }
    SRequestTrace trace{MakeClientId(*request), request->path, {}};
    WriteOperationLog(trace.client, trace.path, std::string());
    SResponseData content;
    read(content, trace);
    return Respond(response, CodeSuccess, content, trace);
}

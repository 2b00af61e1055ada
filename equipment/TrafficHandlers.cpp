#include "equipment/TrafficHandlers.h"

#include "config/JsonNumber.h"
#include "device/CommandRun.h"
#include "equipment/Refusal.h"
#include "equipment/Traffic.h"
#include "equipment/TrafficFile.h"
#include "platform/ErrorTexts.h"
#include "userdata/UserData.h"

#include <charconv>

namespace {

using nlohmann::json;

constexpr std::int32_t kLongestMinutes = 7 * 24 * 60;

CRefusal UnknownInterface() {
    return {"This interface does not exist any more.", "该接口已不存在。"};
}

std::int64_t Milliseconds(std::chrono::system_clock::time_point time) {
    return std::chrono::floor<std::chrono::milliseconds>(time.time_since_epoch()).count();
}

/** The number that a text is; 0 when it is none. */
template <typename Number>
Number NumberOf(const std::string& text) {
    Number number = 0;
    const auto end = text.data() + text.size();
    const auto parsed = std::from_chars(text.data(), end, number);
    return parsed.ec == std::errc() && parsed.ptr == end ? number : 0;
}

const char* NameOf(EnSendSource source) {
    switch (source) {
        case EnSendSource::Component:
            return "component";
        case EnSendSource::Terminal:
            return "terminal";
        case EnSendSource::Poll:
            return "poll";
        case EnSendSource::Unknown:
            break;
    }
    return "";
}

json ErrorText(int error, bool isNet) {
    const auto code = static_cast<std::uint32_t>(error);
    std::string text = isNet ? GetSocketErrorText(code) : GetSystemErrorText(code);
    text.erase(text.find_last_not_of("\r\n") + 1);
    return text;
}

json ElementOf(const STrafficEntry& entry, bool isNet) {
    json element = {{"id", entry.id},
                    {"time", Milliseconds(entry.time)},
                    {"out", entry.out},
                    {"hex", HexOf(entry.bytes, {})}};
    const auto add = [&element](const char* key, const std::string& text) {
        if (!text.empty()) {
            element[key] = text;
        }
    };
    if (entry.isCut) {
        element["cut"] = true;
    }
    add("peer", entry.peer);
    if (!entry.out) {
        return element;
    }
    element["error"] = entry.error;
    if (entry.error != 0) {
        element["errorText"] = ErrorText(entry.error, isNet);
    }
    if (entry.source == EnSendSource::Component) {
        element["component"] = entry.component;
    }
    add("source", NameOf(entry.source));
    add("trigger", entry.trigger);
    add("command", entry.command);
    add("client", entry.client);
    return element;
}

json TrafficReply(std::int32_t nodeId, std::uint64_t after) {
    const auto traffic = TrafficOf(nodeId, after);
    if (!traffic) {
        throw UnknownInterface();
    }
    json entries = json::array();
    for (const STrafficEntry& entry : traffic->read.entries) {
        entries.push_back(ElementOf(entry, traffic->isNet));
    }
    const auto until = TrafficFileUntil(nodeId);
    return {{"entries", std::move(entries)},
            {"last", traffic->read.last},
            {"missed", traffic->read.isMissed},
            {"kept", IsTrafficKept()},
            {"fileUntil", until ? json(Milliseconds(*until)) : json(nullptr)}};
}

std::int32_t NumberIn(const json& body, const char* key, std::int32_t otherwise) {
    return body.contains(key) ? JsonToInt32(body[key]) : otherwise;
}

json Send(const json& body, const std::string& client) {
    SCommandConfig command;
    command.portIndex = NumberIn(body, "nodeId", 0);
    SNetPortConfig net;
    SSerialPortConfig serial;
    if (CUserData::GetInstance().GetNetPortConfig(command.portIndex, net)) {
        command.controlType = kNetCommand;
    } else if (CUserData::GetInstance().GetSerialPortConfig(command.portIndex, serial)) {
        command.controlType = kSerialCommand;
    } else {
        throw UnknownInterface();
    }
    if (!body.contains("content") || !body["content"].is_string()) {
        throw CRefusal("The content to send is missing.", "缺少要发送的内容。");
    }
    command.content = body["content"].get<std::string>();
    command.contentFormat = NumberIn(body, "contentFormat", 0);
    command.asciiEncode = NumberIn(body, "asciiEncode", 0);
    command.commandName = CUserData::GetInstance().GetLanguage() == 0 ? "指令" : "the command";
    SSendOrigin origin;
    origin.source = EnSendSource::Terminal;
    origin.nodeId = command.portIndex;
    origin.client = client;
    CCommandRun run;
    run.Send(command, origin);
    SResponseData content;
    if (const EnResponseCode code = run.Finish(content); code != CodeSuccess) {
        throw CRefusal(content.message, content.message, code);
    }
    return nullptr;
}

json Switch(const json& body) {
    const std::int32_t nodeId = NumberIn(body, "nodeId", 0);
    const std::int32_t minutes = NumberIn(body, "minutes", -1);
    if (!TrafficOf(nodeId, 0)) {
        throw UnknownInterface();
    }
    if (minutes < 0 || minutes > kLongestMinutes) {
        throw CRefusal("The minutes are 1 to 10080, or 0 to stop.", "分钟数应为 1 到 10080，0 表示停止。");
    }
    if (minutes > 0 && !IsTrafficKept()) {
        throw CRefusal("No traffic is kept: traffic_bytes in LocalHost.config is 0.",
                       "未记录收发数据：LocalHost.config 中的 traffic_bytes 为 0。");
    }
    const auto until = std::chrono::system_clock::now() + std::chrono::minutes(minutes);
    WriteTrafficFile(nodeId, until);
    return {{"fileUntil", minutes > 0 ? json(Milliseconds(until)) : json(nullptr)}};
}

}  // namespace

int ReadTraffic(HttpRequest* request, HttpResponse* response) {
    if (request == nullptr || response == nullptr) {
        return HTTP_STATUS_OK;
    }
    SResponseData content;
    try {
        content.data = TrafficReply(NumberOf<std::int32_t>(request->GetParam("nodeId")),
                                    NumberOf<std::uint64_t>(request->GetParam("after")));
        return RouterMgr::WriteEnvelope(response, CodeSuccess, content);
    } catch (const CRefusal& refusal) {
        content.message = refusal.Sentence();
        return RouterMgr::WriteEnvelope(response, refusal.Code(), content);
    }
}

int SendThroughInterface(HttpRequest* request, HttpResponse* response) {
    const std::string client = request == nullptr ? std::string() : MakeClientId(*request);
    return WriteEquipment(request, response, [&](json& body) { return Send(body, client); });
}

int SwitchTrafficFile(HttpRequest* request, HttpResponse* response) {
    return WriteEquipment(request, response, [](json& body) { return Switch(body); });
}

#include "equipment/values/ValueRoutes.h"

#include "equipment/Refusal.h"
#include "equipment/values/ConfigStore.h"
#include "equipment/values/EquipmentValues.h"
#include "server/LogText.h"
#include "userdata/UserData.h"
#include "webapi/EntityTags.h"

#include <charconv>
#include <cmath>

namespace {

using nlohmann::json;

/** Up to here every whole number is exact as a double, also for browsers. */
constexpr double kExactUpTo = 9007199254740992.0;

json JsonOf(const ValueContent& content) {
    if (const auto* text = std::get_if<std::string>(&content)) {
        return *text;
    }
    if (const auto* number = std::get_if<double>(&content)) {
        const bool isWhole = std::floor(*number) == *number && std::abs(*number) <= kExactUpTo;
        return isWhole ? json(static_cast<std::int64_t>(*number)) : json(*number);
    }
    return nullptr;
}

json JsonOf(const SNamedValue& value) {
    json time;
    if (value.time) {
        time = std::chrono::floor<std::chrono::milliseconds>(value.time->time_since_epoch()).count();
    }
    return {{"name", value.name}, {"value", JsonOf(value.content)}, {"time", time}, {"stale", value.isStale}};
}

/** A text that is one number, in decimal digits. */
template <class Number>
std::optional<Number> NumberIn(const std::string& text) {
    Number number = 0;
    const auto result = std::from_chars(text.data(), text.data() + text.size(), number);
    const bool isWhole = result.ec == std::errc() && result.ptr == text.data() + text.size();
    return isWhole ? std::optional(number) : std::nullopt;
}

/** @throw CRefusal */
std::uint64_t NumberAfter(const HttpRequest& request) {
    const auto number = NumberIn<std::uint64_t>(request.GetParam("after", "0"));
    if (!number) {
        throw CRefusal("\"after\" is the number \"last\" of an earlier reply.",
                       "“after”应为先前回复中的“last”数字。");
    }
    return *number;
}

/** Lets the device be asked whose interface the request names. @throw CRefusal */
void AskInterface(const HttpRequest& request) {
    if (!request.query_params.contains("interface")) {
        return;
    }
    const auto nodeId = NumberIn<std::int64_t>(request.GetParam("interface"));
    if (!nodeId) {
        throw CRefusal("\"interface\" is the node id of an interface.", "“interface”应为接口的节点编号。");
    }
    CEquipmentValues::Instance().Ask(*nodeId);
}

std::set<std::string> NamesOf(std::string_view list) {
    std::set<std::string> names;
    while (!list.empty()) {
        const std::size_t end = std::min(list.find(','), list.size());
        names.emplace(list.substr(0, end));
        list.remove_prefix(std::min(end + 1, list.size()));
    }
    return names;
}

json ReadValues(const HttpRequest& request) {
    const std::uint64_t after = NumberAfter(request);
    AskInterface(request);
    const bool namesSome = request.query_params.contains("watch");
    const std::set<std::string> names = NamesOf(request.GetParam("watch"));
    const SValueChanges changes = CEquipmentValues::Instance().Read(after, namesSome ? &names : nullptr);
    json values = json::array();
    for (const SNamedValue& value : changes.values) {
        values.push_back(JsonOf(value));
    }
    return {{"values", std::move(values)}, {"last", changes.last}};
}

/** Stores the document of a body. @return the state that is stored now; null: the client knows another one */
CDocument::State Store(const HttpRequest& request, json& body) {
    if (!body.is_object() || !body.contains("data")) {
        throw CRefusal("The document of the values is missing: send it as \"data\".",
                       "缺少数值文档，请以“data”发送。");
    }
    if (body["data"].is_null()) {
        throw CRefusal("The document of the values is empty.", "数值文档为空。");
    }
    const auto ifMatch = HeaderOf(request, "If-Match");
    CDocument::StateCheck check;
    if (ifMatch) {
        check = [&ifMatch](const std::string& stored) {
            return AnyEntityTag(*ifMatch, [&stored](std::string_view tag, bool isWeak) {
                return !isWeak && (tag == "*" || tag == stored);
            });
        };
    }
    try {
        return StoreEquipmentConfig(std::move(body["data"]), check);
    } catch (const CConfigProblem& problem) {
        throw CRefusal(problem.what(), problem.Chinese());
    }
}

}  // namespace

int GetEquipmentValues(HttpRequest* request, HttpResponse* response) {
    if (request == nullptr || response == nullptr) {
        return HTTP_STATUS_OK;
    }
    SResponseData content;
    try {
        content.data = ReadValues(*request);
        return RouterMgr::WriteEnvelope(response, CodeSuccess, content);
    } catch (const CRefusal& refusal) {
        content.message = refusal.Sentence();
        return RouterMgr::WriteEnvelope(response, refusal.Code(), content);
    }
}

int GetEquipmentConfig(HttpRequest* request, HttpResponse* response) {
    if (request == nullptr || response == nullptr) {
        return HTTP_STATUS_OK;
    }
    const CDocument::State state = EquipmentConfigState();
    if (IsKnownState(*request, response, state->Tag())) {
        return HTTP_STATUS_NOT_MODIFIED;
    }
    SResponseData content;
    content.data = json::parse(state->Json());
    return RouterMgr::WriteEnvelope(response, CodeSuccess, content);
}

int SetEquipmentConfig(HttpRequest* request, HttpResponse* response) {
    return RouterMgr::HandleWrite(request, response, {}, [&](json& body, SRequestTrace& trace) -> int {
        SResponseData content;
        try {
            const CDocument::State stored = Store(*request, body);
            if (!stored) {
                trace.detail = "another state is stored";
                WriteOperationLog(trace.client, trace.path,
                                  FormatLogText(HTTP_STATUS_PRECONDITION_FAILED, trace.detail));
                return HTTP_STATUS_PRECONDITION_FAILED;
            }
            response->SetHeader("ETag", '"' + stored->Tag() + '"');
            return RouterMgr::Respond(response, CodeSuccess, content, trace);
        } catch (const CRefusal& refusal) {
            trace.detail = refusal.what();
            content.message = refusal.Sentence();
            return RouterMgr::Respond(response, refusal.Code(), content, trace);
        }
    });
}

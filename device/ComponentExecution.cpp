#include "config/JsonNumber.h"
#include "device/ClickTimes.h"
#include "device/CommandRun.h"
#include "server/RouterMgr.h"
#include "userdata/UserData.h"

namespace {

/** Notes how long it has lived. */
class CClickTime {
  public:
    CClickTime() = default;
    ~CClickTime() { ClickTimes().Note(std::chrono::steady_clock::now() - m_begin); }
    CClickTime(const CClickTime&) = delete;
    CClickTime& operator=(const CClickTime&) = delete;

  private:
    const std::chrono::steady_clock::time_point m_begin = std::chrono::steady_clock::now();
};

int FireComponent(nlohmann::json& body, HttpResponse* response, SRequestTrace& trace) {
    const nlohmann::json data = std::move(body["data"]);
    if (!data.is_object() || !data.contains("interactionArr") || !data.contains("componentId")) {
        return RouterMgr::Respond(response, CodeNothingSent, trace);
    }
    const int componentId = JsonToInt32(data["componentId"]);
    CCommandRun run;
    for (const nlohmann::json& interaction : data["interactionArr"]) {
        const auto triggerType = interaction.at("triggerType").get<std::string>();
        for (SCommandConfig& command : CUserData::GetInstance().GetCommands(componentId, triggerType)) {
            run.Send(command, {.source = EnSendSource::Component,
                               .nodeId = command.portIndex,
                               .component = componentId,
                               .trigger = triggerType,
                               .command = command.commandName,
                               .client = trace.client});
        }
    }
    SResponseData content;
    const EnResponseCode code = run.Finish(content);
    return RouterMgr::Respond(response, code, content, trace);
}

}  // namespace

CHistogram& ClickTimes() {
    static CHistogram times;
    return times;
}

int RouterMgr::UseComponent(HttpRequest* request, HttpResponse* response) {
    const CClickTime time;
    return HandleWrite(request, response, {.requiredKey = "data"},
                       [=](auto& body, auto& trace) { return FireComponent(body, response, trace); });
}

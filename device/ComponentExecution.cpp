#include "config/JsonNumber.h"
#include "device/ClickTimes.h"
#include "device/PortContract.h"
#include "platform/ComManager.h"
#include "platform/ErrorTexts.h"
#include "platform/VainWaits.h"
#include "server/RouterMgr.h"
#include "userdata/CommandMap.h"
#include "userdata/UserData.h"

namespace {

// Values of SCommandConfig::controlType.
constexpr int kSerialCommand = 0;
constexpr int kNetCommand = 1;

/** How long the commands of one click wait together for devices that don't answer: two of them in full. */
constexpr std::chrono::seconds kVainWaitsOfAClick{6};

/**
 * The text for a command that could not be sent, in the user's language: names and error number, followed by
 * the system's text of the error.
 */
std::string BuildSendFailureText(bool isNet, int errorCode, const std::string& interfaceName,
                                 const std::string& commandName) {
    std::string text = interfaceName;
    if (CUserData::GetInstance().GetLanguage() == 0) {
        text += "发送" + commandName + "失败,原因:";
    } else {
        text += "failed to send " + commandName + ",reason:";
    }
    text += std::to_string(errorCode);
    const auto code = static_cast<std::uint32_t>(errorCode);
    return text + (isNet ? GetSocketErrorText(code) : GetSystemErrorText(code));
}

/** The outcome of all commands of one request. */
class CSendRun {
  public:
    /** Sends one command; skips one whose interface no longer exists. */
    void Send(SCommandConfig& command) {
        const bool isText = command.contentFormat == 0;
        if (command.controlType == kSerialCommand) {
            SSerialPortConfig config;
            if (CUserData::GetInstance().GetSerialPortConfig(command.portIndex, config)) {
                const int error = CComManager::getInstance()->SendSerialData(config, command.content, isText,
                                                                             command.asciiEncode);
                Note(error, CodeSerialSendFailed, false, config.comName, command.commandName);
            }
        } else if (command.controlType == kNetCommand) {
            SNetPortConfig config;
            if (CUserData::GetInstance().GetNetPortConfig(command.portIndex, config)) {
                const int error = CComManager::getInstance()->SendNetData(config, command.content, isText,
                                                                          command.asciiEncode);
                Note(error, NetFailureCodes(config.netMode).atSend, true, config.netPortName,
                     command.commandName);
            }
        }
    }

    /** The code of the reply; the lines of the failures become its message. */
    EnResponseCode Finish(SResponseData& content) {
        if (m_code != CodeSuccess) {
            content.message = std::move(m_failures);
            return m_code;
        }
        return m_wasHandedOver ? CodeSuccess : CodeNothingSent;
    }

  private:
    void Note(int error, EnResponseCode failure, bool isNet, const std::string& interfaceName,
              const std::string& commandName) {
        m_wasHandedOver = true;
        if (error == 0) {
            return;
        }
        m_code = failure;
        if (!m_failures.empty()) {
            m_failures += "\r\n";
        }
        m_failures += BuildSendFailureText(isNet, error, interfaceName, commandName);
    }

    EnResponseCode m_code = CodeSuccess;
    std::string m_failures;
    bool m_wasHandedOver = false;
};

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
    const CVainWaits waits(kVainWaitsOfAClick);
    CSendRun run;
    for (const nlohmann::json& interaction : data["interactionArr"]) {
        const auto triggerType = interaction.at("triggerType").get<std::string>();
        for (SCommandConfig& command : CUserData::GetInstance().GetCommands(componentId, triggerType)) {
            run.Send(command);
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

#include "device/CommandRun.h"

#include "device/PortContract.h"
#include "platform/ComManager.h"
#include "platform/ErrorTexts.h"
#include "userdata/UserData.h"

namespace {

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

}  // namespace

void CCommandRun::Send(SCommandConfig& command, const SSendOrigin& origin) {
    const CSendOrigin from(origin);
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
            const int error =
                CComManager::getInstance()->SendNetData(config, command.content, isText, command.asciiEncode);
            Note(error, NetFailureCodes(config.netMode).atSend, true, config.netPortName,
                 command.commandName);
        }
    }
}

EnResponseCode CCommandRun::Finish(SResponseData& content) {
    if (m_code != CodeSuccess) {
        content.message = std::move(m_failures);
        return m_code;
    }
    return m_wasHandedOver ? CodeSuccess : CodeNothingSent;
}

void CCommandRun::Note(int error, EnResponseCode failure, bool isNet, const std::string& interfaceName,
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

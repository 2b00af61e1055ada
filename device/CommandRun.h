#pragma once

#include "platform/SendOrigin.h"
#include "platform/VainWaits.h"
#include "server/RouterMgr.h"
#include "userdata/CommandMap.h"

#include <string>

// Values of SCommandConfig::controlType.
constexpr int kSerialCommand = 0;
constexpr int kNetCommand = 1;

/**
 * The sending of all commands of one request, and its outcome. They wait together for devices that don't
 * answer as long as two of them in full. One thread.
 */
class CCommandRun {
  public:
    /** Sends one command; skips one whose interface no longer exists. */
    void Send(SCommandConfig& command, const SSendOrigin& origin);

    /** The code of the reply; the lines of the failures become its message. */
    EnResponseCode Finish(SResponseData& content);

  private:
    void Note(int error, EnResponseCode failure, bool isNet, const std::string& interfaceName,
              const std::string& commandName);

    const CVainWaits m_waits{std::chrono::seconds(6)};
    EnResponseCode m_code = CodeSuccess;
    std::string m_failures;
    bool m_wasHandedOver = false;
};

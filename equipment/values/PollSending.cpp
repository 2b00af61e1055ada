#include "equipment/values/PollSending.h"

#include "platform/ComManager.h"
#include "platform/SendOrigin.h"
#include "platform/VainWaits.h"
#include "userdata/UserData.h"

#include <chrono>

namespace {

constexpr std::chrono::seconds kVainWait{1};

}  // namespace

std::optional<SPollTarget> TargetOf(std::int32_t nodeId) {
    const CUserData& data = CUserData::GetInstance();
    SNetPortConfig net;
    if (data.GetNetPortConfig(nodeId, net)) {
        return SPollTarget{std::move(net), {}};
    }
    SSerialPortConfig serial;
    if (data.GetSerialPortConfig(nodeId, serial)) {
        return SPollTarget{{}, std::move(serial)};
    }
    return std::nullopt;
}

bool SendPoll(std::int32_t nodeId, const SPoll& poll) {
    std::optional<SPollTarget> target = TargetOf(nodeId);
    if (!target) {
        return false;
    }
    const CVainWaits waits(kVainWait);
    SSendOrigin poller;
    poller.source = EnSendSource::Poll;
    poller.nodeId = nodeId;
    const CSendOrigin origin(poller);
    std::string content = poll.content;
    CComManager& ports = *CComManager::getInstance();
    const int error = target->net
                          ? ports.SendNetData(*target->net, content, poll.isText, poll.asciiEncode)
                          : ports.SendSerialData(*target->serial, content, poll.isText, poll.asciiEncode);
    return error == 0;
}

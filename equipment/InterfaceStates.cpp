#include "equipment/InterfaceStates.h"

#include "platform/ErrorTexts.h"
#include "platform/PortReports.h"
#include "userdata/UserData.h"

#include <string>

using nlohmann::json;

const char* NameOf(EnPortState state) {
    switch (state) {
        case EnPortState::Closed:
            return "closed";
        case EnPortState::Connecting:
            return "connecting";
        case EnPortState::Open:
            return "open";
        case EnPortState::Listening:
            return "listening";
        case EnPortState::Failed:
            break;
    }
    return "failed";
}

namespace {

/** Milliseconds since 1970 (UTC); null for "never". */
json TimeOf(SPortReport::Time time) {
    if (time == SPortReport::Time()) {
        return nullptr;
    }
    return std::chrono::floor<std::chrono::milliseconds>(time.time_since_epoch()).count();
}

json LastErrorOf(const SPortReport& report, bool isNet) {
    if (report.lastError == 0) {
        return nullptr;
    }
    const auto code = static_cast<std::uint32_t>(report.lastError);
    std::string text = isNet ? GetSocketErrorText(code) : GetSystemErrorText(code);
    text.erase(text.find_last_not_of("\r\n") + 1);
    return {{"code", report.lastError}, {"text", std::move(text)}, {"time", TimeOf(report.lastErrorAt)}};
}

json ElementOf(const SInterfaceReport& interface) {
    const SPortReport& report = interface.port;
    return {{"nodeId", interface.nodeId},
            {"name", interface.name},
            {"state", NameOf(report.state)},
            {"since", TimeOf(report.since)},
            {"peers", report.peers},
            {"bytesOut", report.bytesOut},
            {"bytesIn", report.bytesIn},
            {"commandsOut", report.commandsOut},
            {"commandsFailed", report.commandsFailed},
            {"commandsUnderWay", report.calls},
            {"lastOut", TimeOf(report.lastOut)},
            {"lastIn", TimeOf(report.lastIn)},
            {"lastError", LastErrorOf(report, interface.isNet)}};
}

}  // namespace

std::vector<SInterfaceReport> InterfaceReports() {
    const CUserData& data = CUserData::GetInstance();
    std::vector<SInterfaceReport> reports;
    for (const SInterfaceOrderEntry& entry : data.GetInterfaceOrder()) {
        SNetPortConfig net;
        SSerialPortConfig serial;
        if (entry.isNet && data.GetNetPortConfig(entry.nodeId, net)) {
            reports.push_back({entry.nodeId, true, net.netPortName, ReportOfPort(net)});
        } else if (!entry.isNet && data.GetSerialPortConfig(entry.nodeId, serial)) {
            reports.push_back({entry.nodeId, false, serial.comName, ReportOfPort(serial)});
        }
    }
    return reports;
}

json InterfaceStates() {
    json states = json::array();
    for (const SInterfaceReport& interface : InterfaceReports()) {
        states.push_back(ElementOf(interface));
    }
    return states;
}

#include "simulation/Browser.h"

namespace simulation {

using nlohmann::json;

namespace {

const std::string kRoutes = "/api/centralControl/";

}  // namespace

Browser::Browser(const HostProcess& host) : m_channel(host.WebSocketPort()), m_http(host.HttpPort()) {
    m_channel.Heartbeat();  // its answer means that the connection is registered
}

json Browser::Post(const std::string& route, const json& body) {
    return json::parse(m_http.Post(kRoutes + route, body.dump()).body);
}

json Browser::Get(const std::string& route) {
    const json reply = json::parse(m_http.Get(kRoutes + route).body);
    return reply.value("data", json());
}

json Browser::NetInfo(const std::string& name, const std::string& mode, int localPort, int remotePort) {
    return {{"netPortName", name},
            {"netMode", mode},
            {"ipAddress", mode == "TCP_Server" ? "127.0.0.1" : ""},
            {"port", localPort},
            {"dstPort", remotePort},
            {"dstIpAddress", mode == "TCP_Server" ? "" : "127.0.0.1"}};
}

int Browser::AddNet(const std::string& name, const std::string& mode, int localPort, int remotePort) {
    const json info = NetInfo(name, mode, localPort, remotePort);
    return Post("addNetPortInfo", {{"data", {{"info", info}}}}).at("code");
}

int Browser::AddSerial(const std::string& name, const std::string& port) {
    const json info = {{"comName", name}, {"comPort", port},  {"baudRate", 9600},
                       {"wordLength", 8}, {"parity", "None"}, {"stopBits", 1}};
    return Post("addComInfo", {{"data", {{"info", info}}}}).at("code");
}

int Browser::NodeId(const std::string& name) {
    const json document = Get("getConfigList");
    for (const json& entry : document.at("configList")) {
        if (entry.at(entry.at("controlType").get<std::string>()).at("comName") == name) {
            return entry.at("nodeId");
        }
    }
    return 0;
}

json Browser::Interactions(const std::vector<Command>& commands) {
    std::map<int, std::map<std::string, json>> triggers;
    for (const Command& command : commands) {
        const char* kind = command.isNet ? "netPortInfo" : "comInfo";
        triggers[command.component][command.trigger].push_back({{"portIndex", command.nodeId},
                                                                {"controlType", kind},
                                                                {kind, {{"content", command.content}}},
                                                                {"commandName", command.name},
                                                                {"contentFormat", command.contentFormat},
                                                                {"asciiEncode", 0}});
    }
    json components = json::array();
    for (const auto& [id, entries] : triggers) {
        json interactions = json::array();
        for (const auto& [trigger, list] : entries) {
            interactions.push_back({{"triggerType", trigger}, {"commandArr", list}});
        }
        components.push_back({{"componentId", id}, {"interactionArr", interactions}});
    }
    return {{"componentInteractionInfo", {{"componentArr", components}}}};
}

int Browser::Store(const std::vector<Command>& commands) {
    return Post("updateComponentInteraction", {{"data", Interactions(commands)}}).at("code");
}

json Browser::ClickBody(int component, const std::string& trigger) {
    return {{"data", {{"componentId", component}, {"interactionArr", {{{"triggerType", trigger}}}}}}};
}

json Browser::Click(int component, const std::string& trigger) {
    return Post("useComponent", ClickBody(component, trigger));
}

}  // namespace simulation

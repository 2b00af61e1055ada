#pragma once

#include "simulation/HostProcess.h"
#include "simulation/WebSocketClient.h"

#include <nlohmann/json.hpp>

namespace simulation {

/** One command of a component, as the pages store it. */
struct Command {
    int component = 0;
    std::string trigger;
    int nodeId = 0;
    bool isNet = true;
    std::string name;
    std::string content;
    int contentFormat = 0;  ///< 0 text, 1 hexadecimal
};

/** A browser page: an open WebSocket, and the JSON interface over a keep-alive connection. One thread. */
class Browser {
  public:
    explicit Browser(const HostProcess& host);

    /** Posts to a route under "/api/centralControl/" and returns the reply's envelope. */
    nlohmann::json Post(const std::string& route, const nlohmann::json& body);

    /** Gets a route under "/api/centralControl/" and returns the reply's `data`. */
    nlohmann::json Get(const std::string& route);

    /** Adds a network interface. @return the reply's code */
    int AddNet(const std::string& name, const std::string& mode, int localPort, int remotePort);

    /** Adds a serial interface of 9600 baud. @return the reply's code */
    int AddSerial(const std::string& name, const std::string& port);

    /** Node id of the interface of that name, or 0. */
    int NodeId(const std::string& name);

    /** Replaces the commands of all components. @return the reply's code */
    int Store(const std::vector<Command>& commands);

    /** Triggers a component. @return the envelope of the reply */
    nlohmann::json Click(int component, const std::string& trigger = "click");

    HttpClient& Http() { return m_http; }
    WebSocketClient& Channel() { return m_channel; }

    /** `info` of a network interface between ports of the loopback interface. */
    static nlohmann::json NetInfo(const std::string& name, const std::string& mode, int localPort,
                                  int remotePort);

    /** The document of all components' commands. */
    static nlohmann::json Interactions(const std::vector<Command>& commands);

    /** Body of a click. */
    static nlohmann::json ClickBody(int component, const std::string& trigger = "click");

  private:
    WebSocketClient m_channel;
    HttpClient m_http;
};

}  // namespace simulation

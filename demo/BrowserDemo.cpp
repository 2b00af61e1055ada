/**
 * Leaves the server running with a sample project and simulated equipment: a projector and a matrix on the
 * network, a relay on a serial line. They answer like real ones and print what they get, so that whoever
 * clicks in the browser sees the bytes arrive. Everything lies in a folder of its own that goes away at the
 * end.
 */
#include "demo/Devices.h"
#include "platform/PortProbe.h"
#include "platform/StopSignal.h"
#include "simulation/Browser.h"

#include <exception>
#include <fstream>
#include <iostream>
#include <map>
#include <memory>
#include <string>
#include <thread>

namespace {

using nlohmann::json;
using simulation::Browser;

/** Ports on which the server is expected; others are taken when a program has one of them. */
constexpr int kHttpPort = 8086;
constexpr int kWebSocketPort = 8081;

void Expect(const std::string& what, const json& code) {
    if (code != 20000) {
        throw std::runtime_error(what + ": code " + code.dump());
    }
}

std::string NameOf(const json& interface) {
    const std::string type = interface.at("controlType");
    return interface.at(type).at(type == "comInfo" ? "comName" : "netPortName");
}

/** Adds the sample's interfaces, on the ports of the simulated devices. @return their node ids by name */
std::map<std::string, int> AddInterfaces(Browser& browser, const json& interfaces,
                                         const std::map<std::string, int>& ports) {
    std::map<std::string, int> ids;
    for (const json& one : interfaces) {
        const std::string type = one.at("controlType");
        json info = one.at(type);
        const bool isSerial = type == "comInfo";
        const std::string name = NameOf(one);
        if (!isSerial) {
            info["dstPort"] = ports.at(name);
        }
        const json body = {{"data", {{"info", info}}}};
        Expect("add " + name, browser.Post(isSerial ? "addComInfo" : "addNetPortInfo", body).at("code"));
        ids[name] = browser.NodeId(name);
    }
    return ids;
}

/** Points each command of the sample at the interface of its name. */
void SetNodeIds(json& value, const std::map<std::string, int>& ids) {
    if (value.is_object() && value.contains("portIndex")) {
        value["portIndex"] = ids.at(value.at("interfaceName"));
    } else if (value.is_structured()) {
        for (json& inner : value) {
            SetNodeIds(inner, ids);
        }
    }
}

/** Stores what the devices are asked, and what their answers mean. @return the server's code */
json StoreQuestions(Browser& browser, const json& interfaces, const std::map<std::string, int>& ids) {
    json devices = json::array();
    for (const json& one : interfaces) {
        if (one.contains("device")) {
            devices.push_back(one.at("device"));
            devices.back()["nodeId"] = ids.at(NameOf(one));
        }
    }
    const json body = {{"data", {{"version", 1}, {"devices", devices}}}};
    return json::parse(browser.Http().Post("/api/equipment/config", body.dump()).body).at("code");
}

void StoreSample(Browser& browser, const std::map<std::string, int>& ports) {
    std::ifstream file(DEMO_SAMPLE);
    json sample = json::parse(file);
    const std::map<std::string, int> ids = AddInterfaces(browser, sample.at("interfaces"), ports);
    SetNodeIds(sample.at("interactions"), ids);
    Expect("store the materials",
           browser.Post("setMaterialList", {{"data", sample.at("materials")}}).at("code"));
    Expect("store the commands",
           browser.Post("updateComponentInteraction", {{"data", sample.at("interactions")}}).at("code"));
    Expect("store what devices are asked", StoreQuestions(browser, sample.at("interfaces"), ids));
    Expect("store the pages",
           browser.Post("setCentralControlWebLayout", {{"data", sample.at("layout")}}).at("code"));
}

/** Each line on standard input pulls the projector's plug or puts it in again. */
void FollowKeys(const std::shared_ptr<demo::TcpDevice>& projector) {
    // Nothing can end the wait for a key: the thread goes with the process, and keeps what it uses.
    std::thread([projector] {
        bool isPlugged = true;
        for (std::string line; std::getline(std::cin, line);) {
            isPlugged = !isPlugged;
            projector->SetPlugged(isPlugged);
        }
    }).detach();
}

void Run(CStopSignal& stopSignal) {
    simulation::HostOptions options;
    if (IsPortFree(kHttpPort) && IsPortFree(kWebSocketPort)) {
        options.httpPort = kHttpPort;
        options.webSocketPort = kWebSocketPort;
    }
    simulation::HostProcess host(options);
    const auto projector = std::make_shared<demo::TcpDevice>(
        "Projector", [model = std::make_shared<demo::Projector>()](const std::string& line) {
            return model->Answer(line);
        });
    const demo::TcpDevice matrix("Matrix", demo::MatrixAnswer);
    const demo::SerialDevice relay("Relay", demo::RelayAnswer, host.Home() / "relay");
    simulation::WriteFile(host.UserData() / "SerialPorts.json",
                          json{{"COM7", relay.Path().string()}}.dump(4));
    host.Start();
    {
        Browser browser(host);
        StoreSample(browser, {{"Projector", projector->Port()}, {"Matrix", matrix.Port()}});
    }
    const std::string address = "http://127.0.0.1:" + std::to_string(host.HttpPort());
    std::cout
        << "\nThe server runs with a sample project and simulated equipment.\n"
        << "  Operator's panel:  " << address << "/#/panel\n"
        << "  Author:            " << address << "/\n"
        << "Click, and watch the bytes arrive here. Enter unplugs the projector, Enter again plugs it in.\n"
        << "Stop it with Ctrl+C.\n"
        << std::endl;
    FollowKeys(projector);
    stopSignal.Wait();
    host.Stop();
}

}  // namespace

int main() {
    CStopSignal stopSignal;
    try {
        Run(stopSignal);
        return 0;
    } catch (const std::exception& error) {
        std::cerr << "failed: " << error.what() << '\n';
        return 1;
    }
}

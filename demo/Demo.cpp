/**
 * Shows the whole road of a click with real parts: starts the host in a home folder of its own, connects a
 * TCP device, a UDP device and a serial line to it, stores a page with commands for them over the API,
 * clicks, and prints for each device what was sent beside what arrived. Exit status 0 when every byte is the
 * same.
 */
#include "simulation/Browser.h"
#include "simulation/Equipment.h"
#include "simulation/PtyPair.h"

#include <cstdio>
#include <exception>
#include <functional>
#include <iomanip>
#include <iostream>
#include <sstream>

namespace {

using nlohmann::json;
using simulation::Browser;

/** One device of the demonstration and the two commands of its component. */
struct Device {
    std::string name;
    bool isNet;
    std::string text;        ///< content of the text command
    std::string digits;      ///< content of the hexadecimal command
    std::string digitBytes;  ///< the bytes that the digits name
    const simulation::Recorder& received;

    std::string Sent() const { return text + digitBytes; }
};

std::string Hex(const std::string& bytes) {
    std::ostringstream text;
    for (const char byte : bytes) {
        text << std::hex << std::setw(2) << std::setfill('0') << (static_cast<unsigned>(byte) & 0xff) << ' ';
    }
    return text.str();
}

std::string Printable(std::string bytes) {
    for (char& byte : bytes) {
        byte = byte < ' ' || byte > '~' ? '.' : byte;
    }
    return bytes;
}

void Expect(const std::string& what, const json& code) {
    std::cout << std::left << std::setw(60) << what << code << '\n';
    if (code != 20000) {
        throw std::runtime_error(what + ": code " + code.dump());
    }
}

void AddInterfaces(Browser& browser, int tcpPort, int udpPort) {
    Expect("add the TCP interface Projector", browser.AddNet("Projector", "TCP_Client", 0, tcpPort));
    Expect("add the UDP interface Lights", browser.AddNet("Lights", "UDP", 0, udpPort));
    Expect("add the serial interface Screen", browser.AddSerial("Screen", "COM7"));
}

void StorePage(Browser& browser, const std::vector<Device>& devices) {
    json buttons = json::array();
    std::vector<simulation::Command> commands;
    for (const Device& device : devices) {
        const int id = static_cast<int>(buttons.size()) + 1;
        const int nodeId = browser.NodeId(device.name);
        std::cout << "node id of " << device.name << ": " << nodeId << '\n';
        buttons.push_back({{"componentId", id}, {"type", "button"}, {"title", device.name}});
        commands.push_back({id, "click", nodeId, device.isNet, "PowerOn", device.text, 0});
        commands.push_back({id, "click", nodeId, device.isNet, "Input", device.digits, 1});
    }
    const json page = {{"data", {{"pages", {{{"title", "Hall"}, {"components", buttons}}}}}}};
    Expect("store the page", browser.Post("setCentralControlWebLayout", page).at("code"));
    Expect("store the interactions", browser.Store(commands));
}

bool Report(const Device& device) {
    const std::string sent = device.Sent();
    const std::string received = device.received.WaitBytes(sent.size());
    const bool same = sent == received;
    std::cout << '\n'
              << device.name << '\n'
              << "  sent      " << Hex(sent) << " " << Printable(sent) << '\n'
              << "  received  " << Hex(received) << " " << Printable(received) << '\n'
              << "  " << (same ? "the same" : "DIFFERENT") << '\n';
    return same;
}

bool Run() {
    simulation::HostProcess host;
    const simulation::TcpListener projector;
    const simulation::UdpListener lights;
    const simulation::PtyPair screen(host.Home() / "screen");
    simulation::WriteFile(host.UserData() / "SerialPorts.json",
                          json{{"COM7", screen.Device().string()}}.dump(4));
    host.Start();
    std::cout << "host on port " << host.HttpPort() << ", WebSocket on port " << host.WebSocketPort() << '\n';

    Browser browser(host);
    AddInterfaces(browser, projector.Port(), lights.Port());
    const std::vector<Device> devices = {
        {"Projector", true, "(PWR1)\r\n", "02 50 4F 4E 03", "\x02PON\x03", projector.Received()},
        {"Lights", true, "scene=2\n", "0x53,0x00,0xff", std::string("S\0\xff", 3), lights.Received()},
        {"Screen", false, "ka 01 01\r", "aa11FE01", "\xaa\x11\xfe\x01", screen.Received()},
    };
    StorePage(browser, devices);
    for (int id = 1; id <= 3; ++id) {
        Expect("click component " + std::to_string(id), browser.Click(id).at("code"));
    }
    bool same = true;
    for (const Device& device : devices) {
        same = Report(device) && same;
    }
    const std::optional<int> status = host.Stop();
    std::cout << "\nhost ended with status " << status.value_or(-1) << '\n';
    return same && status == 0;
}

}  // namespace

int main() {
    try {
        return Run() ? 0 : 1;
    } catch (const std::exception& error) {
        std::cerr << "failed: " << error.what() << '\n';
        return 1;
    }
}

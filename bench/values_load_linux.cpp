/**
 * What it costs to hear the equipment: what a click pays for it, 200 devices that are asked each second while
 * 50 panels watch them, and clicks while another device floods the server. Prints a table in Markdown.
 */
#include "bench/LoadGenerator.h"
#include "simulation/Browser.h"
#include "simulation/Equipment.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cstdio>
#include <deque>
#include <functional>
#include <iostream>
#include <map>
#include <memory>
#include <thread>

#include <sys/epoll.h>

namespace {

using nlohmann::json;
using simulation::Browser;
using simulation::Socket;
using Clock = std::chrono::steady_clock;
using Seconds = std::chrono::duration<double>;

constexpr int kDevices = 200;
constexpr int kPanels = 50;
constexpr int kValuesOfAPanel = 20;
constexpr std::chrono::seconds kWatched{15};
constexpr int kConnections = 64;
constexpr int kClickRounds = 41;  // what is looked for is smaller than the variation of a round
constexpr std::chrono::milliseconds kClickTime{500};
constexpr int kRounds = 7;
constexpr std::chrono::seconds kRoundTime{1};
constexpr double kFlood = 100e6;  // bytes a second
constexpr int kComponent = 7;

std::string Number(double value, const char* unit, int decimals = 1) {
    std::array<char, 64> text{};
    std::snprintf(text.data(), text.size(), "%.*f%s", decimals, value, unit);
    return text.data();
}

void PrintRow(const std::string& what, const std::string& with, const std::string& without,
              const std::string& ratio, const std::string& goal) {
    std::cout << "| " << what << " | " << with << " | " << without << " | " << ratio << " | " << goal
              << " |\n"
              << std::flush;
}

/** Something measured with and without, one value a round. */
struct SPairs {
    std::vector<double> with;
    std::vector<double> without;

    double With() const { return bench::Quantile(with, 0.5); }
    double Without() const { return bench::Quantile(without, 0.5); }

    /** The median of what the rounds give, with the lowest and the highest. */
    template <class Compare>
    std::string Compared(Compare compare, const char* unit) const {
        std::vector<double> all(with.size());
        std::transform(with.begin(), with.end(), without.begin(), all.begin(), compare);
        return Number(bench::Quantile(all, 0.5), unit, 2) + " (" + Number(bench::Quantile(all, 0), "", 2) +
               " to " + Number(bench::Quantile(all, 1), unit, 2) + ")";
    }

    std::string Ratio() const { return Compared(std::divides<>(), ""); }
    std::string Difference() const { return Compared(std::minus<>(), " µs"); }
};

/** Devices that answer each line, on ports and with one thread of their own. Their value changes each second.
 */
class CDevices {
  public:
    explicit CDevices(int count) : m_epoll(epoll_create1(EPOLL_CLOEXEC)) {
        for (int i = 0; i < count; ++i) {
            m_listeners.push_back(Socket::Listen());
            Watch(m_listeners.back().Handle());
        }
        m_thread = std::jthread([this](const std::stop_token& stop) { Run(stop); });
    }

    int Port(int device) const { return m_listeners.at(static_cast<std::size_t>(device)).LocalPort(); }

  private:
    void Watch(int handle) const {
        epoll_event event{};
        event.events = EPOLLIN;
        event.data.fd = handle;
        epoll_ctl(m_epoll, EPOLL_CTL_ADD, handle, &event);
    }

    void Run(const std::stop_token& stop) {
        std::array<epoll_event, 64> events{};
        while (!stop.stop_requested()) {
            const int count = epoll_wait(m_epoll, events.data(), static_cast<int>(events.size()), 50);
            for (int i = 0; i < count; ++i) {
                Serve(events.at(static_cast<std::size_t>(i)).data.fd);
            }
        }
    }

    void Serve(int handle) {
        for (Socket& listener : m_listeners) {
            if (listener.Handle() == handle) {
                Socket accepted = listener.Accept();
                Watch(accepted.Handle());
                m_connections.emplace(accepted.Handle(), std::move(accepted));
                return;
            }
        }
        Socket& connection = m_connections.at(handle);
        if (connection.Receive().empty()) {
            m_connections.erase(handle);
            return;
        }
        const auto second = std::chrono::duration_cast<std::chrono::seconds>(Clock::now().time_since_epoch());
        connection.Send("POWR=" + std::to_string(second.count() % 2) +
                        "\rLAMP=" + std::to_string(second.count()) + "\r");
    }

    int m_epoll;
    std::deque<Socket> m_listeners;
    std::map<int, Socket> m_connections;
    std::jthread m_thread;
};

json DeviceRule(int nodeId, const std::string& name, int everyMs) {
    const auto pattern = [](const std::string& text, const std::string& value, const char* type) {
        return json{{"form", "text"},
                    {"pattern", text},
                    {"values", {{{"place", "v"}, {"name", value}, {"type", type}}}}};
    };
    json rule = {
        {"nodeId", nodeId},
        {"framing", {{"kind", "terminator"}, {"hex", "0D"}}},
        {"patterns",
         {pattern("POWR={v}", name + " power", "text"), pattern("LAMP={v}", name + " lamp", "number")}}};
    if (everyMs > 0) {
        rule["polls"] = {{{"content", "?\r"}, {"everyMs", everyMs}, {"always", true}}};
    }
    return rule;
}

void StoreRules(Browser& browser, const json& devices) {
    const json body = {{"data", {{"version", 1}, {"devices", devices}}}};
    const json reply = json::parse(browser.Http().Post("/api/equipment/config", body.dump()).body);
    if (reply.at("code") != 20000) {
        throw std::runtime_error("the document was refused: " + reply.dump());
    }
}

int AddInterface(Browser& browser, const std::string& name, int port) {
    if (browser.AddNet(name, "TCP_Client", 0, port) != 20000) {
        throw std::runtime_error("no interface " + name);
    }
    return browser.NodeId(name);
}

/** The names that a panel watches, as its address has them. */
std::string WatchedBy(int panel) {
    std::string names;
    for (int i = 0; i < kValuesOfAPanel / 2; ++i) {
        const std::string device = std::to_string((panel * 4 + i) % kDevices);
        names.append(names.empty() ? "" : ",").append(device).append("%20power,");
        names.append(device).append("%20lamp");
    }
    return names;
}

/** 50 panels, each asking twice a second. @return the share of a core that the server takes */
double ShareWhileWatched(simulation::HostProcess& host, int panels) {
    struct SPanel {
        std::unique_ptr<simulation::HttpClient> client;
        std::string path;
        std::string last = "0";
    };
    std::vector<SPanel> all(static_cast<std::size_t>(panels));
    for (int i = 0; i < panels; ++i) {
        SPanel& panel = all[static_cast<std::size_t>(i)];
        panel.client = std::make_unique<simulation::HttpClient>(host.HttpPort());
        panel.path = "/api/equipment/values?watch=" + WatchedBy(i) + "&after=";
    }
    const double before = host.Process().ProcessorSeconds();
    const auto begin = Clock::now();
    auto next = begin;
    for (std::size_t turn = 0; Clock::now() - begin < kWatched; ++turn) {
        if (panels == 0) {
            std::this_thread::sleep_for(kWatched);
            break;
        }
        SPanel& panel = all[turn % all.size()];
        const json reply = json::parse(panel.client->Get(panel.path + panel.last).body);
        panel.last = reply.at("data").at("last").dump();
        next += std::chrono::microseconds(500'000 / panels);
        std::this_thread::sleep_until(next);
    }
    return (host.Process().ProcessorSeconds() - before) / Seconds(Clock::now() - begin).count();
}

void MeasureWatching() {
    CDevices devices(kDevices);
    simulation::HostProcess host;
    host.Start();
    Browser browser(host);
    json rules = json::array();
    for (int i = 0; i < kDevices; ++i) {
        rules.push_back(DeviceRule(AddInterface(browser, "Device " + std::to_string(i), devices.Port(i)),
                                   std::to_string(i), 1000));
    }
    const double idle = ShareWhileWatched(host, 0) * 100;
    StoreRules(browser, rules);
    std::this_thread::sleep_for(std::chrono::seconds(3));
    const double polled = ShareWhileWatched(host, 0) * 100;
    const double watched = ShareWhileWatched(host, kPanels) * 100;
    const std::string devicesAsked = std::to_string(kDevices) + " devices asked each second";
    PrintRow(devicesAsked + ", share of one core", Number(polled, " %"), Number(idle, " %"), "", "");
    PrintRow("The same while " + std::to_string(kPanels) + " panels watch " +
                 std::to_string(kValuesOfAPanel) + " values each",
             Number(watched, " %"), Number(idle, " %"), "", "at most 15 %");
}

/** A device that sends as fast as it is told, while it is told to. */
class CFlood {
  public:
    CFlood() {
        m_thread = std::jthread([this](const std::stop_token& stop) { Run(stop); });
    }

    int Port() const { return m_listener.LocalPort(); }
    std::atomic<bool> isOn = false;
    std::atomic<std::uint64_t> sent = 0;

  private:
    void Run(const std::stop_token& stop) {
        std::string block;
        while (block.size() < 65536) {
            block += "LAMP=" + std::to_string(block.size()) + "\r";
        }
        while (!stop.stop_requested() && !m_listener.WaitReadable(std::chrono::milliseconds(50))) {
        }
        if (stop.stop_requested()) {
            return;
        }
        Socket device = m_listener.Accept();
        auto next = Clock::now();
        while (!stop.stop_requested()) {
            if (!isOn) {
                std::this_thread::sleep_for(std::chrono::milliseconds(5));
                next = Clock::now();
                continue;
            }
            device.Send(block);
            sent += block.size();
            next += std::chrono::duration_cast<Clock::duration>(
                Seconds(static_cast<double>(block.size()) / kFlood));
            std::this_thread::sleep_until(next);
        }
    }

    Socket m_listener = Socket::Listen();
    std::jthread m_thread;
};

void MeasureFlood() {
    simulation::TcpListener lamp;
    CFlood flood;
    simulation::HostProcess host;
    host.Start();
    Browser browser(host);
    const int lampId = AddInterface(browser, "Lamp", lamp.Port());
    StoreRules(browser, json::array({DeviceRule(AddInterface(browser, "Flood", flood.Port()), "Flood", 0)}));
    browser.Store({{kComponent, "click", lampId, true, "On", "ON\r"}});
    SPairs medians;
    SPairs highs;
    SPairs shares;
    std::vector<double> rates;
    const double before = static_cast<double>(host.Process().ResidentBytes()) / 1e6;
    for (int round = 0; round < 2 * kRounds; ++round) {
        flood.isOn = round % 2 == 1;
        std::this_thread::sleep_for(std::chrono::milliseconds(200));
        std::vector<double> times;
        const std::uint64_t sent = flood.sent;
        const double processor = host.Process().ProcessorSeconds();
        const auto begin = Clock::now();
        while (Clock::now() - begin < kRoundTime) {
            const auto click = Clock::now();
            browser.Click(kComponent);
            times.push_back(std::chrono::duration<double, std::micro>(Clock::now() - click).count());
            std::this_thread::sleep_for(std::chrono::milliseconds(2));
        }
        const double took = Seconds(Clock::now() - begin).count();
        const auto add = [&flood](SPairs& pairs, double value) {
            (flood.isOn ? pairs.with : pairs.without).push_back(value);
        };
        add(medians, bench::Quantile(times, 0.5));
        add(highs, bench::Quantile(times, 0.99));
        add(shares, (host.Process().ProcessorSeconds() - processor) / took * 100);
        if (flood.isOn) {
            rates.push_back(static_cast<double>(flood.sent - sent) / took / 1e6);
        }
    }
    flood.isOn = false;
    const double after = static_cast<double>(host.Process().ResidentBytes()) / 1e6;
    const std::string what = "Click while another device sends " +
                             Number(bench::Quantile(rates, 0.5), " MB/s", 0) + ", written to its reply, ";
    PrintRow(what + "median", Number(medians.With(), " µs"), Number(medians.Without(), " µs"),
             medians.Ratio(), "at most 1.1");
    PrintRow(what + "99 %", Number(highs.With(), " µs"), Number(highs.Without(), " µs"), highs.Ratio(), "");
    PrintRow("Share of one core meanwhile", Number(shares.With(), " %"), Number(shares.Without(), " %"), "",
             "");
    PrintRow("Memory after the flood and before it", Number(after, " MB"), Number(before, " MB"), "",
             "does not grow");
}

/** A host whose one component clicks to the load generator's equipment. */
class CClicked {
  public:
    CClicked(int equipmentPort, bool hears) {
        if (!hears) {
            const auto file = m_host.UserData() / "LocalHost.config";
            json config = json::parse(simulation::ReadTextFile(file));
            config["traffic_bytes"] = 0;
            simulation::WriteFile(file, config.dump());
        }
        m_host.Start();
        m_browser = std::make_unique<Browser>(m_host);
        const int nodeId = AddInterface(*m_browser, "Lamp", equipmentPort);
        m_browser->Store({{kComponent, "click", nodeId, true, "On", "ON\r"}});
        if (hears) {
            StoreRules(*m_browser, json::array({DeviceRule(nodeId, "Lamp", 0)}));
        }
    }

    /** @return the processor time of a click, in microseconds */
    double Run(bench::LoadGenerator& load) {
        const double before = m_host.Process().ProcessorSeconds();
        const auto result = load.Run(m_host.HttpPort(), m_requests, kConnections, kClickTime);
        return (m_host.Process().ProcessorSeconds() - before) /
               static_cast<double>(result.microseconds.size()) * 1e6;
    }

  private:
    simulation::HostProcess m_host;
    std::unique_ptr<Browser> m_browser;
    std::vector<std::string> m_requests = {simulation::HttpClient::Request(
        "POST", "/api/centralControl/useComponent", Browser::ClickBody(kComponent).dump())};
};

void MeasureClicks() {
    bench::LoadGenerator load;
    CClicked hears(load.EquipmentPort(), true);
    CClicked deaf(load.EquipmentPort(), false);
    SPairs times;
    for (int round = 0; round <= kClickRounds; ++round) {
        const double with = hears.Run(load);
        const double without = deaf.Run(load);
        if (round > 0) {  // the first warms up
            times.with.push_back(with);
            times.without.push_back(without);
        }
    }
    PrintRow("Processor time of a click, " + std::to_string(kConnections) + " connections",
             Number(times.With(), " µs"), Number(times.Without(), " µs"), times.Difference(),
             "at most 1 µs more");
}

}  // namespace

int main() {
    try {
        std::cout << "| Measured | With | Without | Compared: median (lowest to highest) | Goal |\n"
                     "|---|---|---|---|---|\n";
        MeasureClicks();
        MeasureWatching();
        MeasureFlood();
        return 0;
    } catch (const std::exception& error) {
        std::cerr << "failed: " << error.what() << '\n';
        return 1;
    }
}

/**
 * Measures the server side by side with the floor (floor_server) and with nginx answering a constant: in
 * rounds, each round running all of them one after the other, so that a change of the machine's mood meets
 * all alike. With the program of another host as its argument it measures the clicks of both instead. Prints
 * a table in Markdown. Everything stays on the loopback interface.
 */
#include "bench/LoadGenerator.h"
#include "simulation/Browser.h"

#include <algorithm>
#include <cstdio>
#include <exception>
#include <iostream>

namespace {

using bench::LoadGenerator;
using bench::LoadResult;
using bench::Quantile;
using nlohmann::json;
using simulation::Browser;
using simulation::HttpClient;
using std::chrono::milliseconds;

constexpr int kRounds = 5;
constexpr int kComponents = 1000;
constexpr milliseconds kRunTime{1000};
constexpr std::size_t kResourceSize = 10'000'000;
const std::string kResource = "/api/getResource/large.bin";
const std::string kSmallDocument = "/api/centralControl/getMaterialList";
const std::string kLayout = "/api/centralControl/getPageLayoutInfo";

/** One server under load, and what its runs gave. */
struct Target {
    std::string name;
    int port = 0;
    const simulation::ChildProcess* process = nullptr;
    std::vector<double> medians;  ///< microseconds, one a round
    std::vector<double> rates;    ///< replies a second, one a round
    std::vector<double> all;      ///< microseconds of all rounds
    double processorSeconds = 0;
    double replies = 0;

    void Add(const LoadResult& result, double processorTime) {
        medians.push_back(Quantile(result.microseconds, 0.5));
        rates.push_back(static_cast<double>(result.replies) / result.seconds);
        all.insert(all.end(), result.microseconds.begin(), result.microseconds.end());
        processorSeconds += processorTime;
        replies += static_cast<double>(result.microseconds.size());
    }

    double ProcessorMicroseconds() const { return processorSeconds / replies * 1e6; }
};

std::string Number(double value, const char* unit) {
    char text[64];
    std::snprintf(text, sizeof text, value < 100 ? "%.1f%s" : "%.0f%s", value, unit);
    return text;
}

void PrintRow(const std::string& what, int connections, const std::string& ours, const std::string& theirs,
              const std::string& ratio, const std::string& goal) {
    std::cout << "| " << what << " | " << connections << " | " << ours << " | " << theirs << " | " << ratio
              << " | " << goal << " |\n"
              << std::flush;
}

/** The ratio of each round; printed as the median of them with the lowest and the highest. */
std::string Ratios(const std::vector<double>& ours, const std::vector<double>& theirs) {
    std::vector<double> ratios(ours.size());
    std::transform(ours.begin(), ours.end(), theirs.begin(), ratios.begin(), std::divides<>());
    const auto [least, most] = std::minmax_element(ratios.begin(), ratios.end());
    char text[80];
    std::snprintf(text, sizeof text, ratios.size() == 1 ? "%.2f" : "%.2f (%.2f to %.2f)",
                  Quantile(ratios, 0.5), *least, *most);
    return text;
}

std::string Payload(int component) {
    char text[32];
    std::snprintf(text, sizeof text, "SET %06d\r\n", component);
    return text;
}

std::vector<std::string> ClickRequests() {
    std::vector<std::string> requests;
    for (int id = 1; id <= kComponents; ++id) {
        requests.push_back(
            HttpClient::Request("POST", "/api/centralControl/useComponent", Browser::ClickBody(id).dump()));
    }
    return requests;
}

void StorePages(Browser& browser, int equipmentPort) {
    if (browser.AddNet("Equipment", "TCP_Client", 0, equipmentPort) != 20000) {
        throw std::runtime_error("the interface was refused");
    }
    std::vector<simulation::Command> commands;
    for (int id = 1; id <= kComponents; ++id) {
        commands.push_back({id, "click", browser.NodeId("Equipment"), true, "Set", Payload(id), 0});
    }
    json materials;
    for (int id = 1; id <= 4; ++id) {
        materials.push_back({{"id", id}, {"name", "background.png"}, {"kind", "image"}});
    }
    const json document = {{"data", {{"materialList", materials}}}};
    if (browser.Store(commands) != 20000 || browser.Post("setMaterialList", document).at("code") != 20000) {
        throw std::runtime_error("the pages were refused");
    }
}

/** A layout of about 10 MB, as a browser might store it. */
json LargeLayout() {
    json components = json::array();
    for (int id = 0; id < 60000; ++id) {
        components.push_back(
            {{"componentId", id},
             {"type", "button"},
             {"title", "Button " + std::to_string(id)},
             {"style", {{"color", "#20a0ff"}, {"fontSize", 14}, {"opacity", 0.85}}},
             {"rect", {{"x", id % 1920}, {"y", id % 1080}, {"width", 120.5}, {"height", 48}}}});
    }
    return {{"pages", {{{"components", std::move(components)}}}}};
}

/** nginx with two ports that answer the same constant and a file, one with its usual log and one without. */
class Nginx {
  public:
    Nginx(const std::string& body, const std::filesystem::path& file)
        : m_logged(simulation::FreePort()), m_silent(simulation::FreePort()) {
        const auto server = [&](int port, const std::string& log) {
            return "server { listen 127.0.0.1:" + std::to_string(port) + "; access_log " + log +
                   "; location / { return 200 '" + body + "'; } location = " + kResource + " { alias " +
                   file.string() + "; } }\n";
        };
        const std::string config =
            "daemon off; user root; worker_processes auto; pid nginx.pid; error_log error.log;\n"
            "events { worker_connections 4096; }\n"
            "http { default_type \"application/json; charset=utf-8\"; keepalive_requests 1000000000;\n"
            "sendfile on; tcp_nopush on;\n"
            "client_body_temp_path b; proxy_temp_path p; fastcgi_temp_path f; uwsgi_temp_path u; "
            "scgi_temp_path s;\n" +
            server(m_logged, "access.log combined") + server(m_silent, "off") + "}\n";
        simulation::WriteFile(m_folder.Path() / "nginx.conf", config);
        const std::string folder = m_folder.Path().string();
        m_process = std::make_unique<simulation::ChildProcess>(simulation::ProcessOptions{
            {"nginx", "-p", folder, "-c", folder + "/nginx.conf", "-e", folder + "/error.log"},
            {},
            folder,
            {}});
    }

    ~Nginx() {
        m_process->Send(simulation::EnSignal::Terminate);  // its workers end with it
        m_process->WaitExit();
    }

    int LoggedPort() const { return m_logged; }
    int SilentPort() const { return m_silent; }
    const simulation::ChildProcess* Process() const { return m_process.get(); }

  private:
    simulation::TemporaryFolder m_folder;
    int m_logged;
    int m_silent;
    std::unique_ptr<simulation::ChildProcess> m_process;
};

void WaitListening(int port) {
    const bool up = simulation::WaitUntil([port] {
        try {
            simulation::Socket::Connect(port);
            return true;
        } catch (const std::system_error&) {  // not yet
            return false;
        }
    });
    if (!up) {
        throw std::runtime_error("nothing listens on port " + std::to_string(port));
    }
}

/** Runs all targets in turn, round by round; the first round warms up and counts for nothing. */
template <class Measure>
void RunRounds(std::vector<Target>& targets, Measure measure, int rounds = kRounds) {
    for (int round = 0; round <= rounds; ++round) {
        for (Target& target : targets) {
            const double before = target.process->ProcessorSeconds();
            const LoadResult result = measure(target);
            if (round > 0) {
                target.Add(result, target.process->ProcessorSeconds() - before);
            }
        }
    }
}

void CheckArrived(LoadGenerator& load, std::uint64_t& expected, std::uint64_t clicks) {
    expected += clicks * Payload(1).size();
    if (!load.DrainEquipment(expected) || load.EquipmentBytes() != expected) {
        throw std::runtime_error("the equipment has not received what was clicked");
    }
}

/** @param goals  the floor is compared with, and the table tells the goals */
void MeasureClicks(LoadGenerator& load, const std::vector<Target>& servers, int rounds, bool goals) {
    const std::string other = servers[1].name + ' ';
    const std::vector<std::string> requests = ClickRequests();
    std::uint64_t expected = load.EquipmentBytes();
    std::vector<Target> single = servers;
    RunRounds(
        single,
        [&](const Target& target) {
            LoadResult result = load.Click(target.port, requests, Payload(1).size(), kRunTime);
            CheckArrived(load, expected, result.replies);
            return result;
        },
        rounds);
    const std::string what = "Click, request written to first byte at the device, ";
    PrintRow(what + "median", 1, Number(Quantile(single[0].medians, 0.5), " µs"),
             other + Number(Quantile(single[1].medians, 0.5), " µs"),
             Ratios(single[0].medians, single[1].medians), goals ? "at most 1.5" : "");
    const double ours = Quantile(single[0].all, 0.99);
    const double theirs = Quantile(single[1].all, 0.99);
    PrintRow(what + "99 %", 1, Number(ours, " µs"), other + Number(theirs, " µs"), Ratios({ours}, {theirs}),
             "");
    for (const int connections : {16, 64}) {
        std::vector<Target> many = servers;
        RunRounds(
            many,
            [&](const Target& target) {
                LoadResult result = load.Run(target.port, requests, connections, kRunTime);
                CheckArrived(load, expected, result.microseconds.size());
                return result;
            },
            rounds);
        PrintRow("Clicks a second", connections, Number(Quantile(many[0].rates, 0.5), ""),
                 other + Number(Quantile(many[1].rates, 0.5), ""), Ratios(many[0].rates, many[1].rates),
                 goals ? "at least 0.60" : "");
        PrintRow("Processor time of a click", connections, Number(many[0].ProcessorMicroseconds(), " µs"),
                 other + Number(many[1].ProcessorMicroseconds(), " µs"),
                 Ratios({many[0].ProcessorMicroseconds()}, {many[1].ProcessorMicroseconds()}), "");
    }
}

void MeasureSmallGet(LoadGenerator& load, std::vector<Target> targets) {
    const std::vector<std::string> requests = {HttpClient::Request("GET", kSmallDocument, "")};
    constexpr int kConnections = 64;
    RunRounds(targets,
              [&](const Target& target) { return load.Run(target.port, requests, kConnections, kRunTime); });
    for (std::size_t other = 1; other < targets.size(); ++other) {
        const Target& theirs = targets[other];
        PrintRow("GET of a small document, replies a second", kConnections,
                 Number(Quantile(targets[0].rates, 0.5), ""),
                 theirs.name + " " + Number(Quantile(theirs.rates, 0.5), ""),
                 Ratios(targets[0].rates, theirs.rates),
                 theirs.name == "nginx with its log" ? "at least 1" : "");
        PrintRow("Processor time of such a GET", kConnections,
                 Number(targets[0].ProcessorMicroseconds(), " µs"),
                 theirs.name + " " + Number(theirs.ProcessorMicroseconds(), " µs"),
                 Ratios({targets[0].ProcessorMicroseconds()}, {theirs.ProcessorMicroseconds()}), "");
    }
}

void MeasureLargeGet(LoadGenerator& load, Browser& browser, int port) {
    const json layout = LargeLayout();
    if (browser.Post("setCentralControlWebLayout", {{"data", layout}}).at("code") != 20000) {
        throw std::runtime_error("the layout was refused");
    }
    const std::vector<std::string> requests = {HttpClient::Request("GET", kLayout, "")};
    std::vector<double> gets;
    std::vector<double> dumps;
    std::size_t size = 0;
    for (int round = 0; round <= kRounds; ++round) {
        const double get = Quantile(load.Run(port, requests, 1, milliseconds(600)).microseconds, 0.5) / 1000;
        const auto begin = std::chrono::steady_clock::now();
        size = layout.dump().size();
        const std::chrono::duration<double, std::milli> dump = std::chrono::steady_clock::now() - begin;
        if (round > 0) {
            gets.push_back(get);
            dumps.push_back(dump.count());
        }
    }
    PrintRow("GET of a layout of " + Number(static_cast<double>(size) / 1e6, " MB"), 1,
             Number(Quantile(gets, 0.5), " ms"), "serialising it once " + Number(Quantile(dumps, 0.5), " ms"),
             Ratios(gets, dumps), "");
}

void MeasureResource(LoadGenerator& load, std::vector<Target> targets) {
    constexpr int kConnections = 4;
    RunRounds(targets, [&](const Target& target) {
        return load.Run(target.port, {HttpClient::Request("GET", kResource, "")}, kConnections, kRunTime);
    });
    const auto throughput = [](const Target& target) {
        return Number(Quantile(target.rates, 0.5) * kResourceSize / 1e6, " MB/s");
    };
    PrintRow("GET of a resource of 10 MB", kConnections, throughput(targets[0]),
             targets[1].name + " " + throughput(targets[1]), Ratios(targets[0].rates, targets[1].rates),
             "at least 0.5");
}

void PrintHead() {
    std::cout
        << "| Measured | Connections | Server | Compared with | Ratio: median (lowest to highest) | Goal |\n"
           "|---|---|---|---|---|---|\n";
}

void RunAgainst(const char* program) {
    constexpr int kManyRounds = 15;  // the difference may be small
    LoadGenerator load;
    simulation::HostProcess host;
    host.Start();
    Browser browser(host);
    StorePages(browser, load.EquipmentPort());
    setenv("SERVER_HOST", program, 1);
    simulation::HostProcess former;
    former.Start();
    Browser second(former);
    StorePages(second, load.EquipmentPort());
    PrintHead();
    MeasureClicks(load,
                  {{"server", host.HttpPort(), &host.Process(), {}, {}, {}, 0, 0},
                   {"other", former.HttpPort(), &former.Process(), {}, {}, {}, 0, 0}},
                  kManyRounds, false);
}

void Run() {
    LoadGenerator load;
    simulation::HostOptions options;
    options.ownInstallation = true;
    simulation::HostProcess host(options);
    const auto file = host.Installation() / "Resource/large.bin";
    simulation::WriteFile(file, std::string(kResourceSize, 'x'));
    host.Start();
    Browser browser(host);
    StorePages(browser, load.EquipmentPort());
    const std::string document = HttpClient(host.HttpPort()).Get(kSmallDocument).body;

    const simulation::TemporaryFolder folder;
    const int floorPort = simulation::FreePort();
    simulation::ChildProcess floor({{FLOOR_PROGRAM, std::to_string(floorPort),
                                     std::to_string(load.EquipmentPort()), Payload(1), document},
                                    {},
                                    folder.Path(),
                                    {}});
    const Nginx nginx(document, file);
    for (const int port : {floorPort, nginx.LoggedPort(), nginx.SilentPort()}) {
        WaitListening(port);
    }
    const Target ours{"server", host.HttpPort(), &host.Process(), {}, {}, {}, 0, 0};
    const Target least{"floor", floorPort, &floor, {}, {}, {}, 0, 0};
    const Target logged{"nginx with its log", nginx.LoggedPort(), nginx.Process(), {}, {}, {}, 0, 0};
    const Target silent{"nginx without a log", nginx.SilentPort(), nginx.Process(), {}, {}, {}, 0, 0};

    PrintHead();
    MeasureClicks(load, {ours, least}, kRounds, true);
    MeasureSmallGet(load, {ours, logged, silent, least});
    MeasureLargeGet(load, browser, host.HttpPort());
    MeasureResource(load, {ours, logged});
}

}  // namespace

int main(int count, char** arguments) {
    try {
        count > 1 ? RunAgainst(arguments[1]) : Run();
        return 0;
    } catch (const std::exception& error) {
        std::cerr << "failed: " << error.what() << '\n';
        return 1;
    }
}

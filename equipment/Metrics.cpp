#include "equipment/Metrics.h"

#include "device/ClickTimes.h"
#include "platform/Histogram.h"
#include "server/RouterMgr.h"

#include <cstdio>
#include <string_view>

namespace {

/** A label's value: a backslash, a quote and a line break are escaped. */
std::string Escaped(std::string_view text) {
    std::string escaped;
    for (const char byte : text) {
        if (byte == '\n') {
            escaped += "\\n";
            continue;
        }
        if (byte == '\\' || byte == '"') {
            escaped += '\\';
        }
        escaped += byte;
    }
    return escaped;
}

std::string Number(double value) {
    char text[32];
    std::snprintf(text, sizeof text, "%.9g", value);
    return text;
}

class CText {
  public:
    /** Begins a metric. @param type  "counter", "gauge" or "histogram" */
    void Begin(const char* name, const char* type, const char* help) {
        m_name = name;
        m_text += std::string("# HELP ") + name + ' ' + help + "\n# TYPE " + name + ' ' + type + '\n';
    }

    /** One line of the metric. @param labels  as they stand between the braces */
    void Add(const std::string& value, const std::string& labels = {}, const char* suffix = "") {
        m_text.append(m_name).append(suffix);
        if (!labels.empty()) {
            m_text.append("{").append(labels).append("}");
        }
        m_text.append(" ").append(value).append("\n");
    }
    void Add(std::uint64_t value, const std::string& labels = {}) { Add(std::to_string(value), labels); }

    /** The lines of a histogram, in seconds. */
    void Add(const STimes& times, const std::string& labels = {}) {
        const std::string before = labels.empty() ? labels : labels + ',';
        std::uint64_t count = 0;
        for (std::size_t i = 0; i < STimes::kBounds.size(); ++i) {
            count += times.counts[i];
            Add(std::to_string(count),
                before + "le=\"" + Number(static_cast<double>(STimes::kBounds[i]) / 1e6) + '"', "_bucket");
        }
        count += times.counts.back();
        Add(std::to_string(count), before + "le=\"+Inf\"", "_bucket");
        Add(Number(static_cast<double>(times.nanoseconds) / 1e9), labels, "_sum");
        Add(std::to_string(count), labels, "_count");
    }

    std::string Take() { return std::move(m_text); }

  private:
    std::string m_name;
    std::string m_text;
};

void AddServer(CText& text, const SHealth& health) {
    text.Begin("control_info", "gauge", "The version of the server.");
    text.Add(1, "version=\"" + Escaped(health.version) + '"');
    text.Begin("process_start_time_seconds", "gauge", "Start of the server, in seconds since 1970 (UTC).");
    text.Add(Number(std::chrono::duration<double>(health.since.time_since_epoch()).count()));
    text.Begin("process_resident_memory_bytes", "gauge", "Memory of the process.");
    text.Add(health.memory);
    text.Begin("control_channels", "gauge", "Open WebSocket connections.");
    text.Add(health.channels);
    text.Begin("control_saves_pending", "gauge", "Documents whose last change is not on the disk yet.");
    text.Add(health.saves.pending);
    text.Begin("control_saves_failing", "gauge", "Documents whose last save has failed.");
    text.Add(health.saves.failing);
    text.Begin("control_log_records_lost_total", "counter", "Log records that no file could take.");
    text.Add(health.lostRecords);
    text.Begin("control_replies_total", "counter", "Replies by their code, which docs/http-api.md explains.");
    for (const auto& [code, count] : RouterMgr::ReplyCounts()) {
        text.Add(count, "code=\"" + (code == 0 ? "other" : std::to_string(code)) + '"');
    }
    text.Begin("control_click_duration_seconds", "histogram", "Handling of a click, sending included.");
    text.Add(ClickTimes().Read());
}

using Value = std::uint64_t (*)(const SPortReport& port);

struct SInterfaceMetric {
    const char* name;
    const char* type;
    const char* help;
    Value value;
};

constexpr SInterfaceMetric kInterfaceMetrics[] = {
    {"control_interface_sent_bytes_total", "counter", "Bytes of commands that the system has taken.",
     [](const SPortReport& port) { return port.bytesOut; }},
    {"control_interface_received_bytes_total", "counter", "Bytes that the equipment has sent.",
     [](const SPortReport& port) { return port.bytesIn; }},
    {"control_interface_commands_total", "counter", "Commands that the system has taken.",
     [](const SPortReport& port) { return port.commandsOut; }},
    {"control_interface_failed_commands_total", "counter", "Commands that could not be sent.",
     [](const SPortReport& port) { return port.commandsFailed; }},
    {"control_interface_commands_under_way", "gauge", "Commands that are sent now, or wait.",
     [](const SPortReport& port) { return static_cast<std::uint64_t>(port.calls); }},
    {"control_interface_peers", "gauge", "Connected devices of a TCP server.",
     [](const SPortReport& port) -> std::uint64_t { return port.peers; }},
    {"control_interface_up", "gauge", "1 while it is open or listens, otherwise 0.",
     [](const SPortReport& port) -> std::uint64_t {
         return port.state == EnPortState::Open || port.state == EnPortState::Listening ? 1 : 0;
     }},
};

void AddInterfaces(CText& text, const SHealth& health) {
    text.Begin("control_interfaces", "gauge", "Interfaces by their state.");
    for (const auto& [state, count] : health.InterfacesByState()) {
        text.Add(static_cast<std::uint64_t>(count), "state=\"" + state + '"');
    }
    std::vector<std::string> labels;
    for (const SInterfaceReport& interface : health.interfaces) {
        labels.push_back("node_id=\"" + std::to_string(interface.nodeId) + "\",interface=\"" +
                         Escaped(interface.name) + '"');
    }
    for (const SInterfaceMetric& metric : kInterfaceMetrics) {
        text.Begin(metric.name, metric.type, metric.help);
        for (std::size_t i = 0; i < labels.size(); ++i) {
            text.Add(metric.value(health.interfaces[i].port), labels[i]);
        }
    }
    text.Begin("control_interface_send_duration_seconds", "histogram",
               "Sending of a command, waiting for the device included.");
    for (std::size_t i = 0; i < labels.size(); ++i) {
        text.Add(health.interfaces[i].port.sendTimes, labels[i]);
    }
}

}  // namespace

std::string MakeMetrics(const SHealth& health) {
    CText text;
    AddServer(text, health);
    AddInterfaces(text, health);
    return text.Take();
}

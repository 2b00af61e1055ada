#include "versions/InterfaceMatch.h"

#include "config/JsonNumber.h"

#include <algorithm>
#include <utility>

namespace {

using nlohmann::json;

/** One interface, as a list or a command describes it. */
struct SInterface {
    std::int32_t nodeId = 0;
    std::string kind;  ///< comInfo or netPortInfo
    std::string name;
    json settings;  ///< without the names; null when they are not known
};

std::string TextOf(const json& object, const char* key) {
    const auto member = object.find(key);
    return member != object.end() && member->is_string() ? member->get<std::string>() : std::string();
}

std::vector<SInterface> ReadInterfaces(const json& document) {
    std::vector<SInterface> interfaces;
    const auto list = document.find("configList");
    if (list == document.end() || !list->is_array()) {
        return interfaces;
    }
    for (const json& element : *list) {
        const auto nodeId = element.find("nodeId");
        SInterface one{0, TextOf(element, "controlType"), {}, {}};
        const auto body = element.find(one.kind);
        if (nodeId == element.end() || !nodeId->is_number_integer() || body == element.end() ||
            !body->is_object()) {
            continue;
        }
        one.nodeId = JsonToInt32(*nodeId);
        one.name = TextOf(*body, one.kind == "comInfo" ? "comName" : "netPortName");
        one.settings = *body;
        one.settings.erase("comName");
        one.settings.erase("netPortName");
        interfaces.push_back(std::move(one));
    }
    return interfaces;
}

/** Fits the commands of one document. */
class CFitting {
  public:
    CFitting(const json& then, const json& now) : m_then(ReadInterfaces(then)), m_now(ReadInterfaces(now)) {}

    void Fit(json& value) {  // NOLINT(misc-no-recursion): as deep as a document can be
        if (value.is_object() && value.contains("portIndex") && value["portIndex"].is_number_integer()) {
            FitId(value["portIndex"], value);
        }
        if (value.is_structured()) {
            for (json& member : value) {
                Fit(member);
            }
        }
    }

    void FitDevices(json& document) {
        const auto devices = document.find("devices");
        if (devices == document.end() || !devices->is_array()) {
            return;
        }
        for (json& device : *devices) {
            if (device.is_object() && device.contains("nodeId") && device["nodeId"].is_number_integer()) {
                FitId(device["nodeId"], {});
            }
        }
    }

    std::vector<SMissingInterface> TakeMissing() { return std::move(m_missing); }

  private:
    /** @param command  what uses the interface: it may say which one that was */
    void FitId(json& id, const json& command) {
        const std::int32_t nodeId = JsonToInt32(id);
        if (nodeId <= 0) {
            return;
        }
        const SInterface wanted = Wanted(nodeId, command);
        const auto same = std::find_if(m_now.begin(), m_now.end(), [&wanted](const SInterface& other) {
            return other.nodeId == wanted.nodeId && other.kind == wanted.kind &&
                   (other.name == wanted.name || other.settings == wanted.settings);
        });
        if (same != m_now.end()) {
            return;
        }
        const auto isNamesake = [&wanted](const SInterface& other) {
            return other.kind == wanted.kind && other.name == wanted.name;
        };
        if (std::count_if(m_now.begin(), m_now.end(), isNamesake) == 1) {
            id = std::find_if(m_now.begin(), m_now.end(), isNamesake)->nodeId;
            return;
        }
        id = -nodeId;
        if (std::none_of(m_missing.begin(), m_missing.end(),
                         [nodeId](const SMissingInterface& other) { return other.nodeId == nodeId; })) {
            m_missing.push_back({nodeId, wanted.name});
        }
    }

    /** The interface of a command at that time; what the command itself says when it was missing then. */
    SInterface Wanted(std::int32_t nodeId, const json& command) const {
        const auto known = std::find_if(m_then.begin(), m_then.end(),
                                        [nodeId](const SInterface& other) { return other.nodeId == nodeId; });
        if (known != m_then.end()) {
            return *known;
        }
        std::string name = TextOf(command, "interfaceName");
        return {nodeId,
                TextOf(command, "controlType"),
                name.empty() ? TextOf(command, "interFaceName") : std::move(name),
                {}};
    }

    const std::vector<SInterface> m_then;
    const std::vector<SInterface> m_now;
    std::vector<SMissingInterface> m_missing;
};

}  // namespace

std::vector<SMissingInterface> FitCommands(nlohmann::json& commands, const nlohmann::json& then,
                                           const nlohmann::json& now) {
    CFitting fitting(then, now);
    fitting.Fit(commands);
    return fitting.TakeMissing();
}

void FitDevices(json& equipment, const json& then, const json& now) {
    CFitting(then, now).FitDevices(equipment);
}

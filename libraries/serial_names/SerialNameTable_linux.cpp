#include "libraries/serial_names/SerialNameTable_linux.h"

#include "libraries/serial_names/SerialName.h"
#include "platform/SerialNames.h"

#include <algorithm>

namespace {

constexpr int kFirstFreeNumber = 5;  // 1 to 4 are for built-in ports, as on Windows

std::string TextOf(const nlohmann::json& entry, const char* key) {
    const auto found = entry.find(key);
    return found != entry.end() && found->is_string() ? found->get<std::string>() : std::string();
}

}  // namespace

void LogSerialName(RavLog::EnLogLevel level, const std::string& text) {
    RavLog::WriteSystemLog(level, "serial names", text);
}

CSerialNameTable::CSerialNameTable(nlohmann::json document) : m_document(std::move(document)) {
    for (const auto& [name, value] : m_document.items()) {
        SEntry entry;
        if (value.is_object()) {
            entry = {TextOf(value, "identity"), TextOf(value, "place"), TextOf(value, "device")};
        } else if (value.is_string()) {
            entry.device = value.get<std::string>();
        }
        const int number = SerialNumber(name);
        if (number == 0 || (entry.identity.empty() && entry.device.empty())) {
            LogSerialName(RavLog::Warn,
                          "the entry \"" + name + "\" has no effect: it names no port or no device");
        } else {
            m_entries[number] = entry;
        }
    }
}

std::optional<CSerialNameTable::SEntry> CSerialNameTable::Find(int number) const {
    const auto found = m_entries.find(number);
    return found == m_entries.end() ? std::nullopt : std::optional(found->second);
}

bool CSerialNameTable::TakeChanged() {
    return std::exchange(m_changed, false);
}

NamedLines CSerialNameTable::Name(std::vector<SFoundLine> lines, const std::map<int, std::string>& links) {
    std::map<int, std::string> fixed = links;
    for (const auto& [number, entry] : m_entries) {
        if (entry.identity.empty()) {
            fixed.emplace(number, entry.device);
        }
    }
    NamedLines named;
    NameFixed(lines, fixed, named);
    for (const auto& [number, link] : links) {
        const auto found = named.find(number);
        Reserve(number, link, found == named.end() ? std::string() : found->second.identity);
    }
    NameKnown(lines, true, fixed, named);
    NameKnown(lines, false, fixed, named);
    std::stable_partition(lines.begin(), lines.end(),
                          [](const SFoundLine& line) { return line.builtInNumber != 0; });
    for (const SFoundLine& line : lines) {
        NameNew(line, named);
    }
    return named;
}

void CSerialNameTable::NameFixed(std::vector<SFoundLine>& lines, const std::map<int, std::string>& fixed,
                                 NamedLines& named) {
    for (const auto& [number, device] : fixed) {
        const dev_t node = CharacterDevice(device);
        if (node == 0) {
            continue;  // not there at present
        }
        const auto line =
            std::find_if(lines.begin(), lines.end(), [&](const SFoundLine& one) { return one.node == node; });
        SFoundLine& port = named[number];
        if (line == lines.end()) {
            port.kind = "Communications Port";
            port.description = port.kind;
        } else {
            port = *line;
        }
        port.device = device;
        port.node = node;
    }
    std::erase_if(lines, [&](const SFoundLine& line) {
        return std::any_of(named.begin(), named.end(),
                           [&](const auto& port) { return port.second.node == line.node; });
    });
}

void CSerialNameTable::NameKnown(std::vector<SFoundLine>& lines, bool samePlace,
                                 const std::map<int, std::string>& fixed, NamedLines& named) {
    std::erase_if(lines, [&](const SFoundLine& line) {
        const auto known = std::find_if(m_entries.begin(), m_entries.end(), [&](const auto& numbered) {
            const auto& [number, entry] = numbered;
            return entry.identity == line.identity && (!samePlace || entry.place == line.place) &&
                   !named.contains(number) && !fixed.contains(number);
        });
        if (known == m_entries.end()) {
            return false;
        }
        const auto& [number, entry] = *known;
        if (entry.place != line.place || entry.device != line.device) {
            Store(number, {line.identity, line.place, line.device});
        }
        named[number] = line;
        return true;
    });
}

void CSerialNameTable::NameNew(const SFoundLine& line, NamedLines& named) {
    const auto isFree = [&](int number) { return !m_entries.contains(number) && !named.contains(number); };
    int number = line.builtInNumber;
    if (number == 0 || number > kHighestSerialNumber || !isFree(number)) {
        number = kFirstFreeNumber;
        while (number <= kHighestSerialNumber && !isFree(number)) {
            ++number;
        }
    }
    if (number > kHighestSerialNumber) {
        LogSerialName(RavLog::Error, "no number is left for " + line.device);
        return;
    }
    LogSerialName(RavLog::Info,
                  SerialName(number) + " is from now on " + line.identity + ", at present " + line.device);
    Store(number, {line.identity, line.place, line.device});
    named[number] = line;
}

/** Reserves the number of a link while the link's own port is unplugged. */
void CSerialNameTable::Reserve(int number, const std::string& link, const std::string& identity) {
    const std::optional<SEntry> entry = Find(number);
    if (entry && (entry->identity.empty() || entry->identity == identity)) {
        return;
    }
    if (entry) {
        LogSerialName(RavLog::Warn, link + " has taken the name from " + entry->identity);
    }
    Store(number, {"", "", link});
}

void CSerialNameTable::Store(int number, const SEntry& entry) {
    nlohmann::json& value = m_document[SerialName(number)];
    if (!value.is_object()) {
        value = nlohmann::json::object();
    }
    value.erase("identity");
    value.erase("place");
    value["device"] = entry.device;
    if (!entry.identity.empty()) {
        value["identity"] = entry.identity;
        value["place"] = entry.place;
    }
    m_entries[number] = entry;
    m_changed = true;
}

#include "libraries/comm/SerialNames.h"
#include "platform/RavLog.h"
#include "platform/SerialNames.h"

#include <algorithm>
#include <fstream>
#include <map>
#include <mutex>
#include <string_view>
#include <tuple>

#include <nlohmann/json.hpp>

#include <sys/stat.h>
#include <unistd.h>

namespace comm {

namespace {

/** The table as it was read last. */
class CNameTable {
  public:
    void SetFile(const std::string& file) {
        const std::lock_guard lock(m_mutex);
        m_file = file;
        m_version = {};
        m_devices.clear();
    }

    std::string Find(const std::string& comPort) {
        const std::lock_guard lock(m_mutex);
        Refresh();
        const auto found = m_devices.find(comPort);
        return found == m_devices.end() ? std::string() : found->second;
    }

  private:
    /** What changes whenever the file does: its number, size and time of change. */
    using Version = std::tuple<ino_t, off_t, time_t, long>;

    void Refresh() {
        struct stat status {};
        if (m_file.empty() || stat(m_file.c_str(), &status) != 0) {
            m_devices.clear();
            m_version = {};
            return;
        }
        const Version version(status.st_ino, status.st_size, status.st_mtim.tv_sec, status.st_mtim.tv_nsec);
        if (version != m_version) {
            m_version = version;
            Read();
        }
    }

    void Read() {
        std::ifstream file(m_file);
        const auto table = nlohmann::json::parse(file, nullptr, false);
        if (!table.is_object()) {
            // The names known so far stay: the file may be in the middle of a change.
            RavLog::WriteSystemLog(RavLog::Error, "serial names", m_file + " is not a JSON object");
            return;
        }
        m_devices.clear();
        for (const auto& [name, entry] : table.items()) {
            const auto device = entry.is_object() && entry.contains("device") ? entry["device"] : entry;
            if (device.is_string()) {
                m_devices[name] = device.get<std::string>();
            }
        }
    }

    std::mutex m_mutex;
    std::string m_file;
    Version m_version;
    std::map<std::string, std::string> m_devices;
};

CNameTable& Table() {
    static auto* table =
        new CNameTable;  // never destroyed: threads may outlive the end of the process's main
    return *table;
}

}  // namespace

std::string FindSerialDevice(const std::string& comPort) {
    if (!IsSerialName(comPort)) {
        return {};
    }
    std::string device = "/dev/" + comPort;
    if (access(device.c_str(), F_OK) == 0) {
        return device;
    }
    return Table().Find(comPort);
}

bool IsSerialName(const std::string& comPort) {
    constexpr std::string_view prefix = "COM";
    return comPort.starts_with(prefix) && comPort.size() > prefix.size() &&
           comPort.size() <= prefix.size() + 4 &&
           std::all_of(comPort.begin() + static_cast<std::ptrdiff_t>(prefix.size()), comPort.end(),
                       [](char c) { return c >= '0' && c <= '9'; });
}

}  // namespace comm

void SetSerialNameTable(const std::string& file) {
    comm::Table().SetFile(file);
}

#include "libraries/serial_names/NamedSerialLines_linux.h"
#include "platform/DurableFile.h"
#include "platform/FolderNames.h"
#include "platform/Mutex.h"
#include "platform/RavLog.h"
#include "platform/SerialNames.h"

#include <filesystem>
#include <fstream>
#include <tuple>

#include <sys/stat.h>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {

/** The table of names and its file. */
class CNameFile {
  public:
    void SetFile(const std::string& file) {
        const CLock lock(m_mutex);
        m_file = file;
        m_version = {};
        m_table = {};
        m_unsaved = false;
    }

    std::optional<CSerialNameTable::SEntry> Find(int number) {
        const CLock lock(m_mutex);
        Refresh();
        return m_table.Find(number);
    }

    NamedLines Name(std::vector<SFoundLine> lines, const std::map<int, std::string>& links) {
        const CLock lock(m_mutex);
        Refresh();
        NamedLines named = m_table.Name(std::move(lines), links);
        m_unsaved = m_table.TakeChanged() || m_unsaved;
        if (m_unsaved && !m_file.empty()) {
            Save();
        }
        return named;
    }

  private:
    /** Values that change whenever the file does: its number, size and time of change. */
    using Version = std::tuple<ino_t, off_t, time_t, long>;

    /** All zeros while there is no file. */
    Version FileVersion() const REQUIRES_LOCK(m_mutex) {
        struct stat status {};
        if (stat(m_file.c_str(), &status) != 0) {
            return {};
        }
        return {status.st_ino, status.st_size, status.st_mtim.tv_sec, status.st_mtim.tv_nsec};
    }

    void Refresh() REQUIRES_LOCK(m_mutex) {
        const Version version = FileVersion();
        if (version == m_version) {
            return;
        }
        m_version = version;
        if (version == Version()) {
            m_table = {};
            return;
        }
        std::ifstream file(m_file);
        nlohmann::json document = nlohmann::json::parse(file, nullptr, false);
        if (document.is_object()) {
            m_table = CSerialNameTable(std::move(document));
            m_unsaved = false;
        } else {
            SetAside();
        }
    }

    /** Keeps the names known so far for the next table. */
    void SetAside() REQUIRES_LOCK(m_mutex) {
        const std::string broken = m_file + ".broken";
        std::error_code error;
        fs::rename(m_file, broken, error);
        LogSerialName(RavLog::Error,
                      m_file + " is not a JSON object; " +
                          (error ? "it can't be kept aside: " + error.message() : "kept as " + broken));
        m_version = FileVersion();
        m_unsaved = true;
    }

    void Save() REQUIRES_LOCK(m_mutex) {
        const std::string text =
            m_table.Document().dump(4, ' ', false, nlohmann::json::error_handler_t::replace);
        const std::error_code error = ReplaceFileDurably(m_file, text);
        m_unsaved = static_cast<bool>(error);
        if (!error) {
            m_version = FileVersion();
            m_told = false;
        } else if (!m_told) {
            m_told = true;
            LogSerialName(RavLog::Error, m_file + " can't be written: " + error.message() +
                                             "; new serial ports keep their names until the server stops");
        }
    }

    CMutex m_mutex;
    std::string m_file GUARDED_BY(m_mutex);
    Version m_version GUARDED_BY(m_mutex);
    CSerialNameTable m_table GUARDED_BY(m_mutex);
    bool m_unsaved GUARDED_BY(m_mutex) = false;
    bool m_told GUARDED_BY(m_mutex) = false;  ///< that it can't be written
};

CNameFile& NameFile() {
    static auto* file = new CNameFile;  // never destroyed: threads may outlive the end of main
    return *file;
}

bool Exists(const std::string& path) {
    return access(path.c_str(), F_OK) == 0;
}

/** The names that the administrator made in /dev, by their numbers. */
std::map<int, std::string> Links() {
    std::map<int, std::string> links;
    for (const std::string& name : NamesInFolder("/dev")) {
        if (const int number = SerialNumber(name); number != 0) {
            links.emplace(number, "/dev/" + name);
        }
    }
    return links;
}

}  // namespace

void SetSerialNameTable(const std::string& file) {
    NameFile().SetFile(file);
}

NamedLines NameSerialLines() {
    return NameFile().Name(WalkSerialLines(), Links());
}

std::string FindSerialDevice(const std::string& comPort) {
    const int number = SerialNumber(comPort);
    if (number == 0) {
        return {};
    }
    std::string link = "/dev/" + comPort;
    if (Exists(link)) {
        return link;
    }
    if (const auto entry = NameFile().Find(number)) {
        if (entry->identity.empty()) {
            return Exists(entry->device) ? entry->device : std::string();
        }
        // Usually it is still where it was; then the other lines need not be examined.
        const auto line = LookAtSerialLine(entry->device);
        if (line && line->identity == entry->identity && line->place == entry->place) {
            return entry->device;
        }
    }
    const NamedLines named = NameSerialLines();
    const auto found = named.find(number);
    return found == named.end() ? std::string() : found->second.device;
}

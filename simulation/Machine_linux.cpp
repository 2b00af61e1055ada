#include "simulation/Machine.h"

#include <cstdlib>
#include <map>

namespace simulation {

void SetVariable(const char* name, const char* value) {
    value != nullptr ? setenv(name, value, 1) : unsetenv(name);
}

void SetHome(const std::filesystem::path& folder) {
    std::filesystem::create_directories(folder / "Documents");
    SetVariable("HOME", folder.c_str());
    SetVariable("XDG_CONFIG_HOME", nullptr);
}

std::vector<std::string> HomeEnvironment(const std::filesystem::path& folder) {
    return {"-uXDG_CONFIG_HOME", "HOME=" + folder.string(), "LC_ALL=en_US.UTF-8"};
}

void SetLocale(const std::string& posixName) {
    SetVariable("LC_ALL", posixName.c_str());
}

bool MakeLink(const std::filesystem::path& target, const std::filesystem::path& link) {
    std::filesystem::create_symlink(target, link);
    return true;
}

const char* FullDisk() {
    return "/dev/full";
}

const char* UnreadableFile() {
    return "/proc/self/mem";  // address 0 belongs to nobody
}

std::filesystem::path ProgramFolder() {
    return std::filesystem::read_symlink("/proc/self/exe").parent_path();
}

const char* const Differences::kDocumentLineEnd = "\n";
const char* const Differences::kRecordEnd = "\r\n";
const char* const Differences::kUserFolder = "Sennacroft/Varnholt";
const bool Differences::kNamesAsWritten = true;
const bool Differences::kRemovesOpenFiles = true;
const bool Differences::kKeepsOpenFilesInFolders = true;
const bool Differences::kKeepsMissingStreams = false;
const bool Differences::kHasGb18030 = true;
const bool Differences::kTellsWhatIsUnacknowledged = true;
const bool Differences::kHearsLines = true;
const bool Differences::kTellsWhoListens = true;
const bool Differences::kStandsManyCuts = true;
const bool Differences::kHasPortList = true;
const bool Differences::kMeasuresProcess = true;

std::string ErrorText(unsigned code) {
    static const std::map<unsigned, const char*> texts = {
        {2, "The system cannot find the file specified."},
        {13, "The data is invalid."},
        {10040,
         "A message sent on a datagram socket was larger than the internal message buffer or some other "
         "network "
         "limit, or the buffer used to receive a datagram into was smaller than the datagram itself."},
        {10060,
         "A connection attempt failed because the connected party did not properly respond after a period of "
         "time, "
         "or established connection failed because connected host has failed to respond."},
        {10061, "No connection could be made because the target machine actively refused it."},
    };
    return std::string(texts.at(code)) + "\r\n";
}

}  // namespace simulation

#include "simulation/Machine.h"

#include <array>
#include <cstdlib>

#include <windows.h>

namespace simulation {

namespace {

bool IsWine() {
    return GetProcAddress(GetModuleHandleW(L"ntdll.dll"), "wine_get_version") != nullptr;
}

}  // namespace

void SetVariable(const char* name, const char* value) {
    _putenv_s(name, value != nullptr ? value : "");
}

void SetHome(const std::filesystem::path& folder) {
    std::filesystem::create_directories(folder / "Documents");
    SetVariable("SERVER_HOME", folder.string().c_str());
}

std::vector<std::string> HomeEnvironment(const std::filesystem::path& folder) {
    SetLocale("en_US");
    return {"SERVER_HOME=" + folder.string()};
}

void SetLocale(const std::string& posixName) {
    const std::string plain = posixName.substr(0, posixName.find_first_of(".@"));
    std::wstring name(plain.begin(), plain.end());
    if (const std::size_t line = name.find(L'_'); line != std::wstring::npos) {
        name[line] = L'-';
    }
    RegSetKeyValueW(HKEY_CURRENT_USER, L"Control Panel\\International", L"LocaleName", REG_SZ, name.c_str(),
                    static_cast<DWORD>((name.size() + 1) * sizeof(wchar_t)));
}

bool MakeLink(const std::filesystem::path& /*target*/, const std::filesystem::path& /*link*/) {
    return false;
}

const char* FullDisk() {
    return "";
}

const char* UnreadableFile() {
    return "";
}

std::filesystem::path ProgramFolder() {
    std::array<wchar_t, MAX_PATH> file{};
    GetModuleFileNameW(nullptr, file.data(), MAX_PATH);
    return std::filesystem::path(file.data()).parent_path();
}

const char* const Differences::kDocumentLineEnd = "\r\n";
const char* const Differences::kRecordEnd = "\r\r\n";
const char* const Differences::kUserFolder = "Sennacroft\\Varnholt";
const bool Differences::kNamesAsWritten = false;
const bool Differences::kRemovesOpenFiles = false;
const bool Differences::kKeepsOpenFilesInFolders = !IsWine();
const bool Differences::kKeepsMissingStreams = true;
const bool Differences::kHasGb18030 = IsValidCodePage(54936) != FALSE;
const bool Differences::kTellsWhatIsUnacknowledged = !IsWine();
const bool Differences::kHearsLines = !IsWine();
const bool Differences::kTellsWhoListens = !IsWine();
const bool Differences::kStandsManyCuts = !IsWine();
const bool Differences::kHasPortList = false;
const bool Differences::kMeasuresProcess = false;

// The system's own words: Wine's are not those of Windows.
std::string ErrorText(unsigned code) {
    std::array<char, 1024> text{};
    const DWORD size =
        FormatMessageA(FORMAT_MESSAGE_FROM_SYSTEM, nullptr, code, 1024, text.data(), text.size(), nullptr);
    return size > 0 ? std::string(text.data(), size)
                    : "Failed to get error description (Code: " + std::to_string(code) + ")";
}

}  // namespace simulation

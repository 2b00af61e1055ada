#include "simulation/PtyPair.h"
#include "simulation/TemporaryFolder.h"

#include <bit>
#include <cstdlib>
#include <fstream>
#include <stdexcept>
#include <system_error>

#include <windows.h>

namespace simulation {

namespace {

constexpr const wchar_t* kPort = L"\\\\.\\COM7";  // the one port that Wine's configuration maps

/** The path that a file has for programs of the system that Wine runs on. */
std::string OuterPath(const std::filesystem::path& path) {
    using Convert = char*(__cdecl*)(const wchar_t*);
    const FARPROC found = GetProcAddress(GetModuleHandleW(L"kernel32.dll"), "wine_get_unix_file_name");
    if (found == nullptr) {
        throw std::runtime_error("a serial line is simulated under Wine alone");
    }
    char* const outer = std::bit_cast<Convert>(found)(path.c_str());
    std::string result = outer != nullptr ? outer : "";
    HeapFree(GetProcessHeap(), 0, outer);
    return result;
}

bool PortIsThere() {
    const HANDLE port = CreateFileW(kPort, GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_EXISTING,
                                    FILE_FLAG_OVERLAPPED, nullptr);
    if (port == INVALID_HANDLE_VALUE) {
        return GetLastError() == ERROR_SHARING_VIOLATION;  // the server has it
    }
    DCB settings{};
    settings.DCBlength = sizeof settings;
    const bool isSerial = GetCommState(port, &settings) != FALSE;
    CloseHandle(port);
    return isSerial;
}

/** Starts the program that holds the pair; it runs for as long as the record file is there. */
void StartHolder(const std::filesystem::path& record) {
    const char* const line = std::getenv("SERVER_WINE_LINE");
    if (line == nullptr) {
        throw std::runtime_error("scripts/wine-run sets SERVER_WINE_LINE");
    }
    const std::string words = "\"Z:" SERVER_LINE_HOLDER "\" \"" + OuterPath(record) + "\" \"" + line + "\"";
    std::wstring command(words.begin(), words.end());
    STARTUPINFOW start{};
    start.cb = sizeof start;
    PROCESS_INFORMATION made{};
    if (CreateProcessW(nullptr, command.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &start,
                       &made) == FALSE) {
        throw std::system_error(static_cast<int>(GetLastError()), std::system_category(), "CreateProcess");
    }
    CloseHandle(made.hProcess);
    CloseHandle(made.hThread);
}

/** What the program that holds the pair sends: it takes what is added to this file. */
std::filesystem::path AnswersOf(std::filesystem::path record) {
    return record += ".answers";
}

}  // namespace

PtyPair::PtyPair(const std::filesystem::path& link) : m_link(link) {
    WriteFile(AnswersOf(m_link), "");
    WriteFile(m_link, "");
    StartHolder(m_link);
    if (!WaitUntil(PortIsThere)) {
        throw TimedOut("the serial line did not come up");
    }
    m_thread = std::jthread([this](const std::stop_token& stop) {
        std::size_t seen = 0;
        while (!stop.stop_requested()) {
            const std::string bytes = ReadFile(m_link);
            m_received.Add(std::string_view(bytes).substr(seen));
            seen = bytes.size();
            std::this_thread::sleep_for(milliseconds(5));
        }
    });
}

PtyPair::~PtyPair() {
    m_thread.request_stop();
    m_thread.join();
    std::error_code ignored;  // the folder goes away with the file in any case
    std::filesystem::remove(m_link, ignored);
    WaitUntil([] { return !PortIsThere(); });
}

void PtyPair::Send(std::string_view bytes) const {
    std::ofstream answers(AnswersOf(m_link), std::ios::binary | std::ios::app);
    answers << bytes;
    answers.close();
    if (!answers) {
        throw std::system_error(std::make_error_code(std::errc::io_error), AnswersOf(m_link).string());
    }
}

}  // namespace simulation

#include "simulation/ChildProcess.h"
#include "simulation/TemporaryFolder.h"

#include <algorithm>
#include <map>
#include <system_error>
#include <utility>

#include <windows.h>
// After windows.h, which it needs.
#include <psapi.h>

namespace simulation {

namespace {

constexpr UINT kKilled = 137;  // the exit status with which a shell reports a kill on other systems

[[noreturn]] void Fail(const char* what) {
    throw std::system_error(static_cast<int>(GetLastError()), std::system_category(), what);
}

/** A handle that is closed at the end. */
class CHandle {
  public:
    explicit CHandle(HANDLE handle = nullptr) : m_handle(handle) {}
    CHandle(CHandle&& other) noexcept : m_handle(std::exchange(other.m_handle, nullptr)) {}
    CHandle& operator=(CHandle&& other) noexcept {
        std::swap(m_handle, other.m_handle);
        return *this;
    }
    ~CHandle() {
        if (m_handle != nullptr && m_handle != INVALID_HANDLE_VALUE) {
            CloseHandle(m_handle);
        }
    }
    HANDLE Get() const { return m_handle; }
    HANDLE* Place() { return &m_handle; }

  private:
    HANDLE m_handle;
};

CHandle OpenOutput(const std::filesystem::path& path) {
    SECURITY_ATTRIBUTES inherited{sizeof inherited, nullptr, TRUE};
    const HANDLE file = CreateFileW(path.c_str(), FILE_APPEND_DATA, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                    &inherited, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE) {
        Fail("CreateFile");
    }
    return CHandle(file);
}

std::wstring Wide(const std::string& text) {
    return std::filesystem::path(std::u8string(text.begin(), text.end())).native();
}

/** Our own environment with the changes of the options, in the form that CreateProcess takes. */
std::wstring EnvironmentBlock(const std::vector<std::string>& changes) {
    std::map<std::wstring, std::wstring> variables;
    const auto set = [&variables](const std::wstring& assignment) {
        const std::size_t equals = assignment.find(L'=', 1);
        if (equals != std::wstring::npos) {
            variables[assignment.substr(0, equals)] = assignment.substr(equals + 1);
        }
    };
    wchar_t* const own = GetEnvironmentStringsW();
    for (const wchar_t* at = own; *at != L'\0'; at += std::wcslen(at) + 1) {
        set(at);
    }
    FreeEnvironmentStringsW(own);
    for (const std::string& change : changes) {
        if (change.starts_with("-u")) {
            variables.erase(Wide(change.substr(2)));
        } else {
            set(Wide(change));
        }
    }
    std::wstring block;
    for (const auto& [name, value] : variables) {
        block.append(name).append(1, L'=').append(value).append(1, L'\0');
    }
    return block + L'\0';
}

std::wstring CommandLine(const std::vector<std::string>& words) {
    std::wstring line;
    for (const std::string& word : words) {
        line += (line.empty() ? L"\"" : L" \"") + Wide(word) + L'"';
    }
    return line;
}

/** A console without a window, of which one process is the client. */
class CPseudoConsole {
  public:
    CPseudoConsole() {
        CHandle input;
        CHandle output;
        if (CreatePipe(input.Place(), m_input.Place(), nullptr, 0) == FALSE ||
            CreatePipe(m_output.Place(), output.Place(), nullptr, 0) == FALSE ||
            CreatePseudoConsole({80, 25}, input.Get(), output.Get(), 0, &m_console) != S_OK) {
            Fail("CreatePseudoConsole");
        }
        SIZE_T size = 0;
        InitializeProcThreadAttributeList(nullptr, 1, 0, &size);
        m_attributes.resize(size);
        if (InitializeProcThreadAttributeList(Attributes(), 1, 0, &size) == FALSE ||
            UpdateProcThreadAttribute(Attributes(), 0, PROC_THREAD_ATTRIBUTE_PSEUDOCONSOLE, m_console,
                                      sizeof m_console, nullptr, nullptr) == FALSE) {
            Fail("UpdateProcThreadAttribute");
        }
    }
    ~CPseudoConsole() {
        m_output = CHandle();  // nobody reads, so that the end does not wait for a reader
        ClosePseudoConsole(m_console);
        DeleteProcThreadAttributeList(Attributes());
    }
    CPseudoConsole(const CPseudoConsole&) = delete;
    CPseudoConsole& operator=(const CPseudoConsole&) = delete;

    LPPROC_THREAD_ATTRIBUTE_LIST Attributes() {
        return static_cast<LPPROC_THREAD_ATTRIBUTE_LIST>(static_cast<void*>(m_attributes.data()));
    }

  private:
    CHandle m_input;
    CHandle m_output;
    HPCON m_console = nullptr;
    std::vector<char> m_attributes;
};

/** The test itself goes on. Not the system's own way of ignoring Ctrl+C, which children inherit. */
BOOL WINAPI OutliveConsoleEvent(DWORD /*event*/) {
    return TRUE;
}

/** The window by which the process learns of a log-off. */
HWND SessionWindow(DWORD process) {
    HWND window = nullptr;
    while ((window = FindWindowExW(nullptr, window, L"VarnholtServerSession", nullptr)) != nullptr) {
        DWORD owner = 0;
        GetWindowThreadProcessId(window, &owner);
        if (owner == process) {
            break;
        }
    }
    return window;
}

/** A log-off, as the system reports it to one process. */
void EndSession(DWORD process) {
    const HWND window = SessionWindow(process);
    if (window == nullptr ||
        SendMessageW(window, WM_QUERYENDSESSION, 0, static_cast<LPARAM>(ENDSESSION_LOGOFF)) == FALSE) {
        Fail("WM_QUERYENDSESSION");
    }
    PostMessageW(window, WM_ENDSESSION, TRUE, static_cast<LPARAM>(ENDSESSION_LOGOFF));
}

double Seconds(const FILETIME& time) {
    return static_cast<double>(std::uint64_t{time.dwHighDateTime} << 32U | time.dwLowDateTime) / 1e7;
}

}  // namespace

struct ChildProcess::SSystem {
    CPseudoConsole console;
    CHandle job;  // ends the process together with the test, in whatever way that ends
    CHandle process;
};

ChildProcess::ChildProcess(const ProcessOptions& options)
    : m_outputFolder(options.outputFolder), m_system(std::make_shared<SSystem>()) {
    m_system->job = CHandle(CreateJobObjectW(nullptr, nullptr));
    JOBOBJECT_EXTENDED_LIMIT_INFORMATION limits{};
    limits.BasicLimitInformation.LimitFlags = JOB_OBJECT_LIMIT_KILL_ON_JOB_CLOSE;
    SetInformationJobObject(m_system->job.Get(), JobObjectExtendedLimitInformation, &limits, sizeof limits);

    const CHandle output = OpenOutput(m_outputFolder / "stdout.txt");
    const CHandle errors = OpenOutput(m_outputFolder / "stderr.txt");
    STARTUPINFOEXW start{};
    start.StartupInfo.cb = sizeof start;
    start.StartupInfo.dwFlags = STARTF_USESTDHANDLES;
    start.StartupInfo.hStdOutput = output.Get();
    start.StartupInfo.hStdError = errors.Get();
    start.lpAttributeList = m_system->console.Attributes();
    std::wstring command = CommandLine(options.command);
    std::wstring environment = EnvironmentBlock(options.environment);
    PROCESS_INFORMATION made{};
    if (CreateProcessW(nullptr, command.data(), nullptr, nullptr, TRUE,
                       EXTENDED_STARTUPINFO_PRESENT | CREATE_UNICODE_ENVIRONMENT | CREATE_SUSPENDED,
                       environment.data(), nullptr, &start.StartupInfo, &made) == FALSE) {
        Fail("CreateProcess");
    }
    m_system->process = CHandle(made.hProcess);
    m_id = static_cast<int>(made.dwProcessId);
    AssignProcessToJobObject(m_system->job.Get(), made.hProcess);
    ResumeThread(made.hThread);
    CloseHandle(made.hThread);
}

ChildProcess::~ChildProcess() {
    if (Running()) {
        TerminateProcess(m_system->process.Get(), kKilled);
        WaitExit();
    }
}

void ChildProcess::Send(EnSignal signal) const {
    if (m_status) {
        return;
    }
    if (signal == EnSignal::Kill) {
        TerminateProcess(m_system->process.Get(), kKilled);
        return;
    }
    if (signal == EnSignal::HangUp) {
        EndSession(static_cast<DWORD>(m_id));
        return;
    }
    // Ctrl+C, typed at the console of the process: the test becomes a client of it for a moment.
    FreeConsole();
    SetConsoleCtrlHandler(&OutliveConsoleEvent, TRUE);
    if (AttachConsole(static_cast<DWORD>(m_id)) == FALSE ||
        GenerateConsoleCtrlEvent(CTRL_C_EVENT, 0) == FALSE) {
        Fail("GenerateConsoleCtrlEvent");
    }
    FreeConsole();
}

std::optional<int> ChildProcess::WaitExit(milliseconds limit) {
    if (!m_status &&
        WaitForSingleObject(m_system->process.Get(), static_cast<DWORD>(limit.count())) == WAIT_OBJECT_0) {
        DWORD code = 0;
        GetExitCodeProcess(m_system->process.Get(), &code);
        m_status = static_cast<int>(code);
    }
    return m_status;
}

std::string ChildProcess::Output() const {
    return ReadTextFile(m_outputFolder / "stdout.txt");
}

std::string ChildProcess::ErrorOutput() const {
    return ReadTextFile(m_outputFolder / "stderr.txt");
}

std::size_t ChildProcess::ResidentBytes() const {
    PROCESS_MEMORY_COUNTERS counters{};
    K32GetProcessMemoryInfo(m_system->process.Get(), &counters, sizeof counters);
    return counters.WorkingSetSize;
}

std::size_t ChildProcess::Descriptors() const {
    DWORD count = 0;
    GetProcessHandleCount(m_system->process.Get(), &count);
    return count;
}

double ChildProcess::ProcessorSeconds() const {
    FILETIME created{};
    FILETIME ended{};
    FILETIME kernel{};
    FILETIME user{};
    GetProcessTimes(m_system->process.Get(), &created, &ended, &kernel, &user);
    return Seconds(kernel) + Seconds(user);
}

}  // namespace simulation

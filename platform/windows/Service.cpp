#include "platform/Service.h"

#include "platform/Mutex.h"
#include "platform/ProcessEnd.h"
#include "platform/windows/StopEvent.h"

#include <array>
#include <iostream>
#include <string>
#include <system_error>

#include <windows.h>

namespace {

constexpr const wchar_t* kName = L"VarnholtServer";
constexpr const wchar_t* kDisplayName = L"Varnholt Server";
// This account may open serial ports and listen, and little else; its documents are in its own profile.
constexpr const wchar_t* kAccount = L"NT AUTHORITY\\LocalService";
constexpr DWORD kPatience = 20000;        // milliseconds that the start and the stop may take
constexpr DWORD kForgetFailures = 86400;  // seconds without a failure, after which counting restarts
constexpr DWORD kRestartPause = 5000;     // milliseconds

constexpr DWORD kCheckPointPause = 1000;  // milliseconds between two signs of life of a stop

SERVICE_STATUS_HANDLE g_handle = nullptr;
HANDLE g_started = nullptr;  // event: the service manager has started the service
DWORD g_exitCode = 0;        // of the work; set on the main thread before the end of main
CMutex g_mutex;              // keeps reports in order, too
DWORD g_checkPoint GUARDED_BY(g_mutex) = 0;
bool g_isStopped GUARDED_BY(g_mutex) = false;

/** A handle of the service manager. */
class CServiceHandle {
  public:
    explicit CServiceHandle(SC_HANDLE handle) : m_handle(handle) {}
    ~CServiceHandle() {
        if (m_handle != nullptr) {
            CloseServiceHandle(m_handle);
        }
    }
    CServiceHandle(const CServiceHandle&) = delete;
    CServiceHandle& operator=(const CServiceHandle&) = delete;
    SC_HANDLE Get() const { return m_handle; }
    explicit operator bool() const { return m_handle != nullptr; }

  private:
    SC_HANDLE m_handle;
};

int Fail(const char* what) {
    const std::error_code error(static_cast<int>(GetLastError()), std::system_category());
    std::cerr << "ServerHost: " << what << ": " << error.message() << std::endl;
    return 1;
}

/** Reports the state to the service manager; after "stopped" nothing more. */
void Report(DWORD state) {
    const CLock lock(g_mutex);
    if (g_isStopped) {
        return;
    }
    g_isStopped = state == SERVICE_STOPPED;
    const DWORD exitCode = g_isStopped ? g_exitCode : 0;
    const bool isPending = state == SERVICE_STOP_PENDING;
    SERVICE_STATUS status{};
    status.dwServiceType = SERVICE_WIN32_OWN_PROCESS;
    status.dwCurrentState = state;
    status.dwControlsAccepted = state == SERVICE_RUNNING ? SERVICE_ACCEPT_STOP | SERVICE_ACCEPT_SHUTDOWN : 0;
    status.dwWin32ExitCode = exitCode == 0 ? NO_ERROR : ERROR_SERVICE_SPECIFIC_ERROR;
    status.dwServiceSpecificExitCode = exitCode;
    status.dwCheckPoint = isPending ? ++g_checkPoint : 0;
    status.dwWaitHint = isPending ? kPatience : 0;
    SetServiceStatus(g_handle, &status);
}

/** Reports progress while the last saves are awaited; the end of the process ends this thread. */
DWORD WINAPI ReportStopping(void* /*unused*/) {
    while (true) {
        Report(SERVICE_STOP_PENDING);
        Sleep(kCheckPointPause);
    }
}

void BeginStop() {
    static const HANDLE thread = CreateThread(nullptr, 0, &ReportStopping, nullptr, 0, nullptr);
    if (thread == nullptr) {
        Report(SERVICE_STOP_PENDING);
    }
}

void ReportStopped() {
    Report(SERVICE_STOPPED);
}

DWORD WINAPI OnControl(DWORD control, DWORD /*type*/, void* /*data*/, void* /*context*/) {
    if (control == SERVICE_CONTROL_STOP || control == SERVICE_CONTROL_SHUTDOWN) {
        BeginStop();
        SetEvent(StopEvent());
        return NO_ERROR;
    }
    return control == SERVICE_CONTROL_INTERROGATE ? NO_ERROR : ERROR_CALL_NOT_IMPLEMENTED;
}

/** The work runs on the main thread, so that its end is the end of main. */
void WINAPI ServiceMain(DWORD /*count*/, wchar_t** /*arguments*/) {
    g_handle = RegisterServiceCtrlHandlerExW(kName, &OnControl, nullptr);
    if (g_handle != nullptr) {
        Report(SERVICE_RUNNING);
        SetEvent(g_started);
    }
}

/** Communicates with the service manager until the service has stopped. @return 0 or why it can't */
DWORD WINAPI Dispatch(void* /*unused*/) {
    std::wstring name = kName;
    const std::array<SERVICE_TABLE_ENTRYW, 2> table{{{name.data(), &ServiceMain}, {nullptr, nullptr}}};
    return StartServiceCtrlDispatcherW(table.data()) != FALSE ? NO_ERROR : GetLastError();
}

int RunAsService(const std::function<int()>& run) {
    g_started = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    const HANDLE dispatcher = CreateThread(nullptr, 0, &Dispatch, nullptr, 0, nullptr);
    if (g_started == nullptr || dispatcher == nullptr) {
        return Fail("the service can't be run");
    }
    const std::array<HANDLE, 2> either{g_started, dispatcher};
    if (WaitForMultipleObjects(2, either.data(), FALSE, INFINITE) != WAIT_OBJECT_0) {
        DWORD error = NO_ERROR;
        GetExitCodeThread(dispatcher, &error);
        SetLastError(error);
        return Fail("the service manager did not start this");
    }
    CallAtProcessEnd(&ReportStopped);  // registered first, called last: after all saves
    const int status = run();
    g_exitCode = static_cast<DWORD>(status);
    BeginStop();
    return status;
}

/** Sets one property; a system that doesn't know it works without. */
bool SetProperty(SC_HANDLE service, DWORD level, void* value) {
    if (ChangeServiceConfig2W(service, level, value) != FALSE) {
        return true;
    }
    if (GetLastError() != ERROR_INVALID_LEVEL) {
        return false;
    }
    std::cerr << "ServerHost: this system doesn't know the service property " << level << std::endl;
    return true;
}

/** Delayed start with the machine, and a restart after each failure. */
bool Configure(SC_HANDLE service) {
    SERVICE_DELAYED_AUTO_START_INFO delayed{TRUE};
    std::array<SC_ACTION, 3> restarts{};
    restarts.fill({SC_ACTION_RESTART, kRestartPause});
    SERVICE_FAILURE_ACTIONSW failures{};
    failures.dwResetPeriod = kForgetFailures;
    failures.cActions = static_cast<DWORD>(restarts.size());
    failures.lpsaActions = restarts.data();
    SERVICE_FAILURE_ACTIONS_FLAG alsoOnExitStatus{TRUE};
    return SetProperty(service, SERVICE_CONFIG_DELAYED_AUTO_START_INFO, &delayed) &&
           SetProperty(service, SERVICE_CONFIG_FAILURE_ACTIONS, &failures) &&
           SetProperty(service, SERVICE_CONFIG_FAILURE_ACTIONS_FLAG, &alsoOnExitStatus);
}

int Install() {
    std::array<wchar_t, MAX_PATH> file{};
    const DWORD length = GetModuleFileNameW(nullptr, file.data(), MAX_PATH);
    if (length < 1 || length >= MAX_PATH) {
        return Fail("the program's path can't be found");
    }
    const CServiceHandle manager(OpenSCManagerW(nullptr, nullptr, SC_MANAGER_CREATE_SERVICE));
    if (!manager) {
        return Fail("the service manager can't be opened; administrators may");
    }
    const std::wstring command = L"\"" + std::wstring(file.data(), length) + L"\" --service run";
    const CServiceHandle service(CreateServiceW(
        manager.Get(), kName, kDisplayName, SERVICE_ALL_ACCESS, SERVICE_WIN32_OWN_PROCESS, SERVICE_AUTO_START,
        SERVICE_ERROR_NORMAL, command.c_str(), nullptr, nullptr, L"Tcpip\0", kAccount, nullptr));
    if (!service) {
        return Fail("the service can't be registered");
    }
    if (!Configure(service.Get())) {
        const int status = Fail("the service can't be set up");
        DeleteService(service.Get());
        return status;
    }
    return StartServiceW(service.Get(), 0, nullptr) != FALSE
               ? 0
               : Fail("the service will start with the machine, but can't be started now");
}

/** Stops the service, and waits until its process has let go of its files. */
void Stop(SC_HANDLE service) {
    SERVICE_STATUS_PROCESS running{};
    DWORD size = 0;
    QueryServiceStatusEx(service, SC_STATUS_PROCESS_INFO, reinterpret_cast<BYTE*>(&running), sizeof running,
                         &size);
    const HANDLE process =
        running.dwProcessId != 0 ? OpenProcess(SYNCHRONIZE, FALSE, running.dwProcessId) : nullptr;
    SERVICE_STATUS status{};
    ControlService(service, SERVICE_CONTROL_STOP, &status);  // fails when it doesn't run
    for (DWORD waited = 0; waited < kPatience && QueryServiceStatus(service, &status) != FALSE &&
                           status.dwCurrentState != SERVICE_STOPPED;
         waited += 100) {
        Sleep(100);
    }
    if (process != nullptr) {
        WaitForSingleObject(process, kPatience);
        CloseHandle(process);
    }
}

int Remove() {
    const CServiceHandle manager(OpenSCManagerW(nullptr, nullptr, SC_MANAGER_CONNECT));
    const CServiceHandle service(
        manager ? OpenServiceW(manager.Get(), kName, SERVICE_STOP | SERVICE_QUERY_STATUS | DELETE) : nullptr);
    if (!service) {
        return Fail("the service can't be opened");
    }
    Stop(service.Get());
    return DeleteService(service.Get()) != FALSE ? 0 : Fail("the service can't be removed");
}

}  // namespace

int HandleServiceCommand(std::string_view verb, const std::function<int()>& run) {
    if (verb == "install") {
        return Install();
    }
    if (verb == "remove") {
        return Remove();
    }
    if (verb != "run") {
        return 2;
    }
    LeaveStopToServiceManager();
    return RunAsService(run);
}

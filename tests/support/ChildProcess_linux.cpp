#include "support/ChildProcess.h"
#include "support/TemporaryFolder.h"

#include <cerrno>
#include <csignal>
#include <cstring>
#include <iterator>
#include <sstream>
#include <system_error>

#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace support {

namespace fs = std::filesystem;

namespace {

std::vector<char*> Pointers(std::vector<std::string>& texts) {
    std::vector<char*> result;
    result.reserve(texts.size() + 1);
    for (std::string& text : texts) {
        result.push_back(text.data());
    }
    result.push_back(nullptr);
    return result;
}

std::vector<std::string> Environment(const std::map<std::string, std::string>& changes) {
    std::vector<std::string> result;
    for (char** entry = environ; *entry != nullptr; ++entry) {
        if (!changes.contains(std::string(*entry, std::strcspn(*entry, "=")))) {
            result.emplace_back(*entry);
        }
    }
    for (const auto& [name, value] : changes) {
        if (!value.empty()) {
            result.emplace_back(name).append("=").append(value);
        }
    }
    return result;
}

/** The fields of /proc/<id>/stat behind the program's name: state, parent, ... */
std::vector<std::string> StatFields(const fs::path& folder) {
    const std::string text = ReadFile(folder / "stat");
    std::istringstream fields(text.substr(std::min(text.size(), text.rfind(')') + 1)));
    return {std::istream_iterator<std::string>(fields), {}};
}

}  // namespace

ChildProcess::ChildProcess(const ProcessOptions& options) : m_outputFolder(options.outputFolder) {
    std::vector<std::string> command = options.command;
    std::vector<std::string> environment = Environment(options.environment);
    const std::vector<char*> arguments = Pointers(command);
    const std::vector<char*> variables = Pointers(environment);
    const std::string output = (m_outputFolder / "stdout.txt").string();
    const std::string errors = (m_outputFolder / "stderr.txt").string();
    m_id = fork();
    if (m_id < 0) {
        throw std::system_error(errno, std::generic_category(), "fork");
    }
    if (m_id == 0) {
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        const int flags = O_WRONLY | O_CREAT | O_TRUNC | O_APPEND;
        dup2(open("/dev/null", O_RDONLY), STDIN_FILENO);
        dup2(open(output.c_str(), flags, 0644), STDOUT_FILENO);
        dup2(open(errors.c_str(), flags, 0644), STDERR_FILENO);
        for (int handle = 3; handle < 1024; ++handle) {
            close(handle);
        }
        if (options.descriptorLimit) {
            const rlimit limit{*options.descriptorLimit, *options.descriptorLimit};
            setrlimit(RLIMIT_NOFILE, &limit);
        }
        execvpe(arguments[0], arguments.data(), variables.data());
        _exit(127);
    }
}

ChildProcess::~ChildProcess() {
    if (Running()) {
        Send(EnSignal::Kill);
        WaitExit();
    }
}

void ChildProcess::Send(EnSignal signal) {
    static const std::map<EnSignal, int> numbers = {{EnSignal::Terminate, SIGTERM},
                                                    {EnSignal::Kill, SIGKILL},
                                                    {EnSignal::Pause, SIGSTOP},
                                                    {EnSignal::Resume, SIGCONT}};
    if (!m_status) {
        kill(m_id, numbers.at(signal));
    }
}

std::optional<int> ChildProcess::WaitExit(milliseconds limit) {
    WaitUntil(
        [this] {
            int status = 0;
            if (!m_status && waitpid(m_id, &status, WNOHANG) == m_id) {
                m_status = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
            }
            return m_status.has_value();
        },
        limit);
    return m_status;
}

std::string ChildProcess::Output() const {
    return ReadFile(m_outputFolder / "stdout.txt");
}

std::string ChildProcess::ErrorOutput() const {
    return ReadFile(m_outputFolder / "stderr.txt");
}

std::size_t ChildProcess::ResidentBytes() const {
    std::istringstream lines(ReadFile("/proc/" + std::to_string(m_id) + "/status"));
    for (std::string line; std::getline(lines, line);) {
        if (line.starts_with("VmRSS:")) {
            return std::stoul(line.substr(6)) * 1024;
        }
    }
    return 0;
}

std::size_t ChildProcess::Descriptors() const {
    const fs::directory_iterator entries("/proc/" + std::to_string(m_id) + "/fd");
    return static_cast<std::size_t>(std::distance(fs::begin(entries), fs::end(entries)));
}

double ChildProcess::ProcessorSeconds() const {
    double ticks = 0;
    for (const fs::directory_entry& entry : fs::directory_iterator("/proc")) {
        const std::string name = entry.path().filename().string();
        if (name.find_first_not_of("0123456789") != std::string::npos) {
            continue;
        }
        const std::vector<std::string> fields = StatFields(entry.path());
        if (fields.size() > 12 && (name == std::to_string(m_id) || fields[1] == std::to_string(m_id))) {
            ticks += std::stod(fields[11]) + std::stod(fields[12]);
        }
    }
    return ticks / static_cast<double>(sysconf(_SC_CLK_TCK));
}

}  // namespace support

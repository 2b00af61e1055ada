#include "simulation/ChildProcess.h"
#include "simulation/TemporaryFolder.h"

#include <csignal>
#include <ctime>
#include <iterator>
#include <sstream>
#include <system_error>

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

namespace simulation {

namespace {

std::string ProcFile(int id, const char* name) {
    return "/proc/" + std::to_string(id) + "/" + name;
}

double Seconds(int id) {
    clockid_t clock = 0;
    timespec time{};
    clock_getcpuclockid(id, &clock);
    clock_gettime(clock, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) / 1e9;
}

}  // namespace

ChildProcess::ChildProcess(const ProcessOptions& options) : m_outputFolder(options.outputFolder) {
    // The kernel ends the child when the test ends in whatever way.
    std::vector<std::string> words = {"setpriv", "--pdeathsig", "KILL"};
    if (options.descriptorLimit) {
        words.insert(words.end(), {"prlimit", "--nofile=" + std::to_string(*options.descriptorLimit)});
    }
    words.emplace_back("env");
    words.insert(words.end(), options.environment.begin(), options.environment.end());
    words.insert(words.end(), options.command.begin(), options.command.end());
    std::vector<char*> arguments;
    arguments.reserve(words.size() + 1);
    for (std::string& word : words) {
        arguments.push_back(word.data());
    }
    arguments.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    const int flags = O_WRONLY | O_CREAT | O_TRUNC | O_APPEND;
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, (m_outputFolder / "stdout.txt").c_str(), flags,
                                     0644);
    posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, (m_outputFolder / "stderr.txt").c_str(), flags,
                                     0644);
    const int error = posix_spawnp(&m_id, arguments[0], &actions, nullptr, arguments.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    if (error != 0) {
        throw std::system_error(error, std::generic_category(), "posix_spawnp");
    }
}

ChildProcess::~ChildProcess() {
    if (Running()) {
        Send(EnSignal::Kill);
        WaitExit();
    }
}

void ChildProcess::Send(EnSignal signal) const {
    if (!m_status) {
        kill(m_id, signal == EnSignal::Kill ? SIGKILL : signal == EnSignal::HangUp ? SIGHUP : SIGTERM);
    }
}

std::optional<int> ChildProcess::WaitExit(milliseconds limit) {
    const auto ended = [this] {
        int status = 0;
        if (!m_status && waitpid(m_id, &status, WNOHANG) == m_id) {
            m_status = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
        }
        return m_status.has_value();
    };
    WaitUntil(ended, limit);
    return m_status;
}

std::string ChildProcess::Output() const {
    return ReadFile(m_outputFolder / "stdout.txt");
}

std::string ChildProcess::ErrorOutput() const {
    return ReadFile(m_outputFolder / "stderr.txt");
}

std::size_t ChildProcess::ResidentBytes() const {
    std::istringstream pages(ReadFile(ProcFile(m_id, "statm")));  // the second number is what is resident
    std::size_t count = 0;
    pages >> count >> count;
    return count * static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
}

std::size_t ChildProcess::Descriptors() const {
    const std::filesystem::directory_iterator entries(ProcFile(m_id, "fd"));
    return static_cast<std::size_t>(std::distance(begin(entries), end(entries)));
}

double ChildProcess::ProcessorSeconds() const {
    double sum = Seconds(m_id);
    std::istringstream children(
        ReadFile(ProcFile(m_id, ("task/" + std::to_string(m_id) + "/children").c_str())));
    for (int id = 0; children >> id;) {
        sum += Seconds(id);
    }
    return sum;
}

}  // namespace simulation

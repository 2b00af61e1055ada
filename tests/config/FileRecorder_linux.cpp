// Stands in for the functions of the C library by which files are changed: records what they do, and does it.

#include "simulation/TemporaryFolder.h"
#include "tests/config/FileRecorder.h"

#include <array>
#include <cstdarg>
#include <cstdio>

#include <dlfcn.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {

thread_local bool t_isRecording = false;  // of the thread that asked for it alone
std::string g_folder;
std::vector<SFileStep> g_steps;

template <typename Function>
Function* Real(const char* name, Function* /*type*/) {
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

void Record(SFileStep::EnKind kind, const std::string& path, std::string text = {}) {
    if (t_isRecording && path.starts_with(g_folder)) {
        g_steps.push_back({kind, path, std::move(text)});
    }
}

std::string PathOf(int fd) {
    if (!t_isRecording) {
        return {};
    }
    std::array<char, 4096> path{};
    const ssize_t length =
        readlink(("/proc/self/fd/" + std::to_string(fd)).c_str(), path.data(), path.size());
    return length > 0 ? std::string(path.data(), static_cast<std::size_t>(length)) : std::string();
}

/** Records a step whose call has succeeded. @return the result of the call */
template <typename Result>
Result Recorded(bool isDone, Result result, SFileStep::EnKind kind, const char* path, std::string text = {}) {
    if (isDone) {
        Record(kind, path, std::move(text));
    }
    return result;
}

}  // namespace

// Seen by the C++ library as well.
#pragma GCC visibility push(default)

extern "C" {

int open(const char* path, int flags, ...) {
    va_list arguments;
    va_start(arguments, flags);
    const int fd = Real("open", open)(path, flags, (flags & O_CREAT) != 0 ? va_arg(arguments, mode_t) : 0);
    va_end(arguments);
    return Recorded(fd >= 0 && (flags & O_TRUNC) != 0, fd, SFileStep::Make, path);
}

FILE* fopen64(const char* path, const char* mode) {
    FILE* file = Real("fopen64", fopen64)(path, mode);
    return Recorded(file != nullptr && mode[0] == 'w', file, SFileStep::Make, path);
}

ssize_t write(int fd, const void* bytes, size_t size) {
    const ssize_t written = Real("write", write)(fd, bytes, size);
    if (written > 0) {
        Record(SFileStep::Write, PathOf(fd), {static_cast<const char*>(bytes), static_cast<size_t>(written)});
    }
    return written;
}

int fsync(int fd) {
    Record(SFileStep::Flush, PathOf(fd));
    return Real("fsync", fsync)(fd);
}

int rename(const char* from, const char* to) noexcept {
    const int result = Real("rename", rename)(from, to);
    return Recorded(result == 0, result, SFileStep::Rename, from, to);
}

int unlink(const char* path) noexcept {
    const int result = Real("unlink", unlink)(path);
    return Recorded(result == 0, result, SFileStep::Remove, path);
}

int remove(const char* path) noexcept {
    const int result = Real("remove", remove)(path);
    return Recorded(result == 0, result, SFileStep::Remove, path);
}

int mkdir(const char* path, mode_t mode) noexcept {
    const int result = Real("mkdir", mkdir)(path, mode);
    return Recorded(result == 0, result, SFileStep::MakeFolder, path);
}

}  // extern "C"

#pragma GCC visibility pop

void StartRecording(const fs::path& folder) {
    g_steps.clear();
    g_folder = folder.string();
    t_isRecording = true;
}

std::vector<SFileStep> StopRecording() {
    t_isRecording = false;
    return std::move(g_steps);
}

constexpr std::size_t kIsFolder = static_cast<std::size_t>(-1);

CDiskModel::CDiskModel(const fs::path& folder) {
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(folder)) {
        m_names[entry.path().string()] = entry.is_directory() ? kIsFolder : m_files.size();
        if (!entry.is_directory()) {
            const std::string bytes = simulation::ReadFile(entry.path());
            m_files.push_back({bytes, bytes});
        }
    }
    m_safeNames = m_names;
}

void CDiskModel::Do(const SFileStep& step) {
    const auto named = m_names.find(step.path);
    const bool isFile = named != m_names.end() && named->second != kIsFolder;
    switch (step.kind) {
        case SFileStep::Make:
            if (isFile) {
                m_files[named->second].bytes.clear();
            } else {
                m_names[step.path] = m_files.size();
                m_files.emplace_back();
            }
            break;
        case SFileStep::Write:
            m_files.at(m_names.at(step.path)).bytes += step.text;
            break;
        case SFileStep::Rename:
            m_names[step.text] = m_names.at(step.path);
            m_names.erase(step.path);
            break;
        case SFileStep::Remove:
            m_names.erase(step.path);
            break;
        case SFileStep::MakeFolder:
            m_names[step.path] = kIsFolder;
            break;
        case SFileStep::Flush:
            if (isFile) {
                m_files[named->second].safeBytes = m_files[named->second].bytes;
                break;
            }
            const auto isInside = [&step](const auto& name) {
                return fs::path(name.first).parent_path() == step.path;
            };
            std::erase_if(m_safeNames, isInside);
            for (const auto& name : m_names) {
                if (isInside(name)) {
                    m_safeNames.insert(name);
                }
            }
    }
}

void CDiskModel::RestoreTo(const fs::path& folder, EnCut cut) const {
    for (const fs::directory_entry& entry : fs::directory_iterator(folder)) {
        fs::remove_all(entry.path());
    }
    for (const auto& [path, number] : cut == EnCut::LosesAll ? m_safeNames : m_names) {
        if (number == kIsFolder) {
            fs::create_directory(path);
        } else if (fs::exists(fs::path(path).parent_path())) {  // else its folder was lost
            const SFile& file = m_files[number];
            const bool isEmptied = cut == EnCut::LosesBytes && file.bytes != file.safeBytes;
            simulation::WriteFile(path, cut == EnCut::LosesNone ? file.bytes
                                        : isEmptied             ? std::string()
                                                                : file.safeBytes);
        }
    }
}

#include "platform/FolderNames.h"

#include "platform/Paths.h"

#include <memory>

#include <windows.h>

std::vector<std::string> NamesInFolder(const std::string& path) {
    struct SClose {
        void operator()(void* search) const { FindClose(search); }
    };
    std::vector<std::string> names;
    WIN32_FIND_DATAW entry{};
    const HANDLE first = FindFirstFileW((PathFromNarrow(path) / L"*").c_str(), &entry);
    if (first == INVALID_HANDLE_VALUE) {
        return names;
    }
    const std::unique_ptr<void, SClose> search(first);
    do {
        names.push_back(NarrowFromPath(std::filesystem::path(entry.cFileName)));
    } while (FindNextFileW(search.get(), &entry) != 0);
    std::erase(names, ".");
    std::erase(names, "..");
    return names;
}

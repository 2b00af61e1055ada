#include "platform/FolderNames.h"

#include <memory>

#include <dirent.h>

std::vector<std::string> NamesInFolder(const std::string& path) {
    struct SClose {
        void operator()(DIR* folder) const { closedir(folder); }
    };
    std::vector<std::string> names;
    const std::unique_ptr<DIR, SClose> folder(opendir(path.c_str()));
    while (const dirent* entry = folder ? readdir(folder.get()) : nullptr) {
        names.emplace_back(entry->d_name);
    }
    std::erase(names, ".");
    std::erase(names, "..");
    return names;
}

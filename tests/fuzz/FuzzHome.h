#pragma once

#include "include/GlobalConfig.h"
#include "simulation/Machine.h"
#include "simulation/TemporaryFolder.h"

#include <filesystem>

/** A home of its own for the targets that use files: where the user's documents lie, the folder is made. */
inline const std::filesystem::path& FuzzHome() {
    struct Home {
        Home() {
            simulation::SetHome(folder.Path());
            documents = GetConfigInstance().user_data_path;
        }
        simulation::TemporaryFolder folder;
        std::filesystem::path documents;
    };
    static const Home home;
    return home.documents;
}

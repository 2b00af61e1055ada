#pragma once

#include "versions/InterfaceMatch.h"

#include <string>
#include <vector>

/** What a restoration has done. */
struct SRestored {
    std::string kept;  ///< the generation that holds what was there before
    std::vector<SMissingInterface> missing;
};

/** Keeps what is there as a generation. @return its id @throw CVersionProblem */
std::string KeepPresent();

/**
 * Keeps what is there, and replaces pages, materials, component interactions and what devices are asked by
 * those of a generation, all or nothing. The interfaces stay; commands and devices are fitted to them
 * (versions/InterfaceMatch.h). Blocks for the disk. Any thread; one restoration at a time.
 * @throw CVersionProblem when nothing has been restored
 */
SRestored RestoreVersion(const std::string& id);

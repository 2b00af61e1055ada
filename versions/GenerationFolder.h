#pragma once

#include <array>
#include <chrono>
#include <cstdint>
#include <filesystem>
#include <map>
#include <string>
#include <vector>

// What stands in the folder Backup: one folder for each generation, with up to five documents. A generation
// is complete or absent, since it is written and removed under another name.

/** Documents of a generation. */
inline constexpr std::array<const char*, 5> kGenerationDocuments = {
    "layout.json", "materials.json", "componentConfig.json", "interFace.json", "equipment.json"};

/** Texts of documents, by file name. Missing ones are left out. */
using DocumentTexts = std::map<std::string, std::string>;

/** The documents of the user data folder as they are, or as a start would load them. */
DocumentTexts ReadPresentDocuments(const std::filesystem::path& folder);

/**
 * The documents of a generation.
 * @throw CVersionProblem when there is no such generation (any more), or a document can't be read
 */
DocumentTexts ReadGeneration(const std::filesystem::path& generation);

/** Sizes in bytes of a generation's documents, by file name. */
std::map<std::string, std::uintmax_t> SizesOfGeneration(const std::filesystem::path& generation);

/** Of all documents together, in bytes. */
std::uintmax_t SizeOfGeneration(const std::filesystem::path& generation);

/** The existing generations, ascending. Any thread. */
std::vector<std::chrono::local_seconds> ListGenerations(const std::filesystem::path& backups);

/** Removes what an earlier process has left unfinished. Not while a generation is written or removed. */
void RemoveUnfinishedGenerations(const std::filesystem::path& backups);

/** Writes a generation, and the folder Backup if need be. @throw std::exception  there is none then */
void WriteGeneration(const std::filesystem::path& backups, std::chrono::local_seconds time,
                     const DocumentTexts& documents);

/** Removes a generation; one that is in use elsewhere may stay. */
void RemoveGeneration(const std::filesystem::path& backups, std::chrono::local_seconds time);

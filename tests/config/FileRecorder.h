#pragma once

#include <filesystem>
#include <map>
#include <string>
#include <vector>

/** One operation of this process on a file or folder. */
struct SFileStep {
    enum EnKind { Make, Write, Flush, Rename, Remove, MakeFolder } kind;
    std::string path;
    std::string text;  ///< Write: the bytes; Rename: the new name
};

/** Begins to record the steps below the folder. One thread at a time. */
void StartRecording(const std::filesystem::path& folder);

/** Ends the recording. @return the steps, in order */
std::vector<SFileStep> StopRecording();

/** What remains, after a power cut, of the steps whose effect was not flushed to the disk. */
enum class EnCut {
    LosesAll,    ///< nothing of them
    LosesBytes,  ///< names and lengths: files that were emptied, made or renamed, without their bytes
    LosesNone,   ///< all of them: the process alone was ended
};

/**
 * Files below a folder, as they are and as they would be after a power cut. The content of a file is safe
 * once the file was flushed, its name once its folder was.
 */
class CDiskModel {
  public:
    /** Regards the existing files as safe. */
    explicit CDiskModel(const std::filesystem::path& folder);

    void Do(const SFileStep& step);

    /** Puts the folder into the state that a power cut leaves. */
    void RestoreTo(const std::filesystem::path& folder, EnCut cut) const;

  private:
    struct SFile {
        std::string bytes, safeBytes;
    };
    using Names = std::map<std::string, std::size_t>;  ///< full paths, and the files that they name

    std::vector<SFile> m_files;
    Names m_names, m_safeNames;
};

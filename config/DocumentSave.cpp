#include "config/DocumentSave.h"

#include "config/BrokenFile.h"
#include "config/DocumentBackup.h"
#include "config/JsonRelease.h"
#include "config/SaveMark.h"
#include "platform/DurableFile.h"
#include "platform/Paths.h"
#include "platform/RavLog.h"

#include <filesystem>
#include <utility>

namespace fs = std::filesystem;

namespace {

/** Flushes the written document and its name to the disk: it may be the first document of its path. */
std::error_code FlushDocument(const std::string& path) {
    if (const std::error_code error = FlushFile(path)) {
        return error;
    }
    std::error_code error;
    const fs::path file = fs::canonical(PathFromNarrow(path), error);
    return error ? error : FlushFolder(NarrowFromPath(file.parent_path()));
}

}  // namespace

CDocumentSave::CDocumentSave(nlohmann::json document, const std::string& path, EnKeep keep,
                             const std::function<void(const std::string&)>* beforeWrite) noexcept
    : m_document(std::move(document)), m_path(path), m_keep(keep), m_beforeWrite(beforeWrite) {}

std::optional<SSaveProblem> CDocumentSave::Try() {
    if (!m_text) {
        try {
            m_text = SerialiseDocument(m_document);
        } catch (const nlohmann::json::exception&) {
            // Such a document leaves an existing, empty file (see SaveJsonToFile).
            return WriteInPlace(m_path,
                                [this](std::ostream& file) { file << SerialiseDocument(m_document); });
        }
        ReleaseJson(m_document);
    }
    if (m_beforeWrite != nullptr && *m_beforeWrite) {
        (*std::exchange(m_beforeWrite, nullptr))(m_path);
    }
    std::optional<SSaveProblem> problem;
    if (!m_hasBackup) {
        const std::error_code error = WriteBackup(m_path, *m_text);
        if (error == std::errc::no_space_on_device) {
            const std::string text = "SaveJsonToFile Error: " + error.message();
            return SSaveProblem{text, text, true};
        }
        m_hasBackup = !error;
        if (error) {
            problem = {{}, "the backup could not be written: " + error.message(), true};
        }
    }
    if (!m_isWritten) {
        if (auto failure = WriteDocument()) {
            return failure;
        }
        m_isWritten = true;
    }
    return problem;
}

std::optional<SSaveProblem> CDocumentSave::KeepWhatIsThere() {
    const SFileContent old = ReadFileContent(m_path);
    const bool isBroken =
        old.state == EnFileState::Unreadable ||
        (old.state == EnFileState::Read && m_keep == EnKeep::IfBroken && !IsWholeJson(old.bytes));
    if (isBroken || m_keep == EnKeep::Always) {
        if (const SKeptFile kept = KeepBrokenFile(m_path, old); kept.error) {
            return SSaveProblem{{},
                                "what is there can't be kept as <name>.broken, and is not overwritten: " +
                                    kept.error.message(),
                                true};
        }
    }
    m_keep = EnKeep::Nothing;
    if (!m_hasBackup) {
        return std::nullopt;
    }
    const std::error_code error = WriteSaveMark(m_path, old, *m_text);
    if (error == std::errc::no_space_on_device) {
        return SSaveProblem{{}, "SaveJsonToFile Error: " + error.message(), true};
    }
    if (error) {
        RavLog::WriteSystemLog(RavLog::Warn, "SaveJsonToFile",
                               "a power cut in this moment could leave an older document [" + m_path +
                                   "]: the mark beside its backup could not be written: " + error.message());
    }
    return std::nullopt;
}

std::optional<SSaveProblem> CDocumentSave::WriteDocument() {
    if (auto failure = KeepWhatIsThere()) {
        return failure;
    }
    if (auto failure = WriteInPlace(m_path, [this](std::ostream& file) { file << *m_text; })) {
        return failure;
    }
    if (const std::error_code error = FlushDocument(m_path)) {
        return SSaveProblem{{}, "the document could not be flushed to the disk: " + error.message(), true};
    }
    RemoveSaveMark(m_path);
    return std::nullopt;
}

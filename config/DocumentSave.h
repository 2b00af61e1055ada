#pragma once

#include "config/InPlaceSave.h"

#include <functional>
#include <optional>
#include <string>

#include <nlohmann/json.hpp>

/** What to keep as <name>.broken before a save overwrites it. */
enum class EnKeep {
    Nothing,
    IfBroken,  ///< a document that isn't one whole JSON value
    Always,    ///< whatever is there, since the start could not use all of it
};

/**
 * One save of a document: first to its backup, then in place
 * (docs/decisions/0007-documents-are-saved-in-place.md). Finished steps stay finished: another try does the
 * rest.
 *
 * The backup is on the disk before the document is touched. The document and its folder are on the disk when
 * the save is done. In between, a mark (SaveMark.h) shows a start which of the two is newer. When the disk is
 * full, existing files stay as they are: an old document is worth more than half a new one. One thread at a
 * time for one path.
 */
class CDocumentSave {
  public:
    /**
     * @param path         the document's file; it lives longer than the save
     * @param beforeWrite  called once, before anything is written; may be empty. It doesn't throw.
     */
    CDocumentSave(nlohmann::json document, const std::string& path, EnKeep keep = EnKeep::IfBroken,
                  const std::function<void(const std::string&)>* beforeWrite = nullptr) noexcept;

    /**
     * Does the remaining steps. Blocks for the disk.
     * @return nothing when all is done
     * @throw std::bad_alloc  nothing is lost; another try continues
     */
    [[nodiscard]] std::optional<SSaveProblem> Try();

    /** What another save of this path has to keep if it replaces this one. */
    EnKeep WhatIsToBeKept() const noexcept { return m_keep; }

  private:
    [[nodiscard]] std::optional<SSaveProblem> WriteDocument();
    [[nodiscard]] std::optional<SSaveProblem> KeepWhatIsThere();

    nlohmann::json m_document;
    const std::string& m_path;
    EnKeep m_keep;
    const std::function<void(const std::string&)>* m_beforeWrite;
    std::optional<std::string> m_text;  ///< text of the document, made by the first try
    bool m_hasBackup = false;
    bool m_isWritten = false;
};

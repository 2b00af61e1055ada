#pragma once

#include "platform/Mutex.h"

#include <cstdint>
#include <memory>
#include <string>

#include <nlohmann/json.hpp>

/**
 * The JSON text of a document, made when it is first asked for and kept until the document changes: documents
 * are read far more often than they change, and making the text takes longer than all the rest of a reply.
 */
class CDocumentText {
  public:
    using Text = std::shared_ptr<const std::string>;

    /**
     * The text without blanks, keys in the order of the JSON library; null for a null document. Any thread,
     * without the lock, which is taken for the look at the document and not while the text is made.
     * @param mutex  lock of the document
     */
    Text Get(CSharedMutex& mutex, const nlohmann::json& document);

    /** The document changes. With its lock held exclusively. */
    void Forget();

  private:
    Text m_text;  // both under the lock of the document
    std::uint64_t m_version = 0;
};

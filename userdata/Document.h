#pragma once

#include "platform/Mutex.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include <nlohmann/json.hpp>

/** A document at one moment, as it is sent. Never changes, so any thread may read it. */
class CDocumentState {
  public:
    /** Takes about as long as the JSON library needs for the text, and half of that for the tag. */
    explicit CDocumentState(const nlohmann::json& document);

    /** Without blanks, keys in the order of the JSON library; empty for a null document. */
    const std::string& Json() const { return m_json; }

    /**
     * Names the state: 32 hexadecimal digits that are made of the text, so that the same content has the same
     * tag, also after a restart, and another one has another.
     */
    const std::string& Tag() const { return m_tag; }

    using Packed = std::shared_ptr<const std::string>;

    /**
     * The text in another form, compressed say, made at the first call and kept as long as the state.
     * @param make  called once for each state, without a lock; what it throws passes, and null stays then
     * @return null also while another thread is still making it: nobody waits for that
     */
    Packed PackedBy(const std::function<Packed()>& make) const;

  private:
    std::string m_json;
    std::string m_tag;
    mutable CMutex m_packMutex;
    mutable bool m_isPackingBegun GUARDED_BY(m_packMutex) = false;
    mutable Packed m_packed GUARDED_BY(m_packMutex);
};

/**
 * The state of a document, made when it is first asked for and kept until the document changes: documents
 * are read far more often than they change, and making the text takes longer than all the rest of a reply.
 */
class CDocument {
  public:
    using State = std::shared_ptr<const CDocumentState>;

    /**
     * The state, never null. Any thread, without the lock, which is taken for the look at the document and
     * not while the text is made.
     * @param mutex  lock of the document
     */
    State Get(CSharedMutex& mutex, const nlohmann::json& document);

    // With the document's lock held exclusively:

    /** The document changes. */
    void Forget();

    /** The document changes, and this is its state from now on. */
    void Replace(State state);

    /** Whether the document is still in this state, which Get has handed out. False also when nobody knows.
     */
    bool Is(const State& state) const { return m_state == state; }

  private:
    State m_state;  // both under the lock of the document
    std::uint64_t m_version = 0;
};

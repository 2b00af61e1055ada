#pragma once

#include "config/JsonFileWriter.h"
#include "platform/Mutex.h"
#include "userdata/DocumentPath.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <utility>

#include <nlohmann/json.hpp>

/**
 * The state of a document at one moment, in the form in which it is sent. Never changes, so any thread may
 * read it.
 */
class CDocumentState {
  public:
    /** Takes as long as the JSON library needs for the text, and half of that again for the tag. */
    explicit CDocumentState(const nlohmann::json& document);

    /** Without blanks, keys in the order of the JSON library; empty for a null document. */
    const std::string& Json() const { return m_json; }

    /**
     * Identifies the state: 32 hexadecimal digits computed from the text. The same content has the same tag,
     * also after a restart; other content has another.
     */
    const std::string& Tag() const { return m_tag; }

    using Packed = std::shared_ptr<const std::string>;

    /**
     * The text in another form, for example compressed. It is made at the first call and kept as long as the
     * state.
     * @param make  called once for each state, without a lock. If it throws, the exception goes on to the
     * caller, and the form stays null.
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
 * A document of the user: its value, its lock (both owned by somebody else), its file, and the state in which
 * it is sent. That state is made when it is first asked for and kept until the document changes. Documents
 * are read far more often than they change, and making the text takes longer than all the rest of a reply.
 *
 * All changes of the document go through this class, so that no state outlives the value from which it was
 * made, and so that each change is saved. Any thread; only Load and IsStored wait for the disk.
 */
class CDocument {
  public:
    using State = std::shared_ptr<const CDocumentState>;

    /**
     * Whether a document may be replaced while its state has this tag. Called without a lock, and possibly
     * more than once.
     */
    using StateCheck = std::function<bool(const std::string& tag)>;

    /**
     * All of these live longer than the document.
     * @param mutex   lock of the value
     * @param writer  saves the changes
     * @param name    of the file, with a leading "/": see DocumentPath
     */
    CDocument(CSharedMutex& mutex, nlohmann::json& value, CJsonFileWriter& writer, const char* name)
        : m_mutex(mutex), m_value(value), m_writer(writer), m_name(name) {}
    CDocument(const CDocument&) = delete;
    CDocument& operator=(const CDocument&) = delete;

    /** Where the document is saved. */
    std::string Path() const { return DocumentPath(m_name); }

    /** Whether there is a file or a backup of it. Blocks for the disk. */
    bool IsStored() const;

    /** Forgets a value that can't be used. Its file stays, and the next save keeps it as <name>.broken. */
    void SetAside();

    /** Takes the value from the file, or from its backup (see RestoreFromBackup). Blocks for the disk. */
    void Load();

    /** A copy of the value. */
    nlohmann::json Copy() const { return CopyUnder(m_mutex, m_value); }

    /** The present state, never null. The text is made without the lock. */
    State GetState();

    /** Replaces the value and saves it. */
    void Set(nlohmann::json document);

    /**
     * As Set, but only when the present state passes the check. No other change comes between check and
     * replacement: of two writers that name the same state, one succeeds.
     * @return the state that is stored now; null when the check failed, and nothing has changed then
     */
    [[nodiscard]] State ReplaceIf(nlohmann::json document, const StateCheck& check);

    /** Calls look with the value, a const nlohmann::json&, under the shared lock, and returns what it
     * returns. */
    template <typename Look>
    auto Read(Look look) const {
        const CSharedLock lock(m_mutex);
        return look(std::as_const(m_value));
    }

    /** Calls change with the value, an nlohmann::json&, under the exclusive lock, and saves it. */
    template <typename Change>
    void Update(Change change) {
        const CLock lock(m_mutex);
        TakeState(nullptr);
        change(m_value);
        m_writer.SaveAsync(m_value, Path());
    }

  private:
    /** Marks a change of the document. @param state  its new state; null: made when it is asked for */
    void TakeState(State state) REQUIRES_LOCK(m_mutex);

    CSharedMutex& m_mutex;
    nlohmann::json& m_value GUARDED_BY(m_mutex);
    CJsonFileWriter& m_writer;
    const char* const m_name;
    State m_state GUARDED_BY(m_mutex);  ///< null until somebody asks for it
    std::uint64_t m_version GUARDED_BY(m_mutex) = 0;
};

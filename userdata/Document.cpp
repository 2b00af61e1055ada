#include "userdata/Document.h"

#include "config/DocumentBackup.h"
#include "config/JsonFile.h"
#include "config/JsonRelease.h"
#include "platform/Paths.h"

#include <filesystem>

#include <boost/uuid/name_generator_md5.hpp>

namespace {

/**
 * The 128 bits of a name-based identifier. It distinguishes states and protects nothing, so a fast hash is
 * enough.
 */
std::string TagOf(const std::string& text) {
    constexpr const char* digits = "0123456789abcdef";
    const boost::uuids::uuid id = boost::uuids::name_generator_md5(boost::uuids::ns::oid())(text);
    std::string tag;
    for (const unsigned byte : id) {
        tag += digits[byte / 16];
        tag += digits[byte % 16];
    }
    return tag;
}

}  // namespace

CDocumentState::CDocumentState(const nlohmann::json& document)
    : m_json(document.is_null() ? std::string() : document.dump()), m_tag(TagOf(m_json)) {}

CDocumentState::Packed CDocumentState::PackedBy(const std::function<Packed()>& make) const {
    {
        const CLock lock(m_packMutex);
        if (std::exchange(m_isPackingBegun, true)) {
            return m_packed;
        }
    }
    Packed packed = make();
    const CLock lock(m_packMutex);
    m_packed = packed;
    return packed;
}

bool CDocument::IsStored() const {
    std::error_code error;
    const auto exists = [&error](const std::string& path) {
        return std::filesystem::exists(PathFromNarrow(path), error);
    };
    return exists(Path()) || exists(BackupPath(Path()));
}

void CDocument::SetAside() {
    m_writer.KeepBeforeNextSave(Path());
    nlohmann::json none;
    const CLock lock(m_mutex);
    TakeState(nullptr);
    m_value.swap(none);
}

void CDocument::Load() {
    nlohmann::json loaded = LoadJsonFromFile(RestoreFromBackup(Path()));
    const CLock lock(m_mutex);
    TakeState(nullptr);
    m_value.swap(loaded);
}

CDocument::State CDocument::GetState() {
    nlohmann::json copy;
    const CJsonRelease release(copy);
    std::uint64_t version = 0;
    {
        const CSharedLock lock(m_mutex);
        if (m_state) {
            return m_state;
        }
        copy = m_value;
        version = m_version;
    }
    auto state = std::make_shared<const CDocumentState>(copy);
    const CLock lock(m_mutex);
    if (m_version != version) {
        return state;  // what the document was when it was asked for
    }
    if (!m_state) {
        m_state = std::move(state);
    }
    return m_state;
}

void CDocument::Set(nlohmann::json document) {
    const CJsonRelease release(document);
    nlohmann::json saved = document;
    const std::string path = Path();
    const CLock lock(m_mutex);
    TakeState(nullptr);
    m_value.swap(document);  // what was held is destroyed after the lock
    m_writer.SaveAsync(std::move(saved), path);
}

CDocument::State CDocument::ReplaceIf(nlohmann::json document, const StateCheck& check) {
    const CJsonRelease release(document);
    auto next = std::make_shared<const CDocumentState>(document);
    nlohmann::json saved = document;
    const std::string path = Path();
    for (;;) {
        const State present = GetState();
        if (!check(present->Tag())) {
            return nullptr;
        }
        const CLock lock(m_mutex);
        if (m_state == present) {  // else another write was faster, and its state is the one to look at
            TakeState(next);
            m_value.swap(document);
            m_writer.SaveAsync(std::move(saved), path);
            return next;
        }
    }
}

void CDocument::TakeState(State state) {
    m_state = std::move(state);
    ++m_version;
}

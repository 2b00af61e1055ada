#include "userdata/Document.h"

#include "config/JsonRelease.h"

#include <utility>

#include <boost/uuid/name_generator_md5.hpp>

namespace {

/** The 128 bits of a name-based identifier. It tells states apart and keeps nobody out, so that its speed
 * counts. */
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

CDocument::State CDocument::Get(CSharedMutex& mutex, const nlohmann::json& document) {
    nlohmann::json copy;
    const CJsonRelease release(copy);
    std::uint64_t version = 0;
    {
        const CSharedLock lock(mutex);
        if (m_state) {
            return m_state;
        }
        copy = document;
        version = m_version;
    }
    auto state = std::make_shared<const CDocumentState>(copy);
    const CLock lock(mutex);
    if (m_version != version) {
        return state;  // what the document was when it was asked for
    }
    if (!m_state) {
        m_state = std::move(state);
    }
    return m_state;
}

void CDocument::Forget() {
    Replace(nullptr);
}

void CDocument::Replace(State state) {
    m_state = std::move(state);
    ++m_version;
}

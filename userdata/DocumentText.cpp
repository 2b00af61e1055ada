#include "userdata/DocumentText.h"

#include <utility>

CDocumentText::Text CDocumentText::Get(CSharedMutex& mutex, const nlohmann::json& document) {
    nlohmann::json copy;
    std::uint64_t version = 0;
    {
        const CSharedLock lock(mutex);
        if (m_text || document.is_null()) {
            return m_text;
        }
        copy = document;
        version = m_version;
    }
    Text text = std::make_shared<const std::string>(copy.dump());
    const CLock lock(mutex);
    if (m_version == version) {
        m_text = text;
    }
    return text;
}

void CDocumentText::Forget() {
    m_text.reset();
    ++m_version;
}

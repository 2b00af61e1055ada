#include "userdata/InterfaceOrder.h"

void CInterfaceOrder::Add(std::int32_t nodeId, bool isNet) {
    const auto [place, isNew] = m_places.try_emplace(nodeId, m_entries.size());
    if (!isNew) {
        m_entries[place->second].isNet = isNet;
        return;
    }
    try {
        m_entries.push_back({nodeId, isNet});
    } catch (...) {
        m_places.erase(place);
        throw;
    }
}

void CInterfaceOrder::Remove(std::int32_t nodeId) {
    const auto found = m_places.find(nodeId);
    if (found == m_places.end()) {
        return;
    }
    const std::size_t place = found->second;
    m_places.erase(found);
    m_entries.erase(m_entries.begin() + static_cast<std::ptrdiff_t>(place));
    for (std::size_t i = place; i < m_entries.size(); ++i) {
        m_places.find(m_entries[i].nodeId)->second = i;
    }
}

void CInterfaceOrder::Clear() {
    m_entries.clear();
    m_places.clear();
}

#include "platform/GeneratorId.h"

#include <algorithm>
#include <limits>
#include <stdexcept>

CGeneratorId* CGeneratorId::getInstance() {
    static CGeneratorId instance;
    return &instance;
}

void CGeneratorId::Initialize(const std::set<int>& ids) {
    const CLock lock(m_mutex);
    m_taken = ids;
    if (!ids.empty()) {
        See(*ids.rbegin());
    }
}

int CGeneratorId::GetId() {
    const CLock lock(m_mutex);
    if (m_highest < std::numeric_limits<int>::max()) {
        m_taken.insert(m_taken.end(), ++m_highest);
        return m_highest;
    }
    // The lowest gap: walk up from 1 as long as the taken ids follow each other.
    int id = 1;
    for (auto taken = m_taken.lower_bound(id); taken != m_taken.end() && *taken == id; ++taken) {
        if (id == std::numeric_limits<int>::max()) {
            throw std::length_error("no node id is free");
        }
        ++id;
    }
    m_taken.insert(id);
    return id;
}

void CGeneratorId::ReleaseId(int id) {
    const CLock lock(m_mutex);
    m_taken.erase(id);
    See(id);
}

void CGeneratorId::Clean() {
    const CLock lock(m_mutex);
    m_taken.clear();
}

void CGeneratorId::See(int id) {
    m_highest = std::max(m_highest, id);
}

#pragma once

#include "userdata/InterfaceModel.h"

#include <cstddef>
#include <cstdint>
#include <unordered_map>
#include <vector>

/** The interfaces in the order that the user sees, each once. Not for several threads at once. */
class CInterfaceOrder {
  public:
    /** Puts an interface last. One that has a place keeps it, and takes the new kind. */
    void Add(std::int32_t nodeId, bool isNet);

    /** The others keep their order. */
    void Remove(std::int32_t nodeId);

    void Clear();

    const std::vector<SInterfaceOrderEntry>& Entries() const { return m_entries; }

  private:
    std::vector<SInterfaceOrderEntry> m_entries;
    std::unordered_map<std::int32_t, std::size_t> m_places;  ///< in m_entries, by node id
};

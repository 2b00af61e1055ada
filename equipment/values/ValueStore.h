#pragma once

#include "equipment/values/EquipmentConfig.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

/** One moment on both clocks. */
struct SMoment {
    std::chrono::steady_clock::time_point steady;
    std::chrono::system_clock::time_point system;

    static SMoment Now() { return {std::chrono::steady_clock::now(), std::chrono::system_clock::now()}; }
};

/** A named value as it is told. */
struct SNamedValue {
    std::string name;
    ValueContent content;
    std::optional<std::chrono::system_clock::time_point> time{};  ///< when the device said it last
    bool isStale = true;  ///< the device may be in another state by now, or has said nothing yet
};

/** Values and the number of the last change of any value. */
struct SValueChanges {
    std::vector<SNamedValue> values;
    std::uint64_t last = 0;
};

/**
 * What the devices of a document have said. Each change of a value, or of its staleness, has a number;
 * numbers grow, also over a restart. One thread at a time.
 */
class CValueStore {
  public:
    /** @param start  where the numbers begin */
    explicit CValueStore(std::chrono::system_clock::time_point start);

    /** Takes the values of another document. One of the same name and interface keeps what it has. */
    void Configure(const SEquipmentConfig& config);

    /** The device has said this. @param index  SValueRule::index */
    void Note(std::size_t index, ValueContent content, const SMoment& now);

    /** The connection to the device is lost since then: what it said before is stale. */
    void NoteLost(std::size_t device, std::chrono::system_clock::time_point since);

    /**
     * The values that changed after a number, in the order of the document.
     * @param after  0 or a number of the future: all
     * @param names  of the values; null: of all. Unknown ones are ignored.
     */
    SValueChanges Read(std::uint64_t after, const std::set<std::string>* names, const SMoment& now);

    /** The devices of values; each is an index of SEquipmentConfig::devices. */
    std::set<std::size_t> DevicesOf(const std::set<std::string>& names) const;

  private:
    struct SEntry {
        SNamedValue value;
        std::size_t device = 0;
        std::int32_t nodeId = 0;
        std::uint64_t number = 0;                      ///< of the last change
        std::chrono::steady_clock::time_point said{};  ///< when the device said it last
    };

    void MakeStale(SEntry& entry);
    bool IsOld(const SEntry& entry, const SMoment& now) const;

    std::vector<SEntry> m_entries;                         ///< by SValueRule::index
    std::unordered_map<std::string, std::size_t> m_names;  ///< index by name
    std::vector<std::chrono::seconds> m_staleAfter;        ///< by device
    std::uint64_t m_last;
};

#pragma once

#include "equipment/values/EquipmentConfig.h"
#include "equipment/values/ValueStore.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string_view>
#include <vector>

/**
 * The beginnings of messages of all devices, and what their patterns find in whole messages. A device is an
 * index of SEquipmentConfig::devices. Each sender of a device has a stream of its own; of very many senders,
 * those that were silent longest are forgotten. One thread at a time.
 */
class CMessageStreams {
  public:
    using Time = std::chrono::steady_clock::time_point;

    /** Forgets everything. @param values  of the same document; lives as long as this */
    CMessageStreams(std::shared_ptr<const SEquipmentConfig> config, CValueStore& values);

    /**
     * A sender of a device has sent bytes.
     * @param sender      its number
     * @param isDatagram  silence follows
     * @return whether a message was too long
     */
    bool Add(std::size_t device, std::uint64_t sender, std::string_view bytes, bool isDatagram,
             const SMoment& now);

    /** Ends the messages after which it has been silent long enough. @return when to call it again, if ever
     */
    std::optional<Time> EndSilences(const SMoment& now);

    /** The senders of a device are gone. */
    void Forget(std::size_t device) { m_streams.at(device).clear(); }

  private:
    struct SStream {
        CMessageCutter cutter;
        Time last{};
    };

    void Understand(const SDeviceRule& rule, std::string_view message, const SMoment& now);
    SStream& StreamOf(std::size_t device, std::uint64_t sender);

    std::shared_ptr<const SEquipmentConfig> m_config;
    CValueStore* m_values;
    std::vector<std::map<std::uint64_t, SStream>> m_streams;  ///< by device, then by sender
    std::vector<std::string> m_captures;                      ///< kept for its memory
    std::vector<std::pair<std::size_t, ValueContent>> m_found;
};

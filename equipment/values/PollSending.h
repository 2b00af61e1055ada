#pragma once

#include "equipment/values/EquipmentConfig.h"
#include "platform/PortRecords.h"
#include "platform/PortReports.h"

#include <cstdint>
#include <optional>

/** The interface of a device: one of both. */
struct SPollTarget {
    std::optional<SNetPortConfig> net;
    std::optional<SSerialPortConfig> serial;

    SPortReport Report() const { return net ? ReportOfPort(*net) : ReportOfPort(*serial); }
};

/** The interface of a node id; nothing when there is none. Any thread. */
std::optional<SPollTarget> TargetOf(std::int32_t nodeId);

/**
 * Sends a poll, and waits a second at most for a device that does not answer. Any thread.
 * @return whether the system has taken it
 */
[[nodiscard]] bool SendPoll(std::int32_t nodeId, const SPoll& poll);

#pragma once

#include "platform/PortRecords.h"
#include "server/RouterMgr.h"

#include <nlohmann/json.hpp>

/**
 * Reads a network interface from a request.
 * @return false when it can't be stored; standard output or the trace's detail says why
 */
[[nodiscard]] bool ReadNetPort(const nlohmann::json& info, SNetPortConfig& config, SRequestTrace& trace);

/** As ReadNetPort, for a serial interface. */
[[nodiscard]] bool ReadSerialPort(const nlohmann::json& info, SSerialPortConfig& config,
                                  SRequestTrace& trace);

/** Closes the TCP connection of an abandoned record, unless an interface still has its end points. */
void CloseIfUnused(SNetPortConfig& old);

/**
 * A node id for a new interface. An edit of an unknown id stores an interface under the client's id, which
 * the pool doesn't know: such an id is skipped.
 */
int TakeNodeId();

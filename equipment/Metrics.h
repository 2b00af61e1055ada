#pragma once

#include "equipment/Health.h"

#include <string>

/**
 * The state of the server and the counters of clicks, replies and interfaces, in the text format of
 * Prometheus, version 0.0.4 (docs/http-api.md). Any thread.
 */
std::string MakeMetrics(const SHealth& health);

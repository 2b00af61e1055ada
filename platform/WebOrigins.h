#pragma once

#include <string>
#include <vector>

// What the server needs from the HTTP library beyond the interface of libhv. An installed libhv compares no
// origins, so its stand-in (libraries/libhv) logs in the system log that the names have no effect.

/**
 * Names of this server, in addition to those that the library knows by itself, under which a page may be
 * loaded and then write: "allowed_hosts" of LocalHost.config. Case, a port and a trailing dot are ignored.
 * Replaces the names of an earlier call. Any thread.
 */
void SetAllowedHosts(const std::vector<std::string>& names);

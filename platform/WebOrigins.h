#pragma once

#include <string>
#include <vector>

// What the server asks of the HTTP library beyond the interface of libhv. An installed libhv compares no
// origins, so its stand-in (libraries/libhv) says in the system log that the names are of no effect.

/**
 * Names of this server, beside those that the library knows by itself, under which a page may be loaded and
 * then write: "allowed_hosts" of LocalHost.config. Without case; a port or a dot at the end is passed over.
 * Replaces the names of an earlier call. Any thread.
 */
void SetAllowedHosts(const std::vector<std::string>& names);

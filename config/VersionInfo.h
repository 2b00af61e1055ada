#pragma once

struct SGlobalConfig;

/**
 * Fills in data of the machine and of the installation: the system language, from the locale name, and the
 * four lines of app_dir/Resource/Version.info (product name, version, build number, build time). A missing
 * file leaves the fields as they are; a missing line gives a default. Throws only for lack of memory.
 */
void LoadVersionInfo(SGlobalConfig& config);

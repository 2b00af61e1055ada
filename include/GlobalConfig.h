#pragma once

#include <cstdint>
#include <string>

#if defined(_WIN32)
#if defined(SERVER_BUILD)
#define SERVER_API __declspec(dllexport)
#else
#define SERVER_API __declspec(dllimport)
#endif
#else
#define SERVER_API __attribute__((visibility("default")))
#endif

/**
 * Ports, folders and version data of the server, built once per process and only read afterwards, by any
 * thread.
 *
 * Built on the first call of GetConfigInstance. It finds the folders, and reads the version data and the
 * system language. Then it reads LocalHost.config, or, if that is missing or empty, writes it with the values
 * below. A path is a narrow string in the process's code page.
 */
struct SGlobalConfig {
    std::int32_t http_port = 8086;          ///< port of the HTTP server
    std::int32_t websocket_port = 8081;     ///< port of the WebSocket server
    std::string log_level = "info";         ///< threshold of the application log, applied by the host
    std::string user_data_path;             ///< folder of the user documents
    std::string webui_path;                 ///< web root: app_dir/dist
    std::string index_path;                 ///< entry page of the browser application
    std::string app_dir;                    ///< installation folder: the host executable's
    std::string documents_dir;              ///< the user's Documents folder
    std::string resource_path;              ///< resources for download: app_dir/Resource
    std::string softwareName = "Varnholt";  ///< product name
    std::string version = "1.0";            ///< product version
    std::string buildVersion;               ///< build number; empty without a version file
    std::string buildTime;                  ///< build time; empty without a version file
    std::int32_t system_language = 0;       ///< 0: the system's locale is Chinese; 1: any other

    /**
     * Does all the work that is described above.
     * @throw std::filesystem::filesystem_error  when the configuration file's status or size can't be read or
     * its folder can't be created
     * @throw nlohmann::json::type_error  when a key of the file holds a value of the wrong type
     */
    SGlobalConfig();
};

/**
 * The only configuration record; built by the first call. If that throws, the next call tries again. Any
 * thread; concurrent first callers wait for one construction.
 */
SERVER_API SGlobalConfig& GetConfigInstance();

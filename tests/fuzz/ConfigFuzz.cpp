// Any LocalHost.config: it is taken or refused, never changed, and a value that is right is in force.
#include "tests/fuzz/FuzzHome.h"
#include "tests/fuzz/FuzzTarget.h"

#include <exception>

#include <nlohmann/json.hpp>

FUZZ_TARGET(config) {
    const std::filesystem::path file = FuzzHome() / "LocalHost.config";
    simulation::WriteFile(file, bytes);
    std::exception_ptr refused;
    SGlobalConfig config = GetConfigInstance();
    try {
        config = SGlobalConfig();
    } catch (const std::exception&) {
        refused = std::current_exception();
    }
    Require(bytes.empty() || simulation::ReadFile(file) == bytes);
    if (refused) {
        return;
    }
    const nlohmann::json document = nlohmann::json::parse(bytes, nullptr, false);
    const auto inForce = [&](const char* key, const auto& value) {
        return !document.is_object() || !document.contains(key) || document[key] == value;
    };
    Require(inForce("log_level", config.log_level) && inForce("user_data_path", config.user_data_path));
    const bool isPort = document.is_object() && document.contains("http_port") &&
                        document["http_port"].is_number_unsigned() && document["http_port"] <= 65535;
    Require(!isPort || inForce("http_port", config.http_port));
}

#pragma once

#include <cstdint>

#include <nlohmann/json.hpp>

/**
 * A JSON number or boolean as a 32-bit integer: true gives 1, a float is truncated towards zero, and a wider
 * value keeps its low 32 bits (two's complement). Defined for every number, unlike the JSON library's own
 * conversion. Any thread.
 * @throw nlohmann::json::type_error 302 for any other type
 */
std::int32_t JsonToInt32(const nlohmann::json& value);

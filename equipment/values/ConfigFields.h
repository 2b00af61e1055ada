#pragma once

#include <cstdint>
#include <string>

#include <nlohmann/json.hpp>

// The fields of an object of equipment.json. All throw CConfigProblem with a sentence that names the field.

/** A field that may be missing; null then. Throws when the object is none. */
const nlohmann::json* FindField(const nlohmann::json& object, const char* key);

/** A whole number. @param missing  what a missing field gives; null: it must be there */
std::int64_t NumberField(const nlohmann::json& object, const char* key, std::int64_t least, std::int64_t most,
                         const std::int64_t* missing = nullptr);

/** A finite number. */
double RealField(const nlohmann::json& object, const char* key, double missing);

bool FlagField(const nlohmann::json& object, const char* key);

/** A text of at most this many bytes, which must be there. */
std::string TextField(const nlohmann::json& object, const char* key, std::size_t most);

/** An array of at most this many elements; a missing one is empty. */
const nlohmann::json& ListField(const nlohmann::json& object, const char* key, std::size_t most);

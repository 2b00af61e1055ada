#pragma once

#include <cstdint>

#include <nlohmann/json.hpp>

/** The user's choice of language, resolved. */
struct SLanguageSetting {
    bool isAuto = true;         ///< the language follows the system
    std::int32_t language = 0;  ///< 0: Chinese; 1: any other
};

/**
 * Reads the document of setting.json. A stored language counts only while IsAutoLanguage is false; otherwise
 * the language is the system's. An empty document means auto.
 * @throw nlohmann::json::type_error 306 when the document is not an object; 302 when a value has the wrong
 * type
 */
SLanguageSetting ParseLanguageSetting(const nlohmann::json& document, std::int32_t systemLanguage,
                                      std::int32_t defaultLanguage);

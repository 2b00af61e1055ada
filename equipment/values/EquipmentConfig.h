#pragma once

#include "equipment/values/MessageCutter.h"
#include "equipment/values/MessagePattern.h"
#include "equipment/values/ValueRule.h"

#include <chrono>
#include <cstdint>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

/** A command that is sent to a device again and again, so that it says how it is. */
struct SPoll {
    std::string content;
    bool isText = true;   ///< as for CComManager::SendNetData
    int asciiEncode = 0;  ///< as there
    std::chrono::milliseconds every{0};
    bool always = false;  ///< also while nobody looks at a value of the device
};

/** A pattern and the values that it gives. */
struct SPatternRule {
    CMessagePattern pattern;
    std::vector<SValueRule> values;
};

/** How one interface's device is asked and understood. */
struct SDeviceRule {
    std::int32_t nodeId = 0;
    SFraming framing;
    std::chrono::seconds staleAfter{0};  ///< 0: silence makes no value stale
    std::vector<SPoll> polls;
    std::vector<SPatternRule> patterns;
};

/** The document equipment.json, checked (docs/files.md describes it). */
struct SEquipmentConfig {
    std::vector<SDeviceRule> devices;
};

/**
 * Reads the document as a whole.
 * @param document  null: one without devices. An interface need not exist.
 * @throw CConfigProblem  with a sentence about the first thing that is wrong
 */
SEquipmentConfig ParseEquipmentConfig(const nlohmann::json& document);

/** Reads a framing of the document. @throw CConfigProblem */
SFraming ParseFraming(const nlohmann::json& framing);

/** Reads a pattern of the document with its values. @throw CConfigProblem */
SPatternRule ParsePatternRule(const nlohmann::json& rule, const SFraming& framing);

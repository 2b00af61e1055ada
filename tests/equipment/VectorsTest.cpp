// Cutting, patterns and values as the vector files say. The browser application reads the same files.

#include "equipment/values/EquipmentConfig.h"
#include "simulation/TableText.h"

#include <fstream>

#include <gtest/gtest.h>

namespace {

using nlohmann::json;
using simulation::Expanded;
using simulation::FromHex;

json Vectors(const std::string& name) {
    std::ifstream file(EQUIPMENT_VECTORS + name);
    return json::parse(file);
}

const char* NameOf(EnPatternProblem problem) {
    constexpr const char* names[] = {"empty",          "tooLong",   "brace",       "placeName",  "placeTwice",
                                     "placesTogether", "hexDigits", "placeLength", "restNotLast"};
    return names[static_cast<std::size_t>(problem)];
}

CMessagePattern PatternOf(const json& vector) {
    const auto pattern = vector.at("pattern").get<std::string>();
    const std::string terminator = FromHex(vector.value("terminator", ""));
    return vector.at("form") == "hex" ? CMessagePattern::FromHex(pattern, terminator)
                                      : CMessagePattern::FromText(pattern, terminator);
}

TEST(Vectors, OfCutting) {
    for (const json& vector : Vectors("cutting.json")) {
        CMessageCutter cutter(ParseFraming(vector.at("framing")));
        std::vector<std::string> messages;
        const auto take = [&](std::string_view message) { messages.emplace_back(message); };
        int tooLong = 0;
        for (const json& chunk : vector.at("chunks")) {
            const std::string bytes = FromHex(Expanded(chunk));
            if (bytes.empty()) {
                cutter.EndBySilence(take);
            } else {
                tooLong += cutter.Add(bytes, take) ? 1 : 0;
            }
        }
        std::vector<std::string> expected;
        for (const json& message : vector.at("messages")) {
            expected.push_back(FromHex(Expanded(message)));
        }
        EXPECT_EQ(messages, expected) << vector.at("name");
        EXPECT_EQ(tooLong, vector.value("tooLong", 0)) << vector.at("name");
    }
}

TEST(Vectors, OfPatterns) {
    for (const json& vector : Vectors("patterns.json")) {
        const CMessagePattern pattern = PatternOf(vector);
        std::vector<std::string> captures;
        json values;
        if (pattern.Match(FromHex(vector.at("message")), captures)) {
            values = json::object();
            for (std::size_t i = 0; i < captures.size(); ++i) {
                values[pattern.Places().at(i)] = captures[i];
            }
        }
        EXPECT_EQ(values, vector.at("values")) << vector.at("name");
    }
    for (const json& vector : Vectors("bad_patterns.json")) {
        try {
            PatternOf(vector);
            ADD_FAILURE() << vector;
        } catch (const CPatternProblem& problem) {
            EXPECT_EQ(NameOf(problem.Kind()), vector.at("problem")) << vector;
        }
    }
}

TEST(Vectors, OfValues) {
    for (const json& vector : Vectors("values.json")) {
        json rule = vector.at("rule");
        rule.update({{"place", "a"}, {"name", "n"}});
        const SPatternRule read =
            ParsePatternRule({{"form", "text"}, {"pattern", "{a}"}, {"values", {rule}}}, SFraming());
        const auto value = read.values.at(0).Apply(FromHex(vector.at("captured")));
        json given;
        if (value && std::holds_alternative<double>(*value)) {
            given = std::get<double>(*value);
        } else if (value) {
            given = std::get<std::string>(*value);
        }
        EXPECT_EQ(given, vector.at("value")) << vector.at("name");
    }
}

TEST(Vectors, OfRefusedDocuments) {
    for (const json& vector : Vectors("bad_documents.json")) {
        json device = {{"nodeId", 7}, {"framing", {{"kind", "terminator"}, {"hex", "0D"}}}};
        device.update(vector.value("device", json::object()));
        if (vector.contains("values")) {
            device["patterns"] = {{{"form", "text"}, {"pattern", "{a}"}, {"values", vector["values"]}}};
        }
        const json document = {{"version", 1}, {"devices", {device}}};
        try {
            ParseEquipmentConfig(vector.value("document", document));
            ADD_FAILURE() << vector;
        } catch (const CConfigProblem& problem) {
            EXPECT_NE(std::string(problem.what()).find(vector.at("says")), std::string::npos)
                << vector << problem.what();
            EXPECT_NE(problem.Chinese(), "");
        }
    }
    const json framing = {{"kind", "length"}, {"bytes", 1}};
    json twice = {{"version", 1}, {"devices", {{{"nodeId", 7}, {"framing", framing}}}}};
    EXPECT_EQ(ParseEquipmentConfig(twice).devices.size(), 1U);
    twice["devices"].push_back(twice["devices"][0]);
    EXPECT_THROW(ParseEquipmentConfig(twice), CConfigProblem);
}

}  // namespace

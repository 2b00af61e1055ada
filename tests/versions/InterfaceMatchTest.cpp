#include "versions/InterfaceMatch.h"

#include <gtest/gtest.h>

using nlohmann::json;

namespace {

json Net(int nodeId, const std::string& name, int port) {
    return {{"nodeId", nodeId},
            {"controlType", "netPortInfo"},
            {"netPortInfo", {{"netPortName", name}, {"comName", name}, {"dstPort", port}}}};
}

json List(const std::vector<json>& interfaces) {
    return interfaces;
}

json Serial(int nodeId, const std::string& name) {
    return {{"nodeId", nodeId}, {"controlType", "comInfo"}, {"comInfo", {{"comName", name}}}};
}

}  // namespace

// A command of interface 3, in a list and in a template, meets the interfaces of now.
TEST(InterfaceMatch, CommandsGoToTheirOwnEquipmentOrNowhere) {
    const struct {
        const char* what;
        json then;
        json now;
        int nodeId;
        std::string missing;  ///< its name; empty: none
    } rows[] = {
        {"the same", List({Net(3, "Matrix", 1)}), List({Net(3, "Matrix", 1)}), 3, ""},
        {"another name", List({Net(3, "Matrix", 1)}), List({Net(3, "Old matrix", 1)}), 3, ""},
        {"another address", List({Net(3, "Matrix", 1)}), List({Net(3, "Matrix", 2)}), 3, ""},
        {"other equipment", List({Net(3, "Matrix", 1)}), List({Net(3, "Pump", 2)}), -3, "Matrix"},
        {"another kind", List({Net(3, "Matrix", 1)}), List({Serial(3, "Matrix")}), -3, "Matrix"},
        {"none", List({Net(3, "Matrix", 1)}), json::array(), -3, "Matrix"},
        {"added again", List({Net(3, "Matrix", 1)}), List({Net(3, "Pump", 2), Net(5, "Matrix", 4)}), 5, ""},
        {"two of the name", List({Net(3, "Matrix", 1)}), List({Net(4, "Matrix", 1), Net(5, "Matrix", 4)}), -3,
         "Matrix"},
        {"missing then, other now", json::array(), List({Net(3, "Pump", 1)}), -3, "Lamp"},
        {"missing then, the same now", json::array(), List({Net(3, "Lamp", 1)}), 3, ""},
        {"no list at all", 7, 8, -3, "Lamp"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        const auto document = [](int nodeId) {
            const json command = {
                {"portIndex", nodeId}, {"controlType", "netPortInfo"}, {"interfaceName", "Lamp"}};
            return json{{"componentArr", {{{"interactionArr", {command}}, {"template", {command, -9}}}}}};
        };
        json commands = document(3);
        const auto missing = FitCommands(commands, {{"configList", row.then}}, {{"configList", row.now}});
        EXPECT_EQ(commands, document(row.nodeId));
        ASSERT_EQ(missing.size(), row.missing.empty() ? 0U : 1U);
        json devices = {{"devices", {{{"nodeId", 3}}, {{"nodeId", -9}}, 7}}};
        FitDevices(devices, {{"configList", row.then}}, {{"configList", row.now}});
        // A device does not say which interface it had.
        const int fitted = std::string(row.what) == "missing then, the same now" ? -3 : row.nodeId;
        EXPECT_EQ(devices, json({{"devices", {{{"nodeId", fitted}}, {{"nodeId", -9}}, 7}}}));
        if (!missing.empty()) {
            EXPECT_EQ(missing[0].name, row.missing);
            EXPECT_EQ(missing[0].nodeId, 3);
        }
    }
    json detached = {{"portIndex", -3}};
    EXPECT_TRUE(FitCommands(detached, {}, {}).empty());
    EXPECT_EQ(detached["portIndex"], -3);
}

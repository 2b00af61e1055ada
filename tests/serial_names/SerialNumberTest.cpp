#include "platform/SerialNames.h"

#include <string>

#include <gtest/gtest.h>

namespace {

TEST(SerialNumber, IsReadFromANameAlone) {
    struct Row {
        std::string name;
        int number;
    };
    const Row rows[] = {
        {"COM1", 1},  {"COM10", 10}, {"COM9999", 9999}, {"COM10000", 0},    {"COM4294967297", 0},
        {"COM0", 0},  {"COM", 0},    {"COM007", 0},     {"COM-1", 0},       {"COM+1", 0},
        {"COM 1", 0}, {"COM1 ", 0},  {"com1", 0},       {"\\\\.\\COM1", 0}, {"LPT1", 0},
        {"1", 0},     {"", 0},
    };
    for (const auto& [name, number] : rows) {
        EXPECT_EQ(SerialNumber(name), number) << name;
        EXPECT_TRUE(number != 0 || FindSerialDevice(name).empty()) << name;
    }
}

}  // namespace

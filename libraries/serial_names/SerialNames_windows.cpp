#include "platform/SerialNames.h"

void SetSerialNameTable(const std::string& /*file*/) {}

std::string FindSerialDevice(const std::string& comPort) {
    return R"(\\.\)" + comPort;
}

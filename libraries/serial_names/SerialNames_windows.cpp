#include "platform/SerialNames.h"

void SetSerialNameTable(const std::string& /*file*/) {}

std::string FindSerialDevice(const std::string& comPort) {
    return SerialNumber(comPort) == 0 ? std::string() : R"(\\.\)" + comPort;
}

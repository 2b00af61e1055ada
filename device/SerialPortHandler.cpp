// The names of the machine's serial ports, for the user who sets up a serial interface.

#include "device/SerialPorts.h"
#include "server/RouterMgr.h"

int RouterMgr::GetServerComList(HttpRequest* request, HttpResponse* response) {
    return HandleRead(request, response, [](SResponseData& content, SRequestTrace& trace) {
        const std::vector<SSerialPortInfo> ports = EnumerateSerialPorts();
        nlohmann::json list;  // null while there is no port
        for (const SSerialPortInfo& port : ports) {
            list.push_back({{"comPort", port.portName}});
        }
        trace.detail = "SerialComs Count " + std::to_string(ports.size());
        content.data["comList"] = std::move(list);
    });
}

#include "platform/SerialNames.h"
#include "server/RouterMgr.h"
#include "simulation/DeviceTree.h"

#include <gtest/gtest.h>

namespace {

std::string List() {
    HttpRequest request;
    HttpResponse response;
    EXPECT_EQ(RouterMgr::GetServerComList(&request, &response), 200);
    return response.body;
}

TEST(SerialPortList, ShowsWhatIsPluggedInNow) {
    simulation::DeviceTree devices;
    SetSerialNameTable("");
    EXPECT_EQ(List(), R"({"code":20000,"data":{"comList":null},"message":""})");
    devices.BuildIn(0, 4);
    devices.Plug({"1-1", "A1"}, "ttyUSB0");
    EXPECT_EQ(List(),
              R"({"code":20000,"data":{"comList":[{"comPort":"COM1"},{"comPort":"COM5"}]},"message":""})");
    devices.Unplug("ttyS0");
    EXPECT_EQ(List(), R"({"code":20000,"data":{"comList":[{"comPort":"COM5"}]},"message":""})");
}

}  // namespace

#include "platform/NarrowText.h"
#include "platform/RavLog.h"
#include "platform/SerialDevices.h"
#include "platform/SerialNames.h"
#include "simulation/DeviceTree.h"

#include <array>
#include <vector>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace {

using nlohmann::json;
using simulation::UsbPort;

class SerialNames : public testing::Test {
  protected:
    SerialNames() { Restart(); }
    ~SerialNames() override { SetSerialNameTable(""); }

    /** What another start of the server would find. */
    void Restart() { SetSerialNameTable(m_table); }

    static std::vector<std::wstring> List() {
        std::vector<std::wstring> names;
        for (const SSerialDevice& device : ListSerialDevices()) {
            names.push_back(device.portName);
        }
        return names;
    }

    void SwapNumbers() {
        m_tree.Unplug("ttyUSB0");
        m_tree.Unplug("ttyUSB1");
        m_tree.Plug(m_second, "ttyUSB0");
        m_tree.Plug(m_first, "ttyUSB1");
    }

    using Names = std::vector<std::wstring>;
    UsbPort m_first{"1-2", "A1"};
    UsbPort m_second{"1-1", "B2"};
    simulation::TemporaryFolder m_folder;
    std::string m_table = m_folder.Path() / "SerialPorts.json";
    simulation::DeviceTree m_tree;
};

TEST_F(SerialNames, AreListedWithWhatTheSystemTellsOfThePort) {
    m_tree.BuildIn(0, 4);
    m_tree.BuildIn(1, 0);
    m_tree.BuildIn(4, 4);
    m_tree.Plug({"1-1", "A1", "0403", "6001", "ftdi_sio", "FT232 Serial (UART) IC", "00", "0"}, "ttyUSB0");
    m_tree.Plug({"1-3.4", "", "1a86", "7523", "ch341", "\xe4\xb8\xb2\xe5\x8f\xa3 \xff"}, "ttyUSB1");
    m_tree.Plug({"1-3.5", "", "2341", "0043", "cdc_acm"}, "ttyACM0");
    m_tree.Link("COM20", "ttyACM0");
    using Row = std::array<std::wstring, 4>;
    std::vector<Row> rows;
    for (const SSerialDevice& device : ListSerialDevices()) {
        rows.push_back({device.portName, device.friendlyName, device.description, device.hardwareId});
    }
    const std::vector<Row> expected = {
        {L"COM1", L"Communications Port (COM1)", L"Communications Port", L"ACPI\\PNP0501"},
        {L"COM5", L"Communications Port (COM5)", L"Communications Port", L"ACPI\\PNP0501"},
        {L"COM6", L"USB Serial Port (COM6)", L"FT232 Serial (UART) IC", L"USB\\VID_0403&PID_6001&FTDI"},
        {L"COM7", L"USB Serial Port (COM7)", L"\u4e32\u53e3 \ufffd", L"USB\\VID_1A86&PID_7523&CH341"},
        {L"COM20", L"USB Serial Port (COM20)", L"USB Serial Port", L"USB\\VID_2341&PID_0043"},
    };
    EXPECT_EQ(rows, expected);
    EXPECT_EQ(NarrowText(rows.at(3)[2] + L'\xd800'), "\xe4\xb8\xb2\xe5\x8f\xa3 \xef\xbf\xbd\xef\xbf\xbd");
    EXPECT_EQ(FindSerialDevice("COM2"), "") << "no UART there";
    EXPECT_EQ(FindSerialDevice("COM1"), "/dev/ttyS0");
    EXPECT_EQ(FindSerialDevice("COM20"), "/dev/COM20");
}

TEST_F(SerialNames, StayWithTheirPortsWhenTheSystemsNumbersSwap) {
    m_tree.Plug(m_first, "ttyUSB0");
    EXPECT_EQ(List(), (Names{L"COM5"}));
    m_tree.Plug(m_second, "ttyUSB1");
    EXPECT_EQ(FindSerialDevice("COM6"), "/dev/ttyUSB1") << "seen for the first time as it is used";
    SwapNumbers();
    EXPECT_EQ(FindSerialDevice("COM5"), "/dev/ttyUSB1");
    EXPECT_EQ(FindSerialDevice("COM6"), "/dev/ttyUSB0");
    Restart();
    m_tree.Unplug("ttyUSB1");
    EXPECT_EQ(FindSerialDevice("COM5"), "");
    EXPECT_EQ(List(), (Names{L"COM6"}));
    m_first.socket = "1-4";
    m_tree.Plug({"1-2", "C3"}, "ttyUSB1");
    m_tree.Plug(m_first, "ttyUSB2");
    EXPECT_EQ(List(), (Names{L"COM5", L"COM6", L"COM7"}));
    EXPECT_EQ(FindSerialDevice("COM5"), "/dev/ttyUSB2") << "another socket";
    EXPECT_EQ(FindSerialDevice("COM7"), "/dev/ttyUSB1") << "another device in its socket";
}

TEST_F(SerialNames, TellApartWhatLooksTheSame) {
    for (const std::string serial : {"", "0001"}) {
        simulation::WriteFile(m_table, "{}");
        Restart();
        m_first.serial = m_second.serial = serial;
        m_tree.Plug(m_second, "ttyUSB0");
        m_tree.Plug(m_first, "ttyUSB1");
        m_tree.Plug({"1-5", serial, "0403", "6011", "ftdi_sio", "", "00"}, "ttyUSB2");
        m_tree.Plug({"1-5", serial, "0403", "6011", "ftdi_sio", "", "01"}, "ttyUSB3");
        m_tree.Plug({"1-10", serial, "110a", "1410", "mxuport", "", "00", "0"}, "ttyUSB4");
        m_tree.Plug({"1-10", serial, "110a", "1410", "mxuport", "", "00", "1"}, "ttyUSB5");
        EXPECT_EQ(List().size(), 6U);
        for (int port = 0; port < 6; ++port) {
            EXPECT_EQ(FindSerialDevice("COM" + std::to_string(5 + port)),
                      "/dev/ttyUSB" + std::to_string(port));
        }
        m_tree.Unplug("ttyUSB0");
        EXPECT_EQ(FindSerialDevice("COM5"), "") << "not the other one, which has a name";
        EXPECT_EQ(FindSerialDevice("COM6"), "/dev/ttyUSB1");
        for (const char* tty : {"ttyUSB1", "ttyUSB2", "ttyUSB4"}) {
            m_tree.Unplug(tty);
        }
    }
}

TEST_F(SerialNames, MeanFirstWhatTheAdministratorSays) {
    m_tree.Plug(m_first, "ttyUSB0");
    m_tree.Plug(m_second, "ttyUSB1");
    EXPECT_EQ(List(), (Names{L"COM5", L"COM6"}));
    const auto named = json::parse(simulation::ReadFile(m_table));
    ASSERT_EQ(named.at("COM5").at("device"), "/dev/ttyUSB1") << "in the order of the sockets";
    m_tree.Link("COM5", "ttyUSB0");
    m_tree.Link("COM6", "ttyUSB0");
    EXPECT_EQ(List(), (Names{L"COM5", L"COM6", L"COM7"}));
    EXPECT_EQ(FindSerialDevice("COM5"), "/dev/COM5");
    EXPECT_EQ(FindSerialDevice("COM7"), "/dev/ttyUSB1");
    m_tree.Unlink("COM5");
    EXPECT_EQ(FindSerialDevice("COM5"), "") << "kept for the link";
    EXPECT_EQ(List(), (Names{L"COM6", L"COM7"}));
    simulation::WriteFile(m_table,
                          R"({"COM3":"/dev/ttyUSB1","COM4":{"device":"/dev/none"},"COM8":7,"note":"x"})");
    EXPECT_EQ(List(), (Names{L"COM3", L"COM6"}));
    EXPECT_EQ(FindSerialDevice("COM3"), "/dev/ttyUSB1");
    EXPECT_EQ(FindSerialDevice("COM7"), "");
    m_tree.Plug({"1-3", "C3"}, "ttyUSB2");
    List();
    const auto table = json::parse(simulation::ReadFile(m_table));
    EXPECT_EQ(table.at("COM3"), "/dev/ttyUSB1");
    EXPECT_EQ(table.at("note"), "x");
    EXPECT_EQ(table.at("COM5").at("identity"), "usb 0403:6001 serial C3 interface 00");
}

TEST_F(SerialNames, AreGivenWithoutAGoodFile) {
    const auto logs = m_folder.Path() / "Log";
    ASSERT_EQ(RavLog::StartLogs(logs, "info"), "");
    m_tree.Plug(m_first, "ttyUSB0");
    EXPECT_EQ(List(), (Names{L"COM5"}));
    simulation::WriteFile(m_table, "{\"COM5\": ");
    EXPECT_EQ(FindSerialDevice("COM5"), "/dev/ttyUSB0");
    m_tree.Plug(m_second, "ttyUSB1");
    EXPECT_EQ(List(), (Names{L"COM5", L"COM6"}));
    EXPECT_EQ(simulation::ReadFile(m_table + ".broken"), "{\"COM5\": ");
    EXPECT_EQ(json::parse(simulation::ReadFile(m_table)).size(), 2U);

    m_table = m_folder.Path() / "missing" / "SerialPorts.json";
    Restart();
    for (int round = 0; round < 2; ++round) {
        EXPECT_EQ(List(), (Names{L"COM5", L"COM6"}));
        EXPECT_EQ(FindSerialDevice("COM5"), round == 0 ? "/dev/ttyUSB1" : "/dev/ttyUSB0");
        SwapNumbers();
    }
    RavLog::StopLogs();
    const std::string log = simulation::ReadFile(logs / "System.log");
    EXPECT_NE(log.find(".broken"), std::string::npos) << log;
    const auto told = log.find("can't be written");
    EXPECT_NE(told, std::string::npos) << log;
    EXPECT_EQ(log.find("can't be written", told + 1), std::string::npos) << log;
}

}  // namespace

#pragma once

#include "platform/SerialNames.h"
#include "simulation/PtyPair.h"
#include "simulation/TemporaryFolder.h"
#include "tests/comm/CommFixture.h"

#include <optional>

#include <nlohmann/json.hpp>

using simulation::PtyPair;

/** A place for a simulated line, with the names COM7 and COM8 where it needs them, and a port library. */
class SerialLine : public testing::Test {
  protected:
    SerialLine() {
        Table(nlohmann::json{{"COM7", m_link}, {"COM8", {{"device", m_link}}}}.dump());
        SetSerialNameTable(m_table);
    }

    void Table(const std::string& text) { simulation::WriteFile(m_table, text); }
    int Send(const std::string& text, std::uint32_t speed = 115200, const std::string& name = "COM7") {
        return m_comm->registry.SendSerial({"", name, speed}, text, true, 0);
    }
    int Check(std::uint32_t speed = 9600) { return m_comm->registry.CheckSerial({"", "COM7", speed}); }

    const simulation::TemporaryFolder m_folder;
    const std::string m_link = (m_folder.Path() / "line").string();
    const std::string m_table = (m_folder.Path() / "SerialPorts.json").string();
    std::optional<CommFixture> m_comm{std::in_place};
};

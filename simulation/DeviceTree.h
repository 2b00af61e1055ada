#pragma once

#include "simulation/TemporaryFolder.h"

#include <string>

namespace simulation {

/** A serial port at a USB socket. */
struct UsbPort {
    std::string socket{};  ///< "1-1.2": bus, and the chain of sockets
    std::string serial{};  ///< the device's serial number; empty: it has none
    std::string vendor = "0403";
    std::string product = "6001";
    std::string driver = "ftdi_sio";
    std::string model{};           ///< its name in the hardware database
    std::string interface = "00";  ///< of the device
    std::string port{};            ///< number of the port on that interface; empty: the interface is the port
};

/**
 * The devices that this process sees in /sys and /dev while the object exists: only those that are plugged in
 * here. The program has to be linked with umockdev's preload library. The devices can be found, but not
 * opened. One thread.
 */
class DeviceTree {
  public:
    DeviceTree();
    ~DeviceTree();
    DeviceTree(const DeviceTree&) = delete;
    DeviceTree& operator=(const DeviceTree&) = delete;

    void Plug(const UsbPort& port, const std::string& tty);

    /** A port of the machine itself. type: of the UART; 0: there is none. */
    void BuildIn(int index, int type);

    /** Removes the device to which a line belongs, with all its lines. */
    void Unplug(const std::string& tty);

    /** Does what a udev rule does with SYMLINK: /dev/<name> leads to the device. */
    void Link(const std::string& name, const std::string& tty);
    void Unlink(const std::string& name);

  private:
    void AddLine(const std::filesystem::path& owner, const std::string& tty, const std::string& number);

    TemporaryFolder m_folder;
    std::filesystem::path m_devices = m_folder.Path() / "sys/devices";
    std::filesystem::path m_class = m_folder.Path() / "sys/class/tty";
    std::filesystem::path m_dev = m_folder.Path() / "dev";
    int m_lines = 0;
};

}  // namespace simulation

#include "simulation/DeviceTree.h"

#include <cstdlib>
#include <vector>

namespace simulation {

namespace fs = std::filesystem;

namespace {

/** A device of a bus: its event file and what it belongs to. */
void AddDevice(const fs::path& folder, const std::string& subsystem, const std::string& event) {
    WriteFile(folder / "uevent", event);
    if (!fs::is_symlink(folder / "subsystem")) {
        fs::create_symlink("/sys/" + subsystem, folder / "subsystem");
    }
}

}  // namespace

DeviceTree::DeviceTree() {
    fs::create_directories(m_devices);
    fs::create_directories(m_class);
    fs::create_directories(m_dev / ".node");
    setenv("UMOCKDEV_DIR", m_folder.Path().c_str(), 1);
}

DeviceTree::~DeviceTree() {
    unsetenv("UMOCKDEV_DIR");
}

void DeviceTree::Plug(const UsbPort& port, const std::string& tty) {
    const fs::path usb = m_devices / "pci0000:00/0000:00:14.0/usb1" / port.socket;
    AddDevice(
        usb, "bus/usb",
        "DEVTYPE=usb_device\n" + (port.model.empty() ? "" : "ID_MODEL_FROM_DATABASE=" + port.model + "\n"));
    WriteFile(usb / "idVendor", port.vendor + "\n");
    WriteFile(usb / "idProduct", port.product + "\n");
    if (!port.serial.empty()) {
        WriteFile(usb / "serial", port.serial + "\n");
    }
    fs::path owner = usb / (port.socket + ":1." + port.interface);
    AddDevice(owner, "bus/usb", "DEVTYPE=usb_interface\nDRIVER=" + port.driver + "\n");
    WriteFile(owner / "bInterfaceNumber", port.interface + "\n");
    if (!fs::is_symlink(owner / "driver")) {
        fs::create_symlink("/sys/bus/usb/drivers/" + port.driver, owner / "driver");
    }
    if (!port.port.empty()) {
        owner /= tty;
        AddDevice(owner, "bus/usb-serial", "");
        WriteFile(owner / "port_number", port.port + "\n");
    }
    AddLine(owner, tty, "188:" + std::to_string(m_lines++));
}

void DeviceTree::BuildIn(int index, int type) {
    const std::string tty = "ttyS" + std::to_string(index);
    const fs::path owner = m_devices / ("pnp0/00:0" + std::to_string(index));
    AddDevice(owner, "bus/pnp", "");
    WriteFile(owner / "id", "PNP0501\nPNP0500\n");
    AddLine(owner, tty, "4:" + std::to_string(64 + index));
    WriteFile(owner / "tty" / tty / "type", std::to_string(type) + "\n");
}

void DeviceTree::Unplug(const std::string& tty) {
    // The device in whose folder the line's lies: of a USB port, the one with the socket's name.
    fs::path device = m_class / fs::read_symlink(m_class / tty);
    while (device.parent_path().filename() != "usb1" && device.parent_path().filename() != "pnp0") {
        device = device.parent_path();
    }
    fs::remove_all(device.lexically_normal());
    const std::vector<fs::directory_entry> lines(fs::directory_iterator{m_class}, fs::directory_iterator{});
    for (const fs::directory_entry& line : lines) {
        if (!fs::exists(line)) {
            fs::remove(line);
            Unlink(line.path().filename());
        }
    }
}

void DeviceTree::Link(const std::string& name, const std::string& tty) {
    fs::create_symlink(tty, m_dev / name);
    fs::copy_symlink(m_dev / ".node" / tty, m_dev / ".node" / name);
}

void DeviceTree::Unlink(const std::string& name) {
    fs::remove(m_dev / name);
    fs::remove(m_dev / ".node" / name);
}

void DeviceTree::AddLine(const fs::path& owner, const std::string& tty, const std::string& number) {
    const auto colon = number.find(':');
    const fs::path line = owner / "tty" / tty;
    AddDevice(line, "class/tty",
              "MAJOR=" + number.substr(0, colon) + "\nMINOR=" + number.substr(colon + 1) +
                  "\nDEVNAME=" + tty + "\n");
    fs::create_symlink(fs::relative(line, m_class), m_class / tty);
    fs::create_symlink("/dev/null", m_dev / tty);  // umockdev makes it a device with the number below
    fs::create_symlink(number, m_dev / ".node" / tty);
}

}  // namespace simulation

#include "libraries/serial_names/SerialWalk_linux.h"

#include "platform/FolderNames.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <charconv>
#include <cstring>
#include <filesystem>
#include <memory>
#include <mutex>
#include <string_view>

#include <libudev.h>
#include <sys/stat.h>

namespace fs = std::filesystem;

namespace {

struct SRelease {
    void operator()(udev* context) const { udev_unref(context); }
    void operator()(udev_device* device) const { udev_device_unref(device); }
};
using Context = std::unique_ptr<udev, SRelease>;
using Device = std::unique_ptr<udev_device, SRelease>;

std::string Text(const char* text) {
    return text == nullptr ? std::string() : std::string(text);
}

std::string Attribute(udev_device* device, const char* name) {
    const std::string text = Text(udev_device_get_sysattr_value(device, name));
    return text.substr(0, text.find('\n'));
}

std::string Upper(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
    return text;
}

/** A text from a device, sanitised for a file and a log. */
std::string Printable(const std::string& text) {
    constexpr std::string_view digits = "0123456789abcdef";
    std::string result;
    for (const char character : text) {
        const auto c = static_cast<unsigned char>(character);
        if (c > ' ' && c < 0x7f && c != '%') {
            result += character;
        } else {
            result += {'%', digits[c >> 4U], digits[c & 0xfU]};
        }
    }
    return result;
}

std::string BelowDevices(udev_device* device) {
    constexpr std::string_view prefix = "/sys/devices/";
    std::string path = Text(udev_device_get_syspath(device));
    return path.starts_with(prefix) ? path.substr(prefix.size()) : path;
}

/** Controller and chain of sockets. The number of the bus is left out: it depends on the order at the start.
 */
std::string UsbPlace(udev_device* usb) {
    const std::string path = BelowDevices(usb);
    const std::string name = Text(udev_device_get_sysname(usb));
    return path.substr(0, path.rfind("/usb")) + " port " + name.substr(name.find('-') + 1);
}

/** Adds the converter chip to a hardware id, if the driver's name reveals it. */
std::string WithChip(const std::string& hardwareId, const std::string& driver) {
    constexpr std::array chips = {"ftdi", "pl2303", "cp210", "ch340", "ch341"};
    const auto chip = std::find_if(chips.begin(), chips.end(),
                                   [&](const char* name) { return driver.find(name) != std::string::npos; });
    return chip == chips.end() ? hardwareId : hardwareId + "&" + Upper(*chip);
}

std::string FirstOf(std::initializer_list<std::string> texts) {
    const auto* found =
        std::find_if(texts.begin(), texts.end(), [](const auto& text) { return !text.empty(); });
    return found == texts.end() ? std::string() : *found;
}

std::string DatabaseName(udev_device* device) {
    return Text(udev_device_get_property_value(device, "ID_MODEL_FROM_DATABASE"));
}

void DescribeUsb(udev_device* device, udev_device* usb, SFoundLine& line) {
    udev_device* interface = udev_device_get_parent_with_subsystem_devtype(device, "usb", "usb_interface");
    const std::string vendor = Attribute(usb, "idVendor");
    const std::string product = Attribute(usb, "idProduct");
    const std::string serial = Printable(Attribute(usb, "serial"));
    // Converters with several ports on one interface number them.
    const std::string port = Attribute(udev_device_get_parent(device), "port_number");

    line.place = UsbPlace(usb);
    line.identity = "usb " + vendor + ":" + product +
                    (serial.empty() ? " at " + line.place : " serial " + serial) + " interface " +
                    (interface == nullptr ? "00" : Attribute(interface, "bInterfaceNumber")) +
                    (port.empty() || port == "0" ? std::string() : " port " + port);
    line.kind = "USB Serial Port";
    line.description = FirstOf({DatabaseName(usb), Attribute(usb, "product"), line.kind});
    line.hardwareId = WithChip("USB\\VID_" + Upper(vendor) + "&PID_" + Upper(product),
                               interface == nullptr ? "" : Text(udev_device_get_driver(interface)));
}

void DescribeOther(udev_device* device, udev_device* owner, SFoundLine& line) {
    const std::string name = Text(udev_device_get_sysname(device));
    const std::string bus = Text(udev_device_get_subsystem(owner));
    line.place = BelowDevices(owner);
    line.identity = line.place + " " + name;
    constexpr std::string_view builtIn = "ttyS";
    int index = -1;
    const char* end = name.data() + name.size();
    if (name.starts_with(builtIn) && std::from_chars(name.data() + builtIn.size(), end, index).ptr == end &&
        index >= 0) {
        line.builtInNumber = index + 1;
        line.identity = name;
    }
    line.kind = "Communications Port";
    line.description = FirstOf({DatabaseName(owner), line.kind});
    if (bus == "pci") {
        constexpr std::size_t digits = 2;  // behind "0x"
        line.hardwareId = "PCI\\VEN_" + Upper(Attribute(owner, "vendor").erase(0, digits)) + "&DEV_" +
                          Upper(Attribute(owner, "device").erase(0, digits));
    } else if (bus == "pnp") {
        line.hardwareId = "ACPI\\" + Attribute(owner, "id");
    } else {
        line.hardwareId = Upper(bus) + "\\" + Text(udev_device_get_sysname(owner));
    }
}

std::optional<SFoundLine> Describe(udev_device* device) {
    udev_device* owner = udev_device_get_parent(device);
    const char* path = udev_device_get_devnode(device);
    // The type of a UART that is not there is 0 (Linux, PORT_UNKNOWN); other drivers have no such attribute.
    if (owner == nullptr || path == nullptr || Attribute(device, "type") == "0") {
        return std::nullopt;
    }
    SFoundLine line;
    line.device = path;
    line.node = CharacterDevice(line.device);
    if (line.node == 0) {
        return std::nullopt;  // a container, for instance, need not have it
    }
    udev_device* usb = udev_device_get_parent_with_subsystem_devtype(device, "usb", "usb_device");
    if (usb != nullptr) {
        DescribeUsb(device, usb, line);
        return line;
    }
    // Since Linux 6.5 a line has two devices of its own between itself and its hardware.
    while (Text(udev_device_get_subsystem(owner)) == "serial-base" &&
           udev_device_get_parent(owner) != nullptr) {
        owner = udev_device_get_parent(owner);
    }
    DescribeOther(device, owner, line);
    return line;
}

/**
 * The library's first hash table creates the seed of all small ones, without a lock. Two seeds would lose
 * entries, so the first table is made here. What libudev shares otherwise does no harm
 * (cmake/tsan.suppressions).
 */
Context MakeContext() {
    Context context(udev_new());
    static std::once_flag seeded;
    std::call_once(seeded, [&context] {
        udev_enumerate* list = context ? udev_enumerate_new(context.get()) : nullptr;
        if (list != nullptr) {
            udev_enumerate_add_match_subsystem(list, "tty");
            udev_enumerate_unref(list);
        }
    });
    return context;
}

/** Folders of all terminal devices except pure software ones, which are the majority. */
std::vector<std::string> TerminalFolders() {
    const fs::path classFolder = "/sys/class/tty";
    std::vector<std::string> folders;
    for (const std::string& name : NamesInFolder(classFolder.string())) {
        std::error_code gone;  // unplugged meanwhile
        const fs::path target = fs::read_symlink(classFolder / name, gone);
        if (!gone && target.string().find("/devices/virtual/") == std::string::npos) {
            folders.push_back((classFolder / target).lexically_normal().string());
        }
    }
    std::sort(folders.begin(), folders.end(), [](const std::string& one, const std::string& other) {
        return strverscmp(one.c_str(), other.c_str()) < 0;
    });
    return folders;
}

}  // namespace

std::vector<SFoundLine> WalkSerialLines() {
    std::vector<SFoundLine> lines;
    const Context context = MakeContext();
    if (!context) {
        return lines;
    }
    for (const std::string& folder : TerminalFolders()) {
        const Device device(udev_device_new_from_syspath(context.get(), folder.c_str()));
        if (std::optional<SFoundLine> line = device ? Describe(device.get()) : std::nullopt) {
            lines.push_back(std::move(*line));
        }
    }
    return lines;
}

std::optional<SFoundLine> LookAtSerialLine(const std::string& device) {
    const Context context = MakeContext();
    const std::string name = fs::path(device).filename().string();
    if (!context || name.empty()) {
        return std::nullopt;
    }
    const Device found(udev_device_new_from_subsystem_sysname(context.get(), "tty", name.c_str()));
    return found ? Describe(found.get()) : std::nullopt;
}

dev_t CharacterDevice(const std::string& path) {
    struct stat status {};
    return stat(path.c_str(), &status) == 0 && S_ISCHR(status.st_mode) ? status.st_rdev : 0;
}

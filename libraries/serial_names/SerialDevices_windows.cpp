#include "platform/SerialDevices.h"

#include <array>

#include <windows.h>
// After windows.h, which it needs.
#include <setupapi.h>

namespace {

/** GUID_DEVINTERFACE_COMPORT: the class of serial ports. */
constexpr GUID kSerialPorts = {0x86E0D1E0, 0x8089, 0x11D0, {0x9C, 0xE4, 0x08, 0x00, 0x3E, 0x30, 0x1F, 0x73}};

constexpr DWORD kTextSize = 512;         // bytes of a name or of a description
constexpr DWORD kHardwareIdSize = 2048;  // bytes of the hardware ids

/** The serial ports that are present, freed at the end. */
class CDeviceSet {
  public:
    CDeviceSet()
        : m_set(
              SetupDiGetClassDevsW(&kSerialPorts, nullptr, nullptr, DIGCF_PRESENT | DIGCF_DEVICEINTERFACE)) {}
    ~CDeviceSet() {
        if (IsGood()) {
            SetupDiDestroyDeviceInfoList(m_set);
        }
    }
    CDeviceSet(const CDeviceSet&) = delete;
    CDeviceSet& operator=(const CDeviceSet&) = delete;

    bool IsGood() const { return m_set != INVALID_HANDLE_VALUE; }
    HDEVINFO Get() const { return m_set; }

  private:
    HDEVINFO m_set;
};

std::wstring ReadDevicePortName(HDEVINFO set, SP_DEVINFO_DATA& device) {
    const HKEY key = SetupDiOpenDevRegKey(set, &device, DICS_FLAG_GLOBAL, 0, DIREG_DEV, KEY_READ);
    if (key == INVALID_HANDLE_VALUE) {
        return {};
    }
    std::array<wchar_t, kTextSize / sizeof(wchar_t) + 1> buffer{};  // a NUL stands behind it in any case
    DWORD size = kTextSize;
    DWORD type = REG_NONE;
    const LSTATUS status =
        RegQueryValueExW(key, L"PortName", nullptr, &type, reinterpret_cast<BYTE*>(buffer.data()), &size);
    RegCloseKey(key);
    return status == ERROR_SUCCESS && type == REG_SZ ? buffer.data() : std::wstring();
}

/** A text of the device, up to its first zero; empty when it can't be read. */
template <DWORD Size>
std::wstring ReadProperty(HDEVINFO set, SP_DEVINFO_DATA& device, DWORD property) {
    std::array<wchar_t, Size / sizeof(wchar_t) + 1> buffer{};
    const BOOL isRead = SetupDiGetDeviceRegistryPropertyW(
        set, &device, property, nullptr, reinterpret_cast<BYTE*>(buffer.data()), Size, nullptr);
    return isRead != FALSE ? buffer.data() : std::wstring();
}

}  // namespace

std::vector<SSerialDevice> ListSerialDevices() {
    std::vector<SSerialDevice> devices;
    const CDeviceSet set;
    if (!set.IsGood()) {
        return devices;
    }
    SP_DEVINFO_DATA device{};
    device.cbSize = sizeof device;
    static_assert(sizeof device == 32);
    for (DWORD index = 0; SetupDiEnumDeviceInfo(set.Get(), index, &device) != FALSE; ++index) {
        devices.push_back({ReadDevicePortName(set.Get(), device),
                           ReadProperty<kTextSize>(set.Get(), device, SPDRP_FRIENDLYNAME),
                           ReadProperty<kTextSize>(set.Get(), device, SPDRP_DEVICEDESC),
                           ReadProperty<kHardwareIdSize>(set.Get(), device, SPDRP_HARDWAREID)});
    }
    return devices;
}

#include <engine/paths/RelativePath.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <string>

namespace qrv {

namespace {

constexpr std::array devices = {std::string_view("con"),    std::string_view("prn"),
                                std::string_view("aux"),    std::string_view("nul"),
                                std::string_view("conin$"), std::string_view("conout$")};
constexpr std::array countedDevices = {std::string_view("com"), std::string_view("lpt")};

// The digits, and the small ones that count as such: ¹, ² and ³.
constexpr std::array deviceNumbers = {
    std::string_view("0"),       std::string_view("1"),        std::string_view("2"),
    std::string_view("3"),       std::string_view("4"),        std::string_view("5"),
    std::string_view("6"),       std::string_view("7"),        std::string_view("8"),
    std::string_view("9"),       std::string_view("\xC2\xB9"), std::string_view("\xC2\xB2"),
    std::string_view("\xC2\xB3")};

template <class Names>
bool isOneOf(const Names& names, std::string_view name) {
    return std::find(names.begin(), names.end(), name) != names.end();
}

// A device is meant whatever extension follows, and with blanks before it.
std::string deviceNameOf(std::string_view name) {
    std::string device(name.substr(0, name.find('.')));
    device.resize(device.find_last_not_of(' ') + 1);
    for (char& c : device)
        c = c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    return device;
}

bool isDevice(std::string_view name) {
    constexpr std::size_t kindLength = 3;
    const std::string device = deviceNameOf(name);
    return isOneOf(devices, device) ||
           (device.size() > kindLength && isOneOf(countedDevices, device.substr(0, kindLength)) &&
            isOneOf(deviceNumbers, device.substr(kindLength)));
}

bool isRefusedByWindows(char c) {
    const auto byte = static_cast<unsigned char>(c);
    return byte < 0x20 || std::string_view("<>\"|?*:\\").find(c) != std::string_view::npos;
}

bool isPortableName(std::string_view name) {
    return !name.empty() && name.back() != '.' && name.back() != ' ' && !isDevice(name) &&
           std::none_of(name.begin(), name.end(), isRefusedByWindows);
}

}  // namespace

bool isPortable(std::string_view path) {
    for (std::size_t begin = 0; begin <= path.size();) {
        const std::size_t end = std::min(path.find('/', begin), path.size());
        if (!isPortableName(path.substr(begin, end - begin)))
            return false;
        begin = end + 1;
    }
    return true;
}

}  // namespace qrv

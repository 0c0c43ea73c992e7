#include <common/base/MessageInternal.h>
#include <common/config/ConfigPath.h>
#include <platform/ut/Dir.h>
#include <platform/ut/FileName.h>

namespace common {

namespace {

constexpr int anyKind = 0x1FFF;
constexpr int allPermissions = 0777;

/// The directory itself, or the nearest folder above it that exists; without components when there
/// is none.
ut::FileName nearestExisting(const OdString& directory) {
    ut::FileName probe(directory);
    while (probe.getDirCount() != 0 && !probe.exists(anyKind))
        probe.removeLastDir();
    return probe;
}

Expected<void> checkDirectory(const OdString& directory) {
    if (directory.isEmpty())
        return translatedError(L"VC config path is empty.");
    const ut::FileName probe = nearestExisting(directory);
    if (probe.getDirCount() == 0 || !probe.exists(anyKind))
        return translatedError(L"The path %ls is not valid.", directory);
    if (!probe.isDirWritable())
        return translatedError(L"The directory %ls is not writable.", directory);
    if (!ut::FileName::mkdir(directory, allPermissions, true))
        return translatedError(L"Could not create directory at: %ls", directory);
    return {};
}

}  // namespace

Expected<ConfigPath> ConfigPath::get(const OdString& directory) {
    // It is the path of the file that is asked whether it is a folder. An ordinary directory
    // answers no and takes the check below, which accepts what exists.
    if (ut::Dir::exists(configFile(directory)))
        return ConfigPath(directory);
    const Expected<void> checked = checkDirectory(directory);
    if (!checked)
        return checked.error();
    return ConfigPath(directory);
}

OdString ConfigPath::configFile(const OdString& directory) {
    return directory + ut::FileName::getPathSeparator() + L"directories.state";
}

}  // namespace common

#include <platform/kernel/OdError.h>
#include <platform/ut/FileTextInternal.h>
#include <platform/ut/ReadEntireFile.h>
#include <platform/ut/RegularFileInternal.h>

#include <string.h>

#include <utility>

namespace ut {

namespace {

OdString causeOf(int errorNumber) {
    if (errorNumber == notARegularFile)
        return OdString(L"Not a regular file");
    // Unlike strerror, the same in every locale.
    const char* text = strerrordesc_np(errorNumber);
    return text != nullptr ? OdString(text) : OdString::format(L"Error %i", errorNumber);
}

}  // namespace

OdString readEntireFile(const OdString& path) {
    FileText file = readFileText(path);
    if (file.errorNumber != 0)
        throw OdError(
            OdString::format(L"Unable to read file '%ls': %ls", path, causeOf(file.errorNumber)));
    return std::move(file.text);
}

}  // namespace ut

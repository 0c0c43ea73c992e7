#include <engine/base/Printable.h>
#include <engine/base/SystemFailure.h>
#include <engine/base/Translation.h>

namespace qrv {

OdString causeOf(std::error_code error) {
    // The system counts the links that it follows, here none, and says that there are too many.
    if (error == std::errc::too_many_symbolic_link_levels)
        return tr(L"it is a symbolic link, or one leads to it");
    if (error == std::errc::operation_not_supported)
        return tr(L"it is not a regular file");
    return OdString::fromNarrow(error.message());
}

ErrorMessage systemFailure(const OdString& text, const OdString& name, std::error_code cause) {
    return {OdString::format(text, printable(name), OdString(cause.message().c_str()))};
}

}  // namespace qrv

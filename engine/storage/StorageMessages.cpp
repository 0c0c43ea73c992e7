#include <engine/base/Printable.h>
#include <engine/base/SystemFailure.h>
#include <engine/base/Translation.h>
#include <engine/storage/StorageMessages.h>

namespace qrv {

ErrorMessage cannotStore(const OdString& path, const OdString& cause) {
    return {OdString::format(tr(L"'%ls' cannot be stored: %ls"), printable(path), cause)};
}

ErrorMessage cannotWrite(const OdString& path, const OdString& cause) {
    return {OdString::format(tr(L"'%ls' cannot be written: %ls"), printable(path), cause)};
}

ErrorMessage cannotRemove(const std::string& path, std::error_code cause) {
    return systemFailure(tr(L"'%ls' cannot be removed: %ls"), OdString::fromNarrow(path), cause);
}

ErrorMessage cannotRead(const OdString& url, const OdString& cause) {
    return {OdString::format(tr(L"The stored version '%ls' cannot be read: %ls"), printable(url),
                             cause)};
}

ErrorMessage notKept(const OdString& url) {
    return {
        OdString::format(tr(L"The stored version '%ls' is not in the repository"), printable(url))};
}

ErrorMessage damaged(const OdString& url, const OdString& cause) {
    return {
        OdString::format(tr(L"The stored version '%ls' is damaged: %ls"), printable(url), cause)};
}

}  // namespace qrv

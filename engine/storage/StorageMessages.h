#pragma once

#include <common/base/Expected.h>
#include <platform/kernel/OdString.h>

#include <system_error>

namespace qrv {

/// What the system said, in words that also fit below a path which leads through a link.
OdString causeOf(std::error_code error);

/// "'plan.dwg' cannot be stored: No space left on device"
ErrorMessage cannotStore(const OdString& path, const OdString& cause);
/// "'plan.dwg' cannot be written: Permission denied"
ErrorMessage cannotWrite(const OdString& path, const OdString& cause);
/// "The stored version 'po:1d4…' cannot be read: Input/output error"
ErrorMessage cannotRead(const OdString& url, const OdString& cause);
/// "The stored version 'po:1d4…' is not in the repository"
ErrorMessage notKept(const OdString& url);
/// "The stored version 'po:1d4…' is damaged: its contents have another digest"
ErrorMessage damaged(const OdString& url, const OdString& cause);

}  // namespace qrv

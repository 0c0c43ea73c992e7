#pragma once

#include <common/base/Expected.h>
#include <platform/kernel/OdString.h>

#include <string>
#include <system_error>

namespace qrv {

/// "'plan.dwg' cannot be stored: No space left on device"
ErrorMessage cannotStore(const OdString& path, const OdString& cause);
/// "'plan.dwg' cannot be written: Permission denied"
ErrorMessage cannotWrite(const OdString& path, const OdString& cause);
/// "'.qrv/tf/5f2….tf' cannot be removed: Permission denied"
ErrorMessage cannotRemove(const std::string& path, std::error_code cause);
/// "The stored version 'po:1d4…' cannot be read: Input/output error"
ErrorMessage cannotRead(const OdString& url, const OdString& cause);
/// "The stored version 'po:1d4…' is not in the repository"
ErrorMessage notKept(const OdString& url);
/// "The stored version 'po:1d4…' is damaged: its contents have another digest"
ErrorMessage damaged(const OdString& url, const OdString& cause);

}  // namespace qrv

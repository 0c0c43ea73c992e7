#pragma once

#include <common/base/ErrorMessage.h>
#include <platform/kernel/OdString.h>

#include <system_error>

namespace qrv {

/// What the system said, in words that also fit below a path which leads through a link.
OdString causeOf(std::error_code error);

/// The error of a system call: what could not be done, as a text with one "%ls" for `name` and one
/// for what the system said.
ErrorMessage systemFailure(const OdString& text, const OdString& name, std::error_code cause);

}  // namespace qrv

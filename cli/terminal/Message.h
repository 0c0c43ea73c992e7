#pragma once

#include <platform/kernel/OdString.h>

namespace qrv::cli {

/// Prints "qrv: " and the text on standard error, as one line: a line feed becomes "; ", a tab a
/// blank, and everything else is made printable.
void printMessage(const OdString& text);

}  // namespace qrv::cli

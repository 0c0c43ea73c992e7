#pragma once

#include <platform/kernel/OdString.h>

namespace qrv::cli {

/// The text as one line: a line feed becomes "; ", a tab a blank, and everything else is made
/// printable.
OdString oneLine(const OdString& text);

/// Prints "qrv: " and the text on standard error, as one line.
void printMessage(const OdString& text);

}  // namespace qrv::cli

#pragma once

#include <platform/kernel/OdString.h>

namespace qrv_cli {

/// A path or name for a person's eyes: what could steer a terminal or reorder its line (control
/// characters, bytes that are not UTF-8, marks of the writing direction), and what is invisible,
/// is written as \x1B, \u202E or \u200B.
OdString printable(const OdString& name);

/// Prints "qrv: " and the text on standard error, as one line: a line feed becomes "; ", a tab a
/// blank, and everything else is made printable.
void printMessage(const OdString& text);

}  // namespace qrv_cli

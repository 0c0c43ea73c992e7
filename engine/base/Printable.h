#pragma once

#include <platform/kernel/OdString.h>

namespace qrv {

/// A path or name for a person's eyes: what could steer a terminal or reorder its line (control
/// characters, bytes that are not UTF-8, marks of the writing direction), and what is invisible,
/// is written as \x1B, \u202E or \u200B.
OdString printable(const OdString& name);

/// Whether there is nothing in it that could steer a terminal or reorder its line. Something
/// invisible may be.
bool isHarmless(const OdString& text);

}  // namespace qrv

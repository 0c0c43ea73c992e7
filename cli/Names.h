#pragma once

#include <platform/kernel/OdString.h>

#include <string>

namespace qrv_cli {

/// Whether there is nothing in it that could steer a terminal or reorder its line. Something
/// invisible may be.
bool isHarmless(const OdString& text);

/// A name for standard output: printable where that is a terminal, elsewhere its own bytes, so that
/// another program can open the file.
std::string nameForOutput(const OdString& name);

}  // namespace qrv_cli

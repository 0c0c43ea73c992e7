#pragma once

#include <platform/kernel/OdString.h>

#include <string>

namespace qrv::cli {

/// A name for standard output: printable where that is a terminal, elsewhere its own bytes, so that
/// another program can open the file.
std::string nameForOutput(const OdString& name);

}  // namespace qrv::cli

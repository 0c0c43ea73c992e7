#pragma once

#include <common/json/Value.h>

namespace qrv::cli {

class Output;

/// Prints the document in the library's form, and a line feed after it.
void writeJson(const jsonlib::json::Value& document, Output& output);

}  // namespace qrv::cli

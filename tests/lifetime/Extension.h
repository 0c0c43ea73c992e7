#pragma once

#include <memory>

namespace qrv_test {

/// What the extension gives to the application, which knows nothing of its type.
using Held = std::shared_ptr<void>;

/// The type of each of the extension's functions: opens something in the folder and changes it, so
/// that letting go of it writes a file.
using Open = Held (*)(const char* folder);

}  // namespace qrv_test

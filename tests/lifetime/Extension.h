#pragma once

#include <memory>

namespace qrv_test {

/// What the extension gives to the application, which knows nothing of its type.
using Held = std::shared_ptr<void>;

/// The type of each of the extension's functions: opens something in the folder and changes it, so
/// that letting go of `held` writes a file.
using Open = void (*)(const char* folder, Held& held);

}  // namespace qrv_test

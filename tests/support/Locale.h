#pragma once

namespace qrv_test {

/// Makes the environment's locale that of the C and C++ libraries. Throws when the machine lacks
/// it, so that no run passes in a locale other than the one asked for.
void useLocaleOfTheEnvironment();

}  // namespace qrv_test

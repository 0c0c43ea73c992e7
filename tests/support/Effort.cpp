#include <tests/support/Effort.h>

#include <cstdlib>
#include <iostream>

namespace qrv_test {

bool isExhaustive() {
    return std::getenv("QRV_EXHAUSTIVE") != nullptr;
}

void tellTried(std::size_t count, std::string_view what) {
    std::cout << "tried: " << count << ' ' << what << '\n';
}

}  // namespace qrv_test

#include <tests/support/Locale.h>

#include <clocale>
#include <locale>
#include <stdexcept>

namespace qrv_test {

void useLocaleOfTheEnvironment() {
    if (std::setlocale(LC_ALL, "") == nullptr)
        throw std::runtime_error("the locale of the environment is not installed");
    std::locale::global(std::locale(""));
}

}  // namespace qrv_test

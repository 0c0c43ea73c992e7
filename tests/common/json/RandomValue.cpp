#include <tests/common/json/RandomValue.h>

#include <string>

namespace qrv_test {

namespace {

using namespace jsonlib::json;

std::wstring randomText(std::mt19937_64& random) {
    std::wstring text;
    for (std::uint64_t length = random() % 24; length > 0; --length) {
        const std::uint64_t range = random() % 2 == 0 ? 0x80 : 0x10000;
        text += static_cast<wchar_t>(random() % range);
    }
    return text;
}

Value randomLeaf(std::mt19937_64& random) {
    switch (random() % 6) {
        case 0:
            return randomText(random);
        case 1:
            return random() % 2 == 0;
        case 2:
            return std::uint64_t{random() >> random() % 64};
        case 3:
            return static_cast<std::int64_t>(random()) >> random() % 64;
        case 4:
            return static_cast<double>(static_cast<std::int64_t>(random() % 2'000'001) -
                                       1'000'000) /
                   1024;
        default:
            return Value();
    }
}

}  // namespace

Value randomValue(std::mt19937_64& random, int levels) {
    const std::uint64_t kind = levels > 1 ? random() % 4 : 3;
    if (kind == 0) {
        Object object;
        for (std::uint64_t size = random() % 5; size > 0; --size)
            object[randomText(random)] = randomValue(random, levels - 1);
        return object;
    }
    if (kind == 1) {
        Array array;
        for (std::uint64_t size = random() % 5; size > 0; --size)
            array.push_back(randomValue(random, levels - 1));
        return array;
    }
    return randomLeaf(random);
}

}  // namespace qrv_test

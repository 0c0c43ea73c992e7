#include <engine/paths/CheckedUrl.h>
#include <engine/paths/PackedUrl.h>

#include <gtest/gtest.h>

#include <random>
#include <string>

namespace {

using qrv::packedUrl;
using qrv::unpackedUrl;

const std::string digest = "0123456789abcdef0123456789abcdef0123456789abcdef0123456789abcdef";
const std::string digestBytes =
    "\x01\x23\x45\x67\x89\xab\xcd\xef\x01\x23\x45\x67\x89\xab\xcd\xef"
    "\x01\x23\x45\x67\x89\xab\xcd\xef\x01\x23\x45\x67\x89\xab\xcd\xef";

struct Form {
    std::string url;
    std::string bytes;
};

const Form forms[] = {
    {"", ""},
    {"po:" + digest, '\x01' + digestBytes},
    {"tf:Plan-1_a#" + digest, '\x02' + digestBytes + "Plan-1_a"},
    {"tf:" + digest.substr(0, 32) + '#' + digest, '\x03' + digestBytes + digestBytes.substr(0, 16)},
    // Names that are nearly those of 32 digits.
    {"tf:" + digest.substr(0, 31) + "A#" + digest,
     '\x02' + digestBytes + digest.substr(0, 31) + 'A'},
    {"tf:" + digest.substr(0, 30) + '#' + digest, '\x02' + digestBytes + digest.substr(0, 30)},
    {"tf:" + std::string(200, 's') + '#' + digest, '\x02' + digestBytes + std::string(200, 's')},
};

TEST(PackedUrl, HasAboutHalfTheBytes) {
    for (const Form& form : forms)
        EXPECT_EQ(packedUrl(OdString::fromNarrow(form.url)), form.bytes) << form.url;
}

TEST(PackedUrl, IsUnpacked) {
    for (const Form& form : forms)
        EXPECT_EQ(unpackedUrl(form.bytes), OdString::fromNarrow(form.url)) << form.url;
}

TEST(PackedUrl, IsTheOnlyOneOfItsUrl) {
    for (const std::string& bytes : {
             std::string(1, '\x01'),
             '\x01' + digestBytes.substr(1),
             '\x01' + digestBytes + 'x',
             std::string(1, '\0') + digestBytes,
             '\x02' + digestBytes,
             '\x02' + digestBytes + "a/b",
             '\x02' + digestBytes + "con",
             '\x02' + digestBytes + std::string(201, 's'),
             '\x02' + digestBytes + digest.substr(0, 32),
             '\x03' + digestBytes + digestBytes.substr(0, 15),
             '\x03' + digestBytes + digestBytes.substr(0, 17),
             '\x04' + digestBytes,
             "po:" + digest,
         })
        EXPECT_EQ(unpackedUrl(bytes), std::nullopt) << bytes;
}

TEST(PackedUrl, OfAnyBytesIsNoneOrGoesBackToTheseBytes) {
    std::mt19937 random(1);
    int taken = 0;
    for (int trial = 0; trial < 20000; ++trial) {
        std::string bytes(1, static_cast<char>(random() % 5));
        bytes += digestBytes;
        for (unsigned rest = random() % 4 * 8; rest > 0; --rest)
            bytes += "abc/0\xff"[random() % (random() % 2 == 0 ? 3 : 6)];
        const std::optional<OdString> url = unpackedUrl(bytes);
        if (!url)
            continue;
        ++taken;
        EXPECT_TRUE(qrv::isCheckedUrl(*url));
        EXPECT_EQ(packedUrl(*url), bytes);
    }
    EXPECT_GT(taken, 1000);
}

TEST(PackedUrl, OfWhatIsNoUrlIsRefused) {
    for (const wchar_t* const text : {L"po:../x", L"x", L"tf:#0"}) {
        EXPECT_EQ(packedUrl(text), OdString(text).toNarrow());
        EXPECT_EQ(unpackedUrl(packedUrl(text)), std::nullopt);
    }
}

}  // namespace

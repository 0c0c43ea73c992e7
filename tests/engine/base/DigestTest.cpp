#include <engine/base/Digest.h>

#include <gmock/gmock.h>

#include <string>
#include <string_view>
#include <utility>

namespace {

using qrv::Digest;
using qrv::isDigest;

// The examples that were published with the algorithm.
TEST(Digest, IsSha256InLowerCase) {
    EXPECT_EQ(Digest::of(""), "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855");
    EXPECT_EQ(Digest::of("abc"),
              "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad");
    EXPECT_EQ(Digest::of("abcdbcdecdefdefgefghfghighijhijkijkljklmklmnlmnomnopnopq"),
              "248d6a61d20638b8e5c026930c3e6039a33ce45964ff2167f6ecedd419db06c1");
    EXPECT_EQ(Digest::of(std::string(1000000, 'a')),
              "cdc76e5c9914fb9281a1c7e284d73e67f1809a48a497200e046d39ccc7112cd0");
}

TEST(Digest, HasOneForm) {
    const OdString digest = L"e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855";
    EXPECT_TRUE(isDigest(digest));
    EXPECT_FALSE(isDigest(OdString()));
    EXPECT_FALSE(isDigest(digest.mid(1)));
    EXPECT_FALSE(isDigest(digest + L'0'));
    for (const wchar_t unit : {L'g', L'E', L'/', L':', L'`', L' ', L'\0', L'\u0660'})
        EXPECT_FALSE(isDigest(digest.mid(1) + unit)) << static_cast<int>(unit);
}

TEST(Digest, DoesNotDependOnThePieces) {
    const std::string bytes = "a text\0 with a NUL";
    for (std::size_t cut = 0; cut <= bytes.size(); ++cut) {
        Digest digest;
        digest.add(std::string_view(bytes).substr(0, cut));
        Digest moved = std::move(digest);
        moved.add(std::string_view(bytes).substr(cut));
        EXPECT_EQ(moved.finish(), Digest::of(bytes)) << cut;
    }
}

}  // namespace

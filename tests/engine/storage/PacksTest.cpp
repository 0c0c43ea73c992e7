#include <sys/Memory.h>
#include <sys/ScopedFault.h>
#include <tests/engine/storage/PackFolder.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <filesystem>
#include <map>

namespace {

namespace fs = std::filesystem;
using qrv::Packs;
using qrv::PackWriter;
using qrv_test::digestOf;
using qrv_test::revision;
using qrv_test::writeFile;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

class PacksTest : public qrv_test::PackFolder {
protected:
    /// Adds contents to the next pack, as those that continue `previous`.
    static void addAfter(Packs& packs, const std::string& contents, const std::string& previous) {
        const std::optional<qrv::NextBase> next = packs.baseAfter(digestOf(previous));
        std::optional<qrv::DifferenceBase> base;
        qrv::Bytes bytes;
        if (next) {
            bytes = qrv::readWhole(*packs.open(next->digest).value()).value();
            base = {.digest = next->digest,
                    .contents = bytes.span(),
                    .depth = next->depth,
                    .roundStart = next->roundStart};
        }
        packs.writer().add(digestOf(contents), contents, base, std::nullopt).value();
    }
};

TEST_F(PacksTest, WithoutAFolderThereAreNone) {
    Packs packs(root_);
    EXPECT_THAT(packs.names().value(), IsEmpty());
    EXPECT_FALSE(packs.find(digestOf("x")).value());
    EXPECT_FALSE(packs.has(digestOf("x")));
    EXPECT_TRUE(packs.flush());
    EXPECT_FALSE(fs::exists(folder_ / ".qrv"));
}

TEST_F(PacksTest, FindContentsInWhicheverPackTheyLie) {
    packOf({"one", "two"});
    packOf({"three"});
    Packs packs(root_);
    EXPECT_THAT(packs.names().value(), SizeIs(2));
    for (const char* const contents : {"one", "two", "three"}) {
        EXPECT_EQ(read(packs, digestOf(contents)), contents);
        EXPECT_TRUE(packs.has(digestOf(contents)));
    }
    EXPECT_FALSE(packs.has(digestOf("four")));
}

TEST_F(PacksTest, PassOverWhatIsCalledOtherwise) {
    const std::string name = packOf({"one"});
    writeFile(folder_ / ".qrv/packs/.1-0.qrv-tmp", "");
    writeFile(folder_ / ".qrv/packs/notes.txt", "");
    writeFile(folder_ / ".qrv/packs/x.pack", "");
    Packs packs(root_);
    EXPECT_THAT(packs.names().value(), ElementsAre(name));
    EXPECT_FALSE(packs.find(digestOf("two")).value());
}

TEST_F(PacksTest, FindWhatAnotherProcessAddsMeanwhile) {
    packOf({"one"});
    Packs packs(root_);
    EXPECT_EQ(read(packs, digestOf("two")), "not there");
    packOf({"two"});
    EXPECT_EQ(read(packs, digestOf("two")), "two");
}

TEST_F(PacksTest, FindWhatAnotherProcessPutsIntoAnotherPack) {
    const std::string first = packOf({"one"});
    const std::string second = packOf({"two"});
    Packs packs(root_);
    EXPECT_EQ(read(packs, digestOf("one")), "one");
    packOf({"one", "two"});
    fs::remove(fileOf(first));
    fs::remove(fileOf(second));
    EXPECT_EQ(read(packs, digestOf("two")), "two");
    packs.forget();
    EXPECT_EQ(read(packs, digestOf("one")), "one");
    EXPECT_THAT(packs.names().value(), SizeIs(1));
}

TEST_F(PacksTest, FindNewContentsBeforeTheyHaveTheirName) {
    Packs packs(root_);
    packs.writer().add(digestOf("one"), std::string("one"), std::nullopt, std::nullopt).value();
    EXPECT_TRUE(packs.has(digestOf("one")));
    EXPECT_EQ(read(packs, digestOf("one")), "one");
    EXPECT_TRUE(packs.renew(packs.find(digestOf("one")).value().value()));
    EXPECT_TRUE(packs.flush());
    EXPECT_EQ(read(packs, digestOf("one")), "one");
    EXPECT_THAT(packs.names().value(), SizeIs(1));
}

TEST_F(PacksTest, ForgetWhatWasGivenUp) {
    Packs packs(root_);
    packs.writer().add(digestOf("one"), std::string("one"), std::nullopt, std::nullopt).value();
    packs.giveUp();
    EXPECT_FALSE(packs.has(digestOf("one")));
    EXPECT_TRUE(packs.flush());
    EXPECT_THAT(packs.names().value(), IsEmpty());
}

TEST_F(PacksTest, FlushInAsManyCallsWhateverTheNumberOfContents) {
    const auto callsFor = [this](int count) {
        fs::remove_all(folder_ / ".qrv");
        Packs packs(root_);
        for (int number = 0; number < count; ++number) {
            const std::string contents = std::to_string(number);
            packs.writer().add(digestOf(contents), contents, std::nullopt, std::nullopt).value();
        }
        const sys::ScopedFault none(1 << 30, EIO);
        packs.flush().value();
        return none.callCount();
    };
    EXPECT_EQ(callsFor(3), callsFor(3000));
}

TEST_F(PacksTest, OneThatStandsAloneServes136Versions) {
    Packs packs(root_);
    std::map<int, int> byDepth;
    for (unsigned number = 1; number <= 137; ++number) {
        addAfter(packs, revision(number), number == 1 ? "none" : revision(number - 1));
        const qrv::PackBlock block = packs.find(digestOf(revision(number))).value()->block;
        ++byDepth[block.depth];
        EXPECT_EQ(block.depth == 1, number == 1 || number == 137) << number;
        EXPECT_LE(block.roundStart, block.depth);
        if (number % 20 == 0)
            packs.flush().value();
    }
    EXPECT_EQ(byDepth[16], 16);
    packs.flush().value();
    Packs others(root_);
    for (unsigned number = 1; number <= 137; ++number)
        EXPECT_TRUE(read(others, digestOf(revision(number))) == revision(number)) << number;
}

TEST_F(PacksTest, StayFewHoweverOftenSomethingIsStored) {
    std::vector<std::string> all;
    std::size_t most = 0;
    Packs packs(root_);
    for (unsigned number = 0; number < 100; ++number) {
        all.push_back(qrv_test::randomBytes(200, number));
        packs.writer()
            .add(digestOf(all.back()), all.back(), std::nullopt,
                 qrv::Sketch{.features = {static_cast<std::uint16_t>(number)}})
            .value();
        packs.flush().value();
        most = std::max(most, packs.names().value().size());
    }
    EXPECT_LE(most, 17U);
    Packs others(root_);
    for (const std::string& contents : all)
        EXPECT_TRUE(read(others, digestOf(contents)) == contents);
    std::size_t sketches = 0;
    const std::vector<std::string> names = packs.names().value();
    for (const std::string& name : names) {
        EXPECT_THAT(opened(name)->damage().value(), IsEmpty());
        sketches += opened(name)->sketches().value().size();
    }
    EXPECT_EQ(sketches, all.size());
}

// A collection that was interrupted left packs in which chains ran the other way. Whichever pack
// came first was followed, in a circle, and the contents passed for damaged.
TEST_F(PacksTest, LeadOutOfACircleThroughWhicheverPackCan) {
    const std::string old = revision(1);
    const std::string young = revision(2);
    const std::string begun = packOf({old});
    packOfDifference(young, old);
    qrv::PackWriter turned(root_);
    add(turned, young);
    addAgainst(turned, old, young);
    turned.finish().value();
    for (const bool isBegunThere : {true, false}) {
        if (!isBegunThere)
            fs::remove(fileOf(begun));
        EXPECT_TRUE(read(old) == old);
        EXPECT_TRUE(read(young) == young);
        Packs packs(root_);
        const std::vector<std::string> names = packs.names().value();
        for (const std::string& name : names) {
            for (const std::string& each : {old, young}) {
                const auto place = opened(name)->find(digestOf(each)).value();
                if (!place)
                    continue;
                const auto reader = packs.open(*place);
                ASSERT_TRUE(reader) << name;
                EXPECT_TRUE(qrv_test::readAll(**reader) == each) << name;
            }
        }
    }
}

TEST_F(PacksTest, WithNothingButACircleAreDamaged) {
    const std::string begun = packOf({revision(1)});
    const std::string first = packOfDifference(revision(2), revision(1));
    fs::remove(fileOf(begun));
    const std::string second = packOfDifference(revision(1), revision(2));
    for (const unsigned number : {1U, 2U})
        EXPECT_THAT(read(revision(number)), testing::HasSubstr("it builds on too many others"));
}

TEST_F(PacksTest, AreReadAsIfOthersWereGone) {
    const std::string begun = packOf({revision(1)});
    packOfDifference(revision(2), revision(1));
    Packs packs(root_, {begun});
    EXPECT_EQ(read(packs, digestOf(revision(1))), "not there");
    EXPECT_THAT(read(packs, digestOf(revision(2))),
                testing::HasSubstr("one that it builds on is missing"));
}

TEST_F(PacksTest, AreNotTakenUpTogetherWithTheSameContents) {
    std::vector<std::string> names;
    for (unsigned number = 0; number < 8; ++number)
        names.push_back(packOf({qrv_test::randomBytes(200, number)}));
    names.push_back(packOf({qrv_test::randomBytes(200, 7), qrv_test::randomBytes(90, 20)}));
    Packs packs(root_);
    packs.writer().add(digestOf("new"), std::string("new"), std::nullopt, std::nullopt).value();
    packs.flush().value();
    // One of the two that have something in common, beside the new one.
    EXPECT_THAT(packs.names().value(), SizeIs(2));
    for (unsigned number = 0; number < 8; ++number)
        EXPECT_TRUE(read(qrv_test::randomBytes(200, number)) == qrv_test::randomBytes(200, number));
    EXPECT_TRUE(read(qrv_test::randomBytes(90, 20)) == qrv_test::randomBytes(90, 20));
}

TEST_F(PacksTest, AreNotTakenUpWhenTheyAreDamaged) {
    std::vector<std::string> names;
    for (unsigned number = 0; number < 8; ++number)
        names.push_back(packOf({qrv_test::randomBytes(200, number)}));
    std::string bytes = qrv_test::readFile(fileOf(names[0]));
    bytes[0] = 'Q';
    fs::permissions(fileOf(names[0]), fs::perms(0644));
    writeFile(fileOf(names[0]), bytes);
    Packs packs(root_);
    const std::string last = qrv_test::randomBytes(200, 9);
    packs.writer().add(digestOf(last), last, std::nullopt, std::nullopt).value();
    packs.flush().value();
    EXPECT_THAT(packs.names().value(), SizeIs(2));
    EXPECT_TRUE(fs::exists(fileOf(names[0])));
    for (unsigned number = 0; number < 8; ++number)
        EXPECT_TRUE(read(qrv_test::randomBytes(200, number)) == qrv_test::randomBytes(200, number));
}

TEST_F(PacksTest, RenewThePacksInWhichContentsAndTheirBasesLie) {
    Packs packs(root_);
    for (unsigned number = 1; number <= 3; ++number) {
        addAfter(packs, revision(number), number == 1 ? "none" : revision(number - 1));
        packs.flush().value();
    }
    const auto old = fs::file_time_type::clock::now() - std::chrono::hours(25);
    const std::vector<std::string> names = packs.names().value();
    for (const std::string& name : names)
        fs::last_write_time(fileOf(name), old);
    EXPECT_TRUE(packs.renew(packs.find(digestOf(revision(2))).value().value()));
    int renewed = 0;
    for (const std::string& name : names)
        renewed += fs::last_write_time(fileOf(name)) > old ? 1 : 0;
    EXPECT_EQ(renewed, 2);
}

TEST_F(PacksTest, NeedsTheMemoryThatItSays) {
    Packs packs(root_);
    const std::string large(40000000, 'x');
    addAfter(packs, large, "none");
    addAfter(packs, large + "more", large);
    packs.flush().value();
    const sys::ScopedMemoryAtHand little(1 << 20);
    EXPECT_EQ(read(packs, digestOf(large + "more")),
              "error: The version " + qrv::Digest::of(large + "more") + " in '.qrv/packs/" +
                  packs.names().value().front() +
                  ".pack' cannot be read: it takes 77 MiB of memory, and 1 MiB are free");
}

}  // namespace

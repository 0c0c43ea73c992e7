#include <common/repository/IoInterface.h>
#include <tests/support/RecordingIo.h>

#include <gmock/gmock.h>

#include <memory>
#include <type_traits>

namespace {

/// Overrides no more than a host must.
class CountedIo : public qrv_test::RecordingIo {
public:
    explicit CountedIo(int& destroyed) : destroyed_(destroyed) {}
    ~CountedIo() override { ++destroyed_; }

private:
    int& destroyed_;
};

static_assert(std::is_abstract_v<common::IoInterface>);
static_assert(std::has_virtual_destructor_v<common::IoInterface>);
static_assert(!std::is_convertible_v<const common::IoInterface&, common::IoInterfaceRef>);

}  // namespace

TEST(IoInterface, IsDestroyedThroughItself) {
    int destroyed = 0;
    std::unique_ptr<common::IoInterface> io = std::make_unique<CountedIo>(destroyed);
    io.reset();
    EXPECT_EQ(destroyed, 1);
}

TEST(IoInterface, TakesResultsByValue) {
    const qrv_test::RecordingIo recording;
    const common::IoInterface& io = recording;
    io.reportResult({});
    io.reportResult(ErrorMessage{L"no room", 0});
    io.reserved();
    ASSERT_EQ(recording.results.size(), 2U);
    EXPECT_TRUE(recording.results[0].hasValue());
    EXPECT_EQ(recording.results[1].error().message, L"no room");
}

TEST(IoInterfaceRef, RefersToTheVeryObject) {
    const qrv_test::RecordingIo io;
    const common::IoInterfaceRef reference(io);
    const common::IoInterfaceRef copy = reference;
    EXPECT_EQ(&reference.get(), &io);
    EXPECT_EQ(&copy.get(), &io);
}

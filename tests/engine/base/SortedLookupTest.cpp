#include <engine/base/SortedLookup.h>

#include <gtest/gtest.h>

#include <vector>

namespace {

int placeOf(int sought, const std::vector<int>& numbers) {
    const int* const found = qrv::findSorted(numbers, [&](int each) { return each - sought; });
    return found == nullptr ? -1 : static_cast<int>(found - numbers.data());
}

TEST(SortedLookup, FindsWhatIsThereAndNothingElse) {
    const std::vector<int> numbers = {1, 3, 5, 7, 9};
    for (int sought = 0; sought <= 10; ++sought)
        EXPECT_EQ(placeOf(sought, numbers), sought % 2 == 0 ? -1 : sought / 2) << sought;
    EXPECT_EQ(placeOf(1, {}), -1);
}

}  // namespace

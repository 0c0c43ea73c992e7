#include <platform/kernel/OdRxObject.h>

#include <gmock/gmock.h>

#include <thread>
#include <utility>
#include <vector>

namespace {

/// Tells when it is destroyed.
class Watched : public OdRxObject {
public:
    explicit Watched(int& destroyed) : destroyed_(destroyed) {}
    ~Watched() override { ++destroyed_; }

private:
    int& destroyed_;
};

class OdRxObjectPtrTest : public testing::Test {
protected:
    /// An object that only the returned pointer holds.
    OdRxObjectPtr makeObject() {
        const auto* object = new Watched(destroyed_);
        OdRxObjectPtr pointer(object);
        object->release();
        return pointer;
    }

    int destroyed_ = 0;
};

TEST(OdRxObject, BeginsWithOneReferenceAndEndsWithTheLast) {
    int destroyed = 0;
    const auto* object = new Watched(destroyed);
    EXPECT_EQ(object->numRefs(), 1);

    object->addRef();
    EXPECT_EQ(object->numRefs(), 2);
    object->release();
    EXPECT_EQ(object->numRefs(), 1);
    EXPECT_EQ(destroyed, 0);
    object->release();

    EXPECT_EQ(destroyed, 1);
}

TEST(OdRxObject, CountsFromSeveralThreads) {
    int destroyed = 0;
    const auto* object = new Watched(destroyed);
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i)
        threads.emplace_back([object] {
            for (int n = 0; n < 20000; ++n) {
                object->addRef();
                const OdRxObjectPtr pointer(object);
                object->release();
            }
        });
    for (std::thread& thread : threads)
        thread.join();

    EXPECT_EQ(object->numRefs(), 1);
    EXPECT_EQ(destroyed, 0);
    object->release();
    EXPECT_EQ(destroyed, 1);
}

TEST_F(OdRxObjectPtrTest, IsEmptyByDefault) {
    const OdRxObjectPtr empty;
    const OdRxObjectPtr copy = empty;

    EXPECT_TRUE(empty.isNull());
    EXPECT_EQ(empty.get(), nullptr);
    EXPECT_TRUE(copy.isNull());
    EXPECT_EQ(empty, OdRxObjectPtr(nullptr));
}

TEST_F(OdRxObjectPtrTest, TakesAFurtherReference) {
    const auto* object = new Watched(destroyed_);
    {
        const OdRxObjectPtr pointer(object);
        EXPECT_EQ(pointer.get(), object);
        EXPECT_FALSE(pointer.isNull());
        EXPECT_EQ(object->numRefs(), 2);
    }
    EXPECT_EQ(object->numRefs(), 1);
    object->release();
    EXPECT_EQ(destroyed_, 1);
}

TEST_F(OdRxObjectPtrTest, SharesByCopying) {
    OdRxObjectPtr first = makeObject();
    {
        const OdRxObjectPtr second = first;
        EXPECT_EQ(second, first);
        EXPECT_EQ(first.get()->numRefs(), 2);
        first = OdRxObjectPtr();
        EXPECT_EQ(second.get()->numRefs(), 1);
        EXPECT_EQ(destroyed_, 0);
    }
    EXPECT_EQ(destroyed_, 1);
}

TEST_F(OdRxObjectPtrTest, HandsItsReferenceOverByMoving) {
    OdRxObjectPtr first = makeObject();
    const OdRxObject* object = first.get();

    const OdRxObjectPtr second = std::move(first);

    EXPECT_EQ(second.get(), object);
    EXPECT_EQ(object->numRefs(), 1);
    EXPECT_TRUE(first.isNull());  // NOLINT(bugprone-use-after-move): that it is empty is the point
}

TEST_F(OdRxObjectPtrTest, GivesTheOldReferenceBackWhenAssignedTo) {
    OdRxObjectPtr pointer = makeObject();

    pointer = makeObject();

    EXPECT_EQ(destroyed_, 1);
    EXPECT_EQ(pointer.get()->numRefs(), 1);
}

TEST_F(OdRxObjectPtrTest, SurvivesAssignmentToItself) {
    OdRxObjectPtr pointer = makeObject();
    const OdRxObjectPtr& same = pointer;

    pointer = same;

    EXPECT_EQ(destroyed_, 0);
    EXPECT_EQ(pointer.get()->numRefs(), 1);
}

}  // namespace

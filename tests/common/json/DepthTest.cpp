#include <common/json/Reader.h>
#include <common/json/Value.h>
#include <common/json/Writer.h>
#include <tests/support/Effort.h>

#include <gmock/gmock.h>
#include <pthread.h>

#include <functional>
#include <string>

namespace jsonlib::json {
namespace {

/// Several hundred times what the stack below has room for.
const std::size_t depth = qrv_test::isExhaustive() ? 10'000'000 : 1'000'000;

/// Runs the work on a stack far too small for any recursion over the depth above.
void onSmallStack(std::function<void()> work) {
    pthread_attr_t attributes;
    ASSERT_EQ(pthread_attr_init(&attributes), 0);
    ASSERT_EQ(pthread_attr_setstacksize(&attributes, 256 * 1024), 0);
    pthread_t thread = {};
    const auto run = [](void* argument) -> void* {
        (*static_cast<std::function<void()>*>(argument))();
        return nullptr;
    };
    ASSERT_EQ(pthread_create(&thread, &attributes, run, &work), 0);
    ASSERT_EQ(pthread_join(thread, nullptr), 0);
    ASSERT_EQ(pthread_attr_destroy(&attributes), 0);
}

std::wstring repeated(std::wstring_view piece, std::size_t count) {
    std::wstring text;
    text.reserve(piece.size() * count);
    for (std::size_t index = 0; index < count; ++index)
        text += piece;
    return text;
}

bool readText(const std::wstring& text, Value& value) {
    return read(text.data(), text.data() + text.size(), value);
}

std::size_t depthOf(const Value& value) {
    std::size_t levels = 1;
    for (const Value* inner = &value; !inner->getArray().empty(); ++levels)
        inner = &inner->getArray()[0];
    return levels;
}

TEST(Depth, OfOpenBracketsIsAnswered) {
    onSmallStack([] {
        Value value = L"before";
        EXPECT_FALSE(readText(std::wstring(depth, L'['), value));
        EXPECT_EQ(value, Value(L"before"));
    });
}

TEST(Depth, OfNestedArraysIsReadCopiedComparedAndDestroyed) {
    onSmallStack([] {
        Value value;
        ASSERT_TRUE(readText(std::wstring(depth, L'[') + std::wstring(depth, L']'), value));
        EXPECT_EQ(depthOf(value), depth);
        Value copy = value;
        EXPECT_EQ(depthOf(copy), depth);
        EXPECT_TRUE(copy == value);
        copy = Value();
        EXPECT_EQ(copy, Value());
    });
}

TEST(Depth, OfNestedObjectsAndArraysIsReadCopiedComparedAndDestroyed) {
    onSmallStack([] {
        const std::size_t pairs = depth / 20;
        Value value;
        const std::wstring text = repeated(L"{\"a\":[", pairs) + repeated(L"]}", pairs);
        ASSERT_TRUE(readText(text, value));
        Value copy = value;
        EXPECT_TRUE(copy == value);
        value = Array();
        EXPECT_FALSE(copy == value);
    });
}

TEST(Depth, IsWritten) {
    onSmallStack([] {
        constexpr std::size_t levels = 1'500;
        Value value;
        ASSERT_TRUE(readText(std::wstring(levels, L'[') + std::wstring(levels, L']'), value));
        const std::wstring text = write(value);
        Value again;
        ASSERT_TRUE(readText(text, again));
        EXPECT_EQ(depthOf(again), levels);
    });
}

TEST(Depth, OfAnObjectOutsideAnyValueIsDestroyed) {
    onSmallStack([] {
        Value value;
        constexpr std::size_t levels = 200'000;
        ASSERT_TRUE(readText(std::wstring(levels, L'[') + std::wstring(levels, L']'), value));
        Object object;
        object[L"deep"] = std::move(value);
        EXPECT_EQ(object.size(), 1u);
    });
}

}  // namespace
}  // namespace jsonlib::json

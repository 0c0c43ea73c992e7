#include <common/history/HistoryItem.h>
#include <platform/kernel/Clock.h>
#include <tests/support/Catalogue.h>
#include <tests/support/VirtualTable.h>

#include <dlfcn.h>
#include <gmock/gmock.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <type_traits>
#include <utility>

namespace {

using common::HistoryItem;
using common::LoadedHistory;
using qut::IListItem;

static_assert(!std::is_final_v<HistoryItem>);

constexpr std::int64_t second = 1000;
constexpr std::int64_t minute = 60 * second;
constexpr std::int64_t hour = 60 * minute;
constexpr std::int64_t day = 24 * hour;
// 2024-03-07T10:00:00Z
constexpr std::int64_t commitMs = 1'709'805'600'000;

const std::string spot = " \xE2\xA6\x81 ";

OdTimeStamp stamp(std::int64_t milliseconds) {
    OdTimeStamp time;
    time.setPackedValue(milliseconds);
    return time;
}

HistoryItem itemBy(const char* author, int number = 12) {
    return {stamp(commitMs), OdString(author), L"title", L"detail", number};
}

/// The age that is told of a commit so many milliseconds old.
std::string ageAfter(std::int64_t ageMs) {
    const kernel::ScopedClock clock(commitMs + ageMs);
    const std::string text = itemBy("ada").getInfo().toStdString();
    const std::string before = "12" + spot + "ada" + spot;
    return text.starts_with(before) ? text.substr(before.size()) : "not behind author: " + text;
}

/// What the info line says beside the age.
std::string infoBy(const char* author, int number = 12) {
    const kernel::ScopedClock clock(commitMs);
    return itemBy(author, number).getInfo().toStdString();
}

// The name of an icon pointed into the library's own memory, and a host that unloaded an extension
// read what was there no more: a literal of Qt is not copied when it is given out.
TEST(HistoryItem, GivesOutTextsOfTheirOwn) {
    const HistoryItem item = itemBy("ada");
    for (const QString& text : {item.getName(), item.getLeftIconSource(), item.getInfo()}) {
        Dl_info library;
        EXPECT_FALSE(text.isEmpty());
        EXPECT_EQ(dladdr(text.constData(), &library), 0) << text.toStdString();
    }
}

TEST(HistoryItem, KeepsWhatItIsMadeOf) {
    const HistoryItem item = itemBy("ada@example.org");
    EXPECT_EQ(item.time, stamp(commitMs));
    EXPECT_EQ(item.author, L"ada@example.org");
    EXPECT_EQ(item.name, L"title");
    EXPECT_EQ(item.detail, L"detail");
    EXPECT_EQ(item.number, 12);
}

TEST(HistoryItem, GivesItsThirteenAnswers) {
    const kernel::ScopedClock clock(commitMs);
    const HistoryItem item(stamp(commitMs), L"ada", L"T\u00FCr %ls", L"detail", 3);
    const IListItem& row = item;
    EXPECT_EQ(row.getName(), QString::fromUtf8("T\xC3\xBCr %ls"));
    EXPECT_EQ(row.getLeftIconSource(), QString("avatar-placeholder.svg"));
    EXPECT_EQ(row.getRightIconSource(), QString());
    EXPECT_FALSE(row.isChecked());
    EXPECT_FALSE(row.isCheckable());
    EXPECT_TRUE(row.isEnabled());
    EXPECT_EQ(row.getToolTip(), QString());
    EXPECT_EQ(row.getBadge(), QString());
    EXPECT_EQ(row.getInfo().toStdString(), "3" + spot + "ada" + spot + "less than a minute ago");
    EXPECT_EQ(row.getIndent(), 0);
    EXPECT_FALSE(row.isBold());
    EXPECT_FALSE(row.isExpanded());
    EXPECT_FALSE(row.hasChildren());
}

template <class Operation>
std::ptrdiff_t slot(Operation operation) {
    return qrv_test::slotOf(operation, &IListItem::getName);
}

TEST(HistoryItem, IsAskedInTheOrderOfTheInterface) {
    EXPECT_EQ(slot(&IListItem::getName), 0);
    EXPECT_EQ(slot(&IListItem::getLeftIconSource), 1);
    EXPECT_EQ(slot(&IListItem::getRightIconSource), 2);
    EXPECT_EQ(slot(&IListItem::isChecked), 3);
    EXPECT_EQ(slot(&IListItem::isCheckable), 4);
    EXPECT_EQ(slot(&IListItem::isEnabled), 5);
    EXPECT_EQ(slot(&IListItem::getToolTip), 6);
    EXPECT_EQ(slot(&IListItem::getBadge), 7);
    EXPECT_EQ(slot(&IListItem::getInfo), 8);
    EXPECT_EQ(slot(&IListItem::getIndent), 9);
    EXPECT_EQ(slot(&IListItem::isBold), 10);
    EXPECT_EQ(slot(&IListItem::isExpanded), 11);
    EXPECT_EQ(slot(&IListItem::hasChildren), 12);
}

TEST(HistoryItem, TellsItsAge) {
    const struct {
        std::int64_t ageMs;
        const char* text;
    } cases[] = {
        {0, "less than a minute ago"},
        {1, "less than a minute ago"},
        {minute - 1, "less than a minute ago"},
        {minute, "1  minutes ago"},
        {2 * minute - 1, "1  minutes ago"},
        {2 * minute, "2  minutes ago"},
        {5 * minute + 30 * second, "5  minutes ago"},
        {10 * minute, "10  minutes ago"},
        {hour - 1, "59  minutes ago"},
        {hour, "1 hours ago"},
        {2 * hour - 1, "1 hours ago"},
        {2 * hour, "2 hours ago"},
        {13 * hour, "13 hours ago"},
        {23 * hour + 59 * minute, "23 hours ago"},
        {day - 1, "23 hours ago"},
        {day, "Mar 7, 2024"},
        {day + 1, "Mar 7, 2024"},
        {365 * day, "Mar 7, 2024"},
        {100'000 * day, "Mar 7, 2024"},
    };
    for (const auto& [ageMs, text] : cases)
        EXPECT_EQ(ageAfter(ageMs), text) << ageMs;
}

TEST(HistoryItem, ShowsTheDateOfACommitFromTheFuture) {
    EXPECT_EQ(ageAfter(-1), "Mar 7, 2024");
    EXPECT_EQ(ageAfter(-2 * day), "Mar 7, 2024");
}

TEST(HistoryItem, CountsDaysFromTheCommitAndNotFromMidnight) {
    // The commit is of 10 o'clock: the next day's morning is still hours away.
    EXPECT_EQ(ageAfter(14 * hour), "14 hours ago");
    EXPECT_EQ(ageAfter(23 * hour), "23 hours ago");
}

TEST(HistoryItem, ShowsItsDateInUniversalTime) {
    const kernel::ScopedClock clock(commitMs);
    const auto dateOf = [](std::int64_t milliseconds) {
        return HistoryItem(stamp(milliseconds), OdString(), OdString(), OdString(), 1)
            .getInfo()
            .toStdString();
    };
    EXPECT_EQ(dateOf(1'704'067'199'999), "1" + spot + "Dec 31, 2023");
    EXPECT_EQ(dateOf(1'704'067'200'000), "1" + spot + "Jan 1, 2024");
    EXPECT_EQ(dateOf(0), "1" + spot + "Jan 1, 1970");
    EXPECT_EQ(dateOf(1'697'328'000'000), "1" + spot + "Oct 15, 2023");
}

TEST(HistoryItem, ShowsTheAuthorUpToTheFirstAt) {
    const std::string age = "less than a minute ago";
    const struct {
        const char* author;
        const char* shown;
    } cases[] = {
        {"ada@example.org", "ada"},
        {"ada", "ada"},
        {"ada lovelace@", "ada lovelace"},
        {"a@b@c", "a"},
        // The first piece that is not empty.
        {"@example.org", "example.org"},
        {"%ls %i", "%ls %i"},
        {"J\xC3\xBCrgen@x", "J\xC3\xBCrgen"},
    };
    for (const auto& [author, shown] : cases)
        EXPECT_EQ(infoBy(author), "12" + spot + shown + spot + age) << author;
}

TEST(HistoryItem, LeavesOutAnAuthorWhoIsNobody) {
    EXPECT_EQ(infoBy(""), "12" + spot + "less than a minute ago");
    EXPECT_EQ(infoBy("@"), "12" + spot + "less than a minute ago");
    EXPECT_EQ(infoBy("@@"), "12" + spot + "less than a minute ago");
}

TEST(HistoryItem, PrintsItsNumberAsItIs) {
    const std::string rest = spot + "ada" + spot + "less than a minute ago";
    EXPECT_EQ(infoBy("ada", 0), "0" + rest);
    EXPECT_EQ(infoBy("ada", -7), "-7" + rest);
    EXPECT_EQ(infoBy("ada", 2147483647), "2147483647" + rest);
    EXPECT_EQ(infoBy("ada", -2147483647 - 1), "-2147483648" + rest);
}

TEST(HistoryItem, TranslatesTheWordsOfTheAgeOnly) {
    const qrv_test::GermanHost host({
        {"less than a minute ago", "eben"},
        {"minutes ago", "Min."},
        {"hours ago", "Std."},
        {"%i \xE2\xA6\x81 %ls \xE2\xA6\x81 %ls", "falsch"},
        {"%b %#d, %Y", "falsch"},
        {"Mar 7, 2024", "falsch"},
    });
    ASSERT_TRUE(host.isLoaded());
    EXPECT_EQ(ageAfter(0), "eben");
    EXPECT_EQ(ageAfter(5 * minute), "5  Min.");
    EXPECT_EQ(ageAfter(5 * hour), "5 Std.");
    EXPECT_EQ(ageAfter(5 * day), "Mar 7, 2024");
}

TEST(HistoryItem, IsCopiedAndMoved) {
    HistoryItem item = itemBy("ada");
    HistoryItem copy = itemBy("bob", 2);
    copy = item;
    EXPECT_EQ(copy.author, L"ada");
    EXPECT_EQ(copy.detail, L"detail");
    const HistoryItem moved = std::move(item);
    EXPECT_EQ(moved.name, L"title");
    EXPECT_FALSE(std::has_virtual_destructor_v<HistoryItem>);
}

TEST(LoadedHistory, IsEmptyAtFirst) {
    const LoadedHistory none;
    EXPECT_EQ(none.source, L"");
    EXPECT_TRUE(none.items.empty());
    const LoadedHistory sourced(L"server");
    EXPECT_EQ(sourced.source, L"server");
    EXPECT_TRUE(sourced.items.empty());
}

TEST(LoadedHistory, IsMoved) {
    LoadedHistory history(L"server");
    history.items.push_back(itemBy("ada"));
    LoadedHistory target;
    target = std::move(history);
    EXPECT_EQ(target.source, L"server");
    ASSERT_EQ(target.items.size(), 1U);
    EXPECT_EQ(target.items[0].author, L"ada");
}

}  // namespace

#include <common/base/MessageInternal.h>
#include <common/history/HistoryItem.h>
#include <platform/qut/toQt.h>
#include <platform/ut/Paths.h>

#include <cstdint>

namespace common {

namespace {

constexpr std::int32_t minuteMs = 60'000;
constexpr std::int32_t hourMs = 3'600'000;

OdString ageText(const OdTimeStamp& time) {
    OdTimeStamp age(OdTimeStamp::kInitUniversalTime);
    age -= time;
    if (age.julianDay() != 0)
        return time.strftime(L"%b %#d, %Y");
    if (age.msecsPastMidnight() < minuteMs)
        return translate(L"less than a minute ago");
    // The two blanks after the minutes and the plural of one minute and one hour are wanted as they
    // are.
    if (age.msecsPastMidnight() < hourMs)
        return age.strftime(L"%#M  ") + translate(L"minutes ago");
    return age.strftime(L"%#H ") + translate(L"hours ago");
}

}  // namespace

HistoryItem::HistoryItem(const OdTimeStamp& commitTime, const OdString& commitAuthor,
                         const OdString& title, const OdString& commitDetail, int commitNumber)
    : time(commitTime),
      author(commitAuthor),
      name(title),
      detail(commitDetail),
      number(commitNumber) {
}

QString HistoryItem::getName() const {
    return qut::toQt(name);
}

QString HistoryItem::getLeftIconSource() const {
    // A text of its own: that of a literal is gone when the host unloads this library.
    return QString::fromLatin1("avatar-placeholder.svg");
}

QString HistoryItem::getRightIconSource() const {
    return {};
}

bool HistoryItem::isChecked() const {
    return false;
}

bool HistoryItem::isCheckable() const {
    return false;
}

bool HistoryItem::isEnabled() const {
    return true;
}

QString HistoryItem::getToolTip() const {
    return {};
}

QString HistoryItem::getBadge() const {
    return {};
}

QString HistoryItem::getInfo() const {
    const std::vector<OdString> authorParts = ut::splitByChar(author, L"@", false);
    const OdString age = ageText(time);
    if (authorParts.empty())
        return qut::toQt(OdString::format(L"%i \u2981 %ls", number, age));
    return qut::toQt(
        OdString::format(L"%i \u2981 %ls \u2981 %ls", number, authorParts.front(), age));
}

int HistoryItem::getIndent() const {
    return 0;
}

bool HistoryItem::isBold() const {
    return false;
}

bool HistoryItem::isExpanded() const {
    return false;
}

bool HistoryItem::hasChildren() const {
    return false;
}

}  // namespace common

#pragma once

#include <common/base/Export.h>
#include <platform/kernel/OdString.h>
#include <platform/kernel/OdTimeStamp.h>
#include <platform/qut/IListItem.h>

#include <QString>
#include <vector>

namespace common {

/// A row of the history list: a commit. The answers that are constant tell the list view that a row
/// is enabled, neither checked nor checkable, not indented, not bold and without children. Final,
/// because the interface has no virtual destructor and lists own their rows as values.
struct QRV_COMMON_EXPORT HistoryItem final : qut::IListItem {
    /// The time is in universal time; of the author only what stands before the first "@" is shown.
    HistoryItem(const OdTimeStamp& commitTime, const OdString& commitAuthor, const OdString& title,
                const OdString& commitDetail, int commitNumber);

    OdTimeStamp time;
    OdString author;
    /// The row's title.
    OdString name;
    OdString detail;
    /// The commit's running number.
    int number;

    QString getName() const override;
    QString getLeftIconSource() const override;
    QString getRightIconSource() const override;
    bool isChecked() const override;
    bool isCheckable() const override;
    bool isEnabled() const override;
    QString getToolTip() const override;
    QString getBadge() const override;
    /// The number, the author and the age, between spots: "12 ⦁ ada ⦁ 5  minutes ago". A commit of
    /// a day or more shows its date, in universal time: "12 ⦁ ada ⦁ Mar 7, 2024".
    QString getInfo() const override;
    int getIndent() const override;
    bool isBold() const override;
    bool isExpanded() const override;
    bool hasChildren() const override;
};

/// The history list as loaded for one project.
struct LoadedHistory {
    LoadedHistory() = default;
    LoadedHistory(const OdString& listSource) : source(listSource) {}

    OdString source;
    std::vector<HistoryItem> items;
};

}  // namespace common

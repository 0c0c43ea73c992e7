#pragma once

#include <common/base/Export.h>
#include <platform/kernel/OdString.h>
#include <platform/kernel/OdTimeStamp.h>
#include <platform/qut/IListItem.h>

#include <QString>
#include <vector>

namespace common {

/// A row of the history list: a commit. The answers that are constant tell the list view that a row
/// is enabled, neither checked nor checkable, not indented, not bold and without children. Lists
/// own their rows as values: the interface has no virtual destructor, so a row of a derived type
/// must not be deleted as one of this.
struct QRV_COMMON_EXPORT HistoryItem : qut::IListItem {
    /// The time is in universal time; of the author only what stands before the first "@" is shown.
    HistoryItem(const OdTimeStamp& commitTime, const OdString& commitAuthor, const OdString& title,
                const OdString& commitDetail, int commitNumber);

    OdTimeStamp time;  ///< of the commit, in universal time
    OdString author;   ///< as recorded, the part from "@" on included
    OdString name;     ///< the row's title
    OdString detail;   ///< kept for the host; no answer below shows it
    int number;        ///< the commit's running number

    /// The title.
    QString getName() const override;
    /// The file name of a placeholder picture.
    QString getLeftIconSource() const override;
    /// Empty.
    QString getRightIconSource() const override;
    /// False.
    bool isChecked() const override;
    /// False.
    bool isCheckable() const override;
    /// True.
    bool isEnabled() const override;
    /// Empty.
    QString getToolTip() const override;
    /// Empty.
    QString getBadge() const override;
    /// The number, the author and the age, between spots: "12 ⦁ ada ⦁ 5  minutes ago"; without an
    /// author "12 ⦁ 5  minutes ago". A commit of a day or more shows its date, in universal time:
    /// "12 ⦁ ada ⦁ Mar 7, 2024". The words for the age are translated.
    QString getInfo() const override;
    /// 0.
    int getIndent() const override;
    /// False.
    bool isBold() const override;
    /// False.
    bool isExpanded() const override;
    /// False.
    bool hasChildren() const override;
};

/// The history list as loaded for one project.
struct LoadedHistory {
    LoadedHistory() = default;
    /// An empty list of that source.
    LoadedHistory(const OdString& listSource) : source(listSource) {}

    OdString source;                 ///< where it was loaded from, as the host names it
    std::vector<HistoryItem> items;  ///< in the order in which they are shown
};

}  // namespace common

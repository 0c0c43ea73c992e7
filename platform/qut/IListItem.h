#pragma once

#include <QString>

namespace qut {

/// A row as the host's list view asks for it. The order of the operations is the order of the
/// virtual table, which the host relies on. The interface owns nothing and destroys nothing: it has
/// no virtual destructor, and nobody deletes a row through it.
class IListItem {
public:
    /// The row's title.
    virtual QString getName() const = 0;
    /// The file name of the icon on the left; empty for none.
    virtual QString getLeftIconSource() const = 0;
    /// The file name of the icon on the right; empty for none.
    virtual QString getRightIconSource() const = 0;
    /// Whether the row's box is ticked.
    virtual bool isChecked() const = 0;
    /// Whether the row has a box.
    virtual bool isCheckable() const = 0;
    /// Whether the user can choose the row.
    virtual bool isEnabled() const = 0;
    /// The text that explains the row; empty for none.
    virtual QString getToolTip() const = 0;
    /// A short text that marks the row; empty for none.
    virtual QString getBadge() const = 0;
    /// The row's second line.
    virtual QString getInfo() const = 0;
    /// How many levels the row is indented, from 0.
    virtual int getIndent() const = 0;
    /// Whether the title is shown in bold.
    virtual bool isBold() const = 0;
    /// Whether the rows below this one are shown.
    virtual bool isExpanded() const = 0;
    /// Whether there are rows below this one.
    virtual bool hasChildren() const = 0;

protected:
    IListItem() = default;
    IListItem(const IListItem&) = default;
    IListItem& operator=(const IListItem&) = default;
    ~IListItem() = default;
};

}  // namespace qut

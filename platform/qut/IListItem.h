#pragma once

#include <QString>

namespace qut {

/// A row as the host's list view asks for it. The order of the operations is the order of the
/// virtual table, which the host relies on. The interface owns nothing and destroys nothing: it has
/// no virtual destructor, and nobody deletes a row through it.
class IListItem {
public:
    virtual QString getName() const = 0;
    virtual QString getLeftIconSource() const = 0;
    virtual QString getRightIconSource() const = 0;
    virtual bool isChecked() const = 0;
    virtual bool isCheckable() const = 0;
    virtual bool isEnabled() const = 0;
    virtual QString getToolTip() const = 0;
    virtual QString getBadge() const = 0;
    virtual QString getInfo() const = 0;
    virtual int getIndent() const = 0;
    virtual bool isBold() const = 0;
    virtual bool isExpanded() const = 0;
    virtual bool hasChildren() const = 0;

protected:
    IListItem() = default;
    IListItem(const IListItem&) = default;
    IListItem& operator=(const IListItem&) = default;
    ~IListItem() = default;
};

}  // namespace qut

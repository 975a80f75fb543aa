#pragma once

#include "engine/Export.h"

#include <QVariant>

#include <memory>
#include <vector>

namespace halvern::qt {

/// A row of the properties: a value and an editable flag per column, and the rows below it, which it owns.
/// Positions and columns that do not exist are refused and change nothing.
class HALVERN_QT_API PropertyItem
{
public:
    /// A row of empty, not editable values. The parent does not take it; insertChildren makes its rows.
    explicit PropertyItem(int columns, PropertyItem* parent = nullptr);
    ~PropertyItem();

    PropertyItem(const PropertyItem&) = delete;
    PropertyItem& operator=(const PropertyItem&) = delete;

    /// Null where there is no such row.
    PropertyItem* child(int row) const;
    int childCount() const;
    int columnCount() const;

    /// Invalid where there is no such column.
    QVariant data(int column) const;

    /// Whether the column exists.
    bool setData(int column, const QVariant& value);

    /// Inserts empty rows in front of the row at the position, which may be one past the last.
    bool insertChildren(int position, int count, int columns);
    bool removeChildren(int position, int count);

    /// The same for the columns of this row and of all rows below it.
    bool insertColumns(int position, int count);
    bool removeColumns(int position, int count);

    PropertyItem* parent() const;

    /// The row under its parent; 0 without one.
    int childNumber() const;

    /// Whether the column exists.
    bool setEditable(int column, bool editable);
    bool isEditable(int column) const;

private:
    struct Cell
    {
        QVariant value;
        bool editable = false;
    };

    bool hasColumn(int column) const;

    std::vector<std::unique_ptr<PropertyItem>> children;
    std::vector<Cell> cells;
    PropertyItem* const parentItem;
};

} // namespace halvern::qt

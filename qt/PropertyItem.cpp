#include "qt/PropertyItem.h"

#include <algorithm>
#include <cstddef>

namespace halvern::qt {

namespace {

bool canInsert(int position, int count, int size)
{
    return position >= 0 && position <= size && count > 0;
}

bool canRemove(int position, int count, int size)
{
    return position >= 0 && count > 0 && count <= size - position;
}

} // namespace

PropertyItem::PropertyItem(int columns, PropertyItem* parent) :
    cells(static_cast<std::size_t>(std::max(0, columns))), parentItem(parent)
{}

PropertyItem::~PropertyItem() = default;

PropertyItem* PropertyItem::child(int row) const
{
    return row >= 0 && row < childCount() ? children[static_cast<std::size_t>(row)].get() : nullptr;
}

int PropertyItem::childCount() const
{
    return static_cast<int>(children.size());
}

int PropertyItem::columnCount() const
{
    return static_cast<int>(cells.size());
}

QVariant PropertyItem::data(int column) const
{
    return hasColumn(column) ? cells[static_cast<std::size_t>(column)].value : QVariant();
}

bool PropertyItem::setData(int column, const QVariant& value)
{
    if (!hasColumn(column))
        return false;
    cells[static_cast<std::size_t>(column)].value = value;
    return true;
}

bool PropertyItem::insertChildren(int position, int count, int columns)
{
    if (!canInsert(position, count, childCount()))
        return false;
    for (int i = 0; i < count; ++i)
        children.insert(children.begin() + position, std::make_unique<PropertyItem>(columns, this));
    return true;
}

bool PropertyItem::removeChildren(int position, int count)
{
    if (!canRemove(position, count, childCount()))
        return false;
    const auto first = children.begin() + position;
    children.erase(first, first + count);
    return true;
}

bool PropertyItem::insertColumns(int position, int count)
{
    if (!canInsert(position, count, columnCount()))
        return false;
    cells.insert(cells.begin() + position, static_cast<std::size_t>(count), Cell());
    for (const auto& item : children)
        item->insertColumns(position, count);
    return true;
}

bool PropertyItem::removeColumns(int position, int count)
{
    if (!canRemove(position, count, columnCount()))
        return false;
    const auto first = cells.begin() + position;
    cells.erase(first, first + count);
    for (const auto& item : children)
        item->removeColumns(position, count);
    return true;
}

PropertyItem* PropertyItem::parent() const
{
    return parentItem;
}

int PropertyItem::childNumber() const
{
    if (!parentItem)
        return 0;
    const auto& siblings = parentItem->children;
    const auto found = std::find_if(siblings.begin(), siblings.end(),
                                    [this](const auto& sibling) { return sibling.get() == this; });
    return static_cast<int>(found - siblings.begin());
}

bool PropertyItem::setEditable(int column, bool editable)
{
    if (!hasColumn(column))
        return false;
    cells[static_cast<std::size_t>(column)].editable = editable;
    return true;
}

bool PropertyItem::isEditable(int column) const
{
    return hasColumn(column) && cells[static_cast<std::size_t>(column)].editable;
}

bool PropertyItem::hasColumn(int column) const
{
    return column >= 0 && column < columnCount();
}

} // namespace halvern::qt

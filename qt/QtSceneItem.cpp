#include "qt/QtSceneItem.h"

#include <utility>

namespace halvern::qt {

QtSceneItem::QtSceneItem(boost::shared_ptr<scene::Node> node, QtSceneItem* parent) :
    QTreeWidgetItem(parent), node(std::move(node))
{}

QtSceneItem::QtSceneItem(boost::shared_ptr<scene::Node> node, QTreeWidget* view) :
    QTreeWidgetItem(view), node(std::move(node))
{}

QtSceneItem::QtSceneItem(const QtSceneItem& pattern, boost::shared_ptr<scene::Node> node, QString name,
                         QString id) :
    QTreeWidgetItem(pattern), node(std::move(node)), texts{std::move(name), std::move(id)}
{}

QtSceneItem::QtSceneItem(const QtSceneItem& other) = default;

QtSceneItem& QtSceneItem::operator=(const QtSceneItem& other) = default;

QtSceneItem::~QtSceneItem() = default;

boost::shared_ptr<scene::Node> QtSceneItem::getNode() const
{
    return node;
}

void QtSceneItem::setNode(boost::shared_ptr<scene::Node> newNode)
{
    node = std::move(newNode);
}

QTreeWidgetItem* QtSceneItem::clone() const
{
    auto* copy = new QtSceneItem(*this);
    for (int i = 0; i < childCount(); ++i)
        copy->addChild(child(i)->clone());
    return copy;
}

QVariant QtSceneItem::data(int column, int role) const
{
    return showsOwnText(column, role) ? QVariant(texts[column]) : QTreeWidgetItem::data(column, role);
}

void QtSceneItem::setData(int column, int role, const QVariant& value)
{
    if (showsOwnText(column, role)) {
        if (value == QVariant(texts[column]))
            return;
        texts[column] = QString();
    }
    QTreeWidgetItem::setData(column, role, value);
}

bool QtSceneItem::showsOwnText(int column, int role) const
{
    return (role == Qt::DisplayRole || role == Qt::EditRole) && (column == 0 || column == 1) &&
           !texts[column].isNull();
}

} // namespace halvern::qt

#include "qt/QtSceneItem.h"

#include <utility>

namespace halvern::qt {

QtSceneItem::QtSceneItem(boost::shared_ptr<scene::Node> node, QtSceneItem* parent) :
    QTreeWidgetItem(parent), node(std::move(node))
{}

QtSceneItem::QtSceneItem(boost::shared_ptr<scene::Node> node, QTreeWidget* view) :
    QTreeWidgetItem(view), node(std::move(node))
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

} // namespace halvern::qt

#pragma once

#include "engine/Export.h"

#include <QTreeWidgetItem>

#ifndef Q_MOC_RUN
#    include <boost/shared_ptr.hpp>
#endif

namespace halvern::scene {
class Node;
}

namespace halvern::qt {

/// A tree item that shows a scene node and keeps it alive. A copy shares the node.
class HALVERN_QT_API QtSceneItem : public QTreeWidgetItem
{
public:
    /// The last child of the parent; with a null parent an item outside of any tree.
    QtSceneItem(boost::shared_ptr<scene::Node> node, QtSceneItem* parent);

    /// The last top-level item of the view.
    QtSceneItem(boost::shared_ptr<scene::Node> node, QTreeWidget* view);

    QtSceneItem(const QtSceneItem& other);
    QtSceneItem& operator=(const QtSceneItem& other);
    ~QtSceneItem() override;

    /// Empty if the item was given no node.
    boost::shared_ptr<scene::Node> getNode() const;

    /// Changes neither texts nor colours.
    void setNode(boost::shared_ptr<scene::Node> newNode);

private:
    boost::shared_ptr<scene::Node> node;
};

} // namespace halvern::qt

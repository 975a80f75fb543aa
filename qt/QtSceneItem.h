#pragma once

#include "engine/Export.h"

#include <QString>
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

    /// Outside of any tree: coloured like the pattern, with whose items it shares the memory for that. It
    /// shows the texts in columns 0 and 1.
    QtSceneItem(const QtSceneItem& pattern, boost::shared_ptr<scene::Node> node, QString name, QString id);

    /** @{ */
    /// Copies texts, colours and the pointer to the node; neither the items below nor the place in the tree.
    QtSceneItem(const QtSceneItem& other);
    QtSceneItem& operator=(const QtSceneItem& other);
    /** @} */

    ~QtSceneItem() override;

    /// Empty if the item was given no node.
    boost::shared_ptr<scene::Node> getNode() const;

    /// Changes neither texts nor colours.
    void setNode(boost::shared_ptr<scene::Node> newNode);

    /// Copies the items below as well.
    QTreeWidgetItem* clone() const override;

    /** @{ */
    /// As the base class, only in less memory.
    QVariant data(int column, int role) const override;
    void setData(int column, int role, const QVariant& value) override;
    /** @} */

private:
    bool showsOwnText(int column, int role) const;

    boost::shared_ptr<scene::Node> node;

    /// As constructed, null once changed. The base class needs three more allocations for them, which is a
    /// third of the time it takes to show a scene.
    QString texts[2];
};

} // namespace halvern::qt

#pragma once

#include "engine/Export.h"

#include <QWidget>

#ifndef Q_MOC_RUN
#    include <boost/shared_ptr.hpp>
#endif

#include <initializer_list>

class QAbstractItemDelegate;
class QGridLayout;
class QTreeView;

namespace halvern::core::event {
class EventManager;
}
namespace halvern::scene {
class SceneManager;
}

namespace halvern::qt {

class QtPropertiesModel;

/// Shows the node that is selected anywhere in three tabs, "Basics", "Coord" and "Object", and lets it be
/// edited in place: its layers; its translation, rotation and scale; the colours of its lights and the lenses
/// of its cameras. Every change reaches the node while it is made.
///
/// Every operation belongs to the GUI thread.
class HALVERN_QT_API QtProperties : public QWidget
{
    Q_OBJECT

public:
    /// Shows no node, the tab "Coord" in front, until it has both managers.
    explicit QtProperties(QWidget* parent = nullptr);
    ~QtProperties() override;

    /// Listens to the events of another manager; when this returns, no delivery of the old one runs. With an
    /// empty pointer selections made elsewhere are not followed.
    void setEventManager(boost::shared_ptr<core::event::EventManager> eventManager);

    /// Edits are written in the cycle of this scene manager, and announced through it. An empty pointer is
    /// ignored. What is shown stays until the next selection.
    void setSceneManager(boost::shared_ptr<scene::SceneManager> newSceneManager);

private:
    QTreeView* createView(std::initializer_list<int> hiddenRows, QAbstractItemDelegate* delegate);

    QTreeView* basicsView;
    QTreeView* coordView;
    QTreeView* objectView;
    QGridLayout* gridLayout;
    boost::shared_ptr<QtPropertiesModel> model;
    boost::shared_ptr<scene::SceneManager> sceneManager; // runs the model's passes
};

} // namespace halvern::qt

#include "qt/QtProperties.h"

#include "engine/scene/SceneManager.h"
#include "qt/DeleteOnItsThread.h"
#include "qt/PropertiesView.h"
#include "qt/QtPropertiesItemDelegate.h"
#include "qt/QtPropertiesModel.h"

#include <QGridLayout>
#include <QTabWidget>

#include <utility>

namespace halvern::qt {

QtProperties::QtProperties(QWidget* parent) : QWidget(parent)
{
    auto* tabWidget = new QTabWidget(this);
    gridLayout = new QGridLayout(this);
    model.reset(new QtPropertiesModel({tr("Property"), tr("Value")}), &deleteOnItsThread);
    auto* delegate = new QtPropertiesItemDelegate(this);
    basicsView = createView({1, 2, 3, 5, 6}, delegate);
    coordView = createView({0, 4, 5, 6}, delegate);
    objectView = createView({0, 1, 2, 3, 4}, delegate);

    tabWidget->addTab(basicsView, "Basics");
    tabWidget->addTab(coordView, "Coord");
    tabWidget->addTab(objectView, "Object");
    tabWidget->setCurrentWidget(coordView);
    gridLayout->addWidget(tabWidget);
}

QtProperties::~QtProperties()
{
    model->setEventManager(nullptr);
    if (sceneManager)
        sceneManager->removeSceneController(model);
    for (QTreeView* view : {basicsView, coordView, objectView}) {
        view->reset(); // ends an open editor while view, delegate and model are whole
        delete view;
    }
    model.reset();
}

void QtProperties::setEventManager(boost::shared_ptr<core::event::EventManager> eventManager)
{
    model->setEventManager(std::move(eventManager));
}

void QtProperties::setSceneManager(boost::shared_ptr<scene::SceneManager> newSceneManager)
{
    if (!newSceneManager)
        return;
    if (sceneManager && sceneManager != newSceneManager)
        sceneManager->removeSceneController(model);
    newSceneManager->addSceneController(model);
    sceneManager = std::move(newSceneManager);
}

QTreeView* QtProperties::createView(std::initializer_list<int> hiddenRows, QAbstractItemDelegate* delegate)
{
    auto* view = new PropertiesView;
    view->setModel(model.get());
    for (const int row : hiddenRows)
        view->setRowHidden(row, QModelIndex(), true);
    view->setAlternatingRowColors(true);
    view->expandAll();
    view->setEditTriggers(QAbstractItemView::AllEditTriggers);
    view->resizeColumnToContents(0);
    view->setItemDelegate(delegate);
    return view;
}

} // namespace halvern::qt

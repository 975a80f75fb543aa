#include "qt/QtMaterialPanel.h"

#include "engine/scene/SceneManager.h"
#include "qt/DeleteOnItsThread.h"
#include "qt/QtMaterialPanelModel.h"
#include "qt/QtMaterialPanelModelDelegate.h"

#include <QHeaderView>
#include <QResizeEvent>

#include <algorithm>
#include <string>
#include <utility>

namespace halvern::qt {

namespace {

constexpr int TileWidth = 100;
constexpr int TileHeight = 120;

} // namespace

QtMaterialPanel::QtMaterialPanel(QWidget* parent) :
    QTableView(parent),
    HCE::EventBase(nullptr),
    materialModel(new QtMaterialPanelModel(this), &deleteOnItsThread)
{
    setShowGrid(false);
    verticalHeader()->hide();
    horizontalHeader()->hide();
    setSelectionMode(QAbstractItemView::SingleSelection);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setVerticalScrollBarPolicy(Qt::ScrollBarAsNeeded);
    setDragEnabled(true);

    setModel(materialModel.get());
    setItemDelegate(new QtMaterialPanelModelDelegate(this));

    connect(this, SIGNAL(doubleClicked(QModelIndex)), this, SLOT(showEffectEditor(QModelIndex)));
    connect(materialModel.get(), SIGNAL(modelReset()), this, SLOT(handleModelReset()));
}

QtMaterialPanel::~QtMaterialPanel()
{
    QtMaterialPanel::setEventManager(nullptr);
    if (sceneManager)
        sceneManager->removeSceneController(materialModel);
    materialModel->setParent(nullptr); // from here on the pointer alone decides about its end
    materialModel.reset();
    sceneManager.reset();
}

void QtMaterialPanel::setEventManager(boost::shared_ptr<HCE::EventManager> newEventManager)
{
    materialModel->setEventManager(newEventManager);
    HCE::EventBase::setEventManager(newEventManager);
}

void QtMaterialPanel::setSceneManager(boost::shared_ptr<scene::SceneManager> newSceneManager)
{
    if (!newSceneManager)
        return;
    if (sceneManager && sceneManager != newSceneManager)
        sceneManager->removeSceneController(materialModel);
    newSceneManager->addSceneController(materialModel);
    sceneManager = std::move(newSceneManager);
}

void QtMaterialPanel::selectionChanged(const QItemSelection& selected, const QItemSelection& deselected)
{
    QTableView::selectionChanged(selected, deselected);
    const QModelIndexList indexes = selected.indexes();
    if (indexes.size() == 1)
        triggerEvent("MaterialSelected", indexes.first().data().toString().toStdString());
}

void QtMaterialPanel::handleModelReset()
{
    for (int i = 0; i < materialModel->columnCount(); ++i)
        setColumnWidth(i, TileWidth);
    for (int i = 0; i < materialModel->rowCount(); ++i)
        setRowHeight(i, TileHeight);
    scheduleDelayedItemsLayout(); // resizing left the range of the scroll bars as it was
}

void QtMaterialPanel::showEffectEditor(const QModelIndex& /*index*/) {}

/// Without the base's part, on purpose: the scroll bars keep their range until the next reset.
void QtMaterialPanel::resizeEvent(QResizeEvent* event)
{
    const int columns = std::max(event->size().width() / TileWidth, 1);
    if (materialModel->columnCount() != columns)
        materialModel->setColumnCount(columns);
    update();
}

} // namespace halvern::qt

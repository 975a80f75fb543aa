#include "studio/SceneDock.h"

#include "qt/QtScene.h"
#include "studio/TreeFilter.h"

#include <QTreeWidget>
#include <QVBoxLayout>

#include <utility>

namespace halvern::studio {

namespace {

const int LeastWidth = 200; // whatever the length of the scene's name

} // namespace

SceneDock::SceneDock(boost::shared_ptr<core::event::EventManager> newEventManager, QWidget* parent) :
    QDockWidget(tr("Scene Tree"), parent), eventManager(std::move(newEventManager))
{
    setObjectName("Halvern_Scene_Tree");
    setMinimumWidth(LeastWidth);
    setWidget(new QWidget);
}

void SceneDock::open(boost::shared_ptr<scene::SceneManager> sceneManager)
{
    announced = std::move(sceneManager);
    if (panel)
        panel->setEventManager(nullptr); // it would show the old scene once more
}

QString SceneDock::getSelectedID() const
{
    const auto* tree = panel ? panel->findChild<QTreeWidget*>() : nullptr;
    const auto selected = tree ? tree->selectedItems() : QList<QTreeWidgetItem*>();
    return selected.isEmpty() ? QString() : selected.first()->text(1);
}

void SceneDock::fill()
{
    if (!announced)
        return;
    build();
    panel->setEventManager(eventManager); // first: what changes from now on is announced
    panel->setSceneManager(std::exchange(announced, nullptr));
}

void SceneDock::find()
{
    build();
    show();
    raise();
    filter->begin();
}

void SceneDock::build()
{
    if (panel)
        return;
    panel = new qt::QtScene;
    panel->setMinimumWidth(1);
    panel->layout()->setContentsMargins(0, 0, 0, 0);
    filter = new TreeFilter(panel->findChild<QTreeWidget*>());
    auto* layout = new QVBoxLayout(widget());
    layout->addWidget(filter);
    layout->addWidget(panel);
    for (QWidget* added : {static_cast<QWidget*>(filter), static_cast<QWidget*>(panel)})
        added->show(); // now: a layout would do so in a later turn of the event loop
}

} // namespace halvern::studio

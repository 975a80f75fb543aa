#include "studio/Panels.h"

#include "engine/core/event/EventManager.h"
#include "engine/scene/SceneManager.h"
#include "engine/window/Window.h"
#include "qt/QtAnimationDock.h"
#include "qt/QtFXMaterial.h"
#include "qt/QtMaterialPanel.h"
#include "qt/QtProperties.h"
#include "qt/QtView.h"
#include "studio/SceneDock.h"

#include <QCoreApplication>
#include <QMainWindow>
#include <QMenu>
#include <QSize>

#include <utility>

namespace halvern::studio {

namespace {

const QSize Roomy(1000, 600);

/// What paints all the time does so in a window of its own: in that of the view, each of its paints would
/// compose the whole window anew.
void giveOwnWindow(QWidget& widget)
{
    QCoreApplication::setAttribute(Qt::AA_DontCreateNativeWidgetSiblings);
    widget.setAttribute(Qt::WA_NativeWindow);
    widget.setAutoFillBackground(true); // else what is behind it is painted too
}

} // namespace

Panels::Panels(QMainWindow* newWindow, qt::QtView* newView,
               boost::shared_ptr<core::event::EventManager> newEventManager) :
    QObject(newWindow), window(newWindow), view(newView), eventManager(std::move(newEventManager))
{
    sceneDock = new SceneDock(eventManager);
    window->addDockWidget(Qt::LeftDockWidgetArea, sceneDock);
    propertiesDock = addDock(Qt::RightDockWidgetArea, tr("Properties"), "Halvern_Properties");
    materialDock = addDock(Qt::RightDockWidgetArea, tr("Materials"), "Halvern_Materials");
    parameterDock = addDock(Qt::RightDockWidgetArea, tr("Material"), "Halvern_Material");
}

void Panels::arrange()
{
    for (QDockWidget* dock : {propertiesDock, materialDock, parameterDock})
        dock->setVisible(window->width() >= Roomy.width() && window->height() >= Roomy.height());
    window->resizeDocks({sceneDock, propertiesDock}, {300, 350}, Qt::Horizontal);
    window->resizeDocks({propertiesDock, materialDock, parameterDock}, {300, 200, 300}, Qt::Vertical);
}

QDockWidget* Panels::addDock(Qt::DockWidgetArea area, const QString& title, const QString& name)
{
    auto* dock = new QDockWidget(title);
    dock->setObjectName(name);
    window->addDockWidget(area, dock);
    return dock;
}

void Panels::addActions(QMenu& menu)
{
    for (QDockWidget* dock :
         {static_cast<QDockWidget*>(sceneDock), propertiesDock, materialDock, parameterDock})
        menu.addAction(dock->toggleViewAction());
    viewMenu = &menu;
    findAction = menu.addAction(tr("&Find Node"), sceneDock, &SceneDock::find, QKeySequence::Find);
}

void Panels::open(boost::shared_ptr<scene::SceneManager> sceneManager)
{
    sceneDock->open(sceneManager);
    announced = std::move(sceneManager);
}

QString Panels::getSelectedID() const
{
    return sceneDock->getSelectedID();
}

void Panels::fill()
{
    if (!announced)
        return;
    build();
    const auto sceneManager = std::exchange(announced, nullptr);
    sceneDock->fill();
    properties->setSceneManager(sceneManager);
    materials->setSceneManager(sceneManager);
    renewParameters();
    // What was selected in the scene before is not there any more.
    eventManager->triggerEvent("SelectObject", ", Studio");
    toAnimate = sceneManager;
    fillAnimations();
}

void Panels::fillAnimations()
{
    if (animationDock->isVisible() && toAnimate)
        animationDock->setSceneManager(std::exchange(toAnimate, nullptr));
}

void Panels::build()
{
    if (properties)
        return;
    properties = new qt::QtProperties;
    properties->setEventManager(eventManager);
    propertiesDock->setWidget(properties);
    materials = new qt::QtMaterialPanel;
    materials->setEventManager(eventManager);
    materialDock->setWidget(materials);
    buildAnimationDock();
}

/// An editor keeps its material, which the next scene does not have.
void Panels::renewParameters()
{
    delete parameters;
    parameters = new qt::QtFXMaterial;
    parameters->setEventManager(eventManager);
    parameters->setFXManager(view->getWindow()->getFXManager());
    parameterDock->setWidget(parameters);
}

void Panels::buildAnimationDock()
{
    animationDock = new qt::QtAnimationDock;
    animationDock->setObjectName("Halvern_Animation");
    giveOwnWindow(*animationDock);
    animationDock->setWindowTitle(tr("Animation"));
    window->addDockWidget(Qt::BottomDockWidgetArea, animationDock);
    animationDock->hide();                    // in sight it paints all the time
    window->restoreDockWidget(animationDock); // where the user left it
    connect(animationDock, &QDockWidget::visibilityChanged, this, &Panels::fillAnimations);
    if (viewMenu)
        viewMenu->insertAction(findAction, animationDock->toggleViewAction());
}

} // namespace halvern::studio

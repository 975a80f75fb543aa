// The widgets over an engine of the host's own, which is in OwnEngine.h: click a box to select it, drag to
// turn them, drop a material on a box, edit place and paint in the panels.
#include "OwnEngine.h"

#include "engine/core/event/EventManager.h"
#include "engine/scene/SceneManager.h"
#include "qt/QtFXMaterial.h"
#include "qt/QtMaterialPanel.h"
#include "qt/QtProperties.h"
#include "qt/QtScene.h"
#include "qt/QtView.h"

#include <QApplication>
#include <QDockWidget>
#include <QMainWindow>
#include <QTimer>

using namespace halvern;

namespace {

boost::shared_ptr<scene::SceneManager> makeScene(const boost::shared_ptr<HCE::EventManager>& events)
{
    auto sceneManager = boost::make_shared<scene::SceneManager>(events);
    auto root = boost::make_shared<scene::Node>("boxes", "Boxes");
    const auto add = [&](const std::string& name, const std::string& color, own::Color rgb, float x) {
        auto paint = boost::make_shared<own::Paint>(color, rgb);
        sceneManager->addMaterial(paint);
        root->addChildNode(boost::make_shared<own::Box>(name, paint, Eigen::Vector3f(x, 1, 0)));
    };
    add("left", "Brick", {0.75f, 0.30f, 0.20f}, -3);
    add("middle", "Moss", {0.35f, 0.55f, 0.25f}, 0);
    add("right", "Slate", {0.30f, 0.40f, 0.60f}, 3);
    sceneManager->setRoot(root);
    sceneManager->setSceneName("own engine");
    return sceneManager;
}

template <class Widget>
Widget* addDock(QMainWindow& window, Qt::DockWidgetArea area, const QString& title,
                const boost::shared_ptr<HCE::EventManager>& events)
{
    auto* widget = new Widget;
    widget->setEventManager(events);
    auto* dock = new QDockWidget(title, &window);
    dock->setWidget(widget);
    window.addDockWidget(area, dock);
    return widget;
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication::setAttribute(Qt::AA_ShareOpenGLContexts);
    const QApplication application(argc, argv);

    auto events = boost::make_shared<HCE::EventManager>(true);
    auto sceneManager = makeScene(events);

    QMainWindow window;
    auto* view = new qt::QtView;
    view->setObjectName("Halvern_Rendering_QtView");
    view->setEventManager(events);
    window.setCentralWidget(view);
    auto* tree = addDock<qt::QtScene>(window, Qt::LeftDockWidgetArea, "Scene", events);
    auto* materials = addDock<qt::QtMaterialPanel>(window, Qt::BottomDockWidgetArea, "Materials", events);
    auto* properties = addDock<qt::QtProperties>(window, Qt::RightDockWidgetArea, "Properties", events);
    auto* editor = addDock<qt::QtFXMaterial>(window, Qt::RightDockWidgetArea, "Material", events);
    window.resize(1200, 800);
    window.show();

    // The first show gives the view a window of the linked engine; ours takes its place.
    auto picture = boost::make_shared<own::Picture>(events);
    view->setWindow(picture);
    view->attach(sceneManager);
    tree->setSceneManager(sceneManager);
    properties->setSceneManager(sceneManager);
    materials->setSceneManager(sceneManager);
    editor->setFXManager(picture->getFXManager());
    sceneManager->start();

    QTimer frames;
    QObject::connect(&frames, SIGNAL(timeout()), view, SLOT(update()));
    frames.start(1000 / view->getUpdateFrequency());

    const int code = QApplication::exec();
    sceneManager->stop();
    return code;
}

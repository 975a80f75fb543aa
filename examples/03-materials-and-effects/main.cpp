// The materials: a click edits one, a drag onto the view puts it on a node.
#include "engine/core/event/EventManager.h"
#include "engine/scene/SceneManager.h"
#include "engine/window/Window.h"
#include "qt/QtFXMaterial.h"
#include "qt/QtMaterialPanel.h"
#include "qt/QtView.h"
#include "reference/engine/ImageDecoder.h"
#include "reference/scene/Importer.h"

#include <QApplication>
#include <QDockWidget>
#include <QMainWindow>
#include <QTimer>

#include <boost/make_shared.hpp>

using namespace halvern;

namespace {

boost::shared_ptr<scene::SceneManager> readScene(const char* fileName)
{
    scene::ImportOptions options;
    options.decodeImage = engine::decodeImage;
    return scene::importScene(fileName, options).sceneManager;
}

void dock(QMainWindow& window, Qt::DockWidgetArea area, const QString& title, QWidget* widget)
{
    auto* dockWidget = new QDockWidget(title, &window);
    dockWidget->setWidget(widget);
    window.addDockWidget(area, dockWidget);
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication::setAttribute(Qt::AA_ShareOpenGLContexts);
    const QApplication application(argc, argv);

    auto events = boost::make_shared<HCE::EventManager>(true);
    auto sceneManager = readScene(argc > 1 ? argv[1] : MODEL);
    sceneManager->setEventManager(events);

    QMainWindow window;
    auto* view = new qt::QtView;
    view->setObjectName("Halvern_Rendering_QtView");
    window.setCentralWidget(view);
    auto* materials = new qt::QtMaterialPanel;
    dock(window, Qt::BottomDockWidgetArea, "Materials", materials);
    auto* editor = new qt::QtFXMaterial;
    dock(window, Qt::RightDockWidgetArea, "Material", editor);

    view->setEventManager(events);
    materials->setEventManager(events);
    editor->setEventManager(events);
    window.resize(1200, 800);
    window.show();

    view->attach(sceneManager); // the view has its engine window since it was shown
    materials->setSceneManager(sceneManager);
    editor->setFXManager(view->getWindow()->getFXManager()); // a new one with each scene
    sceneManager->start();

    QTimer frames;
    QObject::connect(&frames, SIGNAL(timeout()), view, SLOT(update()));
    frames.start(1000 / view->getUpdateFrequency());

    const int code = QApplication::exec();
    sceneManager->stop();
    return code;
}

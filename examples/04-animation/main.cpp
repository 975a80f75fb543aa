// The animations: play, scrub, and set keyframes.
#include "engine/core/event/EventManager.h"
#include "engine/scene/SceneManager.h"
#include "qt/QtAnimationDock.h"
#include "qt/QtView.h"
#include "reference/engine/ImageDecoder.h"
#include "reference/scene/Importer.h"

#include <QApplication>
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
    auto* animations = new qt::QtAnimationDock;
    window.addDockWidget(Qt::BottomDockWidgetArea, animations);

    view->setEventManager(events);
    window.resize(1200, 800);
    window.show();

    view->attach(sceneManager); // the view has its engine window since it was shown
    animations->setSceneManager(sceneManager);
    sceneManager->start();

    QTimer frames;
    QObject::connect(&frames, SIGNAL(timeout()), view, SLOT(update()));
    frames.start(1000 / view->getUpdateFrequency());

    const int code = QApplication::exec();
    sceneManager->stop();
    return code;
}

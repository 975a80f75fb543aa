// A form made in Qt Designer with all five widgets, and a model to fill it: form MODEL [FORM.ui]
// The form is the one that is compiled into the program, or the file, read by a loader that finds the library
// among Qt's plugins: QT_PLUGIN_PATH=PREFIX/lib/qt5/plugins form MODEL form.ui
#include "engine/core/event/EventManager.h"
#include "engine/scene/SceneManager.h"
#include "engine/window/Window.h"
#include "reference/engine/ImageDecoder.h"
#include "reference/scene/Importer.h"
#include "ui_form.h"

#include <QApplication>
#include <QFile>
#include <QTimer>
#include <QUiLoader>

#include <boost/make_shared.hpp>

#include <memory>

using namespace halvern;

namespace {

std::unique_ptr<QWidget> makeCompiledForm()
{
    auto form = std::make_unique<QWidget>();
    Ui::Form().setupUi(form.get());
    return form;
}

std::unique_ptr<QWidget> loadForm(const char* fileName)
{
    QFile file(fileName);
    file.open(QFile::ReadOnly);
    return std::unique_ptr<QWidget>(QUiLoader().load(&file));
}

boost::shared_ptr<scene::SceneManager> readScene(const char* fileName)
{
    scene::ImportOptions options;
    options.decodeImage = engine::decodeImage;
    return scene::importScene(fileName, options).sceneManager;
}

int fail(const char* reason)
{
    qCritical("%s", reason);
    return 1;
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication::setAttribute(Qt::AA_ShareOpenGLContexts);
    const QApplication application(argc, argv);

    if (argc < 2)
        return fail("usage: form MODEL [FORM.ui]");
    const auto form = argc > 2 ? loadForm(argv[2]) : makeCompiledForm();
    if (!form)
        return fail("the file is no form");
    auto* view = form->findChild<qt::QtView*>();
    auto* tree = form->findChild<qt::QtScene*>();
    auto* properties = form->findChild<qt::QtProperties*>();
    auto* materials = form->findChild<qt::QtMaterialPanel*>();
    auto* editor = form->findChild<qt::QtFXMaterial*>();
    if (!view || !tree || !properties || !materials || !editor)
        return fail("a widget is missing: does QT_PLUGIN_PATH name the folder above designer/?");

    auto events = boost::make_shared<HCE::EventManager>(true);
    view->setEventManager(events);
    tree->setEventManager(events);
    properties->setEventManager(events);
    materials->setEventManager(events);
    editor->setEventManager(events);
    form->show();

    auto sceneManager = readScene(argv[1]);
    sceneManager->setEventManager(events);
    view->attach(sceneManager);
    tree->setSceneManager(sceneManager);
    properties->setSceneManager(sceneManager);
    materials->setSceneManager(sceneManager);
    editor->setFXManager(view->getWindow()->getFXManager());
    sceneManager->start();

    QTimer frames;
    QObject::connect(&frames, SIGNAL(timeout()), view, SLOT(update()));
    frames.start(1000 / view->getUpdateFrequency());

    const int code = QApplication::exec();
    sceneManager->stop();
    return code;
}

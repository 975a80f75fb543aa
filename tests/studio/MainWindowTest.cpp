#include "StudioHelpers.h"

#include "engine/scene/SceneManager.h"
#include "engine/window/Window.h"
#include "qt/QtView.h"
#include "studio/MainWindow.h"

#include <QAction>
#include <QCoreApplication>
#include <QFileDialog>
#include <QLabel>
#include <QMenuBar>
#include <QMessageBox>
#include <QProgressBar>
#include <QPushButton>
#include <QRegularExpression>
#include <QStatusBar>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <thread>

using namespace halvern;
using namespace halvern::studio;
using namespace studiotest;

namespace {

class MainWindowTest : public testing::Test
{
protected:
    MainWindowTest()
    {
        QObject::connect(&window, &MainWindow::opened, [this](const LoadedScene& l) { opened = l; });
        QObject::connect(&window, &MainWindow::nothingToShow, [this](const QString& m) { fatal = m; });
        window.resize(400, 300);
    }

    /// The importer answers by the file's name: "bad..." cannot be read, "slow..." takes until it is
    /// cancelled, all others are scenes.
    static scene::ImportedScene import(const std::string& file, const scene::ImportOptions& options)
    {
        if (file.rfind("bad", 0) == 0)
            throw scene::ImportError(file + ": not a model");
        while (file.rfind("slow", 0) == 0) {
            if (!options.progress(0.3f))
                throw scene::ImportCancelled(file);
            std::this_thread::yield();
        }
        scene::ImportedScene result = oneNodeScene();
        result.counts.nodes = 1234;
        result.counts.triangles = 7654321;
        if (file == "warning.obj")
            result.warnings = {"missing.png: no such file"};
        return result;
    }

    void showScene(const QString& file = "good.obj")
    {
        window.show();
        loader.load(file);
        ASSERT_TRUE(waitFor([&] { return opened.file == file; }));
    }

    boost::shared_ptr<scene::SceneManager> shownScene()
    {
        return window.getView()->getWindow()->getSceneManager();
    }

    QPushButton* cancelButton() { return window.statusBar()->findChild<QPushButton*>(); }
    QProgressBar* progressBar() { return window.statusBar()->findChild<QProgressBar*>(); }

    QStringList statusTexts()
    {
        QStringList texts;
        for (const QLabel* label : window.statusBar()->findChildren<QLabel*>())
            texts.append(label->text());
        return texts;
    }

    SceneLoader loader{import};
    MainWindow window{&loader, false};
    LoadedScene opened;
    QString fatal;
};

} // namespace

TEST_F(MainWindowTest, TheViewHasItsNameAndIsPartOfTheCentralWidget)
{
    EXPECT_EQ(window.getView()->objectName(), "Halvern_Rendering_QtView");
    EXPECT_EQ(window.getView()->parentWidget(), window.centralWidget());
    EXPECT_EQ(window.findChild<QWidget*>("Halvern_Rendering_QtView"), window.getView());
}

TEST_F(MainWindowTest, ASceneIsAttachedNamedAndCounted)
{
    showScene();
    EXPECT_EQ(shownScene(), opened.scene.sceneManager);
    EXPECT_EQ(window.windowTitle(), "good.obj - Halvern Studio");
    EXPECT_TRUE(statusTexts().contains("1,234 nodes, 7,654,321 triangles"));
    EXPECT_EQ(opened.scene.sceneManager->getEventManager(), window.getView()->getEventManager());
}

TEST_F(MainWindowTest, TheOldSceneIsReleasedForTheNewOne)
{
    showScene("first.obj");
    boost::weak_ptr<scene::SceneManager> first = opened.scene.sceneManager;
    showScene("second.obj");
    EXPECT_TRUE(waitFor([&] { return first.expired(); }));
    EXPECT_EQ(window.windowTitle(), "second.obj - Halvern Studio");
}

TEST_F(MainWindowTest, CancelKeepsTheScene)
{
    showScene();
    const auto scene = shownScene();
    loader.load("slow.obj");
    ASSERT_TRUE(waitFor([&] { return cancelButton()->isVisible(); }));
    EXPECT_TRUE(progressBar()->isVisible());
    EXPECT_TRUE(waitFor([&] { return progressBar()->value() == 30; }));
    cancelButton()->click();
    EXPECT_FALSE(loader.isLoading());
    EXPECT_FALSE(cancelButton()->isVisible());
    EXPECT_FALSE(progressBar()->isVisible());
    EXPECT_TRUE(loader.stop(std::chrono::seconds(10)));
    QCoreApplication::processEvents();
    EXPECT_EQ(shownScene(), scene);
    EXPECT_EQ(window.windowTitle(), "good.obj - Halvern Studio");
}

TEST_F(MainWindowTest, AFileThatIsReadQuicklyShowsNoProgressBar)
{
    showScene();
    EXPECT_FALSE(progressBar()->isVisible());
    EXPECT_FALSE(cancelButton()->isVisible());
}

TEST_F(MainWindowTest, AFileThatCannotBeReadIsToldInADialogAndKeepsTheScene)
{
    showScene();
    const auto scene = shownScene();
    loader.load("bad.obj");
    QMessageBox* box = nullptr;
    ASSERT_TRUE(waitFor([&] { return (box = window.findChild<QMessageBox*>()) != nullptr; }));
    EXPECT_EQ(box->text(), "bad.obj: not a model");
    EXPECT_TRUE(box->isVisible());
    EXPECT_EQ(shownScene(), scene);
    EXPECT_EQ(fatal, "");
    box->accept();
}

TEST_F(MainWindowTest, TheFirstFileThatCannotBeReadLeavesNothingToShow)
{
    window.show();
    SceneLoader starting(import);
    starting.load("bad.obj");
    MainWindow second(&starting, false);
    QString message;
    QObject::connect(&second, &MainWindow::nothingToShow, [&](const QString& m) { message = m; });
    second.show();
    ASSERT_TRUE(waitFor([&] { return !message.isEmpty(); }));
    EXPECT_EQ(message, "bad.obj: not a model");
    EXPECT_EQ(second.findChild<QMessageBox*>(), nullptr);
}

TEST_F(MainWindowTest, AfterTheFirstFileWasCancelledABadOneIsToldInADialog)
{
    SceneLoader starting(import);
    starting.load("slow.obj");
    MainWindow second(&starting, false);
    QString message;
    QObject::connect(&second, &MainWindow::nothingToShow, [&](const QString& m) { message = m; });
    second.show();
    starting.cancel();
    starting.load("bad.obj");
    EXPECT_TRUE(waitFor([&] { return second.findChild<QMessageBox*>() != nullptr; }));
    EXPECT_EQ(message, "");
}

TEST_F(MainWindowTest, WarningsOfTheImporterAreInTheStatusBar)
{
    showScene("warning.obj");
    EXPECT_TRUE(statusTexts().contains("missing.png: no such file"));
}

TEST_F(MainWindowTest, TheMenusHaveTheirActions)
{
    QStringList actions;
    for (const QAction* menu : window.menuBar()->actions())
        for (const QAction* action : menu->menu()->actions())
            actions.append(action->text());
    for (const char* text : {"&Open...", "&Quit", "&About Halvern Studio"})
        EXPECT_TRUE(actions.contains(text)) << text;
}

TEST_F(MainWindowTest, OpenOffersTheModelsThatCanBeReadFirst)
{
    window.show();
    window.chooseFile();
    auto* dialog = window.findChild<QFileDialog*>();
    ASSERT_TRUE(dialog);
    const QStringList filters = dialog->nameFilters();
    ASSERT_EQ(filters.size(), 2);
    EXPECT_EQ(dialog->selectedNameFilter(), "Models") << "without the dozens of patterns";
    EXPECT_TRUE(filters[0].startsWith("Models (*.")) << filters[0].toStdString();
    for (const char* pattern : {"*.3ds", "*.dae", "*.fbx", "*.glb", "*.gltf", "*.ifc", "*.obj"})
        EXPECT_TRUE(filters[0].split(QRegularExpression("[ ()]")).contains(pattern)) << pattern;
    EXPECT_EQ(filters[1], "All files (*)");
    dialog->reject();
}

TEST_F(MainWindowTest, DialogsDoNotBlock)
{
    window.show();
    window.about();
    window.chooseFile();
    for (QDialog* dialog : window.findChildren<QDialog*>())
        dialog->reject();
}

namespace {

QAction* findAction(const QWidget& window, const QString& text)
{
    for (QAction* action : window.findChildren<QAction*>())
        if (action->text() == text)
            return action;
    return nullptr;
}

} // namespace

TEST_F(MainWindowTest, TheStatisticsSwitchRepaintsTheView)
{
    showScene();
    QAction* statistics = findAction(window, "&Statistics");
    ASSERT_TRUE(statistics);
    int frames = 0;
    QObject::connect(window.getView(), &QOpenGLWidget::frameSwapped, [&frames] { ++frames; });
    statistics->trigger();
    EXPECT_TRUE(statistics->isChecked());
    EXPECT_TRUE(waitFor([&] { return frames > 0; }));
}

TEST_F(MainWindowTest, ALogoThatCannotBeReadIsNamed)
{
    window.show();
    window.setLogo("/no/such/logo.png");
    const auto* box = window.findChild<QMessageBox*>();
    ASSERT_TRUE(box);
    EXPECT_TRUE(box->text().startsWith("/no/such/logo.png: "));
    EXPECT_FALSE(findAction(window, "&Logo")->isEnabled());
}

TEST_F(MainWindowTest, ALogoTurnsItsSwitchOn)
{
    QTemporaryDir folder;
    const QString file = folder.filePath("logo.png");
    QImage image(8, 8, QImage::Format_RGB32);
    image.fill(Qt::red);
    ASSERT_TRUE(image.save(file));
    window.setLogo(file);
    QAction* logo = findAction(window, "&Logo");
    EXPECT_TRUE(logo->isEnabled());
    EXPECT_TRUE(logo->isChecked());
}

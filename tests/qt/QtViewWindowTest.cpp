#include "engine/scene/SceneManager.h"
#include "tests/qt/ViewProbe.h"
#include "tests/support/RecordingEventManager.h"

#include <QOpenGLContext>
#include <QTest>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <thread>

using namespace halvern::test;
using halvern::engine::window::Window;
using halvern::scene::SceneManager;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

boost::shared_ptr<SceneManager> makeScene()
{
    return boost::make_shared<SceneManager>(nullptr);
}

} // namespace

TEST(QtViewWindowTest, FirstShowMakesAWindowNamedAfterTheView)
{
    ViewProbe view(nullptr, "left");
    showView(view);
    ASSERT_TRUE(view.getWindow());
    EXPECT_EQ(view.getWindow()->getName(), "left::window");
}

TEST(QtViewWindowTest, ViewIsNamedQtViewUnlessTold)
{
    ViewProbe view;
    showView(view);
    EXPECT_EQ(view.getWindow()->getName(), "QtView::window");
}

TEST(QtViewWindowTest, NewWindowHasTheSizeOfTheView)
{
    ViewProbe view;
    showView(view, 320, 240);
    EXPECT_EQ(view.getWindow()->getSize(), Eigen::Vector2i(320, 240));
}

TEST(QtViewWindowTest, NewWindowIsInitialisedAndRenders)
{
    ViewProbe view;
    showView(view);
    ASSERT_TRUE(view.getWindow()->getColorRenderTarget());
    EXPECT_NE(view.getWindow()->getColorRenderTarget()->getTextureID(), 0u);
}

TEST(QtViewWindowTest, NewWindowSendsThroughTheManagerOfTheView)
{
    const auto manager = boost::make_shared<RecordingEventManager>();
    ViewProbe view;
    view.setEventManager(manager);
    showView(view);
    view.attach(makeScene());
    EXPECT_EQ(manager->getCount("SceneAttached"), 1u);
}

TEST(QtViewWindowTest, FirstShowReplacesAWindowThatWasSet)
{
    CallLog log;
    const auto given = boost::make_shared<FakeWindow>(log);
    ViewProbe view;
    view.setWindow(given);
    showView(view);
    EXPECT_NE(view.getWindow(), given);
    EXPECT_EQ(view.getWindow()->getName(), "QtView::window");
    EXPECT_THAT(log.take(), ElementsAre("resize 640 480"));
}

TEST(QtViewWindowTest, FirstShowCarriesNoSceneOver)
{
    CallLog log;
    const auto given = boost::make_shared<FakeWindow>(log);
    given->sceneManager = makeScene();
    ViewProbe view;
    view.setWindow(given);
    showView(view);
    EXPECT_FALSE(view.getWindow()->getSceneManager());
}

TEST(QtViewWindowTest, ALaterInitialisationCarriesTheSceneOver)
{
    const auto manager = boost::make_shared<RecordingEventManager>();
    const auto scene = makeScene();
    ViewProbe view;
    view.setEventManager(manager);
    showView(view);
    view.attach(scene);
    const auto first = view.getWindow();
    manager->clear();

    view.makeCurrent();
    view.initializeGL();
    EXPECT_NE(view.getWindow(), first);
    EXPECT_EQ(view.getWindow()->getSceneManager(), scene);
    EXPECT_EQ(view.getWindow()->getSize(), Eigen::Vector2i(200, 100));
    EXPECT_EQ(manager->getCount("SceneAttached"), 1u);
}

TEST(QtViewWindowTest, ALaterInitialisationAttachesNothingWhereThereWasNoScene)
{
    const auto manager = boost::make_shared<RecordingEventManager>();
    ViewProbe view;
    view.setEventManager(manager);
    showView(view);
    view.makeCurrent();
    view.initializeGL();
    EXPECT_EQ(manager->getCount("SceneAttached"), 0u);
}

TEST(QtViewWindowTest, InitialisationWithoutAContextDoesNothing)
{
    ViewProbe view;
    showView(view);
    const auto window = view.getWindow();
    view.doneCurrent();
    view.initializeGL();
    EXPECT_EQ(view.getWindow(), window);

    ViewProbe unshown;
    unshown.initializeGL();
    EXPECT_FALSE(unshown.getWindow());
}

TEST(QtViewWindowTest, InitialisationWithoutAContextIsNotTheFirst)
{
    CallLog log;
    const auto given = boost::make_shared<FakeWindow>(log);
    given->sceneManager = makeScene();
    ViewProbe view;
    view.setWindow(given);
    view.initializeGL();
    showView(view);
    EXPECT_FALSE(view.getWindow()->getSceneManager());
}

TEST(QtViewWindowTest, SetWindowStoresItAndTellsItTheSizeAndNothingElse)
{
    CallLog log;
    ViewProbe view;
    view.resize(321, 123);
    const auto window = boost::make_shared<FakeWindow>(log);
    view.setWindow(window);
    EXPECT_EQ(view.getWindow(), window);
    EXPECT_THAT(log.take(), ElementsAre("resize 321 123"));
    EXPECT_FALSE(window->eventManager);
}

TEST(QtViewWindowTest, SetWindowIgnoresTheEmptyPointer)
{
    CallLog log;
    ViewProbe view;
    const auto window = boost::make_shared<FakeWindow>(log);
    view.setWindow(window);
    log.take();
    view.setWindow(nullptr);
    EXPECT_EQ(view.getWindow(), window);
    EXPECT_THAT(log.take(), IsEmpty());
}

TEST(QtViewWindowTest, SetWindowMakesNoContextCurrentAndRepaintsNothing)
{
    CallLog log;
    WindowlessView view;
    showView(view);
    const int before = view.paints;
    view.doneCurrent();
    view.setWindow(boost::make_shared<FakeWindow>(log));
    EXPECT_EQ(QOpenGLContext::currentContext(), nullptr);
    settle();
    EXPECT_EQ(view.paints, before);
}

TEST(QtViewWindowTest, SetWindowReleasesTheOldOne)
{
    CallLog log;
    ViewProbe view;
    boost::weak_ptr<FakeWindow> old;
    {
        const auto window = boost::make_shared<FakeWindow>(log);
        old = window;
        view.setWindow(window);
    }
    EXPECT_FALSE(old.expired());
    view.setWindow(boost::make_shared<FakeWindow>(log));
    EXPECT_TRUE(old.expired());
}

TEST(QtViewWindowTest, SetWindowTakesTheCurrentWindowAgain)
{
    CallLog log;
    ViewProbe view;
    view.setWindow(boost::make_shared<FakeWindow>(log));
    log.take();
    view.setWindow(view.getWindow());
    EXPECT_TRUE(view.getWindow());
    EXPECT_THAT(log.take(), ElementsAre("resize 640 480"));
}

TEST(QtViewWindowTest, AttachMakesTheContextCurrentAndKeepsIt)
{
    CallLog log;
    ViewProbe view;
    const auto window = showWithFakeWindow(view, log);
    const auto scene = makeScene();
    const QOpenGLContext* during = nullptr;
    log.onCall = [&](const std::string&) { during = QOpenGLContext::currentContext(); };
    view.doneCurrent();
    view.attach(scene);
    EXPECT_THAT(log.take(), ElementsAre("attach"));
    EXPECT_EQ(window->sceneManager, scene);
    EXPECT_EQ(during, view.context());
    EXPECT_EQ(QOpenGLContext::currentContext(), view.context());
}

TEST(QtViewWindowTest, AttachHandsTheEmptyPointerOn)
{
    CallLog log;
    ViewProbe view;
    const auto window = showWithFakeWindow(view, log);
    window->sceneManager = makeScene();
    view.attach(nullptr);
    EXPECT_FALSE(window->sceneManager);
}

TEST(QtViewWindowTest, AttachWithoutAWindowDropsTheScene)
{
    const auto scene = makeScene();
    ViewProbe view;
    view.attach(scene);
    EXPECT_EQ(scene.use_count(), 1);
    showView(view);
    EXPECT_FALSE(view.getWindow()->getSceneManager());
}

TEST(QtViewWindowTest, ResizeGoesToTheWindowAndSetsNoViewport)
{
    CallLog log;
    ViewProbe view;
    showWithFakeWindow(view, log);
    view.makeCurrent();
    glViewport(1, 2, 3, 4);
    view.resizeGL(50, 0);
    GLint viewport[4];
    glGetIntegerv(GL_VIEWPORT, viewport);
    EXPECT_THAT(log.take(), ElementsAre("resize 50 0"));
    EXPECT_THAT(viewport, ElementsAre(1, 2, 3, 4));
}

TEST(QtViewWindowTest, ResizingTheWidgetResizesTheWindow)
{
    CallLog log;
    ViewProbe view;
    const auto window = showWithFakeWindow(view, log);
    view.resize(150, 75);
    ASSERT_TRUE(waitFor([&] { return window->size == Eigen::Vector2i(150, 75); }));
}

TEST(QtViewWindowTest, ResizeWithoutAWindowSetsAViewportAtLeastOneHigh)
{
    WindowlessView view;
    showView(view);
    ASSERT_FALSE(view.getWindow());
    view.makeCurrent();
    GLint viewport[4];
    view.resizeGL(70, 0);
    glGetIntegerv(GL_VIEWPORT, viewport);
    EXPECT_THAT(viewport, ElementsAre(0, 0, 70, 1));
    view.resizeGL(0, 40);
    glGetIntegerv(GL_VIEWPORT, viewport);
    EXPECT_THAT(viewport, ElementsAre(0, 0, 0, 40));
}

TEST(QtViewWindowTest, ResizeWithoutAContextDoesNothing)
{
    CallLog log;
    ViewProbe view;
    view.setWindow(boost::make_shared<FakeWindow>(log));
    log.take();
    view.resizeGL(10, 10);
    EXPECT_THAT(log.take(), IsEmpty());
}

TEST(QtViewWindowTest, AnExceptionOfResizeStaysInside)
{
    CallLog log;
    ViewProbe view;
    showWithFakeWindow(view, log);
    log.onCall = [](const std::string& name) {
        if (name == "resize")
            throw std::runtime_error(name);
    };
    view.makeCurrent();
    EXPECT_NO_THROW(view.resizeGL(10, 10));
    log.onCall = nullptr;
}

TEST(QtViewWindowTest, GetWindowMayBeCalledFromAnyThread)
{
    CallLog log;
    ViewProbe view;
    view.setWindow(boost::make_shared<FakeWindow>(log));
    std::atomic<bool> done{false};
    std::thread reader([&] {
        while (!done)
            EXPECT_TRUE(view.getWindow());
    });
    for (int i = 0; i < 1000; ++i) {
        const auto before = view.getWindow(); // so that no window dies in the reader
        view.setWindow(boost::make_shared<FakeWindow>(log));
    }
    done = true;
    reader.join();
}

TEST(QtViewWindowTest, DestructionDetachesTheWindowFromTheManager)
{
    CallLog log;
    const auto manager = boost::make_shared<RecordingEventManager>();
    const auto window = boost::make_shared<FakeWindow>(log);
    window->eventManager = manager;
    {
        ViewProbe view;
        view.setEventManager(manager);
        view.setWindow(window);
        log.take();
    }
    EXPECT_THAT(log.take(), ElementsAre("setEventManager"));
    EXPECT_FALSE(window->eventManager);
    EXPECT_EQ(window.use_count(), 1);
}

TEST(QtViewWindowTest, DestructionReleasesTheWindowWithItsContextCurrent)
{
    struct ContextNote : FakeWindow
    {
        using FakeWindow::FakeWindow;
        ~ContextNote() override { *atDeath = QOpenGLContext::currentContext(); }
        QOpenGLContext** atDeath = nullptr;
    };
    CallLog log;
    QOpenGLContext* atDeath = nullptr;
    QOpenGLContext* own = nullptr;
    {
        ViewProbe view;
        showView(view);
        own = view.context();
        const auto window = boost::make_shared<ContextNote>(log);
        window->atDeath = &atDeath;
        view.setWindow(window);
        view.doneCurrent();
    }
    EXPECT_NE(own, nullptr);
    EXPECT_EQ(atDeath, own);
}

TEST(QtViewWindowTest, PauseAndResumeNeedNeitherWindowNorScene)
{
    CallLog log;
    ViewProbe view;
    view.pauseAnimations();
    view.resumeAnimations();
    view.setWindow(boost::make_shared<FakeWindow>(log));
    view.pauseAnimations();
    view.resumeAnimations();
}

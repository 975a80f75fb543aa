#include "engine/scene/AnimationManager.h"
#include "engine/scene/CameraInstance.h"
#include "engine/scene/SceneManager.h"
#include "tests/qt/ViewProbe.h"
#include "tests/support/RecordingEventManager.h"

#include <QApplication>
#include <QContextMenuEvent>
#include <QKeyEvent>
#include <QMenu>
#include <QMouseEvent>
#include <QPointer>
#include <QSignalMapper>
#include <QTest>
#include <QTimer>
#include <QTranslator>
#include <QWheelEvent>
#include <QWindow>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <stdexcept>

using namespace halvern::test;
using halvern::scene::AnimationManager;
using halvern::scene::CameraInstance;
using halvern::scene::SceneManager;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;

namespace {

class FakeAnimations : public AnimationManager
{
public:
    explicit FakeAnimations(CallLog& log) : log(log) {}

    void pause() override { log.add("pause"); }
    void resume() override { log.add("resume"); }
    bool paused() override
    {
        log.add("paused");
        return false;
    }

private:
    CallLog& log;
};

struct CameraScene : SceneManager
{
    CameraScene() : SceneManager(nullptr) {}

    unsigned int getCameraInstanceCount() override { return static_cast<unsigned int>(cameras.size()); }
    boost::shared_ptr<CameraInstance> getCameraInstanceAt(unsigned int index) override
    {
        return cameras.at(index);
    }
    boost::shared_ptr<AnimationManager> getAnimationManager() override { return animations; }

    void add(const std::string& sid)
    {
        cameras.push_back(boost::make_shared<CameraInstance>(sid, nullptr, nullptr));
    }

    std::vector<boost::shared_ptr<CameraInstance>> cameras;
    boost::shared_ptr<AnimationManager> animations;
};

QStringList texts(const QMenu& menu)
{
    QStringList found;
    for (const QAction* action : menu.actions())
        found += action->isSeparator() ? "---" : action->text();
    return found;
}

class QtViewMenuTest : public testing::Test
{
protected:
    QtViewMenuTest()
    {
        scene->animations = boost::make_shared<FakeAnimations>(log);
        view->setEventManager(manager);
        window = showWithFakeWindow(*view, log);
        window->sceneManager = scene;
    }

    ~QtViewMenuTest() override
    {
        log.onCall = nullptr;
        closePopups();
    }

    static void closePopups()
    {
        while (QWidget* popup = QApplication::activePopupWidget())
            popup->close();
    }

    /// Whether the view accepts a context menu event. The events that arrive accepted are Qt's usual ones.
    bool rightClick(QPoint global = QPoint(150, 150), Qt::KeyboardModifiers modifiers = Qt::NoModifier)
    {
        QContextMenuEvent event(QContextMenuEvent::Mouse, QPoint(50, 50), global, modifiers);
        QTimer::singleShot(0, &closePopups); // should the menu run an event loop of its own
        view->contextMenuEvent(&event);
        return event.isAccepted();
    }

    QList<QMenu*> menus() const { return view->findChildren<QMenu*>(QString(), Qt::FindDirectChildrenOnly); }

    QList<QSignalMapper*> mappers() const
    {
        return view->findChildren<QSignalMapper*>(QString(), Qt::FindDirectChildrenOnly);
    }

    /// A submenu of the newest menu.
    QMenu& submenu(int index) const { return *menus().last()->actions().at(index)->menu(); }
    QMenu& cameras() const { return submenu(0); }
    QMenu& animations() const { return submenu(2); }

    template <class Event>
    void send(Event event)
    {
        QCoreApplication::sendEvent(view.get(), &event);
    }

    CallLog log;
    boost::shared_ptr<RecordingEventManager> manager = boost::make_shared<RecordingEventManager>();
    boost::shared_ptr<CameraScene> scene = boost::make_shared<CameraScene>();
    boost::shared_ptr<FakeWindow> window;
    std::unique_ptr<ViewProbe> view = std::make_unique<ViewProbe>();
};

} // namespace

// Opening

TEST_F(QtViewMenuTest, HoldsCamerasThenAnimations)
{
    EXPECT_TRUE(rightClick());
    ASSERT_EQ(menus().size(), 1);
    EXPECT_EQ(menus()[0]->title(), "Viewport");
    EXPECT_EQ(texts(*menus()[0]), QStringList({"Cameras", "---", "Animations"}));
    EXPECT_EQ(cameras().title(), "Cameras");
    EXPECT_EQ(animations().title(), "Animations");
    EXPECT_EQ(texts(animations()), QStringList({"Resume", "Pause"}));
}

TEST_F(QtViewMenuTest, OpensAtTheGlobalPositionWithoutBlocking)
{
    rightClick(QPoint(321, 234));
    EXPECT_TRUE(menus()[0]->isVisible());
    EXPECT_EQ(menus()[0]->pos(), QPoint(321, 234));
}

TEST_F(QtViewMenuTest, CamerasAreTheirSidsInOrder)
{
    for (const char* sid : {"left", "right", "left", "", "a, b", "gr\xc3\xbcn"})
        scene->add(sid);
    rightClick();
    EXPECT_EQ(texts(cameras()),
              QStringList({"left", "right", "left", "", "a, b", QString::fromUtf8("gr\xc3\xbcn")}));
    for (const QAction* action : cameras().actions())
        EXPECT_FALSE(action->isCheckable());
}

TEST_F(QtViewMenuTest, AnEmptyCameraInstanceIsSkipped)
{
    scene->add("left");
    scene->cameras.push_back(nullptr);
    scene->add("right");
    EXPECT_TRUE(rightClick());
    EXPECT_EQ(texts(cameras()), QStringList({"left", "right"}));
}

TEST_F(QtViewMenuTest, ASceneWithoutCamerasHasAnEmptySubmenu)
{
    EXPECT_TRUE(rightClick());
    EXPECT_THAT(cameras().actions(), IsEmpty());
    EXPECT_TRUE(menus()[0]->isVisible());
}

TEST_F(QtViewMenuTest, EntriesAreThoseOfTheSceneAtTheClick)
{
    scene->add("left");
    rightClick();
    scene->add("right");
    EXPECT_EQ(texts(cameras()), QStringList({"left"}));
    closePopups();
    rightClick();
    EXPECT_EQ(texts(cameras()), QStringList({"left", "right"}));
}

TEST_F(QtViewMenuTest, InputIsResetOnceBetweenTheCamerasAndThePopup)
{
    scene->add("left");
    QStringList entries;
    bool visible = true;
    log.onCall = [&](const std::string& name) {
        if (name != "resetInputState")
            return;
        entries = texts(cameras());
        visible = menus()[0]->isVisible();
    };
    rightClick();
    EXPECT_THAT(log.take(), ElementsAre("resetInputState"));
    EXPECT_EQ(entries, QStringList({"left"}));
    EXPECT_FALSE(visible);
}

TEST_F(QtViewMenuTest, WithoutALogicManagerTheMenuOpens)
{
    window->logicManager = nullptr;
    EXPECT_TRUE(rightClick());
    EXPECT_TRUE(menus()[0]->isVisible());
}

TEST_F(QtViewMenuTest, WithoutASceneManagerTheMenuIsMadeButNotShown)
{
    window->sceneManager = nullptr;
    EXPECT_FALSE(rightClick());
    ASSERT_EQ(menus().size(), 1);
    EXPECT_EQ(menus()[0]->title(), "Viewport");
    EXPECT_EQ(texts(*menus()[0]), QStringList({"Cameras", "---"}));
    EXPECT_FALSE(menus()[0]->isVisible());
    EXPECT_THAT(mappers(), IsEmpty());
    EXPECT_THAT(log.take(), IsEmpty());
}

TEST_F(QtViewMenuTest, WithoutAWindowTheEventIsIgnored)
{
    view = std::make_unique<ViewProbe>();
    EXPECT_FALSE(rightClick());
    ASSERT_EQ(menus().size(), 1);
    EXPECT_FALSE(menus()[0]->isVisible());
}

TEST_F(QtViewMenuTest, ARealRightClickGoesToTheEngineFirst)
{
    QTest::mousePress(view->windowHandle(), Qt::RightButton, Qt::NoModifier, QPoint(50, 60));
    EXPECT_TRUE(waitFor([this] { return menus().size() == 1; }));
    EXPECT_THAT(log.take(), testing::IsSupersetOf({"mousePressed 2 50 40 0", "resetInputState"}));
    EXPECT_TRUE(menus()[0]->isVisible());
    EXPECT_EQ(menus()[0]->pos(), view->mapToGlobal(QPoint(50, 60)));
}

// Not opening

TEST_F(QtViewMenuTest, PresentationModeHasNoMenu)
{
    view->setPresentationMode(true);
    EXPECT_FALSE(rightClick());
    EXPECT_THAT(menus(), IsEmpty());
    EXPECT_THAT(log.take(), IsEmpty());
    view->setPresentationMode(false);
    EXPECT_TRUE(rightClick());
}

TEST_F(QtViewMenuTest, AnyModifierOfTheLastEventPreventsTheMenu)
{
    for (const Qt::KeyboardModifier modifier :
         {Qt::ShiftModifier, Qt::ControlModifier, Qt::AltModifier, Qt::MetaModifier, Qt::KeypadModifier}) {
        send(QKeyEvent(QEvent::KeyPress, Qt::Key_5, modifier));
        EXPECT_FALSE(rightClick()) << modifier;
        EXPECT_THAT(menus(), IsEmpty()) << modifier;
    }
    send(QKeyEvent(QEvent::KeyRelease, Qt::Key_5, Qt::NoModifier));
    EXPECT_TRUE(rightClick());
}

TEST_F(QtViewMenuTest, EveryKindOfInputStoresItsModifiers)
{
    const auto sendWith = [this](int kind, Qt::KeyboardModifiers modifiers) {
        const QPointF at(5, 5);
        switch (kind) {
        case 0:
            return send(QMouseEvent(QEvent::MouseButtonPress, at, Qt::LeftButton, Qt::LeftButton, modifiers));
        case 1:
            return send(QMouseEvent(QEvent::MouseButtonRelease, at, Qt::LeftButton, {}, modifiers));
        case 2:
            return send(QMouseEvent(QEvent::MouseMove, at, Qt::NoButton, {}, modifiers));
        case 3:
            return send(QWheelEvent(at, at, QPoint(), QPoint(0, 120), Qt::NoButton, modifiers,
                                    Qt::NoScrollPhase, false));
        case 4:
            return send(QKeyEvent(QEvent::KeyPress, Qt::Key_A, modifiers));
        default:
            return send(QKeyEvent(QEvent::KeyRelease, Qt::Key_A, modifiers));
        }
    };
    for (const int kind : {0, 1, 2, 3, 4, 5}) {
        sendWith(kind, Qt::ControlModifier);
        EXPECT_FALSE(rightClick()) << kind;
        sendWith(kind, Qt::NoModifier);
        EXPECT_TRUE(rightClick()) << kind;
        closePopups();
    }
}

TEST_F(QtViewMenuTest, ADoubleClickStoresNoModifiers)
{
    send(QMouseEvent(QEvent::MouseButtonDblClick, QPointF(5, 5), Qt::LeftButton, Qt::LeftButton,
                     Qt::ControlModifier));
    EXPECT_TRUE(rightClick());
}

TEST_F(QtViewMenuTest, ModifiersAreStoredWithoutALogicManagerToo)
{
    window->logicManager = nullptr;
    send(QKeyEvent(QEvent::KeyPress, Qt::Key_A, Qt::ShiftModifier));
    EXPECT_FALSE(rightClick());
    send(QMouseEvent(QEvent::MouseMove, QPointF(5, 5), Qt::NoButton, {}, Qt::NoModifier));
    EXPECT_TRUE(rightClick());
}

TEST_F(QtViewMenuTest, ModifiersAreStoredBeforeTheMouseIsForwardedAndAfterAKeyIs)
{
    bool opens = false;
    log.onCall = [&](const std::string& name) {
        if (name == "resetInputState")
            return;
        opens = rightClick();
        closePopups();
    };
    const QPointF at(5, 5);
    send(QMouseEvent(QEvent::MouseButtonPress, at, Qt::LeftButton, Qt::LeftButton, Qt::ControlModifier));
    EXPECT_FALSE(opens);
    send(QMouseEvent(QEvent::MouseButtonRelease, at, Qt::LeftButton, {}, Qt::NoModifier));
    EXPECT_TRUE(opens);
    send(QMouseEvent(QEvent::MouseMove, at, Qt::NoButton, {}, Qt::ControlModifier));
    EXPECT_FALSE(opens);
    send(QWheelEvent(at, at, QPoint(), QPoint(0, 120), Qt::NoButton, Qt::NoModifier, Qt::NoScrollPhase,
                     false));
    EXPECT_TRUE(opens);
    send(QKeyEvent(QEvent::KeyPress, Qt::Key_A, Qt::ControlModifier));
    EXPECT_TRUE(opens);
    send(QKeyEvent(QEvent::KeyRelease, Qt::Key_A, Qt::NoModifier));
    EXPECT_FALSE(opens);
}

TEST_F(QtViewMenuTest, TheModifiersOfTheContextMenuEventDoNotCount)
{
    EXPECT_TRUE(rightClick(QPoint(150, 150), Qt::ControlModifier));
    closePopups();
    send(QKeyEvent(QEvent::KeyPress, Qt::Key_A, Qt::ShiftModifier));
    EXPECT_FALSE(rightClick(QPoint(150, 150), Qt::NoModifier));
}

// Choosing

TEST_F(QtViewMenuTest, ChoosingACameraSendsOneActiveCamera)
{
    for (const char* sid : {"left", "a, b", "left"})
        scene->add(sid);
    rightClick();
    manager->clear();
    cameras().actions()[1]->trigger();
    EXPECT_THAT(manager->getData("ActiveCamera"), ElementsAre("a, b"));
    cameras().actions()[2]->trigger();
    EXPECT_THAT(manager->getData("ActiveCamera"), ElementsAre("a, b", "left"));
    EXPECT_EQ(manager->getCount(), 2u);
}

TEST_F(QtViewMenuTest, EarlierMenusSendNothingOfTheirOwn)
{
    scene->add("left");
    for (int i = 0; i < 3; ++i) {
        rightClick();
        closePopups();
    }
    cameras().actions()[0]->trigger();
    EXPECT_THAT(manager->getData("ActiveCamera"), ElementsAre("left"));
}

TEST_F(QtViewMenuTest, ActivateCameraMayBeOverridden)
{
    struct Overriding : ViewProbe
    {
        void activateCamera(QString sid) override { activated += sid; }
        QStringList activated;
    };
    auto overriding = std::make_unique<Overriding>();
    QStringList& activated = overriding->activated;
    view = std::move(overriding);
    view->setWindow(window);
    scene->add("left");
    rightClick();
    cameras().actions()[0]->trigger();
    EXPECT_EQ(activated, QStringList("left"));
    EXPECT_EQ(manager->getCount("ActiveCamera"), 0u);
}

TEST_F(QtViewMenuTest, ActivatingACameraRepaintsNothing)
{
    settle();
    const int before = view->paints;
    view->activateCamera("left");
    settle();
    EXPECT_EQ(view->paints, before);
    EXPECT_THAT(manager->getData("ActiveCamera"), ElementsAre("left"));
}

TEST_F(QtViewMenuTest, PauseAndResumeReachTheAnimationsAndAskNothing)
{
    rightClick();
    log.take();
    animations().actions()[1]->trigger();
    animations().actions()[1]->trigger();
    EXPECT_THAT(log.take(), ElementsAre("pause", "pause"));
    animations().actions()[0]->trigger();
    EXPECT_THAT(log.take(), ElementsAre("resume"));
}

TEST_F(QtViewMenuTest, PauseAndResumeReachTheScenesOwnAnimationManager)
{
    const auto plain = boost::make_shared<SceneManager>(nullptr);
    window->sceneManager = plain;
    view->pauseAnimations();
    EXPECT_TRUE(plain->getAnimationManager()->paused());
    view->resumeAnimations();
    EXPECT_FALSE(plain->getAnimationManager()->paused());
}

TEST_F(QtViewMenuTest, PauseAndResumeNeedNeitherSceneNorWindow)
{
    scene->animations = nullptr;
    view->pauseAnimations();
    view->resumeAnimations();
    window->sceneManager = nullptr;
    view->pauseAnimations();
    view->resumeAnimations();
    ViewProbe windowless;
    windowless.pauseAnimations();
    windowless.resumeAnimations();
    EXPECT_THAT(log.calls, Not(Contains("pause")));
}

// The boundary towards Qt

TEST_F(QtViewMenuTest, AnExceptionOfTheEngineStaysInside)
{
    log.onCall = [](const std::string& name) { throw std::runtime_error(name); };
    EXPECT_NO_THROW(rightClick());
    EXPECT_NO_THROW(view->pauseAnimations());
    EXPECT_NO_THROW(view->resumeAnimations());
    EXPECT_THAT(log.take(), ElementsAre("resetInputState", "pause", "resume"));
}

TEST_F(QtViewMenuTest, AnExceptionOfTheEventManagerStaysInside)
{
    struct Throwing : RecordingEventManager
    {
        void triggerEvent(const HCE::Event& /*event*/) override { throw std::runtime_error("manager"); }
    };
    view->setEventManager(boost::make_shared<Throwing>());
    EXPECT_NO_THROW(view->activateCamera("left"));
    view->setEventManager(manager);
}

// Life

/// On purpose: nothing is deleted after use.
TEST_F(QtViewMenuTest, MenusAndMappersLiveUntilTheViewDies)
{
    scene->add("left");
    for (int i = 0; i < 3; ++i) {
        rightClick();
        closePopups();
        settle();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
    EXPECT_EQ(menus().size(), 3);
    EXPECT_EQ(mappers().size(), 3);
    const QPointer<QMenu> menu = menus().first();
    const QPointer<QSignalMapper> mapper = mappers().first();
    view.reset();
    EXPECT_TRUE(menu.isNull());
    EXPECT_TRUE(mapper.isNull());
}

TEST_F(QtViewMenuTest, TitlesAreTranslatedByTheFullClassName)
{
    struct Marker : QTranslator
    {
        bool isEmpty() const override { return false; }
        QString translate(const char* context, const char* text, const char* /*note*/,
                          int /*count*/) const override
        {
            return std::strcmp(context, "halvern::qt::QtView") == 0 ? QString(text).toUpper() : QString();
        }
    };
    Marker marker;
    QCoreApplication::installTranslator(&marker);
    rightClick();
    QCoreApplication::removeTranslator(&marker);
    EXPECT_EQ(menus()[0]->title(), "VIEWPORT");
    EXPECT_EQ(cameras().title(), "CAMERAS");
    EXPECT_EQ(animations().title(), "ANIMATIONS");
    EXPECT_EQ(texts(animations()), QStringList({"Resume", "Pause"}));
}

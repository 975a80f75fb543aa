#include "qt/QtView" // the name that forms include
#include "tests/qt/ViewProbe.h"
#include "tests/support/MetaObjects.h"
#include "tests/support/RecordingEventManager.h"

#include <QApplication>
#include <QContextMenuEvent>
#include <QDropEvent>
#include <QMetaMethod>
#include <QMimeData>
#include <QOpenGLContext>
#include <QTest>
#include <QTimer>
#include <QVBoxLayout>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <thread>
#include <type_traits>

using halvern::qt::QtView;
using namespace halvern::test;
using testing::ElementsAre;

namespace {

/// Notes the types in the order in which somebody registers for them.
class RegistrationRecorder : public RecordingEventManager
{
public:
    void registerEventListener(HCE::EventListener* listener, HCE::EventType type) override
    {
        types.push_back(type.getName());
        RecordingEventManager::registerEventListener(listener, type);
    }

    std::vector<std::string> types;
};

} // namespace

TEST(QtViewTest, DerivesFromWidgetThenFunctionsThenEventBase)
{
    static_assert(std::is_convertible_v<QtView*, QOpenGLWidget*>);
    static_assert(std::is_convertible_v<QtView*, HCE::EventBase*>);
    static_assert(std::is_base_of_v<QOpenGLFunctions, QtView>);
    static_assert(!std::is_convertible_v<QtView*, QOpenGLFunctions*>);

    struct Opened : QtView
    {
        const void* functions() { return static_cast<QOpenGLFunctions*>(this); }
    };
    Opened view;
    const void* functions = view.functions();
    EXPECT_EQ(static_cast<void*>(&view), static_cast<QOpenGLWidget*>(&view));
    EXPECT_LT(static_cast<void*>(&view), functions);
    EXPECT_LT(functions, static_cast<HCE::EventBase*>(&view));
}

TEST(QtViewTest, MetaObjectCarriesTheQualifiedNameOverQOpenGLWidget)
{
    EXPECT_STREQ(QtView::staticMetaObject.className(), "halvern::qt::QtView");
    EXPECT_EQ(QtView::staticMetaObject.superClass(), &QOpenGLWidget::staticMetaObject);
    EXPECT_EQ(QtView::staticMetaObject.propertyCount(), QOpenGLWidget::staticMetaObject.propertyCount());
}

TEST(QtViewTest, MetaObjectListsTheSignalThenTheEightSlots)
{
    EXPECT_THAT(ownMethods(QtView::staticMetaObject),
                ElementsAre("needsUpdate()", "activateCamera(QString)", "enableLogo(bool)",
                            "setShowStats(bool)", "showStringAtCursor(QString)", "pauseAnimations()",
                            "resumeAnimations()", "updateMessageDisplay()", "cleanup()"));
}

TEST(QtViewTest, AllSlotsArePublicAndReturnNothing)
{
    const QMetaObject& meta = QtView::staticMetaObject;
    EXPECT_EQ(meta.method(meta.methodOffset()).methodType(), QMetaMethod::Signal);
    for (int i = meta.methodOffset() + 1; i < meta.methodCount(); ++i) {
        EXPECT_EQ(meta.method(i).methodType(), QMetaMethod::Slot);
        EXPECT_EQ(meta.method(i).access(), QMetaMethod::Public);
        EXPECT_EQ(meta.method(i).returnType(), QMetaType::Void);
    }
}

TEST(QtViewTest, MetaCastKnowsTheEventBaseByItsAlias)
{
    QtView view;
    EXPECT_EQ(view.qt_metacast("HCE::EventBase"), static_cast<HCE::EventBase*>(&view));
    EXPECT_EQ(view.qt_metacast("halvern::qt::QtView"), static_cast<void*>(&view));
    EXPECT_EQ(view.qt_metacast("QOpenGLWidget"), static_cast<QOpenGLWidget*>(&view));
    EXPECT_EQ(view.qt_metacast("halvern::core::event::EventBase"), nullptr);
    EXPECT_EQ(view.qt_metacast("HCE::EventListener"), nullptr);
}

TEST(QtViewTest, IsAWidgetThatFormsCreateWithOneArgument)
{
    static_assert(std::is_constructible_v<QtView, QWidget*>);
    static_assert(std::is_default_constructible_v<QtView>);
    static_assert(!std::is_convertible_v<QWidget*, QtView>); // explicit
    static_assert(std::has_virtual_destructor_v<QtView>);
}

TEST(QtViewTest, DropsItsParentOnPurpose)
{
    QWidget parent;
    QtView view(&parent, "view");
    EXPECT_EQ(view.parentWidget(), nullptr);
    EXPECT_EQ(view.windowFlags(), QOpenGLWidget().windowFlags());
    EXPECT_TRUE(parent.children().isEmpty());
}

TEST(QtViewTest, GetsAParentFromALayout)
{
    QWidget parent;
    QVBoxLayout layout(&parent);
    auto* view = new QtView(&parent);
    layout.addWidget(view);
    EXPECT_EQ(view->parentWidget(), &parent);
}

TEST(QtViewTest, SetsNoObjectName)
{
    EXPECT_TRUE(QtView(nullptr, "named").objectName().isEmpty());
}

TEST(QtViewTest, HasNoWindowUntilItIsShown)
{
    EXPECT_FALSE(QtView().getWindow());
}

TEST(QtViewTest, RequestsACompatibilityProfileWithDepthAndStencil)
{
    const QSurfaceFormat format = QtView().format();
    EXPECT_EQ(format.depthBufferSize(), 24);
    EXPECT_EQ(format.stencilBufferSize(), 8);
    EXPECT_EQ(format.redBufferSize(), 8);
    EXPECT_EQ(format.greenBufferSize(), 8);
    EXPECT_EQ(format.blueBufferSize(), 8);
    EXPECT_EQ(format.alphaBufferSize(), 8);
    EXPECT_EQ(format.profile(), QSurfaceFormat::CompatibilityProfile);
}

TEST(QtViewTest, RequestsNoVersionAndNoSamples)
{
    const QSurfaceFormat format = QtView().format();
    EXPECT_EQ(format.version(), QSurfaceFormat().version());
    EXPECT_EQ(format.samples(), QSurfaceFormat().samples());
}

TEST(QtViewTest, TakesFocusDropsAndMovesWithoutAButton)
{
    QtView view;
    EXPECT_EQ(view.focusPolicy(), Qt::StrongFocus);
    EXPECT_TRUE(view.acceptDrops());
    EXPECT_TRUE(view.hasMouseTracking());
}

TEST(QtViewTest, HintsAtFourHundredPixelsAndFiftyAtLeast)
{
    const QtView view;
    EXPECT_EQ(view.sizeHint(), QSize(400, 400));
    EXPECT_EQ(view.minimumSizeHint(), QSize(50, 50));
}

TEST(QtViewTest, UpdateFrequencyIsSixtyAndTakesAnyValue)
{
    QtView view;
    EXPECT_EQ(view.getUpdateFrequency(), 60);
    for (const int frequency : {25, 0, -1, 1000000}) {
        view.setUpdateFrequency(frequency);
        EXPECT_EQ(view.getUpdateFrequency(), frequency);
    }
}

TEST(QtViewTest, UpdateFrequencyDrivesNoRepaintByItself)
{
    WindowlessView view;
    showView(view);
    const int before = view.paints;
    view.setUpdateFrequency(1000);
    int ticks = 0; // of the message timer, which repaints nothing either
    QObject::connect(view.findChild<QTimer*>(), &QTimer::timeout, [&] { ++ticks; });
    ASSERT_TRUE(waitFor([&] { return ticks == 3; }));
    EXPECT_EQ(view.paints, before);
}

TEST(QtViewTest, UpdateFrequencyIsVirtual)
{
    struct Fixed : QtView
    {
        int getUpdateFrequency() override { return 12; }
        void setUpdateFrequency(int /*frequency*/) override {}
    };
    Fixed fixed;
    QtView& view = fixed;
    view.setUpdateFrequency(30);
    EXPECT_EQ(view.getUpdateFrequency(), 12);
}

TEST(QtViewTest, MessageTimerRunsEveryFiftyMillisecondsFromTheStart)
{
    const QtView view;
    const auto timers = view.findChildren<QTimer*>();
    ASSERT_EQ(timers.size(), 1);
    EXPECT_TRUE(timers.front()->isActive());
    EXPECT_EQ(timers.front()->interval(), 50);
    EXPECT_FALSE(timers.front()->isSingleShot());
}

TEST(QtViewTest, TimerIsConnectedToTheMessages)
{
    QtView view;
    auto* timer = view.findChild<QTimer*>();
    EXPECT_TRUE(isConnectedOnce(timer, SIGNAL(timeout()), &view, SLOT(updateMessageDisplay())));
}

TEST(QtViewTest, NeedsUpdateIsConnectedToUpdate)
{
    ViewProbe view;
    EXPECT_EQ(view.receivers(SIGNAL(needsUpdate())), 1);
    EXPECT_TRUE(isConnectedOnce(&view, SIGNAL(needsUpdate()), &view, SLOT(update())));
}

TEST(QtViewTest, ContextIsConnectedToCleanup)
{
    QtView view;
    showView(view);
    ASSERT_NE(view.context(), nullptr);
    EXPECT_TRUE(isConnectedOnce(view.context(), SIGNAL(aboutToBeDestroyed()), &view, SLOT(cleanup())));
}

TEST(QtViewTest, CleanupDoesNothing)
{
    CallLog log;
    ViewProbe view;
    const auto window = showWithFakeWindow(view, log);
    view.cleanup();
    EXPECT_EQ(view.getWindow(), window);
    EXPECT_TRUE(log.calls.empty());
    repaintView(view);
    EXPECT_THAT(log.take(), ElementsAre("update", "render"));
}

TEST(QtViewTest, StartsWithAPrivateManagerThatKnowsIt)
{
    QtView one;
    QtView other;
    ASSERT_TRUE(one.getEventManager());
    EXPECT_NE(one.getEventManager(), other.getEventManager());
    EXPECT_TRUE(one.getEventManager()->isRegistered(&one));
    EXPECT_FALSE(one.getEventManager()->isRegistered(&other));
}

TEST(QtViewTest, SendsIntoItsPrivateManagerWithoutHarm)
{
    QtView view;
    view.activateCamera("camera");
    view.getEventManager()->waitUntilIdle();
}

TEST(QtViewTest, RegistersItsFourTypesInOrder)
{
    const auto manager = boost::make_shared<RegistrationRecorder>();
    QtView view;
    view.setEventManager(manager);
    EXPECT_THAT(manager->types, ElementsAre("ObjectPicked", "DisplayMessageAt", "SyncScene", "UpdateViews"));
}

TEST(QtViewTest, ANewManagerReplacesTheOld)
{
    const auto first = boost::make_shared<RecordingEventManager>();
    const auto second = boost::make_shared<RecordingEventManager>();
    QtView view;
    view.setEventManager(first);
    view.setEventManager(second);
    EXPECT_EQ(view.getEventManager(), second);
    EXPECT_FALSE(first->isRegistered(&view));
    EXPECT_TRUE(second->isRegistered(&view));
}

TEST(QtViewTest, SetEventManagerTellsTheWindowToo)
{
    CallLog log;
    const auto window = boost::make_shared<FakeWindow>(log);
    const auto manager = boost::make_shared<RecordingEventManager>();
    QtView view;
    view.setWindow(window);
    log.take();
    view.setEventManager(manager);
    EXPECT_THAT(log.take(), ElementsAre("setEventManager"));
    EXPECT_EQ(window->eventManager, manager);
}

TEST(QtViewTest, SetEventManagerTakesTheEmptyPointer)
{
    CallLog log;
    const auto window = boost::make_shared<FakeWindow>(log);
    window->eventManager = boost::make_shared<RecordingEventManager>();
    QtView view;
    view.setWindow(window);
    view.setEventManager(nullptr);
    EXPECT_FALSE(view.getEventManager());
    EXPECT_FALSE(window->eventManager);
    view.activateCamera("nobody hears it");
}

TEST(QtViewTest, ActivateCameraSendsTheBareSID)
{
    const auto manager = boost::make_shared<RecordingEventManager>();
    QtView view;
    view.setEventManager(manager);
    view.activateCamera(QString::fromUtf8("k\xc3\xa4mera, 1"));
    EXPECT_EQ(manager->getCount(), 1u);
    EXPECT_THAT(manager->getData("ActiveCamera"), ElementsAre("k\xc3\xa4mera, 1"));
}

TEST(QtViewTest, ActivateCameraIsVirtualAndRepaintsNothing)
{
    struct Overriding : ViewProbe
    {
        void activateCamera(QString sid) override { asked = sid; }
        QString asked;
    };
    Overriding overriding;
    QMetaObject::invokeMethod(&overriding, "activateCamera", Q_ARG(QString, "side"));
    EXPECT_EQ(overriding.asked, "side");

    WindowlessView view;
    showView(view);
    const int before = view.paints;
    view.activateCamera("side");
    settle();
    EXPECT_EQ(view.paints, before);
}

TEST(QtViewTest, FlagsAndCursorTextRequestNoRepaint)
{
    WindowlessView view;
    showView(view);
    const int before = view.paints;
    view.setPresentationMode(true);
    view.enableLogo(true);
    view.setShowStats(true);
    view.showStringAtCursor("text");
    settle();
    EXPECT_EQ(view.paints, before);
}

TEST(QtViewTest, NeedsUpdateRepaints)
{
    WindowlessView view;
    showView(view);
    const int before = view.paints;
    emit view.needsUpdate();
    EXPECT_EQ(view.paints, before);
    settle();
    EXPECT_EQ(view.paints, before + 1);
}

TEST(QtViewTest, NeedsUpdateRepaintsWhenAnotherThreadEmitsIt)
{
    WindowlessView view;
    showView(view);
    const int before = view.paints;
    std::thread([&] { emit view.needsUpdate(); }).join();
    settle();
    EXPECT_EQ(view.paints, before + 1);
}

TEST(QtViewTest, ContextMenuIsLeftToTheParent)
{
    ViewProbe view;
    QContextMenuEvent event(QContextMenuEvent::Mouse, QPoint(1, 1));
    event.accept();
    view.contextMenuEvent(&event);
    EXPECT_FALSE(event.isAccepted());
}

TEST(QtViewTest, DragsFromElsewhereStayAsTheyAre)
{
    ViewProbe view;
    QMimeData mime;
    mime.setText("material");
    QDragEnterEvent enter(QPoint(1, 1), Qt::CopyAction, &mime, Qt::LeftButton, Qt::NoModifier);
    QDragMoveEvent move(QPoint(1, 1), Qt::CopyAction, &mime, Qt::LeftButton, Qt::NoModifier);
    QDropEvent drop(QPointF(1, 1), Qt::CopyAction, &mime, Qt::LeftButton, Qt::NoModifier);
    const bool before[] = {enter.isAccepted(), move.isAccepted(), drop.isAccepted()};
    view.dragEnterEvent(&enter);
    view.dragMoveEvent(&move);
    view.dropEvent(&drop);
    EXPECT_EQ(enter.isAccepted(), before[0]);
    EXPECT_EQ(move.isAccepted(), before[1]);
    EXPECT_EQ(drop.isAccepted(), before[2]);
}

#include "tests/qt/ViewProbe.h"

#include <QTest>
#include <QVBoxLayout>
#include <QWheelEvent>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <stdexcept>

using namespace halvern::test;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

class QtViewInputTest : public testing::Test
{
protected:
    QtViewInputTest()
    {
        view.resize(200, 100);
        view.setWindow(window);
        log.take();
    }

    ~QtViewInputTest() override { log.onCall = nullptr; }

    template <class Event>
    bool send(Event event)
    {
        event.ignore();
        QCoreApplication::sendEvent(&view, &event);
        return event.isAccepted();
    }

    static QMouseEvent mouse(QEvent::Type type, QPointF position, Qt::MouseButton button,
                             Qt::KeyboardModifiers modifiers = Qt::NoModifier)
    {
        return QMouseEvent(type, position, button, button, modifiers);
    }

    static QWheelEvent wheel(QPointF position, QPoint angle, Qt::KeyboardModifiers modifiers = Qt::NoModifier)
    {
        return QWheelEvent(position, position, QPoint(), angle, Qt::NoButton, modifiers, Qt::NoScrollPhase,
                           false);
    }

    CallLog log;
    WindowlessView view;
    boost::shared_ptr<FakeWindow> window = boost::make_shared<FakeWindow>(log);
};

} // namespace

TEST_F(QtViewInputTest, PressIsForwardedWithYRunningUpwards)
{
    EXPECT_TRUE(send(mouse(QEvent::MouseButtonPress, {30, 20}, Qt::RightButton, Qt::ShiftModifier)));
    EXPECT_THAT(log.take(), ElementsAre("mousePressed 2 30 80 33554432"));
}

TEST_F(QtViewInputTest, ReleaseIsForwardedWithYRunningUpwards)
{
    EXPECT_TRUE(send(mouse(QEvent::MouseButtonRelease, {30, 20}, Qt::MiddleButton, Qt::AltModifier)));
    EXPECT_THAT(log.take(), ElementsAre("mouseReleased 4 30 80 134217728"));
}

TEST_F(QtViewInputTest, MoveIsForwardedWithoutAButton)
{
    EXPECT_TRUE(send(mouse(QEvent::MouseMove, {30, 20}, Qt::NoButton, Qt::ControlModifier)));
    EXPECT_THAT(log.take(), ElementsAre("mouseMoved 30 80 67108864"));
}

TEST_F(QtViewInputTest, TheTopEdgeIsSentAsTheHeightOnPurpose)
{
    send(mouse(QEvent::MouseMove, {0, 0}, Qt::NoButton));
    send(mouse(QEvent::MouseMove, {199, 99}, Qt::NoButton));
    send(mouse(QEvent::MouseMove, {-3, 105}, Qt::NoButton));
    EXPECT_THAT(log.take(), ElementsAre("mouseMoved 0 100 0", "mouseMoved 199 1 0", "mouseMoved -3 -5 0"));
}

TEST_F(QtViewInputTest, YFollowsTheHeightOfTheWidget)
{
    view.resize(200, 300);
    send(mouse(QEvent::MouseButtonPress, {10, 10}, Qt::LeftButton));
    EXPECT_THAT(log.take(), ElementsAre("mousePressed 1 10 290 0"));
}

TEST_F(QtViewInputTest, ARealClickArrives)
{
    QTest::mouseClick(&view, Qt::LeftButton, Qt::ControlModifier, QPoint(5, 6));
    EXPECT_THAT(log.take(),
                testing::IsSupersetOf({"mousePressed 1 5 94 67108864", "mouseReleased 1 5 94 67108864"}));
}

TEST_F(QtViewInputTest, ADoubleClickSendsNothingAndIsIgnored)
{
    QMouseEvent event = mouse(QEvent::MouseButtonDblClick, {30, 20}, Qt::LeftButton, Qt::ShiftModifier);
    event.accept();
    view.mouseDoubleClickEvent(&event);
    EXPECT_FALSE(event.isAccepted());
    EXPECT_THAT(log.take(), IsEmpty());
}

TEST_F(QtViewInputTest, TheParentSeesADoubleClick)
{
    struct Parent : QWidget
    {
        void mouseDoubleClickEvent(QMouseEvent*) override { ++seen; }
        int seen = 0;
    };
    Parent parent;
    QVBoxLayout layout(&parent);
    auto* child = new ViewProbe;
    child->setWindow(window);
    layout.addWidget(child);
    log.take();
    QTest::mouseDClick(child, Qt::LeftButton, Qt::NoModifier, QPoint(5, 5));
    EXPECT_EQ(parent.seen, 1);
    EXPECT_THAT(log.take(), testing::Not(testing::Contains(testing::StartsWith("mousePressed"))));
}

TEST_F(QtViewInputTest, ADoubleClickRepaintsNothing)
{
    showView(view, 200, 100);
    const int before = view.paints;
    send(mouse(QEvent::MouseButtonDblClick, {30, 20}, Qt::LeftButton));
    settle();
    EXPECT_EQ(view.paints, before);
}

TEST_F(QtViewInputTest, OneWheelEventIsOneStepWhateverItsDelta)
{
    for (const int delta : {120, 1, 1200, -1, -120, -1200, 0})
        EXPECT_TRUE(send(wheel({30, 20}, {0, delta})));
    EXPECT_THAT(log.take(),
                ElementsAre("mouseWheel 0 1 30 80 0", "mouseWheel 0 1 30 80 0", "mouseWheel 0 1 30 80 0",
                            "mouseWheel 0 -1 30 80 0", "mouseWheel 0 -1 30 80 0", "mouseWheel 0 -1 30 80 0",
                            "mouseWheel 0 -1 30 80 0")); // 0 counts as -1 on purpose
}

TEST_F(QtViewInputTest, AHorizontalWheelCounts)
{
    send(wheel({30, 20}, {120, 0}));
    send(wheel({30, 20}, {-120, 0}));
    EXPECT_THAT(log.take(), ElementsAre("mouseWheel 0 1 30 80 0", "mouseWheel 0 -1 30 80 0"));
}

TEST_F(QtViewInputTest, WheelPositionsAreTruncated)
{
    send(wheel({30.9, 20.9}, {0, 120}, Qt::ShiftModifier | Qt::ControlModifier));
    EXPECT_THAT(log.take(), ElementsAre("mouseWheel 0 1 30 80 100663296"));
}

TEST_F(QtViewInputTest, KeysAreForwardedWithTheModifiersOfTheirEvent)
{
    EXPECT_TRUE(send(QKeyEvent(QEvent::KeyPress, Qt::Key_W, Qt::ShiftModifier, "W")));
    EXPECT_TRUE(send(QKeyEvent(QEvent::KeyRelease, Qt::Key_W, Qt::NoModifier, "w")));
    EXPECT_THAT(log.take(), ElementsAre("keyPressed 87 33554432", "keyReleased 87 0"));
}

TEST_F(QtViewInputTest, RealKeysArrive)
{
    QTest::keyClick(&view, Qt::Key_Left, Qt::AltModifier); // presses and releases the Alt key too
    EXPECT_THAT(log.take(), ElementsAre("keyPressed 16777251 134217728", "keyPressed 16777234 134217728",
                                        "keyReleased 16777234 134217728", "keyReleased 16777251 0"));
}

TEST_F(QtViewInputTest, AutoRepeatIsForwardedAsItComes)
{
    for (int i = 0; i < 3; ++i)
        send(QKeyEvent(QEvent::KeyPress, Qt::Key_A, Qt::NoModifier, "a", true));
    EXPECT_EQ(log.take().size(), 3u);
}

TEST_F(QtViewInputTest, EveryInputRepaintsOnce)
{
    showView(view, 200, 100);
    const std::vector<std::function<void()>> inputs{
        [&] {
            send(mouse(QEvent::MouseButtonPress, {3, 3}, Qt::LeftButton));
        },
        [&] {
            send(mouse(QEvent::MouseMove, {3, 3}, Qt::NoButton));
        },
        [&] {
            send(mouse(QEvent::MouseButtonRelease, {3, 3}, Qt::LeftButton));
        },
        [&] {
            send(wheel({3, 3}, {0, 120}));
        },
        [&] { send(QKeyEvent(QEvent::KeyPress, Qt::Key_A, Qt::NoModifier)); },
        [&] { send(QKeyEvent(QEvent::KeyRelease, Qt::Key_A, Qt::NoModifier)); }};
    for (const auto& input : inputs) {
        const int before = view.paints;
        input();
        EXPECT_EQ(view.paints, before);
        settle();
        EXPECT_EQ(view.paints, before + 1);
    }
}

TEST_F(QtViewInputTest, InputWithoutALogicManagerIsAcceptedAndRepaints)
{
    showView(view, 200, 100);
    window->logicManager.reset();
    log.take();
    const int before = view.paints;
    EXPECT_TRUE(send(mouse(QEvent::MouseButtonPress, {3, 3}, Qt::LeftButton)));
    EXPECT_TRUE(send(wheel({3, 3}, {0, 120})));
    EXPECT_TRUE(send(QKeyEvent(QEvent::KeyPress, Qt::Key_A, Qt::NoModifier)));
    EXPECT_THAT(log.take(), IsEmpty());
    settle();
    EXPECT_EQ(view.paints, before + 1);
}

TEST_F(QtViewInputTest, InputWithoutAWindowIsAccepted)
{
    ViewProbe windowless;
    QMouseEvent press = mouse(QEvent::MouseButtonPress, {3, 3}, Qt::LeftButton);
    QKeyEvent key(QEvent::KeyPress, Qt::Key_A, Qt::NoModifier);
    press.ignore();
    key.ignore();
    QCoreApplication::sendEvent(&windowless, &press);
    QCoreApplication::sendEvent(&windowless, &key);
    EXPECT_TRUE(press.isAccepted());
    EXPECT_TRUE(key.isAccepted());
}

TEST_F(QtViewInputTest, AnEngineExceptionStaysInsideAndTheEventIsAccepted)
{
    log.onCall = [](const std::string& name) { throw std::runtime_error(name); };
    EXPECT_TRUE(send(mouse(QEvent::MouseButtonPress, {3, 3}, Qt::LeftButton)));
    EXPECT_TRUE(send(mouse(QEvent::MouseButtonRelease, {3, 3}, Qt::LeftButton)));
    EXPECT_TRUE(send(mouse(QEvent::MouseMove, {3, 3}, Qt::NoButton)));
    EXPECT_TRUE(send(wheel({3, 3}, {0, 120})));
    EXPECT_TRUE(send(QKeyEvent(QEvent::KeyPress, Qt::Key_A, Qt::NoModifier)));
    EXPECT_TRUE(send(QKeyEvent(QEvent::KeyRelease, Qt::Key_A, Qt::NoModifier)));
}

TEST_F(QtViewInputTest, ASubclassMayHandleInputItself)
{
    struct Overriding : ViewProbe
    {
        void keyPressEvent(QKeyEvent* event) override
        {
            if (event->key() != Qt::Key_Escape)
                QtView::keyPressEvent(event);
        }
    };
    Overriding overriding;
    overriding.setWindow(window);
    log.take();
    QTest::keyPress(&overriding, Qt::Key_Escape);
    QTest::keyPress(&overriding, Qt::Key_A);
    EXPECT_THAT(log.take(), ElementsAre("keyPressed 65 0"));
}

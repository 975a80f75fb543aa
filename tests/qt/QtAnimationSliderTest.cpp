#include "tests/qt/SliderProbe.h"

#include <QMetaMethod>
#include <QSignalSpy>
#include <QTest>
#include <QTimer>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <climits>
#include <limits>
#include <random>

using namespace halvern::test;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

/// A slider with an animation manager whose current animation has some keyframes.
class QtAnimationSliderTest : public testing::Test
{
protected:
    QtAnimationSliderTest()
    {
        manager->animation = boost::make_shared<FakeAnimation>(calls, "animation");
        slider.setAnimationManager(manager);
    }

    /// One pixel for each millisecond.
    void setScale(int maximum)
    {
        slider.setRange(0, maximum);
        slider.resize(maximum, 80);
    }

    /// The value under a pixel, which a double click sends without clamping.
    std::string mapped(int x)
    {
        calls.take();
        doubleClick(slider, x);
        const auto lines = calls.take();
        return lines.size() == 1 ? lines.front() : "not one call";
    }

    /// The value after a release at a pixel.
    int released(int x)
    {
        releaseMouse(slider, x);
        return slider.value();
    }

    void show()
    {
        slider.show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(&slider));
    }

    Calls calls;
    const boost::shared_ptr<FakeAnimationManager> manager = boost::make_shared<FakeAnimationManager>(calls);
    SliderProbe slider;
};

} // namespace

// Construction

TEST_F(QtAnimationSliderTest, ItIsHorizontalAndFollowsTheMouseWithoutButtons)
{
    EXPECT_EQ(slider.orientation(), Qt::Horizontal);
    EXPECT_TRUE(slider.testAttribute(Qt::WA_MouseTracking));
}

TEST_F(QtAnimationSliderTest, ItBelongsToItsParent)
{
    QWidget parent;
    const auto* child = new halvern::qt::QtAnimationSlider(&parent);
    EXPECT_EQ(child->parent(), &parent);
}

TEST_F(QtAnimationSliderTest, MetaObjectHasTheNameAndNothingOfItsOwn)
{
    const QMetaObject& meta = halvern::qt::QtAnimationSlider::staticMetaObject;
    EXPECT_STREQ(meta.className(), "halvern::qt::QtAnimationSlider");
    EXPECT_STREQ(meta.superClass()->className(), "QAbstractSlider");
    EXPECT_EQ(meta.methodCount(), meta.methodOffset());
    EXPECT_EQ(meta.propertyCount(), meta.propertyOffset());
}

TEST_F(QtAnimationSliderTest, OneTimerOfItsOwnRunsEvery50Milliseconds)
{
    const auto timers = slider.findChildren<QTimer*>();
    ASSERT_EQ(timers.size(), 1);
    EXPECT_EQ(timers.front()->interval(), 50);
    EXPECT_TRUE(timers.front()->isActive());
    EXPECT_FALSE(timers.front()->isSingleShot());
}

TEST_F(QtAnimationSliderTest, ItRepaintsForEverWithoutBeingAsked)
{
    show();
    const int before = slider.paints;
    EXPECT_TRUE(QTest::qWaitFor([&] { return slider.paints > before + 5; }, 20000));
}

// The manager

TEST_F(QtAnimationSliderTest, ANewManagerReplacesTheOldWhichIsReleased)
{
    auto old = boost::make_shared<FakeAnimationManager>(calls);
    const boost::weak_ptr<FakeAnimationManager> watch = old;
    slider.setAnimationManager(old);
    old.reset();
    EXPECT_FALSE(watch.expired());
    slider.setAnimationManager(manager);
    EXPECT_TRUE(watch.expired());
}

TEST_F(QtAnimationSliderTest, SettingAManagerNeitherRepaintsNorChangesTheValue)
{
    show();
    slider.findChild<QTimer*>()->stop();
    QCoreApplication::processEvents();
    slider.setValue(4000);
    ASSERT_TRUE(QTest::qWaitFor([&] { return slider.paints > 0; }, 10000));
    QCoreApplication::processEvents();
    const int before = slider.paints;
    slider.setAnimationManager(boost::make_shared<FakeAnimationManager>(calls));
    QCoreApplication::processEvents();
    EXPECT_EQ(slider.paints, before);
    EXPECT_EQ(slider.value(), 4000);
}

TEST_F(QtAnimationSliderTest, DestructorReleasesTheManager)
{
    auto temporary = boost::make_shared<FakeAnimationManager>(calls);
    const boost::weak_ptr<FakeAnimationManager> watch = temporary;
    {
        halvern::qt::QtAnimationSlider other(nullptr);
        other.setAnimationManager(std::move(temporary));
        EXPECT_FALSE(watch.expired());
    }
    EXPECT_TRUE(watch.expired());
}

// From a position to a value

TEST_F(QtAnimationSliderTest, APositionIsAProportionOfTheRangeTruncated)
{
    slider.resize(1000, 80);
    EXPECT_EQ(mapped(0), "setTime 0");
    EXPECT_EQ(mapped(500), "setTime 5000000");
    EXPECT_EQ(mapped(1000), "setTime 10000000");
    slider.resize(3000, 80);
    EXPECT_EQ(mapped(1), "setTime 3000");
    EXPECT_EQ(mapped(2), "setTime 6000");
}

TEST_F(QtAnimationSliderTest, APositionOutsideTruncatesTowardsZero)
{
    slider.resize(1000, 80);
    EXPECT_EQ(mapped(-1), "setTime -10000");
    EXPECT_EQ(mapped(1010), "setTime 10100000");
    slider.setRange(0, 100);
    EXPECT_EQ(mapped(-9), "setTime 0");
    EXPECT_EQ(mapped(-11), "setTime -1000");
}

TEST_F(QtAnimationSliderTest, TheMinimumIsWhereTheRangeBegins)
{
    slider.setRange(1000, 2000);
    slider.resize(100, 80);
    EXPECT_EQ(mapped(0), "setTime 1000000");
    EXPECT_EQ(mapped(50), "setTime 1500000");
    slider.setRange(-1000, -500);
    EXPECT_EQ(mapped(50), "setTime -750000");
}

TEST_F(QtAnimationSliderTest, MaximumTimesValueWrapsAs32Bits)
{
    slider.resize(1000, 80);
    slider.setRange(0, 120000);
    EXPECT_EQ(mapped(100), "setTime 12000000");  // 1440000000
    EXPECT_EQ(mapped(500), "setTime -11582000"); // 7200000000 is -1389934592
    EXPECT_EQ(mapped(1000), "setTime 12625000"); // 14400000000 is 1515098112
    slider.setRange(0, 46341);
    EXPECT_EQ(mapped(999), "setTime 46294000");   // 2145310254
    EXPECT_EQ(mapped(1000), "setTime -46340000"); // 2147488281 is -2147479015
}

TEST_F(QtAnimationSliderTest, PositionTimesRangeWrapsAs32Bits)
{
    slider.resize(4000, 80);
    slider.setRange(0, 1000000);
    EXPECT_EQ(mapped(3), "setTime 750000");
    EXPECT_EQ(mapped(3000), "setTime -1618000"); // -323741, whose product is -1618312128
}

TEST_F(QtAnimationSliderTest, ARangeThatDoesNotFitInto32BitsWraps)
{
    slider.setRange(INT_MIN, INT_MAX);
    slider.resize(100, 80);
    EXPECT_EQ(mapped(0), "setTime -1000");  // INT_MAX * INT_MIN is INT_MIN
    EXPECT_EQ(mapped(50), "setTime -1000"); // the range is -1, and -50 / 100 nothing
}

TEST_F(QtAnimationSliderTest, AValueThatDoesNotFitIsClamped)
{
    slider.setRange(INT_MIN, -1);
    slider.resize(100, 80);
    EXPECT_EQ(mapped(0), "setTime 2147483647000"); // INT_MIN / -1.0
}

TEST_F(QtAnimationSliderTest, AnyPositionInAnyRangeIsWhat32BitsMakeOfIt)
{
    std::mt19937 generator(1);
    const auto number = [&](int least, int most) {
        return std::uniform_int_distribution<int>(least, most)(generator);
    };
    for (int i = 0; i < 2000; ++i) {
        const int bound = i % 2 == 0 ? INT_MAX : 200000;
        Timeline timeline;
        timeline.size = QSize(number(1, 4000), 80);
        timeline.minimum = i % 4 < 2 ? 0 : number(-bound, bound);
        timeline.maximum = number(timeline.minimum, bound);
        slider.resize(timeline.size);
        slider.setRange(timeline.minimum, timeline.maximum);
        const int x = number(-1000, 5000);
        const auto expected = std::int64_t(valueLiterally(timeline, x)) * 1000;
        ASSERT_EQ(mapped(x), "setTime " + std::to_string(expected))
            << x << " of " << timeline.size.width() << ", " << timeline.minimum << " to " << timeline.maximum;
    }
}

TEST_F(QtAnimationSliderTest, WithoutAnExtentEveryPositionIsTheMinimum)
{
    slider.setRange(-100, 0);
    EXPECT_EQ(mapped(300), "setTime -100000");
    slider.setRange(-100, 1000);
    slider.resize(0, 80);
    EXPECT_EQ(mapped(300), "setTime -100000");
}

// Moving

TEST_F(QtAnimationSliderTest, MovingWithoutAButtonKeepsTheValue)
{
    QSignalSpy changed(&slider, SIGNAL(valueChanged(int)));
    for (const Qt::MouseButton button : {Qt::NoButton, Qt::RightButton, Qt::MiddleButton})
        moveMouse(slider, 250, button);
    EXPECT_EQ(slider.value(), 0);
    EXPECT_EQ(changed.count(), 0);
}

TEST_F(QtAnimationSliderTest, DraggingWithTheLeftButtonChangesTheValueOnEveryMove)
{
    QSignalSpy changed(&slider, SIGNAL(valueChanged(int)));
    moveMouse(slider, 250, Qt::LeftButton);
    EXPECT_EQ(slider.value(), 5000);
    moveMouse(slider, 251, Qt::LeftButton | Qt::RightButton);
    EXPECT_EQ(slider.value(), 5020);
    moveMouse(slider, 251, Qt::LeftButton);
    EXPECT_EQ(changed.count(), 2);
}

TEST_F(QtAnimationSliderTest, DraggingBeyondAnEndStaysInTheRange)
{
    moveMouse(slider, 700, Qt::LeftButton);
    EXPECT_EQ(slider.value(), 10000);
    moveMouse(slider, -20, Qt::LeftButton);
    EXPECT_EQ(slider.value(), 0);
}

TEST_F(QtAnimationSliderTest, DraggingDoesNotSnap)
{
    manager->frameTimes = {5};
    moveMouse(slider, 251, Qt::LeftButton);
    EXPECT_EQ(slider.value(), 5020);
}

TEST_F(QtAnimationSliderTest, APressDoesNothing)
{
    show();
    slider.findChild<QTimer*>()->stop();
    QCoreApplication::processEvents();
    const int before = slider.paints;
    EXPECT_FALSE(sendMouse(slider, QEvent::MouseButtonPress, 250, Qt::LeftButton, Qt::LeftButton));
    EXPECT_EQ(slider.value(), 0);
    EXPECT_EQ(slider.paints, before);
    EXPECT_THAT(calls.take(), IsEmpty());
}

// Snapping

TEST_F(QtAnimationSliderTest, AReleaseSnapsOntoAKeyframeCloserThanAHundredthOfTheMaximum)
{
    setScale(10000);
    manager->frameTimes = {1, 3};
    EXPECT_EQ(released(1099), 1000);
    EXPECT_EQ(released(901), 1000);
    EXPECT_EQ(released(3000), 3000);
    EXPECT_EQ(released(1100), 1100);
    EXPECT_EQ(released(900), 900);
}

TEST_F(QtAnimationSliderTest, TheToleranceIsAWholeNumberOfMilliseconds)
{
    setScale(10099);
    manager->frameTimes = {1};
    EXPECT_EQ(released(1100), 1100);
    EXPECT_EQ(released(1099), 1000);
}

TEST_F(QtAnimationSliderTest, AMaximumBelow100NeverSnaps)
{
    manager->frameTimes = {0.05f};
    setScale(99);
    EXPECT_EQ(released(51), 51);
    EXPECT_EQ(released(50), 50);
    setScale(200);
    EXPECT_EQ(released(51), 50);
}

TEST_F(QtAnimationSliderTest, TheFirstKeyframeInTheEnginesOrderWinsNotTheClosest)
{
    setScale(10000);
    manager->frameTimes = {1.08f, 1.0f};
    EXPECT_EQ(released(1001), 1080);
    manager->frameTimes = {1.0f, 1.08f};
    EXPECT_EQ(released(1079), 1000);
}

TEST_F(QtAnimationSliderTest, AKeyframeBetweenMillisecondsSnapsToTheOneBefore)
{
    setScale(10000);
    manager->frameTimes = {2.0005f};
    EXPECT_EQ(released(2010), 2000);
    manager->frameTimes = {2.0009f};
    EXPECT_EQ(released(2010), 2000);
}

TEST_F(QtAnimationSliderTest, WithoutAManagerOrAnAnimationNothingSnaps)
{
    setScale(10000);
    manager->frameTimes = {1};
    manager->animation.reset();
    EXPECT_EQ(released(1010), 1010);
    slider.setAnimationManager({});
    EXPECT_EQ(released(1020), 1020);
}

TEST_F(QtAnimationSliderTest, OnlyTheLeftButtonSnaps)
{
    setScale(10000);
    manager->frameTimes = {1};
    slider.setValue(70);
    for (const Qt::MouseButton button : {Qt::RightButton, Qt::MiddleButton})
        releaseMouse(slider, 1010, button);
    EXPECT_EQ(slider.value(), 70);
}

TEST_F(QtAnimationSliderTest, KeyframesThatAreNoNumbersNeverSnap)
{
    setScale(10000);
    manager->frameTimes = {std::numeric_limits<float>::quiet_NaN(), std::numeric_limits<float>::infinity(),
                           1e30f, 1};
    EXPECT_EQ(released(1010), 1000);
}

// Double clicks

TEST_F(QtAnimationSliderTest, ADoubleClickSetsTheEnginesTimeAndTheValueWithoutSnapping)
{
    setScale(10000);
    manager->frameTimes = {1};
    doubleClick(slider, 1010);
    EXPECT_EQ(slider.value(), 1010);
    EXPECT_THAT(calls.take(), ElementsAre("setTime 1010000"));
}

TEST_F(QtAnimationSliderTest, ADoubleClickSetsTheTimeBeforeTheValueChanges)
{
    QObject::connect(&slider, &QAbstractSlider::valueChanged, [&] { calls.add("valueChanged"); });
    doubleClick(slider, 250);
    EXPECT_THAT(calls.take(), ElementsAre("setTime 5000000", "valueChanged"));
}

TEST_F(QtAnimationSliderTest, ADoubleClickOfAnyButtonAndWithoutAnAnimationSetsTheTime)
{
    manager->animation.reset();
    doubleClick(slider, 250, Qt::RightButton);
    EXPECT_EQ(slider.value(), 5000);
    EXPECT_THAT(calls.take(), ElementsAre("setTime 5000000"));
}

TEST_F(QtAnimationSliderTest, ADoubleClickWithoutAManagerSetsTheValueAlone)
{
    slider.setAnimationManager({});
    doubleClick(slider, 250);
    EXPECT_EQ(slider.value(), 5000);
    EXPECT_THAT(calls.take(), IsEmpty());
}

TEST_F(QtAnimationSliderTest, MillisecondsBecomeTicksIn64Bits)
{
    slider.setRange(0, INT_MAX);
    slider.resize(1, 80);
    EXPECT_EQ(mapped(1), "setTime 0");
    slider.setRange(0, 46340);
    EXPECT_EQ(mapped(1), "setTime 46340000");
    slider.setRange(-3000000, -1);
    EXPECT_EQ(mapped(0), "setTime -3000000000");
}

// What all mouse handlers share

TEST_F(QtAnimationSliderTest, MouseEventsEndIgnored)
{
    EXPECT_FALSE(moveMouse(slider, 20));
    EXPECT_FALSE(moveMouse(slider, 20, Qt::LeftButton));
    EXPECT_FALSE(releaseMouse(slider, 20));
    EXPECT_FALSE(releaseMouse(slider, 20, Qt::RightButton));
    EXPECT_FALSE(doubleClick(slider, 20));
}

TEST_F(QtAnimationSliderTest, MouseEventsRepaintAtOnce)
{
    show();
    const auto countPaints = [&](auto send) {
        const int before = slider.paints;
        send();
        return slider.paints - before;
    };
    EXPECT_EQ(countPaints([&] { moveMouse(slider, 20); }), 1);
    EXPECT_EQ(countPaints([&] { moveMouse(slider, 30, Qt::LeftButton); }), 1);
    EXPECT_EQ(countPaints([&] { releaseMouse(slider, 40); }), 1);
    EXPECT_EQ(countPaints([&] { releaseMouse(slider, 50, Qt::RightButton); }), 1);
    EXPECT_EQ(countPaints([&] { doubleClick(slider, 60); }), 1);
}

TEST_F(QtAnimationSliderTest, AResizeOnlyRepaints)
{
    show();
    slider.setValue(5000);
    const int before = slider.paints;
    QResizeEvent event(slider.size(), QSize(10, 10));
    QApplication::sendEvent(&slider, &event);
    EXPECT_EQ(slider.paints, before + 1);
    EXPECT_EQ(slider.value(), 5000);
    EXPECT_THAT(calls.take(), IsEmpty());
}

#include "tests/qt/SliderProbe.h"

#include <QPainter>
#include <QScreen>
#include <QTest>
#include <QTimer>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <limits>
#include <random>

using namespace halvern::test;
using boost::posix_time::microseconds;
using testing::ElementsAre;

namespace {

const unsigned Top = 0xffafafaf;  // the background's first row
const unsigned Grey = 0xffc8c8c8; // all below it
const unsigned Handle = 0xff969696;
const unsigned Outline = 0xff999999;
const unsigned Gold = 0xffffe72e;
const unsigned White = 0xffffffff;
const unsigned Black = 0xff000000;
const unsigned Red = 0xffff0000;
const unsigned Green = 0xff00ff00;

/// Two pictures that are the same, or what differs first.
testing::AssertionResult areEqual(const QImage& seen, const QImage& expected)
{
    if (seen.size() != expected.size())
        return testing::AssertionFailure() << "the sizes differ";
    for (int y = 0; y < seen.height(); ++y)
        for (int x = 0; x < seen.width(); ++x)
            if (seen.pixel(x, y) != expected.pixel(x, y))
                return testing::AssertionFailure() << "at " << x << ' ' << y << ": " << std::hex
                                                   << seen.pixel(x, y) << ", not " << expected.pixel(x, y);
    return testing::AssertionSuccess();
}

/// A slider of 500 x 80 pixels and 0 to 10000 milliseconds, 20 for each pixel. Its value is 10000 and its
/// hover value 5000, so that the left half shows neither.
class QtAnimationSliderPaintTest : public testing::Test
{
protected:
    QtAnimationSliderPaintTest()
    {
        manager->animation = boost::make_shared<FakeAnimation>(calls, "animation");
        manager->currentTime = microseconds(9000000);
        slider.setAnimationManager(manager);
        slider.setValue(10000);
        moveMouse(slider, 250);
    }

    /// The colours of these columns in a row.
    std::vector<unsigned> colours(std::initializer_list<int> columns, int row = 40)
    {
        const QImage picture = pictureOf(slider);
        std::vector<unsigned> found;
        for (const int column : columns)
            found.push_back(picture.pixel(column, row));
        return found;
    }

    /// The first and last column of a colour in a row, or nothing.
    std::vector<int> extent(unsigned colour, int row = 40)
    {
        const QImage picture = pictureOf(slider);
        std::vector<int> columns;
        for (int x = 0; x < picture.width(); ++x)
            if (picture.pixel(x, row) == colour)
                columns.push_back(x);
        return columns.empty() ? columns : std::vector<int>{columns.front(), columns.back()};
    }

    int countHighlights()
    {
        int count = 0;
        const QImage picture = pictureOf(slider);
        for (int x = 1; x < picture.width(); ++x)
            count += picture.pixel(x, 40) == Green && picture.pixel(x - 1, 40) != Green;
        return count;
    }

    Calls calls;
    const boost::shared_ptr<FakeAnimationManager> manager = boost::make_shared<FakeAnimationManager>(calls);
    SliderProbe slider;
};

} // namespace

// Background and handle

TEST_F(QtAnimationSliderPaintTest, OnlyTheFirstRowOfTheBackgroundHasTheMiddleColour)
{
    const QImage picture = pictureOf(slider);
    EXPECT_EQ(picture.pixel(10, 0), Top);
    for (const int row : {1, 2, 40, 79})
        EXPECT_EQ(picture.pixel(10, row), Grey);
}

TEST_F(QtAnimationSliderPaintTest, TheHandleIsTenColumnsWideFromFiveLeftOfTheValue)
{
    slider.setValue(4000);
    EXPECT_THAT(colours({194, 195, 196, 198, 201, 204, 205, 206}),
                ElementsAre(Grey, Outline, Handle, Handle, Handle, Handle, Outline, Grey));
}

TEST_F(QtAnimationSliderPaintTest, TheOutlineOfTheHandleIsAColumnWiderThanItsFillAndOpenBelow)
{
    slider.setValue(4000);
    EXPECT_THAT(colours({194, 195, 198, 204, 205, 206}, 0),
                ElementsAre(Top, Outline, Outline, Outline, Outline, Top));
    EXPECT_THAT(colours({195, 198, 204, 205}, 79), ElementsAre(Outline, Handle, Handle, Outline));
}

TEST_F(QtAnimationSliderPaintTest, ThePlaceOfTheHandleIsTruncated)
{
    slider.setValue(4019);
    EXPECT_EQ(extent(White), (std::vector<int>{199, 200}));
    slider.setValue(4020);
    EXPECT_EQ(extent(White), (std::vector<int>{200, 201}));
    slider.setValue(90); // 4.5 - 5 is 0
    EXPECT_THAT(colours({0, 1, 9, 10, 11}), ElementsAre(Outline, Handle, Handle, Outline, Grey));
}

TEST_F(QtAnimationSliderPaintTest, TheValueLineIsTwoColumnsWideFromTopToBottom)
{
    slider.setValue(4000);
    for (const int row : {0, 40, 79})
        EXPECT_EQ(extent(White, row), (std::vector<int>{199, 200}));
    slider.setValue(0);
    EXPECT_EQ(extent(White), (std::vector<int>{0, 0}));
}

// Keyframes

TEST_F(QtAnimationSliderPaintTest, AKeyframeIsAGoldLineTwoColumnsWideFromTopToBottom)
{
    manager->frameTimes = {2};
    for (const int row : {0, 40, 50})
        EXPECT_EQ(extent(Gold, row), (std::vector<int>{99, 100}));
}

TEST_F(QtAnimationSliderPaintTest, KeyframesStandWhereTheStyleRoundsThem)
{
    manager->frameTimes = {2.012f};
    EXPECT_EQ(extent(Gold), (std::vector<int>{100, 101}));
    manager->frameTimes = {2.0089f};
    EXPECT_EQ(extent(Gold), (std::vector<int>{99, 100}));
}

TEST_F(QtAnimationSliderPaintTest, AKeyframeBetweenMillisecondsStandsAtTheOneBefore)
{
    slider.setRange(0, 500);
    manager->frameTimes = {0.2005f};
    EXPECT_EQ(extent(Gold), (std::vector<int>{199, 200}));
}

TEST_F(QtAnimationSliderPaintTest, AKeyframeBeyondTheMaximumStandsAtTheLeftEnd)
{
    manager->frameTimes = {10.5f};
    EXPECT_EQ(extent(Gold), (std::vector<int>{0, 0}));
}

TEST_F(QtAnimationSliderPaintTest, AKeyframeBeforeTheMinimumStandsAtTheLeftEndToo)
{
    manager->frameTimes = {-0.001f};
    EXPECT_EQ(extent(Gold), (std::vector<int>{0, 0}));
    manager->frameTimes = {-10};
    EXPECT_EQ(extent(Gold), (std::vector<int>{0, 0}));
}

TEST_F(QtAnimationSliderPaintTest, WithoutACurrentAnimationNoKeyframesAreShown)
{
    manager->frameTimes = {2};
    manager->animation.reset();
    EXPECT_EQ(extent(Gold), std::vector<int>());
}

TEST_F(QtAnimationSliderPaintTest, KeyframesCoverTheHandleAndTheValueLineCoversThem)
{
    manager->frameTimes = {3.96f, 4};
    slider.setValue(4000);
    EXPECT_THAT(colours({197, 198, 199, 200}), ElementsAre(Gold, Gold, White, White));
}

// The ruler

TEST_F(QtAnimationSliderPaintTest, TicksAreAQuarterHighAtSecondsAndAnEighthBetween)
{
    EXPECT_THAT(colours({49, 50}, 60), ElementsAre(Black, Black));
    EXPECT_THAT(colours({49, 50}, 58), ElementsAre(Grey, Grey));
    EXPECT_THAT(colours({24, 25}, 70), ElementsAre(Black, Black));
    EXPECT_THAT(colours({24, 25}, 68), ElementsAre(Grey, Grey));
    EXPECT_THAT(colours({23, 24, 25, 26}, 79), ElementsAre(Grey, Black, Black, Grey));
}

TEST_F(QtAnimationSliderPaintTest, SecondsAreLabelledInMilliseconds)
{
    slider.resize(500, 200);
    QImage expected(500, 200, QImage::Format_RGB32);
    expected.fill(Grey);
    QPainter painter(&expected);
    painter.setFont(QFont("Bavaria", 10));
    painter.drawText(50, 150, "1000");
    painter.end();
    EXPECT_TRUE(areEqual(pictureOf(slider).copy(51, 120, 39, 29), expected.copy(51, 120, 39, 29)));
}

TEST_F(QtAnimationSliderPaintTest, UpTo500ThereIsNoTick)
{
    slider.setRange(0, 500);
    for (const int row : {60, 70, 79})
        EXPECT_EQ(extent(Black, row), std::vector<int>());
    slider.setRange(0, 501);
    slider.setValue(0);
    EXPECT_EQ(extent(Black, 79), (std::vector<int>{498, 499}));
}

TEST_F(QtAnimationSliderPaintTest, ThereIsNoTickAtTheMaximum)
{
    slider.setRange(0, 1200);
    slider.setValue(0);
    EXPECT_EQ(extent(Black, 79), (std::vector<int>{207, 417}));
    slider.setRange(0, 1000);
    EXPECT_EQ(extent(Black, 79), (std::vector<int>{249, 250}));
}

TEST_F(QtAnimationSliderPaintTest, ARangeOf1200HasAShortTickAndALongOne)
{
    slider.setRange(0, 1200);
    slider.setValue(0);
    EXPECT_EQ(extent(Black, 70), (std::vector<int>{207, 417}));
    EXPECT_THAT(colours({416, 417}, 60), ElementsAre(Black, Black));
    EXPECT_THAT(colours({207, 208}, 60), ElementsAre(Grey, Grey));
}

TEST_F(QtAnimationSliderPaintTest, TheRulerCoversKeyframes)
{
    manager->frameTimes = {1};
    EXPECT_THAT(colours({49, 50}, 70), ElementsAre(Black, Black));
    EXPECT_THAT(colours({49, 50}, 30), ElementsAre(Gold, Gold));
}

TEST_F(QtAnimationSliderPaintTest, OfTicksInOneColumnTheFirstIsShown)
{
    manager->currentTime = microseconds(900000000);
    slider.setRange(0, 500000); // nine or ten ticks a column, the first between seconds
    slider.resize(100, 80);
    EXPECT_THAT(colours({20, 50, 99}, 75), ElementsAre(Black, Black, Black));
    EXPECT_THAT(colours({20, 50, 99}, 62), ElementsAre(Grey, Grey, Grey));
}

TEST_F(QtAnimationSliderPaintTest, ARangeOf32BitsHasARuler)
{
    slider.setRange(0, INT_MAX);
    Timeline timeline;
    timeline.maximum = INT_MAX;
    timeline.value = 10000;
    timeline.hoverValue = 5000;
    timeline.currentMicroseconds = 9000000;
    EXPECT_TRUE(areEqual(pictureOf(slider), paintLiterally(timeline)));
}

// Playback and the mouse

TEST_F(QtAnimationSliderPaintTest, TheEnginesTimeIsARedLineOverTheValueLine)
{
    manager->currentTime = microseconds(4019999);
    slider.setValue(4000);
    EXPECT_EQ(extent(Red), (std::vector<int>{199, 200}));
    EXPECT_EQ(extent(White), std::vector<int>());
    manager->currentTime = microseconds(4020000);
    EXPECT_EQ(extent(Red), (std::vector<int>{200, 201}));
}

TEST_F(QtAnimationSliderPaintTest, TheEnginesTimeIsShownWithoutAnAnimation)
{
    manager->animation.reset();
    EXPECT_EQ(extent(Red), (std::vector<int>{449, 450}));
}

TEST_F(QtAnimationSliderPaintTest, WithoutAManagerNothingOfTheEngineIsShown)
{
    manager->frameTimes = {2, 5};
    slider.setAnimationManager({});
    for (const unsigned colour : {Red, Gold, Green})
        EXPECT_EQ(extent(colour), std::vector<int>());
    EXPECT_EQ(extent(White), (std::vector<int>{499, 499}));
    EXPECT_EQ(extent(Black, 79), (std::vector<int>{24, 475}));
}

TEST_F(QtAnimationSliderPaintTest, AKeyframeUnderTheMouseIsHighlighted)
{
    manager->frameTimes = {5};
    EXPECT_EQ(extent(Green), (std::vector<int>{249, 250}));
    const auto filled = colours({244, 245, 248, 251, 254, 255});
    EXPECT_EQ(filled.front(), Grey);
    EXPECT_EQ(filled.back(), Grey);
    for (int i = 1; i <= 4; ++i) { // 200 under 250 by 150 of 255
        EXPECT_NEAR(qRed(filled[std::size_t(i)]), 82, 1);
        EXPECT_NEAR(qGreen(filled[std::size_t(i)]), 229, 1);
    }
}

TEST_F(QtAnimationSliderPaintTest, AHighlightNeedsADistanceBelowAHundredthOfTheMaximum)
{
    manager->frameTimes = {4.9f, 5.1f};
    EXPECT_EQ(countHighlights(), 0);
    manager->frameTimes = {4.901f, 5.099f};
    EXPECT_EQ(countHighlights(), 2);
}

TEST_F(QtAnimationSliderPaintTest, BeforeTheFirstMoveTheMouseIsAtZero)
{
    SliderProbe fresh;
    manager->frameTimes = {0.08f};
    fresh.setAnimationManager(manager);
    EXPECT_EQ(pictureOf(fresh).pixel(4, 40), Green);
}

TEST_F(QtAnimationSliderPaintTest, AMaximumBelow100HasNoHoverHighlight)
{
    manager->frameTimes = {0.05f};
    slider.setRange(0, 99);
    moveMouse(slider, 253);
    EXPECT_EQ(countHighlights(), 0);
    slider.setRange(0, 100);
    moveMouse(slider, 250);
    EXPECT_EQ(countHighlights(), 1);
}

TEST_F(QtAnimationSliderPaintTest, TheHighlightStaysWhenTheMouseLeaves)
{
    manager->frameTimes = {5};
    const QImage before = pictureOf(slider);
    QEvent leave(QEvent::Leave);
    QApplication::sendEvent(&slider, &leave);
    EXPECT_TRUE(areEqual(pictureOf(slider), before));
    EXPECT_EQ(countHighlights(), 1);
}

TEST_F(QtAnimationSliderPaintTest, NeitherReleaseNorDoubleClickMovesTheHighlight)
{
    manager->frameTimes = {5};
    releaseMouse(slider, 100);
    doubleClick(slider, 100);
    EXPECT_EQ(countHighlights(), 1);
}

TEST_F(QtAnimationSliderPaintTest, AKeyframeWithin5MillisecondsOfTheEnginesTimeIsHighlighted)
{
    manager->frameTimes = {2};
    manager->currentTime = microseconds(2005000);
    EXPECT_EQ(countHighlights(), 0);
    manager->currentTime = microseconds(2004999);
    EXPECT_EQ(countHighlights(), 1);
    manager->currentTime = microseconds(1995000);
    EXPECT_EQ(countHighlights(), 0);
    manager->currentTime = microseconds(1996000);
    EXPECT_EQ(countHighlights(), 1);
}

TEST_F(QtAnimationSliderPaintTest, HighlightsNeedNoAnimation)
{
    manager->frameTimes = {5};
    manager->animation.reset();
    EXPECT_EQ(countHighlights(), 1);
    EXPECT_EQ(extent(Gold), std::vector<int>());
}

TEST_F(QtAnimationSliderPaintTest, NearMouseAndEnginesTimeAKeyframeIsHighlightedTwice)
{
    manager->frameTimes = {5};
    const unsigned once = colours({246}).front();
    manager->currentTime = microseconds(5003000);
    const unsigned twice = colours({246}).front();
    EXPECT_GT(qGreen(twice), qGreen(once));
    EXPECT_LT(qRed(twice), qRed(once));
    EXPECT_EQ(extent(Green), (std::vector<int>{249, 250}));
}

TEST_F(QtAnimationSliderPaintTest, HighlightsCoverTheRedLine)
{
    manager->frameTimes = {5};
    manager->currentTime = microseconds(5000000);
    EXPECT_EQ(extent(Red), std::vector<int>());
}

TEST_F(QtAnimationSliderPaintTest, TheRedLineFollowsTheWidthOfWhatIsPainted)
{
    QImage part(250, 80, QImage::Format_RGB32);
    slider.render(&part, QPoint(), QRegion(0, 0, 250, 80));
    EXPECT_EQ(part.pixel(224, 40), Red); // nine tenths of 250
    EXPECT_EQ(part.pixel(225, 40), Red);
    EXPECT_EQ(part.pixel(223, 40), Grey);
}

TEST_F(QtAnimationSliderPaintTest, AMaximumOfZeroShowsBackgroundHandleAndValueLineAlone)
{
    slider.setRange(-10, 0);
    slider.setValue(-5);
    manager->frameTimes = {0};
    moveMouse(slider, 0);
    Timeline nothing;
    nothing.hasManager = false;
    nothing.maximum = 0;
    EXPECT_TRUE(areEqual(pictureOf(slider), paintLiterally(nothing)));
    EXPECT_THAT(colours({0, 1, 4, 5, 6}), ElementsAre(White, Handle, Handle, Outline, Grey));
}

// The whole picture

namespace {

/// Changes some of what a slider shows, and the slider with it.
class RandomTimeline
{
public:
    explicit RandomTimeline(unsigned seed) : generator(seed) {}

    Timeline timeline;

    void change(SliderProbe& slider, FakeAnimationManager& manager, Calls& calls)
    {
        if (chance(3)) {
            timeline.size = QSize(number(1, 700), number(1, 120));
            slider.resize(timeline.size);
        }
        if (chance(3)) {
            static const int maxima[] = {0,     1,     99,    100,    499,      500, 501,  1200,
                                         10000, 17000, 40000, 120000, 12000000, -1,  -700, -46000};
            timeline.maximum = chance(3) ? number(1, 150000) : maxima[number(0, 15)];
            timeline.minimum = std::min(chance(6) ? -number(1, 100000) : 0, timeline.maximum);
            slider.setRange(timeline.minimum, timeline.maximum);
        }
        if (chance(2))
            slider.setValue(number(timeline.minimum, timeline.maximum));
        timeline.value = slider.value();
        if (chance(2))
            hover(slider);
        if (chance(2))
            timeline.frameTimes = makeFrames();
        if (chance(2))
            timeline.currentMicroseconds = pickTime() * 1000 + number(-6000, 6000);
        timeline.hasAnimation = !chance(8);
        manager.frameTimes = timeline.frameTimes;
        manager.currentTime = microseconds(timeline.currentMicroseconds);
        manager.animation =
            timeline.hasAnimation ? boost::make_shared<FakeAnimation>(calls, "animation") : nullptr;
    }

private:
    int number(int least, int most) { return std::uniform_int_distribution<int>(least, most)(generator); }
    bool chance(int n) { return number(1, n) == 1; }

    void hover(SliderProbe& slider)
    {
        const int x = number(0, timeline.size.width());
        moveMouse(slider, x);
        timeline.hoverValue = valueLiterally(timeline, x);
    }

    std::int64_t pickTime()
    {
        if (timeline.frameTimes.empty() || chance(2))
            return number(timeline.minimum - 500, timeline.maximum + 500);
        const auto last = static_cast<int>(timeline.frameTimes.size()) - 1;
        const float seconds = timeline.frameTimes[std::size_t(number(0, last))];
        return std::isfinite(seconds) && std::abs(seconds) < 1e6f ? std::int64_t(seconds * 1000) : 0;
    }

    /// Ascending and spread, or in one heap, or in any order and with what is no time.
    std::vector<float> makeFrames()
    {
        std::vector<float> frames;
        const int kind = number(0, 3);
        const int count = chance(4) ? 2000 : number(0, 40);
        const auto length = static_cast<float>(timeline.maximum - timeline.minimum) / 1000;
        std::uniform_real_distribution<float> times(-0.1f * length, 1.1f * length);
        const float heap = times(generator);
        for (int i = 0; i < count; ++i)
            frames.push_back(kind == 0 ? heap + times(generator) / 100 : times(generator));
        if (kind == 3) {
            const float infinity = std::numeric_limits<float>::infinity();
            frames.insert(frames.begin() + count / 2, {1e30f, -1e30f, infinity, -infinity, std::nanf("")});
        } else {
            std::sort(frames.begin(), frames.end());
        }
        return frames;
    }

    std::mt19937 generator;
};

} // namespace

TEST_F(QtAnimationSliderPaintTest, ThePictureEqualsOnePaintedStrokeByStroke)
{
    SliderProbe changing;
    changing.setAnimationManager(manager);
    manager->currentTime = {};
    RandomTimeline random(1);
    for (int i = 0; i < 400; ++i) {
        random.change(changing, *manager, calls);
        ASSERT_TRUE(areEqual(pictureOf(changing), paintLiterally(random.timeline))) << "picture " << i;
    }
}

TEST_F(QtAnimationSliderPaintTest, APartEqualsOnePaintedStrokeByStroke)
{
    Timeline timeline;
    timeline.value = 2000;
    timeline.hoverValue = 5000;
    timeline.currentMicroseconds = 6000000;
    timeline.frameTimes = {1, 3, 3.02f, 5, 5.05f, 6};
    slider.setValue(timeline.value);
    manager->frameTimes = timeline.frameTimes;
    manager->currentTime = microseconds(timeline.currentMicroseconds);
    for (const QRect& part : {QRect(0, 0, 250, 80), QRect(90, 10, 200, 60), QRect(0, 79, 500, 1)}) {
        QImage seen(timeline.size, QImage::Format_RGB32);
        seen.fill(Qt::black);
        slider.render(&seen, part.topLeft(), part);
        EXPECT_TRUE(areEqual(seen, paintLiterally(timeline, part)));
    }
}

TEST_F(QtAnimationSliderPaintTest, OnTheScreenItIsTheSamePicture)
{
    Timeline timeline;
    timeline.value = 10000;
    timeline.hoverValue = 5000;
    timeline.currentMicroseconds = 9000000;
    timeline.frameTimes = {1, 3, 5, 9};
    manager->frameTimes = timeline.frameTimes;
    slider.setWindowFlag(Qt::FramelessWindowHint);
    slider.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&slider));
    const auto grab = [&] {
        const QPoint origin = slider.mapToGlobal(QPoint());
        return slider.screen()
            ->grabWindow(0, origin.x(), origin.y(), 500, 80)
            .toImage()
            .convertToFormat(QImage::Format_RGB32);
    };
    EXPECT_TRUE(QTest::qWaitFor([&] { return bool(areEqual(grab(), paintLiterally(timeline))); }, 10000));
}

TEST_F(QtAnimationSliderPaintTest, ManyHighlightsOverOneAnotherEndInTheSameColour)
{
    Timeline timeline;
    timeline.value = 10000;
    timeline.hoverValue = 5000;
    timeline.currentMicroseconds = 9000000;
    for (const int count : {1, 2, 5, 15, 16, 17, 200}) {
        timeline.frameTimes.assign(std::size_t(count), 5.0f);
        timeline.frameTimes.insert(timeline.frameTimes.end(), std::size_t(count), 5.06f);
        manager->frameTimes = timeline.frameTimes;
        EXPECT_TRUE(areEqual(pictureOf(slider), paintLiterally(timeline))) << count;
    }
}

TEST_F(QtAnimationSliderPaintTest, KeyframesThatAreNoNumbersAreSurvived)
{
    const float nan = std::numeric_limits<float>::quiet_NaN();
    const float infinity = std::numeric_limits<float>::infinity();
    manager->frameTimes = {nan, infinity, -infinity, 1e38f, 2};
    manager->currentTime = boost::posix_time::time_duration(boost::date_time::pos_infin);
    EXPECT_EQ(extent(Gold), (std::vector<int>{0, 100}));
    slider.setRange(INT_MIN, -1);
    slider.setValue(INT_MIN);
    pictureOf(slider);
    slider.setRange(INT_MIN, INT_MAX);
    pictureOf(slider);
}

TEST_F(QtAnimationSliderPaintTest, TheLabelsFollowTheFontOfTheSlider)
{
    const QImage before = pictureOf(slider);
    QFont bold = slider.font();
    bold.setBold(true);
    slider.setFont(bold);
    EXPECT_FALSE(areEqual(pictureOf(slider), before));
}

#include "StudioHelpers.h"

#include "studio/FrameDriver.h"

#include <QElapsedTimer>
#include <QLabel>
#include <QOpenGLWidget>
#include <QVBoxLayout>

#include <gtest/gtest.h>

using namespace halvern::studio;
using namespace studiotest;

namespace {

/// Counts its paintings; a frame is 20 ms at this driver's 50 a second.
class View : public QOpenGLWidget
{
public:
    int paintings = 0;

protected:
    void paintGL() override { ++paintings; }
};

class FrameDriverTest : public testing::Test
{
protected:
    FrameDriverTest()
    {
        auto* layout = new QVBoxLayout(&window);
        layout->addWidget(view);
        layout->addWidget(label);
        QObject::connect(driver, &FrameDriver::frameShown, [this] { ++frames; });
        window.resize(200, 200);
        window.show();
        EXPECT_TRUE(waitFor([this] { return frames > 0; }));
        processEventsFor(100);
        frames = view->paintings = 0;
    }

    bool moving = false;
    int frames = 0;
    QWidget window;
    View* view = new View;
    QLabel* label = new QLabel("label");
    FrameDriver* driver = new FrameDriver(
        view, [this] { return moving; }, 50);
};

} // namespace

TEST_F(FrameDriverTest, NothingIsPaintedWhileNothingMoves)
{
    processEventsFor(300);
    EXPECT_EQ(view->paintings, 0);
    EXPECT_EQ(frames, 0);
}

TEST_F(FrameDriverTest, OneUpdateIsOneFrame)
{
    view->update();
    processEventsFor(200);
    EXPECT_EQ(view->paintings, 1);
    EXPECT_EQ(frames, 1);
}

TEST_F(FrameDriverTest, AFrameThatMovesIsFollowedByOthersAtTheRate)
{
    moving = true;
    QElapsedTimer timer;
    timer.start();
    view->update();
    ASSERT_TRUE(waitFor([this] { return frames == 11; }));
    EXPECT_GE(timer.elapsed(), 190) << "ten intervals of 20 ms";
}

TEST_F(FrameDriverTest, PaintingEndsWithTheMotion)
{
    moving = true;
    view->update();
    ASSERT_TRUE(waitFor([this] { return frames >= 3; }));
    moving = false;
    processEventsFor(100);
    const int atRest = view->paintings;
    processEventsFor(200);
    EXPECT_EQ(view->paintings, atRest);
}

TEST_F(FrameDriverTest, ContinuousFramesWaitForNoTimer)
{
    driver->setContinuous(true);
    ASSERT_TRUE(waitFor([this] { return frames >= 20; }));
    driver->setContinuous(false);
    processEventsFor(100);
    const int atRest = view->paintings;
    processEventsFor(200);
    EXPECT_EQ(view->paintings, atRest);
}

TEST_F(FrameDriverTest, AnotherWidgetsPaintingIsNoFrame)
{
    label->setText("another text");
    processEventsFor(200);
    EXPECT_EQ(view->paintings, 0);
    EXPECT_EQ(frames, 0);
}

TEST_F(FrameDriverTest, AForgottenFrameIsNotAnnounced)
{
    view->repaint();
    frames = 0;
    driver->forgetFrame();
    label->update();
    processEventsFor(100);
    EXPECT_EQ(frames, 0);
}

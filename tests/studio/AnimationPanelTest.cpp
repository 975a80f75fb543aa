#include "ShownStudio.h"

#include "engine/scene/AnimationManager.h"
#include "qt/QtAnimationSlider.h"

#include <QComboBox>
#include <QDialogButtonBox>
#include <QDockWidget>
#include <QPushButton>
#include <QTimer>

using namespace studiotest;
using boost::posix_time::milliseconds;

namespace {

class PaintCounter : public QObject
{
public:
    explicit PaintCounter(QWidget& watched) { watched.installEventFilter(this); }

    bool eventFilter(QObject* /*watched*/, QEvent* event) override
    {
        count += event->type() == QEvent::Paint;
        return false;
    }

    int count = 0;
};

/// The animation dock over the showcase scene, with its first animation.
class AnimationPanelTest : public ShownStudio
{
protected:
    void SetUp() override
    {
        open(Showcase);
        ASSERT_TRUE(waitFor([&] { return dock() != nullptr; }));
        dock()->toggleViewAction()->trigger();
        animations = scene.sceneManager->getAnimationManager();
        ASSERT_TRUE(waitFor([&] { return timeline()->isVisible(); }));
        settle();
    }

    QDockWidget* dock() { return window.findChild<QDockWidget*>("Halvern_Animation"); }
    qt::QtAnimationSlider* timeline() { return dock()->findChild<qt::QtAnimationSlider*>(); }

    void trigger(const QString& text)
    {
        for (QAction* action : dock()->actions() + dock()->findChildren<QAction*>())
            if (action->text() == text)
                return action->trigger();
        FAIL() << "no such action: " << text.toStdString();
    }

    /// The picture at a time.
    QImage scrub(int time)
    {
        timeline()->setValue(time);
        EXPECT_TRUE(waitFor([&] { return animations->getCurrentTime() == milliseconds(time); }));
        return picture();
    }

    /// Accepts the dialog of a new animation as it comes.
    void makeAnimation()
    {
        QTimer watch;
        QObject::connect(&watch, &QTimer::timeout, [&] {
            if (QWidget* dialog = QApplication::activeModalWidget())
                dialog->findChild<QDialogButtonBox*>()->button(QDialogButtonBox::Ok)->click();
        });
        watch.start(10);
        trigger("&New Animation");
    }

    void orbit(const QPoint& way)
    {
        const QPoint from = view()->mapTo(&window, view()->rect().center());
        QTest::mousePress(window.windowHandle(), Qt::LeftButton, Qt::NoModifier, from);
        QTest::mouseMove(window.windowHandle(), from + way / 2);
        QTest::mouseMove(window.windowHandle(), from + way);
        QTest::mouseRelease(window.windowHandle(), Qt::LeftButton, Qt::NoModifier, from + way);
        settle();
    }

    boost::shared_ptr<scene::AnimationManager> animations;
};

} // namespace

TEST_F(AnimationPanelTest, TheTimeLineIsPaintedWithoutTheView)
{
    PaintCounter paints(*timeline());
    QObject::connect(view(), &QOpenGLWidget::frameSwapped, &paints, [&] { paints.count = 0; });
    EXPECT_TRUE(waitFor([&] { return paints.count > 10; }));
}

TEST_F(AnimationPanelTest, ScrubbingMovesThePicture)
{
    const QImage begin = scrub(1);
    const QImage later = scrub(2000);
    const QImage latest = scrub(5000);
    EXPECT_GT(countChanged(begin, later), 1000);
    EXPECT_GT(countChanged(later, latest), 1000);
    EXPECT_LT(countChanged(begin, scrub(1)), 100);
}

TEST_F(AnimationPanelTest, PlayingMovesThePictureUntilItIsPaused)
{
    const QImage still = picture();
    trigger("&Pause Animations");
    EXPECT_TRUE(waitFor([&] { return animations->getCurrentTime() > milliseconds(500); }));
    trigger("&Pause Animations");
    EXPECT_TRUE(animations->paused());
    const QImage moved = picture();
    EXPECT_GT(countChanged(still, moved), 1000);
    EXPECT_EQ(countChanged(moved, picture()), 0);
}

TEST_F(AnimationPanelTest, ThePictureFollowsTheCameraThatWasRecordedWithTheView)
{
    orbit({60, 0});
    const QImage begin = picture();
    makeAnimation();
    trigger("&Add Camera");
    trigger("&Edit Mode");
    scrub(4000);
    orbit({120, 40});
    const QImage end = picture();
    trigger("&Insert Keyframe");
    EXPECT_GT(countChanged(begin, end), 1000);
    EXPECT_LT(countChanged(scrub(0), begin), 500);
    const QImage between = scrub(2000);
    EXPECT_GT(countChanged(between, begin), 1000);
    EXPECT_GT(countChanged(between, end), 1000);
    EXPECT_LT(countChanged(scrub(4000), end), 500);
}

#include "tests/qt/GroundView.h"

#include <QCoreApplication>
#include <QOpenGLContext>
#include <QVBoxLayout>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <set>

using namespace halvern::test;
using halvern::engine::fx::FXRenderTarget;
using testing::IsEmpty;

namespace {

/// Names of all textures there are, of every context that shares its objects with the current one.
std::set<GLuint> textures()
{
    std::set<GLuint> found;
    for (GLuint name = 1; name < 1000; ++name)
        if (glIsTexture(name))
            found.insert(name);
    return found;
}

std::vector<GLuint> newTextures(const std::set<GLuint>& before)
{
    std::vector<GLuint> added;
    for (const GLuint name : textures())
        if (before.count(name) == 0)
            added.push_back(name);
    return added;
}

/// Four quarters of different colours.
QImage makeLogo(int width = 40, int height = 20)
{
    QImage logo(width, height, QImage::Format_ARGB32);
    QPainter painter(&logo);
    painter.fillRect(0, 0, width / 2, height / 2, Qt::red);
    painter.fillRect(width / 2, 0, width / 2, height / 2, Qt::green);
    painter.fillRect(0, height / 2, width / 2, height / 2, Qt::yellow);
    painter.fillRect(width / 2, height / 2, width / 2, height / 2, Qt::cyan);
    return logo;
}

QImage makePlainLogo(const QColor& color)
{
    QImage logo(40, 20, QImage::Format_ARGB32);
    logo.fill(color);
    return logo;
}

using LogoView = GroundView<ViewProbe>;

/// Views of 200 x 100 pixels on the screen.
class QtViewLogoTest : public testing::Test
{
protected:
    QtViewLogoTest() { window = showWithFakeWindow(view, log); }

    /// What is on the screen in the middle of a logo of 40 x 20 pixels.
    static QColor logoOnScreen(ViewProbe& shown)
    {
        repaintView(shown);
        return grabScreen(shown).pixelColor(shown.width() - 30, shown.height() - 20);
    }

    CallLog log;
    LogoView view;
    boost::shared_ptr<FakeWindow> window;
};

} // namespace

TEST_F(QtViewLogoTest, SitsTenPixelsFromTheRightAndBottomWithItsFirstRowOnTop)
{
    view.setLogo(makeLogo());
    const QImage picture = view.pictureOfLogo();
    EXPECT_EQ(drawnPart(picture), QRect(150, 70, 40, 20));
    EXPECT_COLOR(picture.pixelColor(150, 70), QColor(Qt::red));
    EXPECT_COLOR(picture.pixelColor(189, 70), QColor(Qt::green));
    EXPECT_COLOR(picture.pixelColor(150, 89), QColor(Qt::yellow));
    EXPECT_COLOR(picture.pixelColor(189, 89), QColor(Qt::cyan));
    EXPECT_EQ(picture.copy(150, 70, 40, 20), makeLogo().convertToFormat(QImage::Format_RGB32));
}

TEST_F(QtViewLogoTest, TheScreenShowsItOverTheScene)
{
    view.makeCurrent();
    window->colorTarget = boost::make_shared<FXRenderTarget>(makeTexture({Ground}));
    view.setLogo(makeLogo());
    repaintView(view);
    const QImage picture = grabScreen(view);
    EXPECT_EQ(drawnPart(picture), QRect(150, 70, 40, 20));
    EXPECT_COLOR(picture.pixelColor(151, 71), QColor(Qt::red));
    EXPECT_COLOR(picture.pixelColor(188, 88), QColor(Qt::cyan));
}

TEST_F(QtViewLogoTest, ItsAlphaBlends)
{
    view.setLogo(makePlainLogo(QColor(255, 255, 0, 128)));
    EXPECT_COLOR(view.pictureOfLogo().pixelColor(170, 80), QColor(128, 128, 127));
    view.setLogo(makePlainLogo(QColor(255, 255, 0, 0)));
    EXPECT_EQ(drawnPart(view.pictureOfLogo()), QRect());
}

TEST_F(QtViewLogoTest, ALogoLargerThanTheViewIsCutOffAtTheLeftAndTop)
{
    view.setLogo(makeLogo(300, 200));
    const QImage picture = view.pictureOfLogo();
    EXPECT_EQ(drawnPart(picture), QRect(0, 0, 190, 90));
    EXPECT_COLOR(picture.pixelColor(189, 89), QColor(Qt::cyan));
}

TEST_F(QtViewLogoTest, LeavesNoStatesBehind)
{
    view.setLogo(makeLogo());
    view.clear();
    view.drawLogo();
    expectCleanStates(view.size());
}

TEST_F(QtViewLogoTest, TheWholeViewIsTheViewportOnAScreenOfDoubleResolution)
{
    struct FineView : LogoView
    {
        int metric(PaintDeviceMetric metric) const override
        {
            const int factor = metric == PdmDevicePixelRatio || metric == PdmDevicePixelRatioScaled ? 2 : 1;
            return LogoView::metric(metric) * factor;
        }
    };
    FineView fine;
    showView(fine);
    fine.setLogo(makeLogo());
    fine.clear();
    fine.drawLogo();
    expectCleanStates(QSize(400, 200));
}

TEST_F(QtViewLogoTest, WithoutALogoNothingIsDrawn)
{
    view.enableLogo(true);
    EXPECT_COLOR(logoOnScreen(view), QColor(Qt::white));
    EXPECT_EQ(drawnPart(view.pictureOfLogo()), QRect());
}

TEST_F(QtViewLogoTest, HasMipmaps)
{
    view.makeCurrent();
    const auto before = textures();
    view.setLogo(makeLogo());
    const auto added = newTextures(before);
    ASSERT_EQ(added.size(), 1u);
    glBindTexture(GL_TEXTURE_2D, added[0]);
    GLint width = 0;
    glGetTexLevelParameteriv(GL_TEXTURE_2D, 1, GL_TEXTURE_WIDTH, &width);
    EXPECT_EQ(width, 20);
}

TEST_F(QtViewLogoTest, DisablingHidesItAndEnablingShowsItAgain)
{
    view.setLogo(makePlainLogo(Qt::green));
    EXPECT_COLOR(logoOnScreen(view), QColor(Qt::green));
    view.enableLogo(false);
    EXPECT_COLOR(logoOnScreen(view), QColor(Qt::white));
    view.enableLogo(true);
    EXPECT_COLOR(logoOnScreen(view), QColor(Qt::green));
}

TEST_F(QtViewLogoTest, SetLogoTurnsItOn)
{
    view.enableLogo(false);
    view.setLogo(makePlainLogo(Qt::green));
    EXPECT_COLOR(logoOnScreen(view), QColor(Qt::green));
}

TEST_F(QtViewLogoTest, ANullImageChangesNothing)
{
    view.setLogo(QImage());
    EXPECT_COLOR(logoOnScreen(view), QColor(Qt::white));
    view.setLogo(makePlainLogo(Qt::green));
    view.setLogo(QImage());
    EXPECT_COLOR(logoOnScreen(view), QColor(Qt::green));
    view.enableLogo(false);
    view.setLogo(QImage());
    EXPECT_COLOR(logoOnScreen(view), QColor(Qt::white));
}

TEST_F(QtViewLogoTest, ASecondLogoReplacesThePictureAndItsSize)
{
    view.setLogo(makeLogo());
    view.setLogo(makeLogo(60, 50));
    EXPECT_EQ(drawnPart(view.pictureOfLogo()), QRect(130, 40, 60, 50));
    view.setLogo(makePlainLogo(Qt::green));
    const QImage picture = view.pictureOfLogo();
    EXPECT_EQ(drawnPart(picture), QRect(150, 70, 40, 20));
    EXPECT_COLOR(picture.pixelColor(170, 80), QColor(Qt::green));
}

/// On purpose: only the last texture dies with the view.
TEST_F(QtViewLogoTest, TheTextureOfAReplacedLogoStays)
{
    if (!QCoreApplication::testAttribute(Qt::AA_ShareOpenGLContexts))
        GTEST_SKIP() << "needs a context that outlives the view's";
    auto logos = std::make_unique<LogoView>();
    showView(*logos);
    logos->makeCurrent();
    const auto before = textures();
    logos->setLogo(makeLogo());
    const auto first = newTextures(before);
    ASSERT_EQ(first.size(), 1u);
    logos->setLogo(makeLogo());
    const auto both = newTextures(before);
    ASSERT_EQ(both.size(), 2u);

    logos.reset();
    view.makeCurrent();
    EXPECT_TRUE(glIsTexture(first[0]));
    EXPECT_FALSE(glIsTexture(both[0] == first[0] ? both[1] : both[0]));
}

TEST_F(QtViewLogoTest, ALogoSetBeforeTheFirstShowAppearsWithIt)
{
    LogoView early;
    early.setLogo(makePlainLogo(Qt::red));
    early.setLogo(makePlainLogo(Qt::green));
    showView(early);
    EXPECT_COLOR(logoOnScreen(early), QColor(Qt::green));
    EXPECT_EQ(drawnPart(early.pictureOfLogo()), QRect(150, 70, 40, 20));
}

TEST_F(QtViewLogoTest, ALogoDisabledBeforeTheFirstShowStaysHidden)
{
    LogoView early;
    early.setLogo(makePlainLogo(Qt::green));
    early.enableLogo(false);
    showView(early);
    EXPECT_NE(logoOnScreen(early), QColor(Qt::green));
    early.enableLogo(true);
    EXPECT_COLOR(logoOnScreen(early), QColor(Qt::green));
}

TEST_F(QtViewLogoTest, ALogoMayBeSetWhileTheContextOfAnotherViewIsCurrent)
{
    LogoView other;
    showView(other);
    other.makeCurrent();
    view.setLogo(makePlainLogo(Qt::green));
    EXPECT_EQ(QOpenGLContext::currentContext(), view.context());
    other.hide();
    EXPECT_COLOR(logoOnScreen(view), QColor(Qt::green));
}

TEST_F(QtViewLogoTest, ALogoMayBeSetBeforeTheFirstShowWhileTheContextOfAnotherViewIsCurrent)
{
    LogoView early;
    view.makeCurrent();
    const auto before = textures();
    early.setLogo(makePlainLogo(Qt::green));
    EXPECT_THAT(newTextures(before), IsEmpty());
    EXPECT_EQ(QOpenGLContext::currentContext(), view.context());
    showView(early);
    EXPECT_COLOR(logoOnScreen(early), QColor(Qt::green));
}

TEST_F(QtViewLogoTest, ANewContextGetsATextureOfItsOwn)
{
    view.setLogo(makePlainLogo(Qt::green));
    view.makeCurrent();
    view.initializeGL(); // as for a new context
    const auto before = textures();
    EXPECT_COLOR(view.pictureOfLogo().pixelColor(170, 80), QColor(Qt::green));
    EXPECT_EQ(newTextures(before).size(), 1u);
    for (const GLuint name : before)
        EXPECT_TRUE(glIsTexture(name)) << "the old texture belongs to the old context";
}

TEST_F(QtViewLogoTest, AMoveIntoTheContextOfAnotherTopLevelKeepsTheLogo)
{
    QWidget tops[2];
    auto* moved = new LogoView;
    QVBoxLayout layouts[2]{QVBoxLayout(&tops[0]), QVBoxLayout(&tops[1])};
    layouts[0].addWidget(moved);
    tops[0].show();
    settle();
    moved->setLogo(makePlainLogo(Qt::green));
    EXPECT_COLOR(logoOnScreen(*moved), QColor(Qt::green));
    tops[0].hide();
    layouts[1].addWidget(moved);
    tops[1].show();
    settle();
    EXPECT_COLOR(logoOnScreen(*moved), QColor(Qt::green));
}

#include "tests/qt/ViewProbe.h"

#include <QOpenGLContext>
#include <QOpenGLFunctions>
#include <QPainter>
#include <QTest>
#include <QVBoxLayout>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <stdexcept>

using namespace halvern::test;
using halvern::engine::fx::FXRenderTarget;
using testing::ElementsAre;

namespace {

const QColor Red(255, 0, 0);
const QColor Green(0, 255, 0);
const QColor Blue(0, 0, 255);
const QColor White(255, 255, 255);
const QColor Gray(128, 128, 128);

/// Notes the drawing operations in the log of the window and whether a painter is active.
class DrawingView : public ViewProbe
{
public:
    explicit DrawingView(CallLog& log) : log(log) {}

    void drawLogo() override { log.add("drawLogo"); }
    void drawShadowMaps() override { log.add("drawShadowMaps"); }
    void drawStats(QPainter& painter, QPaintEvent* event) override { note("drawStats", painter, event); }
    void drawMessageAtCursor(QPainter& painter, QPaintEvent* event) override
    {
        note("drawMessageAtCursor", painter, event);
    }

    QPainter::RenderHints hints;
    Qt::BGMode backgroundMode = Qt::OpaqueMode;
    QTransform transform;
    bool hadEvent = false;

private:
    void note(const char* name, QPainter& painter, QPaintEvent* event)
    {
        log.add(name);
        hints = painter.renderHints();
        backgroundMode = painter.backgroundMode();
        transform = painter.transform();
        hadEvent = event != nullptr && painter.isActive();
    }

    CallLog& log;
};

void fill(FakeWindow& window, ViewProbe& view, const std::vector<QColor>& texels)
{
    view.makeCurrent();
    window.colorTarget = boost::make_shared<FXRenderTarget>(makeTexture(texels));
}

} // namespace

TEST(QtViewFrameTest, WindowIsUpdatedThenRendered)
{
    CallLog log;
    ViewProbe view;
    showWithFakeWindow(view, log);
    repaintView(view);
    EXPECT_THAT(log.take(), ElementsAre("update", "render"));
}

TEST(QtViewFrameTest, WindowIsCalledWithTheContextOfTheView)
{
    CallLog log;
    ViewProbe view;
    showWithFakeWindow(view, log);
    log.onCall = [&](const std::string&) { EXPECT_EQ(QOpenGLContext::currentContext(), view.context()); };
    view.doneCurrent();
    repaintView(view);
    log.onCall = nullptr;
    EXPECT_EQ(log.take().size(), 2u);
}

TEST(QtViewFrameTest, ColourTargetCoversTheViewWithItsFirstRowAtTheBottom)
{
    CallLog log;
    ViewProbe view;
    const auto window = showWithFakeWindow(view, log, 200, 100);
    fill(*window, view, {Red, Green, Blue, White});
    const QImage picture = view.grabFramebuffer();
    ASSERT_EQ(picture.size(), QSize(200, 100));
    EXPECT_EQ(picture.pixelColor(0, 99), Red);
    EXPECT_EQ(picture.pixelColor(199, 99), Green);
    EXPECT_EQ(picture.pixelColor(0, 0), Blue);
    EXPECT_EQ(picture.pixelColor(199, 0), White);
    EXPECT_EQ(picture.pixelColor(99, 51), Red);
    EXPECT_EQ(picture.pixelColor(100, 49), White);
}

TEST(QtViewFrameTest, TheScreenShowsTheColourTarget)
{
    CallLog log;
    ViewProbe view;
    const auto window = showWithFakeWindow(view, log);
    fill(*window, view, {Green, Blue, White, Gray});
    repaintView(view);
    const QImage screen = grabScreen(view);
    EXPECT_EQ(screen.pixelColor(0, 99), Green);
    EXPECT_EQ(screen.pixelColor(199, 99), Blue);
    EXPECT_EQ(screen.pixelColor(0, 0), White);
    EXPECT_EQ(screen.pixelColor(199, 0), Gray);
}

TEST(QtViewFrameTest, AnEmptyOrZeroTargetDrawsAWhiteQuadAndNoRed)
{
    CallLog log;
    ViewProbe view;
    const auto window = showWithFakeWindow(view, log);
    for (const auto& target : {boost::shared_ptr<FXRenderTarget>(), boost::make_shared<FXRenderTarget>(0u)}) {
        window->colorTarget = target;
        view.makeCurrent();
        view.context()->functions()->glBindTexture(GL_TEXTURE_2D, makeTexture({Red}));
        EXPECT_EQ(view.grabFramebuffer().pixelColor(100, 50), White);
    }
}

TEST(QtViewFrameTest, WithoutAWindowTheQuadIsWhiteWhateverWasBound)
{
    WindowlessView view;
    showView(view);
    view.makeCurrent();
    view.context()->functions()->glBindTexture(GL_TEXTURE_2D, makeTexture({Blue}));
    EXPECT_EQ(view.grabFramebuffer().pixelColor(100, 50), White);
    repaintView(view);
    EXPECT_EQ(grabScreen(view).pixelColor(100, 50), White);
}

TEST(QtViewFrameTest, ClearsToOpaqueRedUnderTheQuadOnPurpose)
{
    CallLog log;
    ViewProbe view;
    const auto window = showWithFakeWindow(view, log);
    fill(*window, view, {Green});
    view.makeCurrent();
    view.paintGL();
    GLfloat color[4];
    GLfloat depth = 0;
    glGetFloatv(GL_COLOR_CLEAR_VALUE, color);
    glGetFloatv(GL_DEPTH_CLEAR_VALUE, &depth);
    EXPECT_THAT(color, ElementsAre(1, 0, 0, 1));
    EXPECT_EQ(depth, 1);
}

TEST(QtViewFrameTest, BlitSetsNoViewport)
{
    CallLog log;
    ViewProbe view;
    const auto window = showWithFakeWindow(view, log);
    fill(*window, view, {Green});
    view.makeCurrent();
    glViewport(0, 0, 100, 100);
    view.paintGL();
    GLubyte pixel[4];
    glReadPixels(150, 50, 1, 1, GL_RGBA, GL_UNSIGNED_BYTE, pixel);
    EXPECT_THAT(pixel, ElementsAre(255, 0, 0, 255)); // the clear colour beside the quad
    glReadPixels(50, 50, 1, 1, GL_RGBA, GL_UNSIGNED_BYTE, pixel);
    EXPECT_THAT(pixel, ElementsAre(0, 255, 0, 255));
    GLint viewport[4];
    glGetIntegerv(GL_VIEWPORT, viewport);
    EXPECT_THAT(viewport, ElementsAre(0, 0, 100, 100));
}

TEST(QtViewFrameTest, BlitSetsNoColour)
{
    CallLog log;
    ViewProbe view;
    const auto window = showWithFakeWindow(view, log);
    fill(*window, view, {White});
    view.makeCurrent();
    glColor4f(0, 0, 1, 1);
    view.paintGL();
    GLubyte pixel[4];
    glReadPixels(50, 50, 1, 1, GL_RGBA, GL_UNSIGNED_BYTE, pixel);
    EXPECT_THAT(pixel, ElementsAre(0, 0, 255, 255));
    glColor4f(1, 1, 1, 1);
}

TEST(QtViewFrameTest, BlitLeavesTexturingOffAndTheMatricesAtIdentity)
{
    CallLog log;
    ViewProbe view;
    const auto window = showWithFakeWindow(view, log);
    fill(*window, view, {Green});
    view.makeCurrent();
    for (const GLenum mode : {GL_MODELVIEW, GL_PROJECTION}) {
        glMatrixMode(mode);
        glTranslatef(5, 5, 5);
    }
    view.paintGL();
    EXPECT_FALSE(glIsEnabled(GL_TEXTURE_2D));
    for (const GLenum name : {GL_MODELVIEW_MATRIX, GL_PROJECTION_MATRIX}) {
        GLfloat matrix[16];
        glGetFloatv(name, matrix);
        EXPECT_THAT(matrix, ElementsAre(1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1));
    }
}

TEST(QtViewFrameTest, BlitGoesToTheFramebufferOfTheWidget)
{
    CallLog log;
    ViewProbe view;
    const auto window = showWithFakeWindow(view, log);
    fill(*window, view, {Green});
    QOpenGLFunctions* gl = view.context()->functions();
    GLuint other = 0;
    view.makeCurrent();
    gl->glGenFramebuffers(1, &other);
    log.onCall = [&](const std::string& name) {
        if (name == "render")
            gl->glBindFramebuffer(GL_FRAMEBUFFER, other);
    };
    EXPECT_EQ(view.grabFramebuffer().pixelColor(100, 50), Green);
    log.onCall = nullptr;
}

TEST(QtViewFrameTest, DepthIsClearedBeforeTheQuad)
{
    CallLog log;
    ViewProbe view;
    const auto window = showWithFakeWindow(view, log);
    fill(*window, view, {Green});
    view.makeCurrent();
    glEnable(GL_DEPTH_TEST);
    view.paintGL();
    glClearDepth(0.0);
    glClear(GL_DEPTH_BUFFER_BIT);
    fill(*window, view, {Blue});
    view.paintGL();
    GLubyte pixel[4];
    glReadPixels(50, 50, 1, 1, GL_RGBA, GL_UNSIGNED_BYTE, pixel);
    EXPECT_THAT(pixel, ElementsAre(0, 0, 255, 255));
    glDisable(GL_DEPTH_TEST);
}

TEST(QtViewFrameTest, OverlaysAreCalledInOrderWhenSwitchedOn)
{
    CallLog log;
    DrawingView view(log);
    showWithFakeWindow(view, log);
    view.showStringAtCursor("text");
    view.enableLogo(true);
    view.setShowStats(true);
    repaintView(view);
    EXPECT_THAT(log.take(), ElementsAre("update", "render", "drawLogo", "drawShadowMaps", "drawStats",
                                        "drawMessageAtCursor"));
}

TEST(QtViewFrameTest, NoOverlayIsCalledUnlessSwitchedOn)
{
    CallLog log;
    DrawingView view(log);
    showWithFakeWindow(view, log);
    view.showStringAtCursor("text");
    view.enableLogo(true);
    view.setShowStats(true);
    view.showStringAtCursor("");
    view.enableLogo(false);
    view.setShowStats(false);
    repaintView(view);
    EXPECT_THAT(log.take(), ElementsAre("update", "render"));
}

TEST(QtViewFrameTest, StatisticsShowTextAndShadowMaps)
{
    CallLog log;
    DrawingView view(log);
    showWithFakeWindow(view, log);
    view.setShowStats(true);
    repaintView(view);
    EXPECT_THAT(log.take(), ElementsAre("update", "render", "drawShadowMaps", "drawStats"));
}

TEST(QtViewFrameTest, SetLogoTurnsTheLogoOn)
{
    CallLog log;
    DrawingView view(log);
    view.setLogo(QImage(8, 4, QImage::Format_ARGB32)); // before the first show
    showWithFakeWindow(view, log);
    repaintView(view);
    EXPECT_THAT(log.take(), ElementsAre("update", "render", "drawLogo"));
    view.enableLogo(false);
    repaintView(view);
    EXPECT_THAT(log.take(), ElementsAre("update", "render"));
}

TEST(QtViewFrameTest, ANullLogoChangesNothing)
{
    CallLog log;
    DrawingView view(log);
    showWithFakeWindow(view, log);
    view.setLogo(QImage());
    repaintView(view);
    EXPECT_THAT(log.take(), ElementsAre("update", "render"));

    view.enableLogo(true);
    view.setLogo(QImage());
    repaintView(view);
    EXPECT_THAT(log.take(), ElementsAre("update", "render", "drawLogo"));
}

TEST(QtViewFrameTest, PainterHasAllAntialiasingHintsAndATransparentBackground)
{
    CallLog log;
    DrawingView view(log);
    showWithFakeWindow(view, log);
    view.setShowStats(true);
    repaintView(view);
    EXPECT_TRUE(view.hadEvent);
    EXPECT_TRUE(view.hints.testFlag(QPainter::Antialiasing));
    EXPECT_TRUE(view.hints.testFlag(QPainter::TextAntialiasing));
    EXPECT_TRUE(view.hints.testFlag(QPainter::HighQualityAntialiasing));
    EXPECT_EQ(view.backgroundMode, Qt::TransparentMode);
    EXPECT_TRUE(view.transform.isIdentity());
}

TEST(QtViewFrameTest, PainterIsEndedWithTheFrame)
{
    ViewProbe view;
    showView(view);
    repaintView(view);
    EXPECT_FALSE(view.paintingActive());
}

TEST(QtViewFrameTest, MultisamplingAndLineSmoothingAreEnabledAndStay)
{
    CallLog log;
    ViewProbe view;
    showWithFakeWindow(view, log);
    view.makeCurrent();
    glDisable(GL_MULTISAMPLE);
    glDisable(GL_LINE_SMOOTH);
    bool during = false;
    log.onCall = [&](const std::string&) {
        during = glIsEnabled(GL_MULTISAMPLE) && glIsEnabled(GL_LINE_SMOOTH);
    };
    repaintView(view);
    log.onCall = nullptr;
    view.makeCurrent();
    EXPECT_TRUE(during);
    EXPECT_TRUE(glIsEnabled(GL_MULTISAMPLE));
    EXPECT_TRUE(glIsEnabled(GL_LINE_SMOOTH));
}

TEST(QtViewFrameTest, FrameIsPaintedWhateverContextIsCurrent)
{
    CallLog log;
    ViewProbe view;
    const auto window = showWithFakeWindow(view, log);
    fill(*window, view, {Green});
    ViewProbe other;
    showView(other, 60, 60);
    other.move(400, 100);
    other.makeCurrent();
    QPaintEvent event(view.rect());
    QCoreApplication::sendEvent(&view, &event);
    other.doneCurrent();
    repaintView(view);
    EXPECT_EQ(grabScreen(view).pixelColor(100, 50), Green);
}

TEST(QtViewFrameTest, PaintEventBeforeTheFirstShowDoesNothing)
{
    CallLog log;
    ViewProbe view;
    view.setWindow(boost::make_shared<FakeWindow>(log));
    log.take();
    ViewProbe other;
    showView(other);
    other.makeCurrent(); // whose state is not the unshown view's to change
    glDisable(GL_MULTISAMPLE);
    QPaintEvent event(view.rect());
    QCoreApplication::sendEvent(&view, &event);
    EXPECT_EQ(view.paints, 1);
    EXPECT_TRUE(log.calls.empty());
    EXPECT_FALSE(glIsEnabled(GL_MULTISAMPLE));
}

TEST(QtViewFrameTest, PaintGLWithoutAContextDoesNothing)
{
    CallLog log;
    ViewProbe view;
    showWithFakeWindow(view, log);
    bool ran = false;
    view.queueTask([&] { ran = true; });
    view.doneCurrent();
    view.paintGL();
    EXPECT_FALSE(ran);
    EXPECT_TRUE(log.calls.empty());
}

TEST(QtViewFrameTest, AnEngineExceptionLeavesPaintGLForADirectCaller)
{
    CallLog log;
    ViewProbe view;
    showWithFakeWindow(view, log);
    log.onCall = [](const std::string& name) { throw std::runtime_error(name); };
    view.makeCurrent();
    EXPECT_THROW(view.paintGL(), std::runtime_error);
    log.onCall = nullptr;
}

TEST(QtViewFrameTest, AnEngineExceptionEndsAtThePaintEventAndThePainterWithIt)
{
    CallLog log;
    ViewProbe view;
    const auto window = showWithFakeWindow(view, log);
    fill(*window, view, {Green});
    for (const char* thrower : {"update", "render"}) {
        log.onCall = [thrower](const std::string& name) {
            if (name == thrower)
                throw std::runtime_error(name);
        };
        EXPECT_NO_THROW(repaintView(view));
        EXPECT_FALSE(view.paintingActive());
    }
    log.onCall = nullptr;
    repaintView(view);
    EXPECT_EQ(grabScreen(view).pixelColor(100, 50), Green);
}

TEST(QtViewFrameTest, AnOverlayExceptionEndsAtThePaintEvent)
{
    struct Throwing : ViewProbe
    {
        void drawStats(QPainter&, QPaintEvent*) override { throw std::runtime_error("stats"); }
    };
    Throwing view;
    showView(view);
    view.setShowStats(true);
    EXPECT_NO_THROW(repaintView(view));
    EXPECT_FALSE(view.paintingActive());
}

TEST(QtViewFrameTest, ASubclassThatInitialisesNothingStillPaints)
{
    WindowlessView view;
    showView(view);
    repaintView(view);
    EXPECT_GE(view.paints, 1);
    EXPECT_FALSE(view.getWindow());
}

TEST(QtViewFrameTest, WindowMayBeReplacedByATask)
{
    CallLog log;
    CallLog otherLog;
    ViewProbe view;
    showWithFakeWindow(view, log);
    view.queueTask([&] { view.setWindow(boost::make_shared<FakeWindow>(otherLog)); });
    repaintView(view);
    EXPECT_TRUE(log.calls.empty());
    EXPECT_THAT(otherLog.take(), ElementsAre("resize 200 100", "update", "render"));
}

TEST(QtViewFrameTest, GrabRunsTheFrameWithoutAPainter)
{
    CallLog log;
    DrawingView view(log);
    showWithFakeWindow(view, log);
    view.setShowStats(true);
    view.grabFramebuffer();
    EXPECT_THAT(log.take(), ElementsAre("update", "render", "drawShadowMaps"));
}

TEST(QtViewFrameTest, AViewInAWindowThatIsShownAgainIsPainted)
{
    QWidget top;
    ViewProbe view;
    QVBoxLayout layout(&top);
    layout.addWidget(&view);
    showView(top);
    settle();
    top.hide();
    settle();
    view.update(); // gets lost
    settle();
    view.paints = 0;
    top.show();
    EXPECT_TRUE(waitFor([&] { return view.paints > 0; }));
    settle();
    EXPECT_EQ(view.paints, 1);
}

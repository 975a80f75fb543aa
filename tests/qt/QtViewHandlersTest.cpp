#include "engine/core/interfaces/IOpenGLHandler.h"
#include "tests/qt/ViewProbe.h"

#include <QOpenGLContext>
#include <QOpenGLExtraFunctions>
#include <QOpenGLShaderProgram>
#include <QTest>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <stdexcept>

using namespace halvern::test;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

/// Notes what the view asks of it under a name.
class FakeHandler : public halvern::core::interfaces::IOpenGLHandler
{
public:
    FakeHandler(CallLog& log, std::string name, bool initialized = true) :
        initialized(initialized), log(log), name(std::move(name))
    {}

    bool isInitialized() override { return initialized; }
    void initialize() override
    {
        initialized = staysUninitialized ? false : true;
        log.add(name + " initialize");
    }
    void render() override { log.add(name + " render"); }

    bool initialized;
    bool staysUninitialized = false;

private:
    CallLog& log;
    const std::string name;
};

/// The values of bindings that a frame must not inherit from a handler.
std::vector<int> bindings(QOpenGLContext* context)
{
    std::vector<int> values;
    for (const GLenum name :
         {GL_CURRENT_PROGRAM, GL_VERTEX_ARRAY_BINDING, GL_ARRAY_BUFFER_BINDING,
          GL_ELEMENT_ARRAY_BUFFER_BINDING, GL_PIXEL_PACK_BUFFER_BINDING, GL_PIXEL_UNPACK_BUFFER_BINDING,
          GL_ATTRIB_STACK_DEPTH, GL_CLIENT_ATTRIB_STACK_DEPTH, GL_UNPACK_ROW_LENGTH}) {
        GLint value = -1;
        context->functions()->glGetIntegerv(name, &value);
        values.push_back(value);
    }
    return values;
}

GLint framebufferBinding(QOpenGLContext* context, GLenum name)
{
    GLint value = -1;
    context->functions()->glGetIntegerv(name, &value);
    return value;
}

/// Binds and changes whatever a careless handler might.
void spoilState(QOpenGLContext* context, QOpenGLShaderProgram& program)
{
    QOpenGLExtraFunctions* gl = context->extraFunctions();
    GLuint names[2];
    gl->glGenFramebuffers(1, names);
    gl->glBindFramebuffer(GL_FRAMEBUFFER, names[0]);
    gl->glGenVertexArrays(1, names);
    gl->glBindVertexArray(names[0]);
    for (const GLenum target :
         {GL_ARRAY_BUFFER, GL_ELEMENT_ARRAY_BUFFER, GL_PIXEL_PACK_BUFFER, GL_PIXEL_UNPACK_BUFFER}) {
        gl->glGenBuffers(1, names);
        gl->glBindBuffer(target, names[0]);
    }
    program.bind();
    gl->glPixelStorei(GL_UNPACK_ROW_LENGTH, 7);
    gl->glViewport(0, 0, 1, 1);
    gl->glActiveTexture(GL_TEXTURE3);
    gl->glEnable(GL_SCISSOR_TEST);
    gl->glEnable(GL_CULL_FACE);
    gl->glColorMask(GL_FALSE, GL_FALSE, GL_FALSE, GL_FALSE);
    glColor4f(0, 1, 0, 1);
}

void link(QOpenGLShaderProgram& program)
{
    program.addShaderFromSourceCode(QOpenGLShader::Vertex, "void main() { gl_Position = vec4(0.0); }");
    program.addShaderFromSourceCode(QOpenGLShader::Fragment, "void main() { gl_FragColor = vec4(1.0); }");
    ASSERT_TRUE(program.link());
}

} // namespace

TEST(QtViewHandlersTest, HandlersRenderAfterTheWindowInOrderOfAdding)
{
    CallLog log;
    ViewProbe view;
    showWithFakeWindow(view, log);
    view.addOpenGLHandler(boost::make_shared<FakeHandler>(log, "a"));
    view.addOpenGLHandler(boost::make_shared<FakeHandler>(log, "b"));
    repaintView(view);
    EXPECT_THAT(log.take(), ElementsAre("update", "render", "a render", "b render"));
}

TEST(QtViewHandlersTest, HandlersRenderAfterLogoAndShadowMapsAndBeforeTheStatistics)
{
    struct Drawing : ViewProbe
    {
        explicit Drawing(CallLog& log) : log(log) {}
        void drawLogo() override { log.add("logo"); }
        void drawShadowMaps() override { log.add("shadows"); }
        void drawStats(QPainter&, QPaintEvent*) override { log.add("stats"); }
        CallLog& log;
    };
    CallLog log;
    Drawing view(log);
    showWithFakeWindow(view, log);
    view.addOpenGLHandler(boost::make_shared<FakeHandler>(log, "a"));
    view.enableLogo(true);
    view.setShowStats(true);
    repaintView(view);
    EXPECT_THAT(log.take(), ElementsAre("update", "render", "logo", "shadows", "a render", "stats"));
}

TEST(QtViewHandlersTest, AddingInitialisesNothingAndRepaintsNothing)
{
    CallLog log;
    ViewProbe view;
    showWithFakeWindow(view, log);
    const int before = view.paints;
    view.addOpenGLHandler(boost::make_shared<FakeHandler>(log, "a", false));
    settle();
    EXPECT_THAT(log.take(), IsEmpty());
    EXPECT_EQ(view.paints, before);
}

TEST(QtViewHandlersTest, HandlersAddedBeforeTheFirstShowAreInitialisedThere)
{
    CallLog log;
    ViewProbe view;
    std::vector<const QOpenGLContext*> contexts;
    log.onCall = [&](const std::string&) {
        contexts.push_back(QOpenGLContext::currentContext());
        EXPECT_TRUE(view.getWindow()->getFXManager()); // which init makes
    };
    view.addOpenGLHandler(boost::make_shared<FakeHandler>(log, "a", false));
    view.addOpenGLHandler(boost::make_shared<FakeHandler>(log, "b", true));
    view.addOpenGLHandler(boost::make_shared<FakeHandler>(log, "c", false));
    view.grabFramebuffer(); // initialises without showing
    const auto calls = log.take();
    ASSERT_GE(calls.size(), 2u);
    EXPECT_EQ(calls[0], "a initialize");
    EXPECT_EQ(calls[1], "c initialize");
    EXPECT_THAT(contexts, testing::Each(view.context()));
}

TEST(QtViewHandlersTest, HandlersAddedLaterAreInitialisedBeforeTheirFirstRender)
{
    CallLog log;
    ViewProbe view;
    showWithFakeWindow(view, log);
    view.addOpenGLHandler(boost::make_shared<FakeHandler>(log, "a", false));
    repaintView(view);
    repaintView(view);
    EXPECT_THAT(log.take(),
                ElementsAre("update", "render", "a initialize", "a render", "update", "render", "a render"));
}

TEST(QtViewHandlersTest, AHandlerThatStaysUninitialisedIsAskedInEveryFrame)
{
    CallLog log;
    ViewProbe view;
    showWithFakeWindow(view, log);
    const auto handler = boost::make_shared<FakeHandler>(log, "a", false);
    handler->staysUninitialized = true;
    view.addOpenGLHandler(handler);
    repaintView(view);
    repaintView(view);
    EXPECT_THAT(log.take(), ElementsAre("update", "render", "a initialize", "a render", "update", "render",
                                        "a initialize", "a render"));
}

TEST(QtViewHandlersTest, HandlersAreCalledWithTheContextOfTheView)
{
    CallLog log;
    ViewProbe view;
    showWithFakeWindow(view, log);
    view.addOpenGLHandler(boost::make_shared<FakeHandler>(log, "a", false));
    view.doneCurrent();
    log.onCall = [&](const std::string&) { EXPECT_EQ(QOpenGLContext::currentContext(), view.context()); };
    repaintView(view);
    log.onCall = nullptr;
    EXPECT_EQ(log.take().size(), 4u);
}

TEST(QtViewHandlersTest, AHandlerAddedTwiceRendersTwiceAndIsRemovedAtOnce)
{
    CallLog log;
    ViewProbe view;
    showWithFakeWindow(view, log);
    const auto twice = boost::make_shared<FakeHandler>(log, "a");
    view.addOpenGLHandler(twice);
    view.addOpenGLHandler(boost::make_shared<FakeHandler>(log, "b"));
    view.addOpenGLHandler(twice);
    repaintView(view);
    EXPECT_THAT(log.take(), ElementsAre("update", "render", "a render", "b render", "a render"));
    view.removeOpenGLHandler(twice);
    repaintView(view);
    EXPECT_THAT(log.take(), ElementsAre("update", "render", "b render"));
    EXPECT_EQ(twice.use_count(), 1);
}

TEST(QtViewHandlersTest, EmptyAndUnknownHandlersAreIgnored)
{
    CallLog log;
    ViewProbe view;
    showWithFakeWindow(view, log);
    view.addOpenGLHandler(boost::make_shared<FakeHandler>(log, "a"));
    view.addOpenGLHandler(nullptr);
    repaintView(view);
    EXPECT_THAT(log.take(), ElementsAre("update", "render", "a render"));
    view.removeOpenGLHandler(nullptr);
    view.removeOpenGLHandler(boost::make_shared<FakeHandler>(log, "unknown"));
    repaintView(view);
    EXPECT_THAT(log.take(), ElementsAre("update", "render", "a render"));
}

TEST(QtViewHandlersTest, RemovingMakesTheContextCurrentForTheHandlersRelease)
{
    CallLog log;
    ViewProbe view;
    showWithFakeWindow(view, log);
    QOpenGLContext* atDeath = nullptr;
    struct Noting : FakeHandler
    {
        Noting(CallLog& log, QOpenGLContext** atDeath) : FakeHandler(log, "a"), atDeath(atDeath) {}
        ~Noting() override { *atDeath = QOpenGLContext::currentContext(); }
        QOpenGLContext** atDeath;
    };
    boost::shared_ptr<FakeHandler> handler = boost::make_shared<Noting>(log, &atDeath);
    view.addOpenGLHandler(handler);
    view.doneCurrent();
    view.removeOpenGLHandler(std::move(handler));
    EXPECT_EQ(atDeath, view.context());
}

TEST(QtViewHandlersTest, RemovingBeforeTheFirstShowLeavesTheContextAlone)
{
    ViewProbe shown;
    showView(shown);
    shown.makeCurrent();
    CallLog log;
    ViewProbe view;
    const auto handler = boost::make_shared<FakeHandler>(log, "a");
    view.addOpenGLHandler(handler);
    view.removeOpenGLHandler(handler);
    EXPECT_EQ(QOpenGLContext::currentContext(), shown.context());
    EXPECT_EQ(handler.use_count(), 1);
}

TEST(QtViewHandlersTest, DestructionReleasesHandlersWithTheContextCurrent)
{
    QOpenGLContext* atDeath = nullptr;
    QOpenGLContext* own = nullptr;
    struct Noting : FakeHandler
    {
        Noting(CallLog& log, QOpenGLContext** atDeath) : FakeHandler(log, "a"), atDeath(atDeath) {}
        ~Noting() override { *atDeath = QOpenGLContext::currentContext(); }
        QOpenGLContext** atDeath;
    };
    CallLog log;
    {
        ViewProbe view;
        showView(view);
        own = view.context();
        view.addOpenGLHandler(boost::make_shared<Noting>(log, &atDeath));
        view.doneCurrent();
    }
    EXPECT_NE(own, nullptr);
    EXPECT_EQ(atDeath, own);
}

TEST(QtViewHandlersTest, AHandlerAddedWhileRenderingStartsInTheNextFrame)
{
    CallLog log;
    ViewProbe view;
    showWithFakeWindow(view, log);
    view.addOpenGLHandler(boost::make_shared<FakeHandler>(log, "a"));
    log.onCall = [&](const std::string& name) {
        if (name == "a render")
            view.addOpenGLHandler(boost::make_shared<FakeHandler>(log, "b"));
    };
    repaintView(view);
    EXPECT_THAT(log.take(), ElementsAre("update", "render", "a render"));
    log.onCall = nullptr;
    repaintView(view);
    EXPECT_THAT(log.take(), ElementsAre("update", "render", "a render", "b render"));
}

TEST(QtViewHandlersTest, AHandlerMayRemoveItselfWhileRendering)
{
    CallLog log;
    ViewProbe view;
    showWithFakeWindow(view, log);
    const auto handler = boost::make_shared<FakeHandler>(log, "a");
    view.addOpenGLHandler(handler);
    view.addOpenGLHandler(boost::make_shared<FakeHandler>(log, "b"));
    log.onCall = [&](const std::string&) { view.removeOpenGLHandler(handler); };
    repaintView(view);
    EXPECT_THAT(log.take(), ElementsAre("update", "render", "b render")); // gone since "update"

    view.addOpenGLHandler(handler);
    log.onCall = [&](const std::string& name) {
        if (name == "a render")
            view.removeOpenGLHandler(handler);
    };
    repaintView(view);
    repaintView(view);
    log.onCall = nullptr;
    EXPECT_THAT(log.take(),
                ElementsAre("update", "render", "b render", "a render", "update", "render", "b render"));
}

TEST(QtViewHandlersTest, EachHandlerStartsFromACleanState)
{
    CallLog log;
    ViewProbe view;
    showWithFakeWindow(view, log);
    view.makeCurrent();
    QOpenGLShaderProgram program;
    link(program);
    std::vector<int> before;
    std::vector<int> after;
    GLint framebuffer = 0;
    GLboolean colorMask[4] = {};
    GLint activeTexture = 0;
    view.addOpenGLHandler(boost::make_shared<FakeHandler>(log, "first"));
    view.addOpenGLHandler(boost::make_shared<FakeHandler>(log, "spoils"));
    view.addOpenGLHandler(boost::make_shared<FakeHandler>(log, "looks"));
    log.onCall = [&](const std::string& name) {
        if (name == "first render")
            before = bindings(view.context());
        if (name == "spoils render")
            spoilState(view.context(), program);
        if (name == "looks render") {
            after = bindings(view.context());
            framebuffer = framebufferBinding(view.context(), GL_FRAMEBUFFER_BINDING);
            glGetBooleanv(GL_COLOR_WRITEMASK, colorMask);
            glGetIntegerv(GL_ACTIVE_TEXTURE, &activeTexture);
        }
    };
    repaintView(view);
    log.onCall = nullptr;
    EXPECT_EQ(after, before);
    EXPECT_THAT(after, ElementsAre(0, 0, 0, 0, 0, 0, 1, 1, 0));
    EXPECT_EQ(GLuint(framebuffer), view.defaultFramebufferObject());
    EXPECT_THAT(colorMask, testing::Each(GL_TRUE));
    EXPECT_EQ(activeTexture, GL_TEXTURE0);
}

TEST(QtViewHandlersTest, WhatInitialiseLeavesBoundIsRestoredToo)
{
    CallLog log;
    ViewProbe view;
    showWithFakeWindow(view, log);
    view.makeCurrent();
    QOpenGLShaderProgram program;
    link(program);
    std::vector<int> after;
    GLint framebuffer = 0;
    view.addOpenGLHandler(boost::make_shared<FakeHandler>(log, "spoils", false));
    view.addOpenGLHandler(boost::make_shared<FakeHandler>(log, "looks"));
    log.onCall = [&](const std::string& name) {
        if (name == "spoils initialize") {
            program.bind();
            QOpenGLExtraFunctions* gl = view.context()->extraFunctions();
            GLuint made[3];
            gl->glGenBuffers(1, &made[0]);
            gl->glBindBuffer(GL_PIXEL_UNPACK_BUFFER, made[0]);
            gl->glGenVertexArrays(1, &made[1]);
            gl->glBindVertexArray(made[1]);
            gl->glGenFramebuffers(1, &made[2]);
            gl->glBindFramebuffer(GL_FRAMEBUFFER, made[2]);
        }
        if (name == "looks render") {
            after = bindings(view.context());
            framebuffer = framebufferBinding(view.context(), GL_FRAMEBUFFER_BINDING);
        }
    };
    repaintView(view);
    log.onCall = nullptr;
    EXPECT_EQ(GLuint(framebuffer), view.defaultFramebufferObject());
    EXPECT_THAT(after, ElementsAre(0, 0, 0, 0, 0, 0, 1, 1, 0));
}

TEST(QtViewHandlersTest, AThrowingHandlerLosesItsFrameAndNothingElse)
{
    CallLog log;
    ViewProbe view;
    const auto window = showWithFakeWindow(view, log);
    view.makeCurrent();
    QOpenGLShaderProgram program;
    link(program);
    view.addOpenGLHandler(boost::make_shared<FakeHandler>(log, "throws"));
    view.addOpenGLHandler(boost::make_shared<FakeHandler>(log, "b"));
    log.onCall = [&](const std::string& name) {
        if (name != "throws render")
            return;
        spoilState(view.context(), program);
        throw std::runtime_error(name);
    };
    EXPECT_NO_THROW(repaintView(view));
    EXPECT_THAT(log.take(), ElementsAre("update", "render", "throws render"));
    view.makeCurrent();
    EXPECT_THROW(view.paintGL(), std::runtime_error);
    EXPECT_THAT(bindings(view.context()), ElementsAre(0, 0, 0, 0, 0, 0, 0, 0, 0));
    EXPECT_FALSE(view.paintingActive());

    log.onCall = nullptr;
    log.take();
    repaintView(view);
    EXPECT_THAT(log.take(), ElementsAre("update", "render", "throws render", "b render"));
    EXPECT_EQ(grabScreen(view).pixelColor(100, 50), QColor(255, 255, 255));
}

TEST(QtViewHandlersTest, AHandlerThatThrowsInTheFirstShowStaysInside)
{
    CallLog log;
    ViewProbe view;
    log.onCall = [](const std::string& name) { throw std::runtime_error(name); };
    view.addOpenGLHandler(boost::make_shared<FakeHandler>(log, "a", false));
    EXPECT_NO_THROW(showView(view));
    log.onCall = nullptr;
    EXPECT_TRUE(view.getWindow());
}

TEST(QtViewHandlersTest, AHandlerDrawsOverTheScene)
{
    struct Painting : FakeHandler
    {
        using FakeHandler::FakeHandler;
        void render() override
        {
            glColor4f(0, 0, 1, 1);
            glRectf(-1, -1, 0, 1);
        }
    };
    CallLog log;
    ViewProbe view;
    showWithFakeWindow(view, log);
    view.addOpenGLHandler(boost::make_shared<Painting>(log, "a"));
    repaintView(view);
    repaintView(view); // the second frame does not inherit the colour
    const QImage screen = grabScreen(view);
    EXPECT_EQ(screen.pixelColor(50, 50), QColor(0, 0, 255));
    EXPECT_EQ(screen.pixelColor(150, 50), QColor(255, 255, 255));
}

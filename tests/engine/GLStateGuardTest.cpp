#include "engine/fx/FXRenderTarget.h"
#include "tests/engine/Stage.h"

#include <QFont>
#include <QOpenGLExtraFunctions>
#include <QOpenGLFramebufferObject>
#include <QOpenGLPaintDevice>
#include <QPainter>

#include <gtest/gtest.h>

#include <array>
#include <map>
#include <string>

using namespace halvern;
using namespace halvern::test;

// Compatibility names that Qt's headers leave out.
#ifndef GL_CLIENT_ATTRIB_STACK_DEPTH
#    define GL_CLIENT_ATTRIB_STACK_DEPTH 0x0BB1
#endif

namespace {

struct Query
{
    GLenum name;
    const char* text;
};

#define QUERY(name)                                                                                          \
    {                                                                                                        \
        name, #name                                                                                          \
    }

/// What glGet answers, switches among it.
const Query queries[] = {QUERY(GL_ACTIVE_TEXTURE),
                         QUERY(GL_ALIASED_LINE_WIDTH_RANGE),
                         QUERY(GL_ALPHA_TEST),
                         QUERY(GL_ALPHA_TEST_FUNC),
                         QUERY(GL_ALPHA_TEST_REF),
                         QUERY(GL_ARRAY_BUFFER_BINDING),
                         QUERY(GL_ATTRIB_STACK_DEPTH),
                         QUERY(GL_AUTO_NORMAL),
                         QUERY(GL_BLEND),
                         QUERY(GL_BLEND_COLOR),
                         QUERY(GL_BLEND_DST_ALPHA),
                         QUERY(GL_BLEND_DST_RGB),
                         QUERY(GL_BLEND_EQUATION_ALPHA),
                         QUERY(GL_BLEND_EQUATION_RGB),
                         QUERY(GL_BLEND_SRC_ALPHA),
                         QUERY(GL_BLEND_SRC_RGB),
                         QUERY(GL_CLIENT_ACTIVE_TEXTURE),
                         QUERY(GL_CLIENT_ATTRIB_STACK_DEPTH),
                         QUERY(GL_CLIP_PLANE0),
                         QUERY(GL_CLIP_PLANE3),
                         QUERY(GL_COLOR_ARRAY),
                         QUERY(GL_COLOR_CLEAR_VALUE),
                         QUERY(GL_COLOR_LOGIC_OP),
                         QUERY(GL_COLOR_MATERIAL),
                         QUERY(GL_COLOR_SUM),
                         QUERY(GL_COLOR_WRITEMASK),
                         QUERY(GL_CULL_FACE),
                         QUERY(GL_CULL_FACE_MODE),
                         QUERY(GL_CURRENT_COLOR),
                         QUERY(GL_CURRENT_NORMAL),
                         QUERY(GL_CURRENT_PROGRAM),
                         QUERY(GL_CURRENT_TEXTURE_COORDS),
                         QUERY(GL_DEPTH_CLAMP),
                         QUERY(GL_DEPTH_CLEAR_VALUE),
                         QUERY(GL_DEPTH_FUNC),
                         QUERY(GL_DEPTH_RANGE),
                         QUERY(GL_DEPTH_TEST),
                         QUERY(GL_DEPTH_WRITEMASK),
                         QUERY(GL_DITHER),
                         QUERY(GL_DRAW_BUFFER),
                         QUERY(GL_DRAW_FRAMEBUFFER_BINDING),
                         QUERY(GL_ELEMENT_ARRAY_BUFFER_BINDING),
                         QUERY(GL_FOG),
                         QUERY(GL_FRAMEBUFFER_SRGB),
                         QUERY(GL_FRONT_FACE),
                         QUERY(GL_LIGHT0),
                         QUERY(GL_LIGHTING),
                         QUERY(GL_LIGHT_MODEL_AMBIENT),
                         QUERY(GL_LIGHT_MODEL_TWO_SIDE),
                         QUERY(GL_LINE_SMOOTH),
                         QUERY(GL_LINE_STIPPLE),
                         QUERY(GL_LINE_WIDTH),
                         QUERY(GL_LIST_BASE),
                         QUERY(GL_LOGIC_OP_MODE),
                         QUERY(GL_MATRIX_MODE),
                         QUERY(GL_MODELVIEW_MATRIX),
                         QUERY(GL_MODELVIEW_STACK_DEPTH),
                         QUERY(GL_MULTISAMPLE),
                         QUERY(GL_NORMALIZE),
                         QUERY(GL_NORMAL_ARRAY),
                         QUERY(GL_PACK_ALIGNMENT),
                         QUERY(GL_PACK_ROW_LENGTH),
                         QUERY(GL_PIXEL_PACK_BUFFER_BINDING),
                         QUERY(GL_PIXEL_UNPACK_BUFFER_BINDING),
                         QUERY(GL_POINT_SIZE),
                         QUERY(GL_POINT_SMOOTH),
                         QUERY(GL_POINT_SPRITE),
                         QUERY(GL_POLYGON_MODE),
                         QUERY(GL_POLYGON_OFFSET_FACTOR),
                         QUERY(GL_POLYGON_OFFSET_FILL),
                         QUERY(GL_POLYGON_OFFSET_LINE),
                         QUERY(GL_POLYGON_OFFSET_UNITS),
                         QUERY(GL_POLYGON_SMOOTH),
                         QUERY(GL_POLYGON_STIPPLE),
                         QUERY(GL_PRIMITIVE_RESTART),
                         QUERY(GL_PROJECTION_MATRIX),
                         QUERY(GL_PROJECTION_STACK_DEPTH),
                         QUERY(GL_RASTERIZER_DISCARD),
                         QUERY(GL_READ_BUFFER),
                         QUERY(GL_READ_FRAMEBUFFER_BINDING),
                         QUERY(GL_RENDERBUFFER_BINDING),
                         QUERY(GL_RENDER_MODE),
                         QUERY(GL_SAMPLE_ALPHA_TO_COVERAGE),
                         QUERY(GL_SAMPLE_COVERAGE),
                         QUERY(GL_SAMPLE_COVERAGE_VALUE),
                         QUERY(GL_SCISSOR_BOX),
                         QUERY(GL_SCISSOR_TEST),
                         QUERY(GL_SHADE_MODEL),
                         QUERY(GL_STENCIL_BACK_FUNC),
                         QUERY(GL_STENCIL_BACK_WRITEMASK),
                         QUERY(GL_STENCIL_CLEAR_VALUE),
                         QUERY(GL_STENCIL_FAIL),
                         QUERY(GL_STENCIL_FUNC),
                         QUERY(GL_STENCIL_REF),
                         QUERY(GL_STENCIL_TEST),
                         QUERY(GL_STENCIL_VALUE_MASK),
                         QUERY(GL_STENCIL_WRITEMASK),
                         QUERY(GL_TEXTURE_1D),
                         QUERY(GL_TEXTURE_2D),
                         QUERY(GL_TEXTURE_3D),
                         QUERY(GL_TEXTURE_COORD_ARRAY),
                         QUERY(GL_TEXTURE_GEN_S),
                         QUERY(GL_TEXTURE_MATRIX),
                         QUERY(GL_TEXTURE_STACK_DEPTH),
                         QUERY(GL_UNPACK_ALIGNMENT),
                         QUERY(GL_UNPACK_IMAGE_HEIGHT),
                         QUERY(GL_UNPACK_LSB_FIRST),
                         QUERY(GL_UNPACK_ROW_LENGTH),
                         QUERY(GL_UNPACK_SKIP_PIXELS),
                         QUERY(GL_UNPACK_SKIP_ROWS),
                         QUERY(GL_UNPACK_SWAP_BYTES),
                         QUERY(GL_VERTEX_ARRAY),
                         QUERY(GL_VERTEX_ARRAY_BINDING),
                         QUERY(GL_VERTEX_ARRAY_BUFFER_BINDING),
                         QUERY(GL_VERTEX_ARRAY_SIZE),
                         QUERY(GL_VERTEX_PROGRAM_POINT_SIZE),
                         QUERY(GL_VERTEX_PROGRAM_TWO_SIDE),
                         QUERY(GL_VIEWPORT)};

/// Asked of each texture unit.
const Query unitQueries[] = {QUERY(GL_TEXTURE_BINDING_1D),       QUERY(GL_TEXTURE_BINDING_2D),
                             QUERY(GL_TEXTURE_BINDING_3D),       QUERY(GL_SAMPLER_BINDING),
                             QUERY(GL_TEXTURE_BINDING_CUBE_MAP), QUERY(GL_TEXTURE_BINDING_2D_ARRAY)};

constexpr int unitCount = 16;

using Values = std::map<std::string, std::array<double, 16>>;

std::array<double, 16> ask(GLenum name)
{
    std::array<double, 16> values;
    values.fill(-12345);
    glGetDoublev(name, values.data());
    return values;
}

Values readState()
{
    Values state;
    auto* gl = QOpenGLContext::currentContext()->extraFunctions();
    for (const Query& query : queries)
        state[query.text] = ask(query.name);
    int active = 0;
    glGetIntegerv(GL_ACTIVE_TEXTURE, &active);
    for (int unit = 0; unit < unitCount; ++unit) {
        gl->glActiveTexture(GL_TEXTURE0 + unit);
        for (const Query& query : unitQueries)
            state[query.text + (" of unit " + std::to_string(unit))] = ask(query.name);
    }
    gl->glActiveTexture(active);
    int enabled = 0;
    for (int i = 0; i < 8; ++i) {
        gl->glGetVertexAttribiv(i, GL_VERTEX_ATTRIB_ARRAY_ENABLED, &enabled);
        state["vertex attribute " + std::to_string(i)].fill(enabled);
    }
    return state;
}

/// Names of what differs.
std::string differences(const Values& before, const Values& after)
{
    std::string names;
    for (const auto& [name, values] : before)
        if (after.at(name) != values)
            names += name + ' ';
    return names;
}

/// A state that hardly any drawer leaves behind.
class UnusualState
{
public:
    UnusualState() : gl(QOpenGLContext::currentContext()->extraFunctions()), target(64, 48)
    {
        target.bind();
        makeObjects();
        setSwitches();
        setValues();
        setMatrices();
        setTextures();
        setPixels();
    }

private:
    void makeObjects()
    {
        unsigned int shader = gl->glCreateShader(GL_VERTEX_SHADER);
        const char* source = "void main() { gl_Position = gl_Vertex; }";
        gl->glShaderSource(shader, 1, &source, nullptr);
        gl->glCompileShader(shader);
        const unsigned int program = gl->glCreateProgram();
        gl->glAttachShader(program, shader);
        gl->glLinkProgram(program);
        gl->glUseProgram(program);
        unsigned int names[5] = {};
        gl->glGenBuffers(4, names);
        gl->glGenVertexArrays(1, &names[4]);
        gl->glBindVertexArray(names[4]);
        gl->glBindBuffer(GL_ARRAY_BUFFER, names[0]);
        gl->glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, names[1]);
        glVertexPointer(3, GL_FLOAT, 12, nullptr);
        glEnableClientState(GL_VERTEX_ARRAY);
        glEnableClientState(GL_COLOR_ARRAY);
        gl->glEnableVertexAttribArray(3);
        gl->glBindBuffer(GL_PIXEL_PACK_BUFFER, names[2]);
        gl->glBindBuffer(GL_PIXEL_UNPACK_BUFFER, names[3]);
        unsigned int renderbuffer = 0;
        gl->glGenRenderbuffers(1, &renderbuffer);
        gl->glBindRenderbuffer(GL_RENDERBUFFER, renderbuffer);
    }

    void setSwitches()
    {
        for (GLenum name : {GL_ALPHA_TEST,
                            GL_BLEND,
                            GL_CLIP_PLANE3,
                            GL_COLOR_LOGIC_OP,
                            GL_CULL_FACE,
                            GL_DEPTH_CLAMP,
                            GL_DEPTH_TEST,
                            GL_FOG,
                            GL_FRAMEBUFFER_SRGB,
                            GL_LIGHTING,
                            GL_LINE_SMOOTH,
                            GL_LINE_STIPPLE,
                            GL_NORMALIZE,
                            GL_POINT_SMOOTH,
                            GL_POINT_SPRITE,
                            GL_POLYGON_OFFSET_FILL,
                            GL_POLYGON_SMOOTH,
                            GL_POLYGON_STIPPLE,
                            GL_PRIMITIVE_RESTART,
                            GL_RASTERIZER_DISCARD,
                            GL_SAMPLE_ALPHA_TO_COVERAGE,
                            GL_SCISSOR_TEST,
                            GL_STENCIL_TEST,
                            GL_VERTEX_PROGRAM_POINT_SIZE,
                            GL_VERTEX_PROGRAM_TWO_SIDE})
            glEnable(name);
        glDisable(GL_DITHER);
        glDisable(GL_MULTISAMPLE);
    }

    void setValues()
    {
        glViewport(3, 5, 17, 19);
        glScissor(1, 2, 3, 4);
        glClearColor(0.1f, 0.2f, 0.3f, 0.4f);
        glClearDepth(0.25);
        glClearStencil(7);
        glColorMask(GL_TRUE, GL_FALSE, GL_TRUE, GL_FALSE);
        glDepthMask(GL_FALSE);
        glDepthFunc(GL_GREATER);
        glDepthRange(0.25, 0.75);
        glStencilMask(0x55);
        glStencilFunc(GL_NOTEQUAL, 3, 0x33);
        glStencilOp(GL_INCR, GL_DECR, GL_INVERT);
        gl->glBlendFuncSeparate(GL_ONE, GL_ZERO, GL_DST_COLOR, GL_SRC_ALPHA);
        gl->glBlendEquation(GL_FUNC_REVERSE_SUBTRACT);
        gl->glBlendColor(0.5f, 0.25f, 0.125f, 1);
        glAlphaFunc(GL_LESS, 0.5f);
        glLogicOp(GL_XOR);
        glPolygonMode(GL_FRONT_AND_BACK, GL_LINE);
        glPolygonOffset(3, 5);
        glCullFace(GL_FRONT);
        glFrontFace(GL_CW);
        glLineWidth(3);
        glPointSize(5);
        glShadeModel(GL_FLAT);
        glColor4f(0.25f, 0.5f, 0.75f, 0.5f);
        glNormal3f(0, 1, 0);
        glTexCoord2f(0.5f, 0.25f);
        glDrawBuffer(GL_COLOR_ATTACHMENT0);
        glReadBuffer(GL_COLOR_ATTACHMENT0);
    }

    void setMatrices()
    {
        glMatrixMode(GL_PROJECTION);
        glLoadIdentity();
        glOrtho(-1, 2, -3, 4, -5, 6);
        glPushMatrix();
        glMatrixMode(GL_MODELVIEW);
        glLoadIdentity();
        glTranslatef(1, 2, 3);
        glPushMatrix();
        glRotatef(30, 1, 0, 0);
        glMatrixMode(GL_TEXTURE);
        glLoadIdentity();
        glScalef(2, 3, 4);
    }

    void setTextures()
    {
        for (int unit = 0; unit < unitCount; ++unit) {
            unsigned int texture = 0;
            glGenTextures(1, &texture);
            gl->glActiveTexture(GL_TEXTURE0 + unit);
            glBindTexture(GL_TEXTURE_2D, texture);
            unsigned int sampler = 0;
            gl->glGenSamplers(1, &sampler);
            gl->glBindSampler(unit, sampler);
        }
        gl->glActiveTexture(GL_TEXTURE3);
        glEnable(GL_TEXTURE_2D);
        reinterpret_cast<void (*)(GLenum)>(
            QOpenGLContext::currentContext()->getProcAddress("glClientActiveTexture"))(GL_TEXTURE2);
        glEnableClientState(GL_TEXTURE_COORD_ARRAY);
    }

    void setPixels()
    {
        glPixelStorei(GL_UNPACK_ALIGNMENT, 2);
        glPixelStorei(GL_UNPACK_ROW_LENGTH, 13);
        glPixelStorei(GL_UNPACK_SKIP_ROWS, 3);
        glPixelStorei(GL_UNPACK_SKIP_PIXELS, 5);
        glPixelStorei(GL_UNPACK_SWAP_BYTES, GL_TRUE);
        glPixelStorei(GL_PACK_ALIGNMENT, 8);
        glPixelStorei(GL_PACK_ROW_LENGTH, 21);
    }

    QOpenGLExtraFunctions* const gl;
    QOpenGLFramebufferObject target;
};

/// A scene that uses all the renderer has.
void addEverything(Scene& scene)
{
    scene.add("ground", groundMesh(4), litMaterial(Qt::white));
    scene.add("cube", boxMesh(), litMaterial(Qt::red))->addToLayer("cast_shadow");
    scene.add("glass", boxMesh(0.5f), litMaterial(Qt::blue))->addToLayer("transparent");
    scene.add("over", boxMesh(0.2f), unlitMaterial(Qt::green))->addToLayer("post_render");
    auto image = std::make_shared<scene::Image>();
    image->width = image->height = 3;
    image->channels = 3;
    image->pixels.assign(27, 200);
    changeMaterial(*scene.root->getChildNode(1)->getMaterial(0, 0),
                   [&](auto& values) { values.baseColorMap = values.normalMap = image; });
    scene::LightSource source;
    for (auto kind : {scene::LightSource::Kind::Point, scene::LightSource::Kind::Spot,
                      scene::LightSource::Kind::Directional, scene::LightSource::Kind::Head}) {
        source.kind = kind;
        scene.addLight("light" + std::to_string(int(kind)), source);
    }
    scene.events->triggerEvent("ObjectSelected", "cube");
}

} // namespace

TEST(GLStateGuardTest, NothingOfTheCallersStateChanges)
{
    Stage stage;
    addEverything(stage.scene);
    engine::window::Window& window = *stage.window;
    const UnusualState unusual;
    const Values before = readState();
    ASSERT_EQ(glGetError(), unsigned(GL_NO_ERROR));
    window.init();
    EXPECT_EQ(differences(before, readState()), "") << "after init";
    for (int frame = 0; frame < 3; ++frame) {
        window.update();
        EXPECT_EQ(differences(before, readState()), "") << "after update " << frame;
        window.render();
        EXPECT_EQ(differences(before, readState()), "") << "after render " << frame;
        stage.scene.events->triggerEvent("ObjectSelected", "glass");
        window.resize({90 + frame, 80});
        EXPECT_EQ(differences(before, readState()), "") << "after resize " << frame;
    }
    window.attach(stage.scene.manager);
    EXPECT_EQ(differences(before, readState()), "") << "after attach";
    window.attach({});
    window.render();
    EXPECT_EQ(differences(before, readState()), "") << "without a scene";
    stage.window.reset();
    EXPECT_EQ(differences(before, readState()), "") << "after the window's end";
    EXPECT_EQ(glGetError(), unsigned(GL_NO_ERROR));
}

TEST(GLStateGuardTest, ThePictureDoesNotDependOnTheCallersState)
{
    Stage stage;
    addEverything(stage.scene);
    const QImage plain = stage.draw();
    Stage other;
    addEverything(other.scene);
    other.scene.events->triggerEvent("ObjectSelected", "cube");
    {
        const UnusualState unusual;
        for (int frame = 0; frame < 2; ++frame) {
            other.window->update();
            other.window->render();
        }
        // For the reading.
        QOpenGLContext::currentContext()->extraFunctions()->glBindBuffer(GL_PIXEL_PACK_BUFFER, 0);
        glPixelStorei(GL_PACK_ROW_LENGTH, 0);
        glPixelStorei(GL_PACK_ALIGNMENT, 4);
        EXPECT_EQ(readTexture(other.window->getColorRenderTarget()->getTextureID()), plain);
    }
}

TEST(GLStateGuardTest, FullStacksStayAsTheyAre)
{
    Stage stage;
    addEverything(stage.scene);
    stage.draw();
    for (GLenum mode : {GL_PROJECTION, GL_MODELVIEW}) {
        glMatrixMode(mode);
        while (glGetError() == GL_NO_ERROR)
            glPushMatrix();
    }
    glPushAttrib(GL_ALL_ATTRIB_BITS);
    while (glGetError() == GL_NO_ERROR)
        glPushAttrib(GL_CURRENT_BIT);
    const Values before = readState();
    stage.window->update();
    stage.window->render();
    EXPECT_EQ(before.at("GL_ATTRIB_STACK_DEPTH"), readState().at("GL_ATTRIB_STACK_DEPTH"));
    EXPECT_EQ(before.at("GL_MODELVIEW_STACK_DEPTH"), readState().at("GL_MODELVIEW_STACK_DEPTH"));
    EXPECT_EQ(before.at("GL_PROJECTION_STACK_DEPTH"), readState().at("GL_PROJECTION_STACK_DEPTH"));
    EXPECT_EQ(glGetError(), unsigned(GL_NO_ERROR));
}

TEST(GLStateGuardTest, AnErrorOfTheCallersStaysPending)
{
    Stage stage;
    addEverything(stage.scene);
    glEnable(0xFFFF);
    stage.draw();
    EXPECT_EQ(glGetError(), unsigned(GL_INVALID_ENUM));
}

TEST(GLStateGuardTest, APainterPaintsOnAfterAFrame)
{
    Stage stage;
    addEverything(stage.scene);
    QOpenGLFramebufferObject target(200, 100, QOpenGLFramebufferObject::CombinedDepthStencil);
    const auto paint = [&](bool withFrame) {
        target.bind();
        glClearColor(0, 0, 0, 1);
        glClear(GL_COLOR_BUFFER_BIT);
        QOpenGLPaintDevice device(200, 100);
        QPainter painter(&device);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(Qt::yellow);
        painter.drawText(10, 30, "before");
        painter.drawLine(5, 90, 190, 12);
        painter.beginNativePainting();
        if (withFrame) {
            stage.window->update();
            stage.window->render();
        }
        painter.endNativePainting();
        painter.drawText(10, 70, "after");
        painter.setBrush(Qt::cyan);
        painter.drawEllipse(120, 40, 40, 40);
        painter.end();
        return target.toImage();
    };
    const QImage expected = paint(false);
    ASSERT_EQ(paint(false), expected);
    EXPECT_EQ(paint(true), expected);
    EXPECT_EQ(paint(true), expected);
}

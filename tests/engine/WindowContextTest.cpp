#include "engine/fx/FXRenderTarget.h"
#include "engine/light/LightManager.h"
#include "engine/light/RenderLight.h"
#include "engine/scenegraph/RenderSceneGraph.h"
#include "tests/engine/Stage.h"

#include <gtest/gtest.h>

#include <memory>
#include <vector>

using namespace halvern;
using namespace halvern::test;
using engine::window::Window;

namespace {

/// Objects of another drawer in the current context, under the names that a window would have given out.
struct ForeignObjects
{
    ForeignObjects() : textures(100), buffers(100)
    {
        glGenTextures(textures.size(), textures.data());
        gl()->glGenBuffers(buffers.size(), buffers.data());
        for (unsigned int name : textures) {
            glBindTexture(GL_TEXTURE_2D, name);
            glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA, 1, 1, 0, GL_RGBA, GL_UNSIGNED_BYTE, nullptr);
        }
        for (unsigned int name : buffers) {
            gl()->glBindBuffer(GL_ARRAY_BUFFER, name);
            gl()->glBufferData(GL_ARRAY_BUFFER, 8, "foreign", GL_STATIC_DRAW);
        }
        gl()->glBindBuffer(GL_ARRAY_BUFFER, 0);
    }

    bool allThere() const
    {
        for (unsigned int name : textures)
            if (!glIsTexture(name))
                return false;
        for (unsigned int name : buffers)
            if (!gl()->glIsBuffer(name))
                return false;
        return true;
    }

    static QOpenGLFunctions* gl() { return QOpenGLContext::currentContext()->functions(); }

    std::vector<unsigned int> textures;
    std::vector<unsigned int> buffers;
};

void addThings(Scene& scene)
{
    scene.add("cube", boxMesh(), litMaterial(Qt::red))->addToLayer("cast_shadow");
    scene.addLight("light", {});
}

QImage frameOf(Window& window)
{
    window.update();
    window.render();
    return readTexture(window.getColorRenderTarget()->getTextureID());
}

std::unique_ptr<Window> makeWindow(Scene& scene)
{
    auto window = std::make_unique<Window>(scene.events, "window");
    window->resize({60, 60});
    window->attach(scene.manager);
    return window;
}

} // namespace

TEST(WindowContextTest, MayDieWithoutACurrentContext)
{
    Stage stage;
    addThings(stage.scene);
    stage.draw();
    stage.context.doneCurrent();
    stage.window.reset();
    stage.context.makeCurrent();
    EXPECT_EQ(glGetError(), unsigned(GL_NO_ERROR));
}

TEST(WindowContextTest, TouchesNothingOfAnotherContextWhenItDies)
{
    Stage stage;
    addThings(stage.scene);
    stage.draw();
    const OffscreenContext other;
    const ForeignObjects objects;
    stage.window.reset();
    EXPECT_TRUE(objects.allThere());
}

TEST(WindowContextTest, TouchesNothingOfAContextInThePlaceOfItsOwn)
{
    // Contexts come and go at the same addresses.
    for (int i = 0; i < 20; ++i) {
        Scene scene;
        addThings(scene);
        auto first = std::make_unique<OffscreenContext>();
        const auto window = makeWindow(scene);
        frameOf(*window);
        first.reset();
        OffscreenContext second;
        const ForeignObjects objects;
        frameOf(*window);
        EXPECT_TRUE(objects.allThere());
        second.doneCurrent();
    }
}

TEST(WindowContextTest, TouchesNothingOfAContextInThePlaceOfItsOwnWhenItDies)
{
    for (int i = 0; i < 20; ++i) {
        Scene scene;
        addThings(scene);
        auto first = std::make_unique<OffscreenContext>();
        auto window = makeWindow(scene);
        frameOf(*window);
        first.reset();
        const OffscreenContext second;
        const ForeignObjects objects;
        window.reset();
        EXPECT_TRUE(objects.allThere());
    }
}

TEST(WindowContextTest, FreesItsNamesInAContextThatLivesOn)
{
    Scene scene;
    addThings(scene);
    const OffscreenContext context;
    auto window = makeWindow(scene);
    frameOf(*window);
    const unsigned int texture = window->getColorRenderTarget()->getTextureID();
    const auto target = window->getColorRenderTarget();
    window.reset();
    EXPECT_FALSE(glIsTexture(texture));
    EXPECT_EQ(target->getTextureID(), 0u);
}

TEST(WindowContextTest, ALightThatOutlivesItsWindowTouchesNothing)
{
    Scene scene;
    addThings(scene);
    OffscreenContext context;
    auto first = makeWindow(scene);
    const QImage picture = frameOf(*first);
    auto light = boost::dynamic_pointer_cast<engine::scenegraph::RenderSceneGraph>(first->getRenderScene())
                     ->getLightManager()
                     ->getLightAt(0);
    ASSERT_TRUE(light->isInited());
    context.doneCurrent();
    first.reset();
    EXPECT_FALSE(light->isInited());
    context.makeCurrent();
    const auto second = makeWindow(scene);
    EXPECT_EQ(frameOf(*second), picture);
    light.reset();
    EXPECT_EQ(frameOf(*second), picture);
    EXPECT_EQ(frameOf(*second), picture);
}

TEST(WindowContextTest, TwoWindowsInTwoContextsKeepTheirPictures)
{
    for (bool shared : {false, true}) {
        Scene scene;
        addThings(scene);
        OffscreenContext firstContext;
        const auto first = makeWindow(scene);
        const QImage picture = frameOf(*first);
        OffscreenContext secondContext(shared ? firstContext.get() : nullptr);
        auto second = makeWindow(scene);
        EXPECT_EQ(frameOf(*second), picture);
        firstContext.makeCurrent();
        EXPECT_EQ(frameOf(*first), picture);
        second.reset();
        EXPECT_EQ(frameOf(*first), picture);
    }
}

TEST(WindowContextTest, TwoWindowsInOneContextKeepTheirPictures)
{
    const OffscreenContext context;
    Scene scene;
    addThings(scene);
    const auto first = makeWindow(scene);
    auto second = makeWindow(scene);
    const QImage picture = frameOf(*first);
    EXPECT_EQ(frameOf(*second), picture);
    EXPECT_EQ(frameOf(*first), picture);
    second.reset();
    EXPECT_EQ(frameOf(*first), picture);
}

TEST(WindowContextTest, MovesToAnotherContext)
{
    for (bool shared : {false, true}) {
        Scene scene;
        addThings(scene);
        OffscreenContext first;
        const auto window = makeWindow(scene);
        const QImage picture = frameOf(*window);
        OffscreenContext second(shared ? first.get() : nullptr);
        EXPECT_EQ(frameOf(*window), picture);
        first.makeCurrent();
        EXPECT_EQ(frameOf(*window), picture);
    }
}

TEST(WindowContextTest, HoldsStillWhileNoContextIsCurrent)
{
    Stage stage;
    addThings(stage.scene);
    const QImage picture = stage.draw();
    stage.context.doneCurrent();
    stage.window->update();
    stage.window->render();
    stage.window->resize({100, 100});
    stage.context.makeCurrent();
    EXPECT_EQ(stage.draw(), picture);
}

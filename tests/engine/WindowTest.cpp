#include "engine/core/event/EventManager.h"
#include "engine/fx/FXManager.h"
#include "engine/fx/FXPipeline.h"
#include "engine/fx/FXRenderTarget.h"
#include "engine/logic/CameraInputHandler.h"
#include "engine/logic/LogicManager.h"
#include "engine/renderer/IRenderer.h"
#include "engine/scenegraph/RenderSceneGraph.h"
#include "engine/window/ILayout.h"
#include "engine/window/Viewport.h"
#include "reference/engine/Motion.h"
#include "tests/engine/Stage.h"
#include "tests/support/Heap.h"

#include <boost/make_shared.hpp>

#include <QOpenGLExtraFunctions>

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <vector>

using namespace halvern;
using namespace halvern::test;
using engine::window::Window;

namespace {

QImage frameOf(Window& window)
{
    window.update();
    window.render();
    return readTexture(window.getColorRenderTarget()->getTextureID());
}

/// How many of the names that OpenGL gives out are in use.
int countNames()
{
    auto* gl = QOpenGLContext::currentContext()->extraFunctions();
    int count = 0;
    for (unsigned int name = 1; name < 3000; ++name) {
        count += glIsTexture(name) + gl->glIsBuffer(name) + gl->glIsFramebuffer(name);
        count += gl->glIsProgram(name) + gl->glIsShader(name) + gl->glIsRenderbuffer(name);
        count += gl->glIsVertexArray(name);
    }
    return count;
}

} // namespace

TEST(WindowTest, HasEverythingButTheEffectManagerFromTheStart)
{
    Window window({}, "name");
    EXPECT_EQ(window.getName(), "name");
    EXPECT_EQ(window.getSize(), Eigen::Vector2i(1, 1));
    ASSERT_TRUE(window.getLayout());
    ASSERT_TRUE(window.getLayout()->getViewport());
    EXPECT_TRUE(window.getLayout()->getViewport()->getSceneRenderer());
    EXPECT_TRUE(window.getLogicManager());
    EXPECT_TRUE(window.getCameraInputHandler());
    EXPECT_TRUE(window.getFXPipeline());
    EXPECT_TRUE(boost::dynamic_pointer_cast<engine::scenegraph::RenderSceneGraph>(window.getRenderScene()));
    ASSERT_TRUE(window.getColorRenderTarget());
    EXPECT_EQ(window.getColorRenderTarget()->getTextureID(), 0u);
    EXPECT_FALSE(window.getSceneManager());
    EXPECT_FALSE(window.getFXManager());
}

TEST(WindowTest, HasAnEffectManagerAfterInit)
{
    const OffscreenContext context;
    Window window({}, "window");
    window.init();
    EXPECT_TRUE(window.getFXManager());
}

TEST(WindowTest, ShowsTheBackgroundWithoutAScene)
{
    const OffscreenContext context;
    Window window({}, "window");
    window.resize({40, 30});
    const QImage image = frameOf(window);
    ASSERT_EQ(image.size(), QSize(40, 30));
    for (const QPoint corner : {QPoint(0, 0), QPoint(39, 0), QPoint(0, 29), QPoint(39, 29), QPoint(20, 15)}) {
        EXPECT_TRUE(isBackground(image.pixelColor(corner)));
        EXPECT_EQ(image.pixelColor(corner).alpha(), 255);
    }
}

TEST(WindowTest, ShowsTheBackgroundForAnEmptyScene)
{
    const OffscreenContext context;
    const auto events = boost::make_shared<SynchronousEventManager>();
    Window window(events, "window");
    window.resize({20, 20});
    window.attach(boost::make_shared<scene::SceneManager>(events));
    EXPECT_TRUE(isBackground(frameOf(window).pixelColor(10, 10)));
}

TEST(WindowTest, NamesALiveTextureAfterTheFirstRender)
{
    Stage stage;
    stage.window->render();
    EXPECT_TRUE(glIsTexture(stage.window->getColorRenderTarget()->getTextureID()));
}

TEST(WindowTest, KeepsTheTargetObjectWhenTheSizeChanges)
{
    Stage stage;
    stage.draw();
    const auto target = stage.window->getColorRenderTarget();
    stage.window->resize({64, 32});
    EXPECT_EQ(stage.draw().size(), QSize(64, 32));
    EXPECT_EQ(stage.window->getColorRenderTarget(), target);
    EXPECT_TRUE(glIsTexture(target->getTextureID()));
}

TEST(WindowTest, ClampsSizesToOne)
{
    Stage stage;
    for (const Eigen::Vector2i& size : {Eigen::Vector2i(0, 0), Eigen::Vector2i(-5, -1)}) {
        stage.window->resize(size);
        EXPECT_EQ(stage.window->getSize(), Eigen::Vector2i(1, 1));
        EXPECT_EQ(stage.draw().size(), QSize(1, 1));
    }
}

TEST(WindowTest, ShowsARedCubeInTheMiddle)
{
    Stage stage;
    stage.scene.add("cube", boxMesh(), unlitMaterial(Qt::red));
    const QImage image = stage.draw();
    EXPECT_EQ(pixel(image, 0, 0), QColor(Qt::red));
    EXPECT_EQ(pixel(image, 20, -20), QColor(Qt::red));
    EXPECT_TRUE(isBackground(pixel(image, 45, 45)));
    EXPECT_TRUE(isBackground(pixel(image, -45, 0)));
}

TEST(WindowTest, ShowsWhatItsSceneHoldsFromTheNextUpdateOn)
{
    Stage stage;
    stage.draw();
    stage.scene.add("cube", boxMesh(), unlitMaterial(Qt::red));
    stage.window->render();
    EXPECT_TRUE(isBackground(pixel(readTexture(stage.window->getColorRenderTarget()->getTextureID()), 0, 0)));
    EXPECT_EQ(stage.draw(0, 0), QColor(Qt::red));
}

TEST(WindowTest, ForgetsTheSceneWhenItIsDetached)
{
    Stage stage;
    stage.scene.add("cube", boxMesh(), unlitMaterial(Qt::red));
    stage.draw();
    stage.window->attach({});
    EXPECT_FALSE(stage.window->getSceneManager());
    EXPECT_TRUE(isBackground(stage.draw(0, 0)));
}

TEST(WindowTest, ChangesToAnotherScene)
{
    Stage stage;
    stage.scene.add("cube", boxMesh(), unlitMaterial(Qt::red));
    stage.draw();
    Scene other;
    other.add("cube", boxMesh(), unlitMaterial(Qt::blue));
    stage.window->attach(other.manager);
    EXPECT_EQ(stage.draw(0, 0), QColor(Qt::blue));
}

TEST(WindowTest, AnnouncesAnAttachedScene)
{
    Scene scene;
    Window window(scene.events, "window");
    window.attach(scene.manager);
    EXPECT_EQ(scene.events->getData("SceneAttached"), std::vector<std::string>{""});
    window.attach({});
    EXPECT_EQ(scene.events->getCount("SceneAttached"), 1u);
}

TEST(WindowTest, ListensToTheManagerItIsGiven)
{
    Scene scene;
    Window window({}, "window");
    EXPECT_FALSE(scene.events->isRegistered(nullptr));
    window.setEventManager(scene.events);
    scene.events->triggerEvent("ActiveCamera", "camera");
    EXPECT_EQ(scene.events->getCount("SyncScene"), 1u);
    window.setEventManager({});
    scene.events->triggerEvent("ActiveCamera", "camera");
    EXPECT_EQ(scene.events->getCount("SyncScene"), 1u);
}

TEST(WindowTest, LetsGoOfTheManagerThatIsTakenAway)
{
    const auto events = boost::make_shared<SynchronousEventManager>();
    Window window(events, "window");
    window.init();
    window.setEventManager({});
    EXPECT_EQ(events.use_count(), 1);
    window.setEventManager(events);
    EXPECT_GT(events.use_count(), 1);
}

TEST(WindowTest, KeepsTheLayoutItIsGiven)
{
    Window window({}, "window");
    const auto layout = window.getLayout();
    EXPECT_FALSE(window.setLayout({}));
    EXPECT_EQ(window.getLayout(), layout);
    Window other({}, "other");
    EXPECT_TRUE(window.setLayout(other.getLayout()));
    EXPECT_EQ(window.getLayout(), other.getLayout());
}

TEST(WindowTest, TakesItsOperationsInAnyOrder)
{
    const OffscreenContext context;
    Scene scene;
    scene.add("cube", boxMesh(), unlitMaterial(Qt::red));
    std::vector<int> order = {0, 1, 2, 3, 4};
    do {
        Window window(scene.events, "window");
        const std::function<void()> operations[] = {[&] { window.init(); }, [&] { window.update(); },
                                                    [&] { window.render(); },
                                                    [&] {
                                                        window.resize({30, 20});
                                                    },
                                                    [&] { window.attach(scene.manager); }};
        for (int i : order)
            operations[i]();
        const QImage image = frameOf(window);
        EXPECT_EQ(image.size(), QSize(30, 20));
        EXPECT_EQ(pixel(image, 0, 0), QColor(Qt::red));
    } while (std::next_permutation(order.begin(), order.end()));
}

TEST(WindowTest, DoesNothingWithoutAContext)
{
    Scene scene;
    scene.add("cube", boxMesh(), unlitMaterial(Qt::red));
    Window window(scene.events, "window");
    window.init();
    window.attach(scene.manager);
    window.resize({10, 10});
    window.update();
    window.render();
    EXPECT_EQ(window.getColorRenderTarget()->getTextureID(), 0u);
}

TEST(WindowTest, StandsStillWithoutInput)
{
    Stage stage;
    stage.draw();
    EXPECT_FALSE(isMoving(*stage.window));
}

TEST(WindowTest, LeavesNothingBehindAfterAHundredLives)
{
    const OffscreenContext context;
    Scene scene;
    scene.add("cube", boxMesh(), litMaterial(Qt::red))->addToLayer("cast_shadow");
    scene.add("ground", groundMesh(4));
    scene.addLight("light", {});
    const auto live = [&] {
        Window window(scene.events, "window");
        window.resize({200, 200});
        window.attach(scene.manager);
        scene.events->triggerEvent("ObjectSelected", "cube");
        EXPECT_FALSE(isBackground(pixel(frameOf(window), 0, 0)));
    };
    for (int i = 0; i < 3; ++i)
        live();
    scene.events->clear();
    EXPECT_EQ(countNames(), 0);
    const std::size_t heap = getHeapInUse();
    for (int i = 0; i < 100; ++i)
        live();
    scene.events->clear();
    EXPECT_EQ(countNames(), 0);
    EXPECT_LT(getHeapInUse(), heap + 500000);
}

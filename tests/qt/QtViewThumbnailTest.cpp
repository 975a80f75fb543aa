#include "engine/light/LightManager.h"
#include "engine/light/RenderLight.h"
#include "engine/scenegraph/RenderSceneGraph.h"
#include "tests/qt/GroundView.h"

#include <gtest/gtest.h>

using namespace halvern::test;
using halvern::engine::fx::FXRenderTarget;
using halvern::engine::light::LightManager;
using halvern::engine::light::RenderLight;
using halvern::engine::scenegraph::IRenderScene;
using halvern::engine::scenegraph::RenderSceneGraph;

namespace {

struct FixedLight : RenderLight
{
    FixedLight(bool inited, boost::shared_ptr<FXRenderTarget> map) : inited(inited), map(map) {}
    bool isInited() override { return inited; }
    boost::shared_ptr<FXRenderTarget> getShadowMap() override { return map; }

    const bool inited;
    const boost::shared_ptr<FXRenderTarget> map;
};

struct FixedLights : LightManager
{
    unsigned int getLightCount() override { return static_cast<unsigned int>(lights.size()); }
    boost::shared_ptr<RenderLight> getLightAt(unsigned int index) override { return lights.at(index); }

    std::vector<boost::shared_ptr<RenderLight>> lights;
};

struct LitScene : RenderSceneGraph
{
    boost::shared_ptr<LightManager> getLightManager() override { return lights; }

    boost::shared_ptr<FixedLights> lights = boost::make_shared<FixedLights>();
};

struct SceneWindow : FakeWindow
{
    using FakeWindow::FakeWindow;

    boost::shared_ptr<IRenderScene> getRenderScene() override { return scene; }

    boost::shared_ptr<IRenderScene> scene;
};

using ThumbnailView = GroundView<WindowlessView>;

/// Nearest texels, so that every pixel shows one of them.
GLuint makeDepthTexture(const std::vector<float>& fourDepths)
{
    GLuint texture = 0;
    glGenTextures(1, &texture);
    glBindTexture(GL_TEXTURE_2D, texture);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_NEAREST);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_NEAREST);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_COMPARE_MODE, GL_COMPARE_R_TO_TEXTURE);
    glTexImage2D(GL_TEXTURE_2D, 0, GL_DEPTH_COMPONENT24, 2, 2, 0, GL_DEPTH_COMPONENT, GL_FLOAT,
                 fourDepths.data());
    glBindTexture(GL_TEXTURE_2D, 0);
    return texture;
}

QColor grey(int level)
{
    return {level, level, level};
}

/// A view of 300 x 500 pixels: two slots fit and the third begins.
class QtViewThumbnailTest : public testing::Test
{
protected:
    QtViewThumbnailTest()
    {
        showView(view, 300, 500);
        view.setWindow(window);
        window->scene = scene;
        view.makeCurrent();
    }

    /// A light that throws shadows: its map has four depths, the lower row first.
    GLuint addLight(const std::vector<float>& fourDepths = {0.2F, 0.2F, 0.2F, 0.2F})
    {
        const GLuint texture = makeDepthTexture(fourDepths);
        add(true, boost::make_shared<FXRenderTarget>(texture));
        return texture;
    }

    void add(bool inited, boost::shared_ptr<FXRenderTarget> map)
    {
        scene->lights->lights.push_back(boost::make_shared<FixedLight>(inited, map));
    }

    QRect drawn() { return drawnPart(view.pictureOfShadowMaps()); }

    CallLog log;
    ThumbnailView view;
    boost::shared_ptr<SceneWindow> window = boost::make_shared<SceneWindow>(log);
    boost::shared_ptr<LitScene> scene = boost::make_shared<LitScene>();

    const QRect firstSlot{90, 11, 200, 199}; // a pixel lower than wide, on purpose
    const QRect secondSlot{90, 211, 200, 199};
};

} // namespace

TEST_F(QtViewThumbnailTest, TheFirstSlotIsAtTheTopRight)
{
    addLight();
    EXPECT_EQ(drawn(), firstSlot);
}

TEST_F(QtViewThumbnailTest, DepthsAreGreyLevelsWithTheLowerRowBelow)
{
    addLight({0.2F, 0.4F, 0.6F, 1.0F});
    const QImage picture = view.pictureOfShadowMaps();
    EXPECT_COLOR(picture.pixelColor(95, 205), grey(51));
    EXPECT_COLOR(picture.pixelColor(285, 205), grey(102));
    EXPECT_COLOR(picture.pixelColor(95, 15), grey(153));
    EXPECT_COLOR(picture.pixelColor(285, 15), grey(255));
}

TEST_F(QtViewThumbnailTest, TheEnginesCompareModeIsBackAfterwards)
{
    const GLuint texture = addLight();
    view.pictureOfShadowMaps();
    glBindTexture(GL_TEXTURE_2D, texture);
    GLint mode = 0;
    glGetTexParameteriv(GL_TEXTURE_2D, GL_TEXTURE_COMPARE_MODE, &mode);
    EXPECT_EQ(mode, GL_COMPARE_R_TO_TEXTURE);
}

TEST_F(QtViewThumbnailTest, LeavesNoStatesBehind)
{
    addLight();
    view.clear();
    view.drawShadowMaps();
    expectCleanStates(view.size());
}

TEST_F(QtViewThumbnailTest, EveryLightHasItsSlotBelowTheOneBefore)
{
    addLight();
    addLight({0.6F, 0.6F, 0.6F, 0.6F});
    const QImage picture = view.pictureOfShadowMaps();
    EXPECT_EQ(drawnPart(picture), firstSlot | secondSlot);
    EXPECT_COLOR(picture.pixelColor(190, 209), grey(51));
    EXPECT_EQ(picture.pixelColor(190, 210), Ground);
    EXPECT_COLOR(picture.pixelColor(190, 211), grey(153));
}

TEST_F(QtViewThumbnailTest, AnUninitialisedLightLeavesItsSlotEmpty)
{
    add(false, boost::make_shared<FXRenderTarget>(makeDepthTexture({0, 0, 0, 0})));
    addLight();
    EXPECT_EQ(drawn(), secondSlot);
}

TEST_F(QtViewThumbnailTest, ALightWithoutAShadowMapLeavesItsSlotEmpty)
{
    add(true, nullptr);
    addLight();
    EXPECT_EQ(drawn(), secondSlot);
}

TEST_F(QtViewThumbnailTest, AShadowMapThatWasNeverRenderedLeavesItsSlotEmpty)
{
    add(true, boost::make_shared<FXRenderTarget>(0));
    addLight();
    EXPECT_EQ(drawn(), secondSlot);
}

TEST_F(QtViewThumbnailTest, AMissingLightLeavesItsSlotEmpty)
{
    scene->lights->lights.push_back(nullptr);
    addLight();
    EXPECT_EQ(drawn(), secondSlot);
}

TEST_F(QtViewThumbnailTest, TheColumnRunsOffTheBottom)
{
    add(false, nullptr);
    add(false, nullptr);
    addLight();
    addLight();
    EXPECT_EQ(drawn(), QRect(90, 411, 200, 89));
}

TEST_F(QtViewThumbnailTest, ThumbnailsAreBlended)
{
    add(true, boost::make_shared<FXRenderTarget>(makeTexture({QColor(255, 255, 0, 128)})));
    EXPECT_COLOR(view.pictureOfShadowMaps().pixelColor(190, 100), QColor(128, 128, 127));
}

TEST_F(QtViewThumbnailTest, WithoutLightsThereAreNone)
{
    EXPECT_TRUE(drawn().isNull());
}

TEST_F(QtViewThumbnailTest, WithoutALightManagerThereAreNone)
{
    scene->lights = nullptr;
    EXPECT_TRUE(drawn().isNull());
    window->scene = boost::make_shared<RenderSceneGraph>();
    EXPECT_TRUE(drawn().isNull());
}

TEST_F(QtViewThumbnailTest, ARenderSceneOfAnotherClassHasNone)
{
    window->scene = boost::make_shared<IRenderScene>();
    EXPECT_TRUE(drawn().isNull());
    window->scene = nullptr;
    EXPECT_TRUE(drawn().isNull());
}

TEST_F(QtViewThumbnailTest, WithoutAWindowThereAreNone)
{
    ThumbnailView windowless;
    showView(windowless, 300, 500);
    ASSERT_FALSE(windowless.getWindow());
    EXPECT_TRUE(drawnPart(windowless.pictureOfShadowMaps()).isNull());
}

TEST_F(QtViewThumbnailTest, TheScreenShowsThemWithTheStatistics)
{
    addLight();
    repaintView(view);
    EXPECT_COLOR(grabScreen(view).pixelColor(280, 200), QColor(Qt::white));
    view.setShowStats(true);
    repaintView(view);
    EXPECT_COLOR(grabScreen(view).pixelColor(280, 200), grey(51));
}

#include "engine/fx/FXManager.h"
#include "engine/fx/FXPipeline.h"
#include "engine/scene/Effect.h"
#include "tests/engine/Stage.h"

#include <boost/make_shared.hpp>

#include <gtest/gtest.h>

using namespace halvern;
using namespace halvern::test;
using engine::fx::FXManager;

TEST(FXManagerTest, AnEffectThatCannotBeReadIsNotAdded)
{
    Scene scene;
    FXManager manager(scene.manager, scene.events);
    EXPECT_FALSE(manager.addEffect({}));
    EXPECT_FALSE(manager.addEffect(boost::make_shared<scene::Effect>("id", "/does/not/exist", "")));
    EXPECT_FALSE(manager.getFXEffect("id"));
    EXPECT_FALSE(manager.reloadEffect({}));
}

TEST(FXManagerTest, StandardMaterialsAreTaken)
{
    Scene scene;
    FXManager manager(scene.manager, scene.events);
    EXPECT_TRUE(manager.addMaterial(litMaterial(Qt::red)));
    EXPECT_FALSE(manager.addMaterial({}));
    EXPECT_FALSE(manager.addMaterial(boost::make_shared<scene::Material>("id", "unknown effect")));
    EXPECT_FALSE(manager.getFXMaterial("id"));
}

TEST(FXManagerTest, AMaterialOfTheSceneIsNoSceneEffect)
{
    Scene scene;
    FXManager manager(scene.manager, scene.events);
    EXPECT_FALSE(manager.addSceneEffectInstance({}));
    EXPECT_FALSE(manager.addSceneEffectInstance(litMaterial(Qt::red)));
}

TEST(FXManagerTest, APipelineIgnoresEmptyStages)
{
    Stage stage;
    stage.window->getFXPipeline()->pushBack({});
    EXPECT_TRUE(isBackground(stage.draw(0, 0)));
}

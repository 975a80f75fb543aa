#include "engine/scene/Light.h"

#include "reference/scene/LightSource.h"
#include "tests/scene/SceneHelpers.h"

#include <gtest/gtest.h>

namespace {

using namespace halvern::scene;
using namespace halvern::test;

TEST(LightTest, ANewLightIsAWhitePointLight)
{
    const Light light("id");
    EXPECT_EQ(light.getID(), "id");
    EXPECT_EQ(light.getColor(), Eigen::Vector3f::Ones());
    EXPECT_EQ(getLightSource(light).kind, LightSource::Kind::Point);
}

TEST(LightTest, ColorsComeBackUnclamped)
{
    Light light("id");
    light.setColor(-1, 2, 1e30f);
    EXPECT_EQ(light.getColor(), Eigen::Vector3f(-1, 2, 1e30f));
}

TEST(LightTest, TheSourceComesBack)
{
    Light light("id");
    LightSource source;
    source.kind = LightSource::Kind::Spot;
    source.outerCone = 0.25f;
    source.position = {1, 2, 3};
    setLightSource(light, source);
    EXPECT_EQ(getLightSource(light).kind, LightSource::Kind::Spot);
    EXPECT_EQ(getLightSource(light).outerCone, 0.25f);
    EXPECT_EQ(getLightSource(light).position, Eigen::Vector3f(1, 2, 3));
}

TEST(LightTest, ColorsAreWholeWhileThreeThreadsSetThem)
{
    Light light("id");
    runInThreads(3, [&](unsigned thread) {
        for (int i = 0; i < 5000; ++i) {
            const auto value = static_cast<float>(i * 3 + thread);
            light.setColor(value, value, value);
            const Eigen::Vector3f color = light.getColor();
            ASSERT_TRUE((color.array() == color.x()).all());
            setLightSource(light, getLightSource(light));
        }
    });
}

} // namespace

#include "engine/scene/Material.h"

#include "engine/scene/Effect.h"
#include "engine/scene/Evaluator.h"
#include "engine/scene/Render.h"
#include "reference/scene/StandardMaterial.h"
#include "tests/scene/SceneHelpers.h"

#include <gtest/gtest.h>

namespace {

using namespace halvern::scene;
using namespace halvern::test;

TEST(MaterialTest, NamesItselfAndItsEffect)
{
    const Material material("material", "effect");
    EXPECT_EQ(material.getMaterialID(), "material");
    EXPECT_EQ(material.getEffectID(), "effect");
}

TEST(MaterialTest, HasNoStandardValuesUntilTheyAreSet)
{
    Material material("material", StandardEffectID);
    EXPECT_FALSE(getStandardMaterial(material));
    const auto values = std::make_shared<StandardMaterial>();
    setStandardMaterial(material, values);
    EXPECT_EQ(getStandardMaterial(material), values);
    setStandardMaterial(material, {});
    EXPECT_FALSE(getStandardMaterial(material));
}

TEST(MaterialTest, AnEffectNamesItsFile)
{
    const Effect effect("id", "file", "");
    EXPECT_EQ(effect.getID(), "id");
    EXPECT_EQ(effect.getFileName(), "file");
}

TEST(MaterialTest, AnEvaluatorKeepsItsStepsInOrder)
{
    Evaluator evaluator("name");
    EXPECT_EQ(evaluator.getName(), "name");
    const auto material = boost::make_shared<Material>("m", "e");
    const auto node = makeNode("n");
    evaluator.addRender(boost::make_shared<Render>(node, std::list<std::string>{"layer"}, material));
    evaluator.addRender({});
    evaluator.addRender(boost::make_shared<Render>(nullptr, std::list<std::string>{}, material));
    ASSERT_EQ(evaluator.getRenderCount(), 2u);
    EXPECT_EQ(evaluator.getRenderAt(0)->getNode(), node);
    EXPECT_FALSE(evaluator.getRenderAt(1)->getNode());
    EXPECT_EQ(evaluator.getRenderAt(1)->getMaterial(), material);
    EXPECT_FALSE(evaluator.getRenderAt(2));
    EXPECT_FALSE(evaluator.getRenderAt(0xFFFFFFFF));
}

} // namespace

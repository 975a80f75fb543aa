#include "engine/logic/LogicManager.h"
#include "engine/renderer/IRenderer.h"
#include "engine/window/ILayout.h"
#include "engine/window/Viewport.h"
#include "tests/engine/Stage.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

using namespace halvern;
using namespace halvern::test;

namespace {

bool isOrange(const QColor& color)
{
    return color.red() > 180 && color.green() > 80 && color.green() < 180 && color.blue() < 80;
}

int countOrange(const QImage& image)
{
    int count = 0;
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x)
            count += isOrange(image.pixelColor(x, y));
    return count;
}

void click(Stage& stage, int x, int y, int button = 1)
{
    stage.window->getLogicManager()->mousePressed(button, x, y, 0);
    stage.window->getLogicManager()->mouseReleased(button, x, y, 0);
}

using Answers = std::vector<std::string>;

/// A cube in the middle whose picture ends 30 pixels from the middle.
struct Selectable : Stage
{
    Selectable()
    {
        scene.add("cube", boxMesh(), unlitMaterial(Qt::blue));
        draw();
        scene.events->clear();
    }

    void select(const std::string& data) { scene.events->triggerEvent("ObjectSelected", data); }
};

} // namespace

TEST(SelectionTest, AClickSelectsTheNodeUnderTheMouse)
{
    Selectable stage;
    click(stage, 50, 50);
    EXPECT_EQ(stage.scene.events->getData("ObjectSelected"), Answers{"cube, Window"});
}

TEST(SelectionTest, AClickOnNothingSelectsNothing)
{
    Selectable stage;
    click(stage, 2, 2);
    EXPECT_EQ(stage.scene.events->getData("ObjectSelected"), Answers{", Window"});
}

TEST(SelectionTest, AClickMayTremble)
{
    Selectable stage;
    auto& input = *stage.window->getLogicManager();
    const QImage before = stage.draw();
    input.mousePressed(1, 50, 50, 0);
    input.mouseMoved(53, 47, 0);
    input.mouseReleased(1, 52, 49, 0);
    EXPECT_EQ(stage.scene.events->getCount("ObjectSelected"), 1u);
}

TEST(SelectionTest, ADragSelectsNothing)
{
    Selectable stage;
    auto& input = *stage.window->getLogicManager();
    input.mousePressed(1, 50, 50, 0);
    input.mouseMoved(60, 50, 0);
    input.mouseMoved(50, 50, 0);
    input.mouseReleased(1, 50, 50, 0);
    EXPECT_EQ(stage.scene.events->getCount("ObjectSelected"), 0u);
}

TEST(SelectionTest, OtherButtonsSelectNothing)
{
    Selectable stage;
    click(stage, 50, 50, 2);
    click(stage, 50, 50, 4);
    EXPECT_EQ(stage.scene.events->getCount("ObjectSelected"), 0u);
}

TEST(SelectionTest, TheSelectedNodeIsOutlined)
{
    Selectable stage;
    EXPECT_EQ(countOrange(stage.draw()), 0);
    stage.select("cube, QtScene");
    const QImage image = stage.draw();
    EXPECT_GT(countOrange(image), 200);
    EXPECT_EQ(pixel(image, 0, 0), QColor(Qt::blue));
    EXPECT_TRUE(isBackground(pixel(image, 45, 45)));
    // Two or three pixels wide.
    int width = 0;
    for (int x = 0; x < 50; ++x)
        width += isOrange(pixel(image, x, 0));
    EXPECT_GE(width, 2);
    EXPECT_LE(width, 3);
}

TEST(SelectionTest, WhatIsBelowTheSelectedNodeIsOutlinedWithIt)
{
    Selectable stage;
    stage.select("root, QtScene");
    EXPECT_GT(countOrange(stage.draw()), 200);
}

TEST(SelectionTest, AnEmptyOrUnknownIdClearsTheSelection)
{
    Selectable stage;
    for (const char* data : {", Window", "", "unknown, Window"}) {
        stage.select("cube");
        EXPECT_GT(countOrange(stage.draw()), 0);
        stage.select(data);
        EXPECT_EQ(countOrange(stage.draw()), 0) << data;
    }
}

TEST(SelectionTest, AHiddenNodeHasNoOutline)
{
    Selectable stage;
    stage.select("cube");
    stage.scene.manager->getNodeByID("cube")->setVisible(false);
    EXPECT_EQ(countOrange(stage.draw()), 0);
    stage.scene.manager->getNodeByID("cube")->setVisible(true);
    EXPECT_GT(countOrange(stage.draw()), 0);
}

TEST(SelectionTest, TheOutlineGoesWithTheNode)
{
    Selectable stage;
    stage.select("cube");
    stage.draw();
    stage.scene.root->removeChildNode(stage.scene.manager->getNodeByID("cube"));
    EXPECT_EQ(countOrange(stage.draw()), 0);
}

TEST(SelectionTest, TheOutlineFollowsTheNode)
{
    Selectable stage;
    stage.select("cube");
    EXPECT_FALSE(isOrange(pixel(stage.draw(), 0, 0)));
    stage.scene.manager->getNodeByID("cube")->setScale({0.05f, 0.05f, 0.05f});
    EXPECT_GT(countOrange(stage.draw()), 4);
    EXPECT_EQ(countOrange(stage.draw().copy(0, 0, 40, 100)), 0);
}

TEST(SelectionTest, TheOutlineIsSeenThroughWhatIsBeforeIt)
{
    Selectable stage;
    moveTo(*stage.scene.add("wall", boxMesh(1.5f), unlitMaterial(Qt::green)), 0, 0, 2);
    moveTo(*stage.scene.manager->getNodeByID("cube"), 0, 0, -3);
    stage.select("cube");
    EXPECT_GT(countOrange(stage.draw()), 50);
}

TEST(SelectionTest, TheSelectionAsksForAFrame)
{
    Selectable stage;
    stage.select("cube");
    EXPECT_EQ(stage.scene.events->getCount("SyncScene"), 1u);
    stage.draw();
    EXPECT_EQ(stage.scene.events->getCount("SyncScene"), 1u);
}

TEST(SelectionTest, AnotherSceneStartsWithoutASelection)
{
    Selectable stage;
    stage.select("cube");
    stage.draw();
    stage.window->attach(stage.scene.manager);
    EXPECT_EQ(countOrange(stage.draw()), 0);
}

TEST(SelectionTest, TheOutlineCountsInNoStatistics)
{
    Selectable stage;
    const auto counts = stage.window->getLayout()->getViewport()->getSceneRenderer();
    stage.draw();
    const unsigned int triangles = counts->getTriangleCount();
    stage.select("cube");
    stage.draw();
    EXPECT_EQ(counts->getTriangleCount(), triangles);
}

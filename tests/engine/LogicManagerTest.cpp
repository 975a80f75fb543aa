#include "engine/logic/LogicManager.h"

#include <gtest/gtest.h>

using halvern::engine::logic::LogicManager;

TEST(LogicManagerTest, KeepsWhereTheMouseWasLast)
{
    LogicManager manager;
    EXPECT_EQ(manager.getMousePosition(), Eigen::Vector2i(0, 0));
    manager.mouseMoved(3, 4, 0);
    EXPECT_EQ(manager.getMousePosition(), Eigen::Vector2i(3, 4));
    manager.keyPressed(65, 0);
    manager.keyReleased(65, 0);
    manager.resetInputState();
    EXPECT_EQ(manager.getMousePosition(), Eigen::Vector2i(3, 4));
}

#include "engine/core/event/EventType.h"

#include <gtest/gtest.h>

#include <set>
#include <string>
#include <type_traits>
#include <utility>

namespace {

using halvern::core::event::EventType;

TEST(EventTypeTest, KeepsItsNameAsGiven)
{
    EXPECT_EQ(EventType("SyncScene").getName(), "SyncScene");
    EXPECT_EQ(EventType(" a, b\n").getName(), " a, b\n");
    EXPECT_EQ(EventType(std::string("a\0b", 3)).getName(), std::string("a\0b", 3));
}

TEST(EventTypeTest, IsEmptyByDefault)
{
    EXPECT_EQ(EventType().getName(), "");
    EXPECT_EQ(EventType(), EventType(""));
}

TEST(EventTypeTest, TypesOfTheSameNameAreTheSame)
{
    EXPECT_TRUE(EventType("A") == EventType("A"));
    EXPECT_FALSE(EventType("A") != EventType("A"));
    EXPECT_FALSE(EventType("A") == EventType("a"));
    EXPECT_TRUE(EventType("A") != EventType("A "));
}

TEST(EventTypeTest, IsOrderedByName)
{
    EXPECT_TRUE(EventType("A") < EventType("B"));
    EXPECT_FALSE(EventType("B") < EventType("A"));
    EXPECT_FALSE(EventType("A") < EventType("A"));
    EXPECT_TRUE(EventType() < EventType("A"));
    EXPECT_EQ((std::set<EventType>{EventType("A"), EventType("B"), EventType("A")}.size()), 2U);
}

TEST(EventTypeTest, CopiesShareTheName)
{
    const EventType type("SceneTopologyUpdate with a name too long for a short string");
    const EventType copy = type; // NOLINT(performance-unnecessary-copy-initialization)
    EXPECT_EQ(&copy.getName(), &type.getName());
}

TEST(EventTypeTest, AMovedFromTypeIsSafeToRead)
{
    EventType type("SyncScene");
    const EventType moved = std::move(type);
    EXPECT_EQ(moved.getName(), "SyncScene");
    EXPECT_EQ(type.getName(), ""); // NOLINT(bugprone-use-after-move): this is the question
    type = EventType("UpdateViews");
    EXPECT_EQ(type.getName(), "UpdateViews");
}

TEST(EventTypeTest, IsMadeFromAText)
{
    static_assert(std::is_convertible_v<std::string, EventType>);
    const std::string name = "ActiveCamera";
    const EventType type = name;
    EXPECT_EQ(type.getName(), name);
}

} // namespace

#include "engine/core/event/Event.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>

namespace {

using halvern::core::event::Event;
using halvern::core::event::EventData;
using halvern::core::event::EventType;

TEST(EventTest, HoldsTypeDataAndUniqueID)
{
    const Event event(EventType("SelectObject"), EventData("Node_1, QtScene"), "7");
    EXPECT_EQ(event.getEventType(), EventType("SelectObject"));
    EXPECT_EQ(event.getEventData().getArg(2), "QtScene");
    EXPECT_EQ(event.getUniqueID(), "7");
}

TEST(EventTest, IsEmptyByDefault)
{
    const Event event;
    EXPECT_EQ(event.getEventType(), EventType());
    EXPECT_EQ(event.getEventData().getData(), "");
    EXPECT_EQ(event.getUniqueID(), "");
}

TEST(EventTest, OnlyTheUniqueIDOfACopyChanges)
{
    const Event event(EventType("A"), EventData("a"), "1");
    Event copy = event;
    copy.setUniqueID("2");
    EXPECT_EQ(copy.getUniqueID(), "2");
    EXPECT_EQ(event.getUniqueID(), "1");
    EXPECT_EQ(copy.getEventType(), EventType("A"));
    EXPECT_EQ(copy.getEventData().getData(), "a");
}

TEST(EventTest, CanBeAssigned)
{
    Event event;
    event = Event(EventType("A"), EventData("a"), "1");
    const Event copy(EventType("B"), EventData("b"), "2");
    EXPECT_EQ(event.getUniqueID(), "1");
    event = copy;
    EXPECT_EQ(event.getEventType(), EventType("B"));
    EXPECT_EQ(event.getEventData().getData(), "b");
}

TEST(EventTest, AMovedFromEventIsSafeToRead)
{
    Event event(EventType("A"), EventData("a"), "1");
    const Event moved = std::move(event);
    EXPECT_EQ(moved.getEventData().getData(), "a");
    EXPECT_EQ(event.getEventType().getName(), ""); // NOLINT(bugprone-use-after-move): this is the question
    EXPECT_EQ(event.getEventData().getArg(1), "");
}

struct MarkedEvent : Event
{
    std::string getUniqueID() const override { return "marked"; }
};

TEST(EventTest, ItsGettersCanBeReplaced)
{
    const MarkedEvent marked;
    const Event& event = marked;
    EXPECT_EQ(event.getUniqueID(), "marked");
}

} // namespace

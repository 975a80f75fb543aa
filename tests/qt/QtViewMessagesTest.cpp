#include "engine/core/event/EventManager.h"
#include "tests/qt/PaintRecorder.h"
#include "tests/qt/ViewProbe.h"

#include <QPaintEvent>
#include <QPainter>
#include <QTest>
#include <QTimer>

#include <boost/lexical_cast.hpp>
#include <boost/make_shared.hpp>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <set>
#include <thread>

using namespace halvern::test;
using halvern::core::event::EventManager;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

/// Notes the messages that it is asked to draw. Its timer stands still: tests take the steps.
class MessageView : public WindowlessView
{
public:
    MessageView() { findChild<QTimer*>()->stop(); }

    void drawMessageAtPosition(QPainter& painter, QPaintEvent* event, QPoint position, QString text,
                               float level) override
    {
        EXPECT_TRUE(painter.isActive());
        EXPECT_NE(event, nullptr);
        drawn.push_back(text.toStdString() + " " + std::to_string(position.x()) + " " +
                        std::to_string(position.y()));
        levels.push_back(level);
    }

    void send(const std::string& data) { handleDisplayMessageAt(makeEvent("DisplayMessageAt", data)); }

    void step(int count = 1)
    {
        for (int i = 0; i < count; ++i)
            updateMessageDisplay();
    }

    /// What a frame draws now.
    std::vector<std::string> draw()
    {
        drawn.clear();
        levels.clear();
        repaintView(*this);
        return drawn;
    }

    /// Fade level of the only message.
    float level()
    {
        draw();
        return levels.size() == 1 ? levels.front() : -1;
    }

    /// Opacity of the only message.
    int alpha()
    {
        PaintRecorder recorder;
        QPainter painter(&recorder);
        QPaintEvent event(rect());
        QtView::drawMessageAtPosition(painter, &event, QPoint(1, 1), "a", level());
        return recorder.painted.texts.at(0).pen.alpha();
    }

private:
    std::vector<std::string> drawn;
    std::vector<float> levels;
};

class QtViewMessagesTest : public testing::Test
{
protected:
    QtViewMessagesTest() { showView(view); }

    static constexpr int Count = 5000;

    /// Sends every text once, from two threads, while the view is shown and ages them.
    template <class Send>
    void sendWhileShown(Send send)
    {
        std::atomic<int> running{2};
        std::vector<std::thread> senders;
        for (int sender = 0; sender < 2; ++sender)
            senders.emplace_back([&, sender] {
                for (int i = 0; i < Count; ++i)
                    send("m" + std::to_string(sender * Count + i) + ", " + std::to_string(i % 50) + ", " +
                         std::to_string(1900 + sender));
                --running;
            });
        while (running > 0)
            see();
        for (auto& sender : senders)
            sender.join();
    }

    /// One step and one frame. A message is there for 71 of them.
    void see()
    {
        view.step();
        for (const std::string& message : view.draw())
            seen.insert(message.substr(0, message.find(' ')));
    }

    void expectAllWereSeenAndAreGone()
    {
        see();
        EXPECT_EQ(seen.size(), 2u * Count);
        view.step(71);
        EXPECT_THAT(view.draw(), IsEmpty());
    }

    MessageView view;
    std::set<std::string> seen;
};

} // namespace

TEST_F(QtViewMessagesTest, AMessageIsDrawnFromTheNextStepOn)
{
    view.send("hello, 30, 40");
    EXPECT_THAT(view.draw(), IsEmpty());
    view.step();
    EXPECT_THAT(view.draw(), ElementsAre("hello 30 40"));
}

TEST_F(QtViewMessagesTest, MessagesAreDrawnInOrderOfArrival)
{
    view.send("a, 1, 1");
    view.send("b, 2, 2");
    view.step();
    view.send("c, 3, 3");
    view.step();
    EXPECT_THAT(view.draw(), ElementsAre("a 1 1", "b 2 2", "c 3 3"));
}

TEST_F(QtViewMessagesTest, AnEmptyTextIsIgnored)
{
    view.send(", 30, 40");
    view.step();
    EXPECT_THAT(view.draw(), IsEmpty());
}

TEST_F(QtViewMessagesTest, MalformedNumbersThrowEvenWithAnEmptyText)
{
    EXPECT_THROW(view.send(", x, 40"), boost::bad_lexical_cast);
    EXPECT_THROW(view.send("hello, 30, y"), boost::bad_lexical_cast);
    EXPECT_THROW(view.send("hello"), boost::bad_lexical_cast);
    view.step();
    EXPECT_THAT(view.draw(), IsEmpty());
}

TEST_F(QtViewMessagesTest, NegativeNumbersWrapRound)
{
    view.send("hello, -5, -7");
    view.step();
    EXPECT_THAT(view.draw(), ElementsAre("hello -5 -7"));
}

TEST_F(QtViewMessagesTest, TextIsUtf8)
{
    view.send("gr\xc3\xbc\xc3\x9f, 1, 2");
    view.step();
    EXPECT_THAT(view.draw(), ElementsAre("gr\xc3\xbc\xc3\x9f 1 2"));
}

TEST_F(QtViewMessagesTest, AMessageOnAShownOneMovesDownInStepsOfTen)
{
    view.send("a, 30, 40");
    view.step();
    view.send("b, 30, 40");
    view.step();
    view.send("c, 30, 40");
    view.step();
    view.send("d, 30, 41");
    view.step();
    EXPECT_THAT(view.draw(), ElementsAre("a 30 40", "b 30 50", "c 30 60", "d 30 41"));
}

TEST_F(QtViewMessagesTest, MessagesQueuedBeforeAStepAreSeparatedByIt)
{
    for (const char* data : {"a, 30, 40", "b, 30, 40", "c, 30, 40"})
        view.send(data);
    view.step();
    EXPECT_THAT(view.draw(), ElementsAre("a 30 40", "b 30 50", "c 30 60"));
}

TEST_F(QtViewMessagesTest, FromTwoThousandDownNothingMoves)
{
    for (const char* data : {"a, 1, 2000", "b, 1, 2000", "c, 1, 5000", "d, 1, 5000"})
        view.send(data);
    view.step();
    EXPECT_THAT(view.draw(), ElementsAre("a 1 2000", "b 1 2000", "c 1 5000", "d 1 5000"));
}

TEST_F(QtViewMessagesTest, TheSearchForAPlaceStopsAtTwoThousand)
{
    for (const char* data : {"a, 1, 1990", "b, 1, 1990", "c, 1, 1990"})
        view.send(data);
    view.step();
    EXPECT_THAT(view.draw(), ElementsAre("a 1 1990", "b 1 2000", "c 1 2000"));
}

TEST_F(QtViewMessagesTest, AFreePositionIsValid)
{
    EXPECT_EQ(view.validateMessagePosition(QPoint(3, 4)), QPoint(3, 4));
    view.send("a, 3, 4");
    EXPECT_EQ(view.validateMessagePosition(QPoint(3, 4)), QPoint(3, 4)); // not shown yet
    view.step();
    EXPECT_EQ(view.validateMessagePosition(QPoint(3, 4)), QPoint(3, 14));
    EXPECT_EQ(view.validateMessagePosition(QPoint(4, 4)), QPoint(4, 4));
}

TEST_F(QtViewMessagesTest, AMessageFadesInByAFifth)
{
    view.send("a, 1, 1");
    for (const float level : {0.2F, 0.4F, 0.6F, 0.8F, 1.0F}) {
        view.step(); // the step that takes it in ages it too
        EXPECT_FLOAT_EQ(view.level(), level);
    }
    view.step();
    EXPECT_FLOAT_EQ(view.level(), 1.1F);
}

TEST_F(QtViewMessagesTest, AMessageHoldsUntilStepFortySixAndIsGoneAtSeventyTwo)
{
    view.send("a, 1, 1");
    view.step(46);
    EXPECT_NEAR(view.level(), 5.1, 0.001);
    view.step();
    EXPECT_NEAR(view.level(), 4.9, 0.001);
    view.step(71 - 47);
    EXPECT_THAT(view.draw(), ElementsAre("a 1 1"));
    view.step();
    EXPECT_THAT(view.draw(), IsEmpty());
}

TEST_F(QtViewMessagesTest, OnlyTheOldMessageGoes)
{
    view.send("old, 1, 1");
    view.step();
    view.send("young, 2, 2");
    view.step(71);
    EXPECT_THAT(view.draw(), ElementsAre("young 2 2"));
}

TEST_F(QtViewMessagesTest, StepsRequestNoRepaint)
{
    view.send("a, 1, 1");
    const int before = view.paints;
    view.step(10);
    settle();
    EXPECT_EQ(view.paints, before);
}

TEST_F(QtViewMessagesTest, TheTimerTakesTheSteps)
{
    view.send("a, 1, 1");
    view.findChild<QTimer*>()->start();
    EXPECT_TRUE(waitFor([&] { return view.validateMessagePosition(QPoint(1, 1)) != QPoint(1, 1); }));
}

TEST_F(QtViewMessagesTest, AlphaIsFullFromStepFiveToStepSixtySix)
{
    view.send("a, 1, 1");
    view.step(4);
    EXPECT_EQ(view.alpha(), 204);
    for (int i = 5; i <= 66; ++i) {
        view.step();
        EXPECT_EQ(view.alpha(), 255) << i;
    }
    for (int i = 67; i <= 71; ++i) {
        view.step();
        EXPECT_NEAR(view.alpha(), 255 * (0.9 - 0.2 * (i - 67)), 1) << i;
    }
}

TEST_F(QtViewMessagesTest, AnOverriddenPlacementIsAskedForEveryMessageAndForCollisionsOnly)
{
    struct Overriding : MessageView
    {
        QPoint validateMessagePosition(QPoint position) override
        {
            asked.push_back(position);
            return position + QPoint(1, 2);
        }
        std::vector<QPoint> asked;
    };
    Overriding overriding;
    showView(overriding);
    overriding.send("a, 10, 10");
    overriding.send("b, 10, 10");
    EXPECT_THAT(overriding.asked, ElementsAre(QPoint(10, 10), QPoint(10, 10)));
    overriding.step();
    EXPECT_THAT(overriding.asked, ElementsAre(QPoint(10, 10), QPoint(10, 10), QPoint(11, 22)));
    EXPECT_THAT(overriding.draw(), ElementsAre("a 11 12", "b 12 24"));
}

TEST_F(QtViewMessagesTest, MessagesOfTwoThreadsAreAllSeenAndForgotten)
{
    sendWhileShown([this](const std::string& data) { view.send(data); });
    expectAllWereSeenAndAreGone();
}

TEST_F(QtViewMessagesTest, EventsOfTwoThreadsAreAllSeenAndForgotten)
{
    const auto manager = boost::make_shared<EventManager>(false);
    view.setEventManager(manager);
    sendWhileShown([&](const std::string& data) { manager->triggerEvent("DisplayMessageAt", data); });
    manager->waitUntilIdle();
    expectAllWereSeenAndAreGone();
}

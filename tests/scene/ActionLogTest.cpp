#include "reference/scene/ActionLog.h"

#include "engine/scene/Node.h"
#include "engine/scene/SceneManager.h"
#include "tests/support/SynchronousEventManager.h"

#include <boost/make_shared.hpp>

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

using namespace halvern::scene;
using halvern::test::SynchronousEventManager;
using Kind = TransformStep::Kind;

namespace {

const char* const quarterTurnAboutZ = "node,-4.37113883e-08 1 0 -1 -4.37113883e-08 0 0 0 1 ";

Eigen::Affine3f turnAboutZ(float degrees)
{
    return Eigen::Affine3f(Eigen::AngleAxisf(degrees * 0.017453292F, Eigen::Vector3f::UnitZ()));
}

class ActionLogTest : public testing::Test
{
protected:
    ActionLogTest()
    {
        root->addChildNode(node);
        scene->setRoot(root);
        scene->addSceneController(log);
    }
    ~ActionLogTest() override { scene->removeSceneController(log); }

    void select(const char* id) { events->triggerEvent("ObjectSelected", std::string(id) + ", Window"); }
    void moveTo(float x, float y, float z) { node->setTranslation(Eigen::Translation3f(x, y, z)); }
    Eigen::Vector3f position() const { return node->getTranslation().vector(); }

    /// Runs the scene until steps are complete.
    void settle()
    {
        scene->update();
        scene->update();
    }

    boost::shared_ptr<SynchronousEventManager> events = boost::make_shared<SynchronousEventManager>();
    boost::shared_ptr<Node> root = boost::make_shared<Node>("root", "");
    boost::shared_ptr<Node> node = boost::make_shared<Node>("node", "");
    boost::shared_ptr<SceneManager> scene = boost::make_shared<SceneManager>(nullptr);
    std::vector<TransformStep> heard;
    boost::shared_ptr<ActionLog> log =
        boost::make_shared<ActionLog>(events, [this](const TransformStep& step) { heard.push_back(step); });
};

} // namespace

TEST_F(ActionLogTest, ActionIsOneStepFromWhereTheNodeStoodToWhereItStands)
{
    moveTo(1.2345F, 2, 3);
    select("node");
    moveTo(4, 2, 3);
    moveTo(5, 2, 3);
    events->triggerEvent("TranslationAction", "node,3.77\n   0\n   0");
    settle();
    ASSERT_EQ(heard.size(), 1U);
    EXPECT_EQ(heard[0].nodeID, "node");
    EXPECT_EQ(heard[0].kind, Kind::Translation);
    EXPECT_EQ(heard[0].before.translation, Eigen::Vector3f(1.2345F, 2, 3)) << "exactly, not as it was shown";
    EXPECT_EQ(heard[0].after.translation, Eigen::Vector3f(5, 2, 3));
    settle();
    EXPECT_EQ(heard.size(), 1U);
}

TEST_F(ActionLogTest, LogChangesNothingOnItsOwn)
{
    select("node");
    events->triggerEvent("TranslationAction", "node,1\n0\n0");
    EXPECT_FALSE(log->update());
    EXPECT_FALSE(log->update());
    EXPECT_EQ(position(), Eigen::Vector3f(0, 0, 0));
}

TEST_F(ActionLogTest, EditThatIsWrittenAfterItsActionStillBelongsToTheStep)
{
    select("node");
    events->triggerEvent("TranslationAction", "node,7\n0\n0");
    scene->update();
    EXPECT_TRUE(heard.empty());
    moveTo(7, 0, 0);
    scene->update();
    ASSERT_EQ(heard.size(), 1U);
    EXPECT_EQ(heard[0].after.translation, Eigen::Vector3f(7, 0, 0));
}

TEST_F(ActionLogTest, UndoAndRedoOfAMoveAreExactAndLeaveTheRotationAlone)
{
    moveTo(0.1F, 0.2F, 0.3F);
    select("node");
    moveTo(5.1F, 0.2F, 0.3F);
    events->triggerEvent("TranslationAction", "node,5\n0\n0");
    settle();
    node->setRotation(turnAboutZ(20));
    const Eigen::Matrix4f turned = node->getRotation();
    log->undo(heard.at(0));
    EXPECT_EQ(position(), Eigen::Vector3f(0.1F, 0.2F, 0.3F));
    log->redo(heard.at(0));
    EXPECT_EQ(position(), Eigen::Vector3f(5.1F, 0.2F, 0.3F));
    EXPECT_EQ(node->getRotation(), turned);
}

TEST_F(ActionLogTest, UndoAndRedoOfATurnAreExactAndLeaveTheTranslationAlone)
{
    node->setRotation(turnAboutZ(33.333F));
    const Eigen::Matrix4f before = node->getRotation();
    select("node");
    node->setRotation(turnAboutZ(123.33F));
    const Eigen::Matrix4f after = node->getRotation();
    events->triggerEvent("RotationAction", quarterTurnAboutZ);
    settle();
    ASSERT_EQ(heard.size(), 1U);
    EXPECT_EQ(heard[0].kind, Kind::Rotation);
    moveTo(1, 2, 3);
    log->undo(heard[0]);
    EXPECT_EQ(node->getRotation(), before);
    log->redo(heard[0]);
    EXPECT_EQ(node->getRotation(), after);
    EXPECT_EQ(position(), Eigen::Vector3f(1, 2, 3));
}

TEST_F(ActionLogTest, StepsFollowOneAnother)
{
    select("node");
    for (const float x : {1.0F, 2.0F, 3.0F}) {
        moveTo(x, 0, 0);
        events->triggerEvent("TranslationAction", "node,1\n0\n0");
        settle();
    }
    ASSERT_EQ(heard.size(), 3U);
    for (int i = 2; i >= 0; --i) {
        log->undo(heard[std::size_t(i)]);
        EXPECT_EQ(position().x(), float(i));
    }
}

TEST_F(ActionLogTest, StepAfterAnUndoBeginsWhereTheUndoLed)
{
    select("node");
    moveTo(5, 0, 0);
    events->triggerEvent("TranslationAction", "node,5\n0\n0");
    settle();
    log->undo(heard.at(0));
    node->setRotation(turnAboutZ(90));
    events->triggerEvent("RotationAction", quarterTurnAboutZ);
    settle();
    ASSERT_EQ(heard.size(), 2U);
    EXPECT_EQ(heard[1].before.translation, Eigen::Vector3f(0, 0, 0));
    EXPECT_EQ(heard[1].before.rotation, Eigen::Matrix3f(Eigen::Matrix3f::Identity()));
}

TEST_F(ActionLogTest, MoveOfANodeThatSomethingElseMovedMeanwhileIsTakenByItsChange)
{
    select("node");
    moveTo(100, 0, 0); // nobody announced this
    moveTo(105, 0, 0);
    events->triggerEvent("TranslationAction", "node,5\n0\n0");
    settle();
    ASSERT_EQ(heard.size(), 1U);
    EXPECT_EQ(heard[0].before.translation, Eigen::Vector3f(100, 0, 0));
}

TEST_F(ActionLogTest, MoveOfANodeThatWasNeverSelectedIsTakenByItsChange)
{
    moveTo(0, 8, 0);
    events->triggerEvent("TranslationAction", "node,0\n2\n0");
    settle();
    ASSERT_EQ(heard.size(), 1U);
    EXPECT_EQ(heard[0].before.translation, Eigen::Vector3f(0, 6, 0));
}

TEST_F(ActionLogTest, SelectionOfTheSameNodeAgainInTheMiddleOfAnEditKeepsItsBeginning)
{
    select("node");
    node->setRotation(turnAboutZ(40));
    select("node");
    node->setRotation(turnAboutZ(90));
    events->triggerEvent("RotationAction", quarterTurnAboutZ);
    settle();
    ASSERT_EQ(heard.size(), 1U);
    EXPECT_EQ(heard[0].before.rotation, Eigen::Matrix3f(Eigen::Matrix3f::Identity()));
}

TEST_F(ActionLogTest, ActionThatComesAfterAnotherSelectionIsOfItsOwnNode)
{
    select("node");
    node->setRotation(turnAboutZ(90));
    select("root");
    events->triggerEvent("RotationAction", quarterTurnAboutZ);
    settle();
    ASSERT_EQ(heard.size(), 1U);
    EXPECT_EQ(heard[0].nodeID, "node");
    EXPECT_EQ(heard[0].before.rotation, Eigen::Matrix3f(Eigen::Matrix3f::Identity()));
}

TEST_F(ActionLogTest, StepsAreKeptPerNode)
{
    for (const char* data : {"node,1\n0\n0", "root,2\n0\n0", "node,3\n0\n0"})
        events->triggerEvent("TranslationAction", data);
    settle();
    EXPECT_EQ(log->getSteps("node").size(), 2U);
    EXPECT_EQ(log->getSteps("root").size(), 1U);
    EXPECT_TRUE(log->getSteps("other").empty());
}

TEST_F(ActionLogTest, BrokenActionsAndUnknownNodesAreIgnored)
{
    for (const char* data : {"", "node", "node,", "node,1 2", "node,1 2 x", "node,1 2 3 4", "node,a\n0\n0",
                             "gone,1\n0\n0", "node,1,2,3"})
        events->triggerEvent("TranslationAction", data);
    for (const char* data : {"node,1 0 0 0 1 0 0 0 ", "node,1 0 0 0 1 0 0 0 1 2 "})
        events->triggerEvent("RotationAction", data);
    settle();
    EXPECT_TRUE(heard.empty());
    log->undo({"gone", Kind::Translation, {}, {}});
}

TEST_F(ActionLogTest, LogWithoutAListenerOrASceneIsSilent)
{
    ActionLog silent(events, nullptr);
    select("node");
    events->triggerEvent("TranslationAction", "node,1\n0\n0");
    silent.update();
    silent.update();
    EXPECT_TRUE(silent.getSteps("node").empty());
    silent.setSceneManager(scene);
    events->triggerEvent("TranslationAction", "node,1\n0\n0");
    silent.update();
    silent.update();
    EXPECT_EQ(silent.getSteps("node").size(), 1U);
}

TEST_F(ActionLogTest, SceneIsNotKeptAlive)
{
    ActionLog other(events, nullptr);
    auto fleeting = boost::make_shared<SceneManager>(nullptr);
    const boost::weak_ptr<SceneManager> watched = fleeting;
    other.setSceneManager(fleeting);
    fleeting.reset();
    EXPECT_TRUE(watched.expired());
}

TEST_F(ActionLogTest, ListenerMayUndoTheStepAtOnce)
{
    ActionLog* self = nullptr;
    const auto eager =
        boost::make_shared<ActionLog>(events, [&self](const TransformStep& step) { self->undo(step); });
    self = eager.get();
    scene->addSceneController(eager);
    select("node");
    moveTo(5, 0, 0);
    events->triggerEvent("TranslationAction", "node,5\n0\n0");
    settle();
    EXPECT_EQ(position(), Eigen::Vector3f(0, 0, 0));
    scene->removeSceneController(eager);
}

TEST_F(ActionLogTest, ActionsCyclesAndUndoMayComeFromThreeThreads)
{
    std::atomic<bool> stop{false};
    std::thread cycles([&] {
        while (!stop)
            log->update();
    });
    std::thread undoes([&] {
        while (!stop)
            for (const auto& step : log->getSteps("root"))
                log->undo(step);
    });
    for (int i = 0; i < 200; ++i) {
        select(i % 2 ? "node" : "root");
        events->triggerEvent("TranslationAction", "root,1\n0\n0");
    }
    while (log->getSteps("root").size() < 200)
        std::this_thread::yield();
    stop = true;
    cycles.join();
    undoes.join();
    EXPECT_EQ(heard.size(), 200U);
}

#include "engine/scene/Material.h"
#include "engine/scene/Node.h"
#include "engine/scene/SceneManager.h"
#include "tests/qt/ViewProbe.h"

#include <boost/lexical_cast.hpp>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>

using namespace halvern::test;
using halvern::scene::Material;
using halvern::scene::Node;
using halvern::scene::SceneManager;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

/// Notes what is looked up in it.
class LookupScene : public SceneManager
{
public:
    LookupScene() : SceneManager(nullptr) {}

    boost::shared_ptr<Material> getMaterialWithID(std::string id) override
    {
        lookups.push_back("material " + id);
        if (onLookup)
            onLookup();
        return SceneManager::getMaterialWithID(id);
    }
    boost::shared_ptr<Node> getNodeByID(std::string id) override
    {
        lookups.push_back("node " + id);
        if (onLookup)
            onLookup();
        return SceneManager::getNodeByID(id);
    }

    std::vector<std::string> lookups;

    /// Runs inside each look-up.
    std::function<void()> onLookup;
};

/// What the handler does when it is called directly. Nothing was dropped: the material is the one
/// with the empty ID.
class QtViewPickTest : public testing::Test
{
protected:
    QtViewPickTest()
    {
        scene->setRoot(node);
        scene->addMaterial(nameless);
        window->sceneManager = scene;
        view.setWindow(window);
    }

    void pick(const std::string& data) { view.handleObjectPicked(makeEvent("ObjectPicked", data)); }

    CallLog log;
    const boost::shared_ptr<LookupScene> scene = boost::make_shared<LookupScene>();
    const boost::shared_ptr<Node> node = boost::make_shared<Node>("node", "Node");
    const boost::shared_ptr<Material> nameless = boost::make_shared<Material>("", "effect");
    const boost::shared_ptr<FakeWindow> window = boost::make_shared<FakeWindow>(log);
    ViewProbe view;
};

} // namespace

TEST_F(QtViewPickTest, ADropsAnswerLoadsTheMaterialOnThePickedNode)
{
    pick("node, 2, 3, 5, 6, DropMaterial");
    EXPECT_THAT(scene->lookups, ElementsAre("material ", "node node"));
    EXPECT_EQ(node->getMaterial(2, 3), nameless);
}

TEST_F(QtViewPickTest, OtherTagsAreIgnoredEvenWithBadNumbers)
{
    for (const char* tag : {"", "dropmaterial", "DropMaterial ", "Select"}) {
        EXPECT_NO_THROW(pick(std::string("node, x, y, 5, 6, ") + tag));
        EXPECT_NO_THROW(pick(std::string("node, 0, 0, 5, 6, ") + tag));
    }
    EXPECT_NO_THROW(pick("DropMaterial, x"));
    EXPECT_NO_THROW(pick(""));
    EXPECT_THAT(scene->lookups, IsEmpty());
}

TEST_F(QtViewPickTest, AMissIsIgnored)
{
    EXPECT_NO_THROW(pick(", , , 5, 6, DropMaterial"));
    EXPECT_NO_THROW(pick("node, , x, 5, 6, DropMaterial"));
    EXPECT_THAT(scene->lookups, IsEmpty());
}

TEST_F(QtViewPickTest, MalformedNumbersLeaveTheHandlerBeforeAnythingIsLoaded)
{
    for (const char* numbers : {"x, 0", "0, x", "1.5, 0", "0, ", "1 , 0", "0,  1", "4294967296, 0"})
        EXPECT_THROW(pick(std::string("node, ") + numbers + ", 5, 6, DropMaterial"), boost::bad_lexical_cast)
            << numbers;
    EXPECT_THAT(scene->lookups, IsEmpty());
}

TEST_F(QtViewPickTest, NumbersReachTheNodeUnchanged)
{
    pick("node, 4294967295, 0, 5, 6, DropMaterial");
    EXPECT_EQ(node->getMaterial(4294967295u, 0), nameless);
    pick("node, -5, 1, 5, 6, DropMaterial"); // wraps round
    EXPECT_EQ(node->getMaterial(4294967291u, 1), nameless);
}

TEST_F(QtViewPickTest, ArgumentsFourAndFiveAreNotRead)
{
    pick("node,1,2,x,,DropMaterial");
    EXPECT_EQ(node->getMaterial(1, 2), nameless);
}

TEST_F(QtViewPickTest, AnUnknownNodeIsIgnored)
{
    pick("nobody, 1, 2, 5, 6, DropMaterial");
    EXPECT_THAT(scene->lookups, ElementsAre("material ", "node nobody"));
}

/// The thread that loads must not become the last owner of the window, nor keep others waiting.
TEST_F(QtViewPickTest, NeitherTheWindowNorALockIsHeldWhileTheSceneIsAsked)
{
    std::vector<long> owners;
    scene->onLookup = [&] { owners.push_back(view.getWindow().use_count()); };
    pick("node, 2, 3, 5, 6, DropMaterial");
    EXPECT_THAT(owners, ElementsAre(3, 3)); // the test, the view and the one that counts
}

#include "tests/qt/PropertiesStage.h"

#include <QBrush>
#include <QSignalSpy>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <thread>

using namespace halvern::test;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

/// Notes every translation that is set.
class TracedNode : public halvern::scene::Node
{
public:
    using Node::Node;
    void setTranslation(Eigen::Translation3f translation) override
    {
        writes.push_back("T" + std::to_string(static_cast<int>(translation.x())));
        Node::setTranslation(translation);
    }
    void setScale(Eigen::Vector3f scale) override
    {
        writes.push_back("S" + std::to_string(static_cast<int>(scale.x())));
        Node::setScale(scale);
    }
    std::vector<std::string> writes;
};

boost::shared_ptr<TracedNode> addTracedNode(PropertiesStage& stage, const std::string& id)
{
    auto node = boost::make_shared<TracedNode>(id, "");
    stage.a->addChildNode(node);
    return node;
}

std::vector<bool> layersOf(const halvern::scene::Node& node)
{
    return {node.inLayer("hidden"), node.inLayer("cast_shadow"), node.inLayer("transparent"),
            node.inLayer("post_render")};
}

std::vector<float> lensOf(const halvern::scene::Camera& camera)
{
    return {camera.getZNear(), camera.getZFar(), camera.getYFov()};
}

} // namespace

// setData

TEST(QtPropertiesModelWriteTest, EditChangesTheCellAtOnceAndTheNodeWithTheNextPass)
{
    PropertiesStage stage;
    stage.select("a");
    EXPECT_TRUE(stage.edit(TranslationGroup, 1, 2.5));
    EXPECT_EQ(stage.value(TranslationGroup, 1), QVariant(2.5));
    EXPECT_EQ(positionOf(*stage.a), Eigen::Vector3f(0, 0, 0));
    EXPECT_TRUE(stage.model->update());
    EXPECT_EQ(positionOf(*stage.a), Eigen::Vector3f(0, 2.5F, 0));
    EXPECT_FALSE(stage.model->update());
}

TEST(QtPropertiesModelWriteTest, EditIsAnnouncedForItsCellAlone)
{
    PropertiesStage stage;
    stage.select("a");
    QSignalSpy changed(stage.model.get(), SIGNAL(dataChanged(QModelIndex, QModelIndex)));
    stage.edit(ScaleGroup, 2, 3);
    ASSERT_EQ(changed.count(), 1);
    EXPECT_EQ(changed[0][0].toModelIndex(), stage.cell(ScaleGroup, 2));
    EXPECT_EQ(changed[0][1].toModelIndex(), stage.cell(ScaleGroup, 2));
}

TEST(QtPropertiesModelWriteTest, PassMayRunWhileAnEditIsAnnounced)
{
    PropertiesStage stage;
    stage.select("a");
    bool written = false;
    const auto connection = QObject::connect(stage.model.get(), &QAbstractItemModel::dataChanged, [&] {
        std::thread([&] { written = stage.model->update(); }).join();
    });
    stage.edit(TranslationGroup, 0, 1);
    QObject::disconnect(connection);
    EXPECT_TRUE(written) << "the edit was queued, and no lock was held";
}

TEST(QtPropertiesModelWriteTest, EveryRoleButEditIsRefused)
{
    PropertiesStage stage;
    stage.select("a");
    QSignalSpy changed(stage.model.get(), SIGNAL(dataChanged(QModelIndex, QModelIndex)));
    for (const int role : {int(Qt::DisplayRole), int(Qt::BackgroundRole), int(Qt::UserRole)})
        EXPECT_FALSE(stage.model->setData(stage.cell(TranslationGroup, 0), 1, role));
    EXPECT_EQ(changed.count(), 0);
    EXPECT_EQ(stage.value(TranslationGroup, 0), QVariant(0.0));
    EXPECT_FALSE(stage.model->update());
}

TEST(QtPropertiesModelWriteTest, InvalidIndexIsRefused)
{
    PropertiesStage stage;
    stage.select("a");
    EXPECT_FALSE(stage.model->setData(QModelIndex(), 1));
    EXPECT_FALSE(stage.model->update());
    EXPECT_EQ(stage.model->headerData(0, Qt::Horizontal), QVariant("Property"));
}

TEST(QtPropertiesModelWriteTest, EditabilityIsNotTestedAndAnyKindOfValueIsTaken)
{
    PropertiesStage stage;
    EXPECT_TRUE(stage.edit(TranslationGroup, 0, "some text"));
    EXPECT_EQ(stage.value(TranslationGroup, 0), QVariant("some text"));
    EXPECT_TRUE(stage.model->setData(stage.cell(IDGroup, -1), 5));
    EXPECT_EQ(stage.cell(IDGroup, -1).data(), QVariant(5));
    EXPECT_TRUE(stage.model->setData(stage.cell(TranslationGroup, 0, 0), "Name"));
    EXPECT_EQ(stage.value(TranslationGroup, 0, 0), QVariant("Name"));
    EXPECT_TRUE(stage.edit(LayersGroup, 0, QBrush(Qt::red)));
}

TEST(QtPropertiesModelWriteTest, ValueThatIsNoNumberIsWrittenAsZero)
{
    PropertiesStage stage;
    moveTo(*stage.a, 1, 2, 3);
    stage.select("a");
    stage.edit(TranslationGroup, 0, "none");
    stage.edit(TranslationGroup, 1, QVariant());
    stage.edit(TranslationGroup, 2, "7.25");
    stage.model->update();
    EXPECT_EQ(positionOf(*stage.a), Eigen::Vector3f(0, 0, 7.25F));
}

TEST(QtPropertiesModelWriteTest, UnchangedValueIsQueuedAndWrittenToo)
{
    PropertiesStage stage;
    const auto node = addTracedNode(stage, "traced");
    stage.select("traced");
    stage.edit(TranslationGroup, 0, 0.0);
    EXPECT_TRUE(stage.model->update());
    EXPECT_THAT(node->writes, ElementsAre("T0"));
}

TEST(QtPropertiesModelWriteTest, EachQueuedEditIsWrittenOnItsOwnInTheirOrder)
{
    PropertiesStage stage;
    const auto node = addTracedNode(stage, "traced");
    stage.select("traced");
    stage.edit(TranslationGroup, 0, 1);
    stage.edit(ScaleGroup, 0, 2);
    stage.edit(TranslationGroup, 0, 3);
    stage.edit(TranslationGroup, 0, 3);
    stage.model->update();
    EXPECT_THAT(node->writes, ElementsAre("T1", "S2", "T3", "T3"));
}

TEST(QtPropertiesModelWriteTest, TheWholeGroupIsWrittenAtTheTablesPrecision)
{
    PropertiesStage stage;
    moveTo(*stage.a, 1.2345F, 2.346F, -0.004F);
    stage.select("a");
    stage.edit(TranslationGroup, 0, 5);
    stage.model->update();
    EXPECT_EQ(positionOf(*stage.a), Eigen::Vector3f(5, 2.35F, 0));
}

TEST(QtPropertiesModelWriteTest, OtherGroupsAreNotWritten)
{
    PropertiesStage stage;
    moveTo(*stage.a, 1.2345F, 0, 0);
    stage.a->setScale(Eigen::Vector3f(1.2345F, 1, 1));
    stage.select("a");
    stage.edit(ScaleGroup, 1, 2);
    stage.model->update();
    EXPECT_EQ(stage.a->getScale(), Eigen::Vector3f(1.23F, 2, 1));
    EXPECT_EQ(positionOf(*stage.a), Eigen::Vector3f(1.2345F, 0, 0));
}

TEST(QtPropertiesModelWriteTest, RowsThatAreNoPartOfANodeAreTakenOffWithoutAWrite)
{
    PropertiesStage stage;
    addLight(*stage.a, "sun", 0.1F, 0.1F, 0.1F);
    stage.select("a");
    stage.model->setData(stage.cell(IDGroup, -1), "x");
    stage.model->setData(stage.cell(LightsGroup, -1), "x");
    stage.model->setData(stage.cell(LightsGroup, 0), "x");
    EXPECT_TRUE(stage.model->update());
    EXPECT_EQ(stage.a->getID(), "a");
    EXPECT_EQ(stage.a->getInstanceLight(0)->getColor(), Eigen::Vector3f(0.1F, 0.1F, 0.1F));
}

TEST(QtPropertiesModelWriteTest, QueuedEditsAreDroppedWhenNoNodeIsShownAtThePass)
{
    PropertiesStage stage;
    stage.select("a");
    stage.edit(TranslationGroup, 0, 5);
    stage.select("unknown");
    EXPECT_TRUE(stage.model->update()) << "they were taken off";
    stage.select("a");
    EXPECT_FALSE(stage.model->update());
    EXPECT_EQ(positionOf(*stage.a), Eigen::Vector3f(0, 0, 0));
}

TEST(QtPropertiesModelWriteTest, EditsMadeWithoutANodeAreDropped)
{
    PropertiesStage stage;
    stage.edit(TranslationGroup, 0, 5);
    stage.select("a");
    EXPECT_TRUE(stage.model->update());
    EXPECT_EQ(positionOf(*stage.a), Eigen::Vector3f(0, 0, 0));
}

TEST(QtPropertiesModelWriteTest, EditIsWrittenToTheNodeItWasMadeForAlthoughAnotherIsShownAtThePass)
{
    PropertiesStage stage;
    moveTo(*stage.b, 1, 1, 1);
    stage.select("a");
    stage.edit(TranslationGroup, 0, 5);
    stage.select("b");
    stage.model->update();
    EXPECT_EQ(positionOf(*stage.a), Eigen::Vector3f(5, 0, 0));
    EXPECT_EQ(positionOf(*stage.b), Eigen::Vector3f(1, 1, 1));
}

TEST(QtPropertiesModelWriteTest, EditOfALightIsWrittenAlthoughItsRowsHaveGoneMeanwhile)
{
    PropertiesStage stage;
    const auto light = addLight(*stage.a, "sun", 1, 1, 1);
    stage.select("a");
    stage.model->setData(stage.instance(LightsGroup, 0, 0), QColor(255, 0, 0));
    stage.select("b");
    stage.model->update();
    EXPECT_EQ(light->getColor(), Eigen::Vector3f(1, 0, 0));
}

TEST(QtPropertiesModelWriteTest, SceneRunsThePassInItsCycle)
{
    PropertiesStage stage;
    stage.select("a");
    stage.edit(TranslationGroup, 0, 5);
    EXPECT_TRUE(stage.scene->update());
    EXPECT_EQ(positionOf(*stage.a), Eigen::Vector3f(5, 0, 0));
    EXPECT_FALSE(stage.scene->update());
}

// Layers

TEST(QtPropertiesModelWriteTest, LayerCellPutsTheNodeIntoItsLayer)
{
    for (int row = 0; row < 4; ++row) {
        PropertiesStage stage;
        stage.select("a");
        stage.edit(LayersGroup, row, true);
        stage.model->update();
        std::vector<bool> expected(4, false);
        expected[std::size_t(row)] = true;
        EXPECT_EQ(layersOf(*stage.a), expected);
        stage.edit(LayersGroup, row, false);
        stage.model->update();
        EXPECT_EQ(layersOf(*stage.a), std::vector<bool>(4, false));
    }
}

TEST(QtPropertiesModelWriteTest, AllFourLayersAreWrittenFromTheTable)
{
    PropertiesStage stage;
    stage.select("a");
    stage.a->addToLayer("transparent");
    stage.a->addToLayer("of_its_own");
    stage.edit(LayersGroup, 1, true);
    stage.model->update();
    EXPECT_THAT(layersOf(*stage.a), ElementsAre(false, true, false, false))
        << "the table did not know of the new layer";
    EXPECT_TRUE(stage.a->inLayer("of_its_own"));
}

TEST(QtPropertiesModelWriteTest, HiddenLayerLeavesTheVisibleFlagAlone)
{
    PropertiesStage stage;
    stage.select("a");
    stage.edit(LayersGroup, 0, true);
    stage.model->update();
    EXPECT_TRUE(stage.a->inLayer("hidden"));
    EXPECT_TRUE(stage.a->isVisible());
}

// Lights and cameras

TEST(QtPropertiesModelWriteTest, LightColourIsWrittenBackAtEightBits)
{
    PropertiesStage stage;
    const auto light = addLight(*stage.a, "sun", 0.1F, 0.2F, 0.6F);
    stage.select("a");
    const QModelIndex cell = stage.instance(LightsGroup, 0, 0);
    stage.model->setData(cell, cell.data());
    stage.model->update();
    EXPECT_EQ(light->getColor(), Eigen::Vector3f(26 / 255.0F, 51 / 255.0F, 153 / 255.0F));
}

TEST(QtPropertiesModelWriteTest, ValueThatIsNoColourMakesALightBlack)
{
    for (const QVariant& value : {QVariant("no colour"), QVariant(3), QVariant()}) {
        PropertiesStage stage;
        const auto light = addLight(*stage.a, "sun", 1, 1, 1);
        stage.select("a");
        stage.model->setData(stage.instance(LightsGroup, 0, 0), value);
        stage.model->update();
        EXPECT_EQ(light->getColor(), Eigen::Vector3f(0, 0, 0));
    }
}

TEST(QtPropertiesModelWriteTest, EditOfALightWritesTheFirstFromRowZeroAndTheOthersBlack)
{
    PropertiesStage stage;
    const auto sun = addLight(*stage.a, "sun", 1, 1, 1);
    const auto moon = addLight(*stage.a, "moon", 1, 1, 1);
    const auto star = addLight(*stage.a, "star", 1, 1, 1);
    stage.select("a");
    stage.model->setData(stage.instance(LightsGroup, 0, 0), QColor(0, 255, 51));
    stage.model->update();
    EXPECT_EQ(sun->getColor(), Eigen::Vector3f(0, 1, 0.2F));
    EXPECT_EQ(moon->getColor(), Eigen::Vector3f(0, 0, 0));
    EXPECT_EQ(star->getColor(), Eigen::Vector3f(0, 0, 0));
}

TEST(QtPropertiesModelWriteTest, EditInABlankLightRowWritesAllLightsToo)
{
    PropertiesStage stage;
    const auto sun = addLight(*stage.a, "sun", 1, 0, 0);
    const auto moon = addLight(*stage.a, "moon", 0, 0, 1);
    stage.select("a");
    stage.model->setData(stage.instance(LightsGroup, 1, 0), QColor(0, 255, 0));
    stage.model->update();
    EXPECT_EQ(sun->getColor(), Eigen::Vector3f(0, 0, 1)) << "row 0 shows the last light";
    EXPECT_EQ(moon->getColor(), Eigen::Vector3f(0, 1, 0));
}

TEST(QtPropertiesModelWriteTest, EditOfACameraWritesTheFirstFromRowZeroAndTheOthersZero)
{
    PropertiesStage stage;
    const auto one = addCamera(*stage.a, "one", 1, 10, 30);
    const auto two = addCamera(*stage.a, "two", 2, 20, 40);
    stage.select("a");
    stage.model->setData(stage.instance(CamerasGroup, 0, 2), 55.5);
    stage.model->update();
    EXPECT_THAT(lensOf(*one), ElementsAre(2, 20, 55.5F));
    EXPECT_THAT(lensOf(*two), ElementsAre(0, 0, 0));
}

TEST(QtPropertiesModelWriteTest, EachValueOfACameraIsWritten)
{
    PropertiesStage stage;
    const auto eye = addCamera(*stage.a, "eye", 1, 10, 30);
    stage.select("a");
    for (int child = 0; child < 3; ++child)
        stage.model->setData(stage.instance(CamerasGroup, 0, child), 0.25 * (child + 1));
    stage.model->update();
    EXPECT_THAT(lensOf(*eye), ElementsAre(0.25F, 0.5F, 0.75F));
}

TEST(QtPropertiesModelWriteTest, LightsAndCamerasThatHaveGoneAreSkipped)
{
    PropertiesStage stage;
    addLight(*stage.a, "sun", 1, 1, 1);
    addCamera(*stage.a, "eye", 1, 2, 3);
    stage.select("a");
    stage.model->insertRows(1, 1, stage.cell(LightsGroup, -1, 0));
    stage.model->insertRows(1, 1, stage.cell(CamerasGroup, -1, 0));
    stage.model->setData(stage.instance(LightsGroup, 0, 0), QColor(Qt::red));
    stage.model->setData(stage.instance(CamerasGroup, 0, 0), 7.0);
    EXPECT_TRUE(stage.model->update());
    EXPECT_EQ(stage.a->getInstanceLight(0)->getColor(), Eigen::Vector3f(1, 0, 0));
    EXPECT_EQ(stage.a->getInstanceCamera(0)->getZNear(), 7);
}

// What is being edited

TEST(QtPropertiesModelWriteTest, ValueBeingEditedIsNotOverwrittenBeforeItReachedTheNode)
{
    PropertiesStage stage;
    stage.select("a");
    stage.model->beginValueEdit(stage.cell(TranslationGroup, 0));
    stage.edit(TranslationGroup, 0, 5);
    moveTo(*stage.a, 1, 2, 3);
    stage.a->setScale(Eigen::Vector3f(2, 2, 2));
    stage.events->triggerEvent("NodeTransformationUpdate", "a");
    EXPECT_THAT(stage.values(TranslationGroup), ElementsAre(5, 0, 0));
    EXPECT_THAT(stage.values(ScaleGroup), ElementsAre(2, 2, 2)) << "other groups follow the node";
    stage.scene->update();
    EXPECT_THAT(stage.values(TranslationGroup), ElementsAre(5, 0, 0));
    moveTo(*stage.a, 1, 2, 3);
    stage.scene->update();
    EXPECT_THAT(stage.values(TranslationGroup), ElementsAre(1, 2, 3));
}

TEST(QtPropertiesModelWriteTest, LightsCamerasAndLayersBeingEditedAreNotOverwrittenEither)
{
    PropertiesStage stage;
    addLight(*stage.a, "sun", 1, 1, 1);
    addCamera(*stage.a, "eye", 1, 2, 3);
    stage.select("a");
    const std::pair<QModelIndex, QVariant> edits[]{
        {stage.instance(LightsGroup, 0, 0), QColor(Qt::red)},
        {stage.instance(CamerasGroup, 0, 1), 99.0},
        {stage.cell(LayersGroup, 2), true},
    };
    for (const auto& [cell, value] : edits) {
        stage.model->beginValueEdit(cell);
        stage.model->setData(cell, value);
        stage.model->fillProperties();
        EXPECT_EQ(cell.data(), value);
        stage.model->commitValueEdit();
    }
}

TEST(QtPropertiesModelWriteTest, ValueWrittenOutsideOfAnEditFollowsTheNodeAtOnce)
{
    PropertiesStage stage;
    stage.select("a");
    stage.edit(TranslationGroup, 0, 5);
    stage.model->fillProperties();
    EXPECT_THAT(stage.values(TranslationGroup), ElementsAre(0, 0, 0));
}

TEST(QtPropertiesModelWriteTest, GroupBeingEditedFollowsTheNodeAsLongAsNothingIsWrittenIntoIt)
{
    PropertiesStage stage;
    stage.select("a");
    stage.edit(TranslationGroup, 0, 9);
    stage.model->beginValueEdit(stage.cell(TranslationGroup, 0));
    stage.edit(ScaleGroup, 0, 5);
    moveTo(*stage.a, 1, 2, 3);
    stage.events->triggerEvent("NodeTransformationUpdate", "a");
    EXPECT_THAT(stage.values(TranslationGroup), ElementsAre(1, 2, 3)) << "only other edits are on their way";
}

TEST(QtPropertiesModelWriteTest, GroupFollowsTheNodeAgainWhenItsEditIsOverOrItsEditsWereDropped)
{
    PropertiesStage stage;
    for (const bool isDropped : {false, true}) {
        stage.select("a");
        stage.model->beginValueEdit(stage.cell(TranslationGroup, 0));
        stage.edit(TranslationGroup, 0, 5);
        if (isDropped) {
            stage.select("");
            stage.model->update();
            stage.select("a");
            stage.model->beginValueEdit(stage.cell(TranslationGroup, 0));
        } else {
            stage.model->commitValueEdit();
        }
        moveTo(*stage.a, 1, 2, 3);
        stage.events->triggerEvent("NodeTransformationUpdate", "a");
        EXPECT_THAT(stage.values(TranslationGroup), ElementsAre(1, 2, 3));
        moveTo(*stage.a, 0, 0, 0);
        stage.model->commitValueEdit();
    }
}

#include "tests/qt/PropertiesStage.h"

#include <QSignalSpy>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <thread>
#include <utility>

using halvern::qt::QtPropertiesModel;
using namespace halvern::test;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

/// What a model announces about its rows, in order, as "signal row of the parent: first-last".
class RowLog
{
public:
    explicit RowLog(QAbstractItemModel& model)
    {
        QObject::connect(&model, &QAbstractItemModel::rowsAboutToBeRemoved, &context, note("-"));
        QObject::connect(&model, &QAbstractItemModel::rowsRemoved, &context, note("--"));
        QObject::connect(&model, &QAbstractItemModel::rowsAboutToBeInserted, &context, note("+"));
        QObject::connect(&model, &QAbstractItemModel::rowsInserted, &context, note("++"));
    }

    QStringList lines;

private:
    std::function<void(const QModelIndex&, int, int)> note(const char* what)
    {
        return [this, what](const QModelIndex& parent, int first, int last) {
            lines += QString("%1 %2: %3-%4").arg(what).arg(parent.row()).arg(first).arg(last);
        };
    }
    QObject context;
};

/// The cells that a model announces as changed, as "group/row/.../column".
QStringList changedCells(const QSignalSpy& changed)
{
    QStringList cells;
    for (const auto& arguments : changed) {
        const QModelIndex first = arguments[0].toModelIndex();
        EXPECT_EQ(first, arguments[1].toModelIndex());
        QString path = QString::number(first.column());
        for (QModelIndex index = first; index.isValid(); index = index.parent())
            path.prepend(QString::number(index.row()) + '/');
        cells += path;
    }
    return cells;
}

QVariant shownFor(float x)
{
    PropertiesStage stage;
    moveTo(*stage.a, x, 0, 0);
    stage.select("a");
    return stage.value(TranslationGroup, 0);
}

/// Notes what is looked up.
class CountingScene : public halvern::scene::SceneManager
{
public:
    using SceneManager::SceneManager;
    NodePtr getNodeByID(std::string id) override
    {
        requested.push_back(id);
        threads.push_back(std::this_thread::get_id());
        return SceneManager::getNodeByID(id);
    }
    std::vector<std::string> requested;
    std::vector<std::thread::id> threads;
};

/// A node whose lights and cameras are empty pointers, or fewer than it says.
class HollowNode : public halvern::scene::Node
{
public:
    using Node::Node;
    unsigned int getInstanceLightCount() const override { return lights + 1; }
    unsigned int getInstanceCameraCount() const override { return cameras + 1; }

    unsigned int lights = 0;
    unsigned int cameras = 0;
};

} // namespace

// Selection

TEST(QtPropertiesModelFillTest, SelectionShowsTheNode)
{
    PropertiesStage stage;
    moveTo(*stage.a, 1, 2, 3);
    stage.a->setScale(Eigen::Vector3f(4, 5, 6));
    stage.select("a");
    EXPECT_EQ(stage.cell(IDGroup, -1).data(), QVariant("a"));
    EXPECT_THAT(stage.values(TranslationGroup), ElementsAre(1, 2, 3));
    EXPECT_THAT(stage.values(RotationGroup), ElementsAre(0, 0, 0));
    EXPECT_THAT(stage.values(ScaleGroup), ElementsAre(4, 5, 6));
}

TEST(QtPropertiesModelFillTest, TransformValuesAreEditableDoubles)
{
    PropertiesStage stage;
    stage.select("a");
    for (const int group : {TranslationGroup, RotationGroup, ScaleGroup})
        for (int row = 0; row < 3; ++row) {
            EXPECT_EQ(stage.value(group, row).type(), QVariant::Double);
            EXPECT_EQ(stage.cell(group, row).flags(),
                      Qt::ItemIsSelectable | Qt::ItemIsEditable | Qt::ItemIsEnabled);
            EXPECT_EQ(stage.cell(group, row, 0).flags(), Qt::ItemIsEnabled);
        }
}

TEST(QtPropertiesModelFillTest, IDIsAUtf8TextAndNeverEditable)
{
    PropertiesStage stage;
    stage.a->addChildNode(makeNode("t\xC3\xBCr"));
    stage.select("t\xC3\xBCr");
    EXPECT_EQ(stage.cell(IDGroup, -1).data().toString(), QStringLiteral("t\u00FCr"));
    EXPECT_EQ(stage.cell(IDGroup, -1).flags(), Qt::ItemIsEnabled);
    EXPECT_EQ(stage.cell(IDGroup, -1, 0).flags(), Qt::ItemIsEnabled);
}

TEST(QtPropertiesModelFillTest, SelectionIsObeyedWhateverItsOrigin)
{
    PropertiesStage stage;
    for (const char* data : {"a, QtScene", "b, Window", "a", "b, QtPropertiesModel", "a,x"}) {
        stage.events->triggerEvent("ObjectSelected", data);
        EXPECT_EQ(stage.cell(IDGroup, -1).data().toString(), QString(data).left(1));
    }
}

TEST(QtPropertiesModelFillTest, SelectionEmitsSceneSelection)
{
    PropertiesStage stage;
    QSignalSpy selected(stage.model.get(), SIGNAL(sceneSelection()));
    QSignalSpy updated(stage.model.get(), SIGNAL(nodeUpdate()));
    stage.select("a");
    stage.select("unknown");
    EXPECT_EQ(selected.count(), 2);
    EXPECT_EQ(updated.count(), 0);
}

TEST(QtPropertiesModelFillTest, WithoutASceneManagerSelectionIsIgnoredEntirely)
{
    QtPropertiesModel model({"Property", "Value"});
    QSignalSpy selected(&model, SIGNAL(sceneSelection()));
    model.handleEvent({HCE::EventType("ObjectSelected"), HCE::EventData("a, Window"), "1"});
    EXPECT_EQ(selected.count(), 0);
    EXPECT_FALSE(cellOf(model, TranslationGroup, 0).data().isValid());
}

TEST(QtPropertiesModelFillTest, EmptySceneManagerIsIgnored)
{
    PropertiesStage stage;
    stage.model->setSceneManager(nullptr);
    stage.select("a");
    EXPECT_EQ(stage.cell(IDGroup, -1).data(), QVariant("a"));
}

TEST(QtPropertiesModelFillTest, NodeIsLookedUpOnceAndOnTheThreadOfTheEvent)
{
    PropertiesStage stage;
    const auto scene = boost::make_shared<CountingScene>(nullptr);
    scene->setRoot(makeNode("n"));
    stage.model->setSceneManager(scene);
    std::thread dispatch([&] { stage.select("n"); });
    const std::thread::id dispatchID = dispatch.get_id();
    dispatch.join();
    QCoreApplication::processEvents();
    EXPECT_EQ(stage.cell(IDGroup, -1).data(), QVariant("n"));
    EXPECT_THAT(scene->requested, ElementsAre("n"));
    EXPECT_THAT(scene->threads, ElementsAre(dispatchID));
}

TEST(QtPropertiesModelFillTest, UnknownIDEmptiesThePanel)
{
    PropertiesStage stage;
    for (const char* id : {"unknown", ""}) {
        stage.select("a");
        stage.select(id);
        EXPECT_EQ(stage.cell(IDGroup, -1).data(), QVariant(""));
        for (const int group : {TranslationGroup, RotationGroup, ScaleGroup, LayersGroup})
            for (int row = 0; row < stage.model->rowCount(stage.cell(group, -1, 0)); ++row) {
                EXPECT_EQ(stage.value(group, row).type(), QVariant::String) << "an empty text, not invalid";
                EXPECT_EQ(stage.value(group, row).toString(), "");
                EXPECT_EQ(stage.cell(group, row).flags(), Qt::ItemIsEnabled);
            }
    }
}

TEST(QtPropertiesModelFillTest, WithoutANodeNoCellCanBeEdited)
{
    PropertiesStage stage;
    addLight(*stage.a, "sun", 1, 1, 1);
    addCamera(*stage.a, "eye", 1, 2, 3);
    stage.select("a");
    stage.select("unknown");
    EXPECT_EQ(stage.model->rowCount(stage.cell(LightsGroup, -1, 0)), 0);
    EXPECT_EQ(stage.model->rowCount(stage.cell(CamerasGroup, -1, 0)), 0);
    const auto found = stage.model->match(stage.model->index(0, 0), Qt::DisplayRole, ".*", -1,
                                          Qt::MatchRegularExpression | Qt::MatchRecursive);
    EXPECT_EQ(found.count(), 7 + 3 + 3 + 3 + 4);
    for (const QModelIndex& index : found)
        EXPECT_EQ(index.siblingAtColumn(1).flags(), Qt::ItemIsEnabled);
}

TEST(QtPropertiesModelFillTest, EmptyTableIsFilledWithEmptyTextsWhenAsked)
{
    QtPropertiesModel model({"Property", "Value"});
    QSignalSpy changed(&model, SIGNAL(dataChanged(QModelIndex, QModelIndex)));
    model.fillProperties();
    EXPECT_EQ(changed.count(), 14);
    EXPECT_EQ(cellOf(model, LayersGroup, 3).data(), QVariant(""));
}

TEST(QtPropertiesModelFillTest, WithoutANodeRowsUnderLightsAndCamerasGo)
{
    QtPropertiesModel model({"Property", "Value"});
    model.insertRows(0, 2, model.index(LightsGroup, 0));
    model.insertRows(0, 1, model.index(CamerasGroup, 0));
    model.insertRows(0, 3, model.index(0, 0, model.index(CamerasGroup, 0)));
    RowLog log(model);
    model.fillProperties();
    EXPECT_EQ(log.lines, QStringList({"- 5: 0-2", "-- 5: 0-2", "- 6: 0-1", "-- 6: 0-1"}));
    EXPECT_EQ(model.rowCount(model.index(LightsGroup, 0)), 0);
    EXPECT_EQ(model.rowCount(model.index(CamerasGroup, 0)), 0);
    log.lines.clear();
    model.fillProperties();
    EXPECT_THAT(log.lines, IsEmpty());
}

// Updates

TEST(QtPropertiesModelFillTest, TransformationUpdateOfTheNodeShownRefreshesItsValues)
{
    PropertiesStage stage;
    stage.select("a");
    QSignalSpy updated(stage.model.get(), SIGNAL(nodeUpdate()));
    moveTo(*stage.a, 1, 2, 3);
    EXPECT_THAT(stage.values(TranslationGroup), ElementsAre(0, 0, 0));
    stage.scene->update();
    EXPECT_EQ(updated.count(), 1);
    EXPECT_THAT(stage.values(TranslationGroup), ElementsAre(1, 2, 3));
}

TEST(QtPropertiesModelFillTest, TransformationUpdateOfAnotherNodeChangesNothing)
{
    PropertiesStage stage;
    stage.select("a");
    QSignalSpy updated(stage.model.get(), SIGNAL(nodeUpdate()));
    QSignalSpy changed(stage.model.get(), SIGNAL(dataChanged(QModelIndex, QModelIndex)));
    moveTo(*stage.a, 1, 2, 3);
    for (const char* id : {"b", "", "root", "A", "a "})
        stage.events->triggerEvent("NodeTransformationUpdate", id);
    EXPECT_EQ(updated.count() + changed.count(), 0);
    EXPECT_THAT(stage.values(TranslationGroup), ElementsAre(0, 0, 0));
}

TEST(QtPropertiesModelFillTest, TransformationUpdateWithoutANodeIsIgnored)
{
    PropertiesStage stage;
    QSignalSpy updated(stage.model.get(), SIGNAL(nodeUpdate()));
    stage.events->triggerEvent("NodeTransformationUpdate", "");
    stage.events->triggerEvent("NodeTransformationUpdate", "a");
    EXPECT_EQ(updated.count(), 0);
}

TEST(QtPropertiesModelFillTest, TransformationUpdateRebuildsNoRows)
{
    PropertiesStage stage;
    addLight(*stage.a, "sun", 1, 1, 1);
    stage.select("a");
    RowLog log(*stage.model);
    stage.events->triggerEvent("NodeTransformationUpdate", "a");
    EXPECT_THAT(log.lines, IsEmpty());
}

TEST(QtPropertiesModelFillTest, EachFilledCellIsAnnouncedOnceOnItsOwn)
{
    PropertiesStage stage;
    addLight(*stage.a, "sun", 1, 1, 1);
    addLight(*stage.a, "moon", 1, 1, 1);
    addCamera(*stage.a, "eye", 1, 2, 3);
    stage.select("a");
    QSignalSpy changed(stage.model.get(), SIGNAL(dataChanged(QModelIndex, QModelIndex)));
    stage.model->fillProperties();
    EXPECT_EQ(
        changedCells(changed),
        QStringList({"0/1",     "1/0/1", "1/1/1",   "1/2/1",   "2/0/1",   "2/1/1",   "2/2/1",   "3/0/1",
                     "3/1/1",   "3/2/1", "4/0/1",   "4/1/1",   "4/2/1",   "4/3/1",   "5/0/0",   "5/0/0/0",
                     "5/0/0/1", "6/0/0", "6/0/0/0", "6/0/0/1", "6/0/1/0", "6/0/1/1", "6/0/2/0", "6/0/2/1"}));
}

TEST(QtPropertiesModelFillTest, AllValuesAreInWhenTheFirstCellIsAnnounced)
{
    PropertiesStage stage;
    moveTo(*stage.a, 1, 2, 3);
    stage.a->addToLayer("post_render");
    QVariant last;
    QObject::connect(stage.model.get(), &QAbstractItemModel::dataChanged, [&] {
        if (!last.isValid())
            last = stage.value(LayersGroup, 3);
    });
    stage.select("a");
    EXPECT_EQ(last, QVariant(true));
}

TEST(QtPropertiesModelFillTest, AnotherSelectionWhileCellsAreAnnouncedIsFollowed)
{
    PropertiesStage stage;
    for (const auto& node : {stage.a, stage.b}) {
        addLight(*node, "sun", 1, 1, 1);
        addCamera(*node, "eye", 1, 2, 3);
    }
    bool once = false;
    QObject::connect(stage.model.get(), &QAbstractItemModel::dataChanged, [&] {
        if (!std::exchange(once, true))
            stage.select("b");
    });
    stage.select("a");
    EXPECT_EQ(stage.cell(IDGroup, -1).data(), QVariant("b"));
}

// Rounding

TEST(QtPropertiesModelFillTest, CoordinatesAreRoundedHalfUpToTwoDecimalsInSinglePrecision)
{
    EXPECT_EQ(shownFor(2.346F).toDouble(), 2.35);
    EXPECT_EQ(shownFor(2.344F).toDouble(), 2.34);
    EXPECT_EQ(shownFor(-0.004F).toDouble(), 0.0);
    EXPECT_EQ(shownFor(-0.006F).toDouble(), -0.01);
    EXPECT_EQ(shownFor(0.125F).toDouble(), 0.13);
    EXPECT_EQ(shownFor(-0.125F).toDouble(), -0.12);
    EXPECT_EQ(shownFor(0.005F).toDouble(), 0.01) << "the product is 0.5 in single precision";
    EXPECT_EQ(shownFor(-1.005F).toDouble(), -1.0);
    EXPECT_EQ(shownFor(1.005F).toDouble(), 1.01) << "1.005 as a float is less, but its product is 100.5";
    EXPECT_EQ(shownFor(123456.789F).toDouble(), 123456.79);
}

TEST(QtPropertiesModelFillTest, CoordinatesBeyondTheEditorsRangeAreShownAsTheyAre)
{
    EXPECT_EQ(shownFor(2.0e6F).toDouble(), 2.0e6);
    EXPECT_EQ(shownFor(-4.0e6F).toDouble(), -4.0e6);
}

TEST(QtPropertiesModelFillTest, ScaleIsRoundedToo)
{
    PropertiesStage stage;
    stage.a->setScale(Eigen::Vector3f(0.004F, 0.333333F, 2.346F));
    stage.select("a");
    EXPECT_THAT(stage.values(ScaleGroup), ElementsAre(0, 0.33, 2.35));
}

// Layers

TEST(QtPropertiesModelFillTest, LayerRowsShowMembershipAsEditableBools)
{
    const char* const layers[]{"hidden", "cast_shadow", "transparent", "post_render"};
    for (int member = 0; member < 4; ++member) {
        PropertiesStage stage;
        stage.a->addToLayer(layers[member]);
        stage.select("a");
        for (int row = 0; row < 4; ++row) {
            EXPECT_EQ(stage.value(LayersGroup, row), QVariant(row == member));
            EXPECT_EQ(stage.value(LayersGroup, row).type(), QVariant::Bool);
            EXPECT_TRUE(stage.cell(LayersGroup, row).flags() & Qt::ItemIsEditable);
        }
    }
}

TEST(QtPropertiesModelFillTest, HiddenIsTheLayerAndNotTheVisibleFlag)
{
    PropertiesStage stage;
    stage.a->setVisible(false);
    stage.b->addToLayer("hidden");
    stage.select("a");
    EXPECT_EQ(stage.value(LayersGroup, 0), QVariant(false));
    stage.select("b");
    EXPECT_EQ(stage.value(LayersGroup, 0), QVariant(true));
    EXPECT_TRUE(stage.b->isVisible());
}

// Lights and cameras

TEST(QtPropertiesModelFillTest, LightHasARowWithItsIDAndUnderItItsColour)
{
    PropertiesStage stage;
    addLight(*stage.a, "sun", 1, 0.5F, 0);
    stage.select("a");
    EXPECT_EQ(stage.model->rowCount(stage.cell(LightsGroup, -1, 0)), 1);
    EXPECT_EQ(stage.value(LightsGroup, 0, 0), QVariant("sun"));
    EXPECT_FALSE(stage.value(LightsGroup, 0).isValid());
    EXPECT_EQ(stage.model->rowCount(stage.cell(LightsGroup, 0, 0)), 1);
    EXPECT_EQ(stage.instanceValue(LightsGroup, 0, 0, 0), QVariant("color"));
    const QVariant color = stage.instanceValue(LightsGroup, 0, 0);
    EXPECT_EQ(color.type(), QVariant::Color);
    EXPECT_EQ(color.value<QColor>(), QColor::fromRgbF(1, 0.5, 0, 1));
}

TEST(QtPropertiesModelFillTest, CameraHasARowWithItsIDAndUnderItItsLensUnrounded)
{
    PropertiesStage stage;
    addCamera(*stage.a, "eye", 0.126F, 1000.126F, 33.333F);
    stage.select("a");
    EXPECT_EQ(stage.value(CamerasGroup, 0, 0), QVariant("eye"));
    EXPECT_FALSE(stage.value(CamerasGroup, 0).isValid());
    EXPECT_EQ(stage.model->rowCount(stage.cell(CamerasGroup, 0, 0)), 3);
    const char* const names[]{"Near", "Far", "FOV"};
    const float values[]{0.126F, 1000.126F, 33.333F};
    for (int child = 0; child < 3; ++child) {
        EXPECT_EQ(stage.instanceValue(CamerasGroup, 0, child, 0), QVariant(names[child]));
        EXPECT_EQ(stage.instanceValue(CamerasGroup, 0, child).type(), QVariant::Double);
        EXPECT_EQ(stage.instanceValue(CamerasGroup, 0, child).toDouble(), double(values[child]));
    }
}

TEST(QtPropertiesModelFillTest, OnlyTheValuesOfALightOrCameraAreEditable)
{
    PropertiesStage stage;
    addLight(*stage.a, "sun", 1, 1, 1);
    addCamera(*stage.a, "eye", 1, 2, 3);
    stage.select("a");
    for (const int group : {LightsGroup, CamerasGroup}) {
        for (const int column : {0, 1}) {
            EXPECT_EQ(stage.cell(group, -1, column).flags(), Qt::ItemIsEnabled);
            EXPECT_EQ(stage.cell(group, 0, column).flags(), Qt::ItemIsEnabled) << "IDs are not editable";
        }
        EXPECT_EQ(stage.instance(group, 0, 0, 0).flags(), Qt::ItemIsEnabled);
        EXPECT_TRUE(stage.instance(group, 0, 0).flags() & Qt::ItemIsEditable);
    }
}

TEST(QtPropertiesModelFillTest, OfTwoLightsTheFirstRowHasTheSecondsDataAndTheOtherStaysBlank)
{
    PropertiesStage stage;
    addLight(*stage.a, "sun", 1, 0, 0);
    addLight(*stage.a, "moon", 0, 0, 1);
    stage.select("a");
    EXPECT_EQ(stage.model->rowCount(stage.cell(LightsGroup, -1, 0)), 2);
    EXPECT_EQ(stage.value(LightsGroup, 0, 0), QVariant("moon"));
    EXPECT_EQ(stage.instanceValue(LightsGroup, 0, 0).value<QColor>(), QColor(Qt::blue));
    EXPECT_EQ(stage.model->rowCount(stage.cell(LightsGroup, 1, 0)), 1);
    for (const int column : {0, 1}) {
        EXPECT_FALSE(stage.value(LightsGroup, 1, column).isValid());
        EXPECT_FALSE(stage.instanceValue(LightsGroup, 1, 0, column).isValid());
        EXPECT_EQ(stage.instance(LightsGroup, 1, 0, column).flags(), Qt::ItemIsEnabled);
    }
}

TEST(QtPropertiesModelFillTest, OfThreeCamerasTheFirstRowHasTheLastsDataAndTheOthersStayBlank)
{
    PropertiesStage stage;
    addCamera(*stage.a, "one", 1, 10, 30);
    addCamera(*stage.a, "two", 2, 20, 40);
    addCamera(*stage.a, "three", 3, 30, 50);
    stage.select("a");
    EXPECT_EQ(stage.model->rowCount(stage.cell(CamerasGroup, -1, 0)), 3);
    EXPECT_EQ(stage.value(CamerasGroup, 0, 0), QVariant("three"));
    EXPECT_EQ(stage.instanceValue(CamerasGroup, 0, 0), QVariant(3.0));
    EXPECT_EQ(stage.instanceValue(CamerasGroup, 0, 1), QVariant(30.0));
    EXPECT_EQ(stage.instanceValue(CamerasGroup, 0, 2), QVariant(50.0));
    for (const int row : {1, 2}) {
        EXPECT_EQ(stage.model->rowCount(stage.cell(CamerasGroup, row, 0)), 3);
        EXPECT_FALSE(stage.value(CamerasGroup, row, 0).isValid());
        for (int child = 0; child < 3; ++child) {
            EXPECT_FALSE(stage.instanceValue(CamerasGroup, row, child, 0).isValid());
            EXPECT_FALSE(stage.instanceValue(CamerasGroup, row, child).isValid());
            EXPECT_EQ(stage.instance(CamerasGroup, row, child).flags(), Qt::ItemIsEnabled);
        }
    }
}

TEST(QtPropertiesModelFillTest, RowsAreAnnouncedWithTheirBoundsOneTooFar)
{
    PropertiesStage stage;
    addLight(*stage.a, "sun", 1, 0, 0);
    addLight(*stage.a, "moon", 0, 0, 1);
    addCamera(*stage.a, "eye", 1, 2, 3);
    RowLog log(*stage.model);
    stage.select("a");
    EXPECT_EQ(log.lines, QStringList({"- 5: 0-0", "-- 5: 0-0", "- 6: 0-0", "-- 6: 0-0", "+ 5: 0-1",
                                      "++ 5: 0-1", "+ 5: 1-2", "++ 5: 1-2", "+ 6: 0-1", "++ 6: 0-1"}))
        << "removal is announced even with no row";
    log.lines.clear();
    stage.select("b");
    EXPECT_EQ(log.lines, QStringList({"- 5: 0-2", "-- 5: 0-2", "- 6: 0-1", "-- 6: 0-1"}));
}

TEST(QtPropertiesModelFillTest, SelectionOfTheSameNodeRebuildsItsRowsIfNobodyHoldsOnToThem)
{
    PropertiesStage stage;
    addLight(*stage.a, "sun", 1, 0, 0);
    stage.select("a");
    addLight(*stage.a, "moon", 0, 0, 1);
    RowLog log(*stage.model);
    stage.select("a");
    EXPECT_EQ(log.lines, QStringList({"- 5: 0-1", "-- 5: 0-1", "- 6: 0-0", "-- 6: 0-0", "+ 5: 0-1",
                                      "++ 5: 0-1", "+ 5: 1-2", "++ 5: 1-2"}));
    EXPECT_EQ(stage.value(LightsGroup, 0, 0), QVariant("moon"));
}

TEST(QtPropertiesModelFillTest, RowsOfTheSameNodeThatSomebodyHoldsOnToStay)
{
    PropertiesStage stage;
    const auto light = addLight(*stage.a, "sun", 1, 0, 0);
    stage.select("a");
    const QPersistentModelIndex held = stage.instance(LightsGroup, 0, 0);
    RowLog log(*stage.model);
    light->setColor(0, 0, 1);
    stage.select("a");
    EXPECT_THAT(log.lines, IsEmpty());
    EXPECT_TRUE(held.isValid());
    EXPECT_EQ(held.data().value<QColor>(), QColor(Qt::blue)) << "the values are read anew all the same";
    stage.select("b");
    EXPECT_FALSE(held.isValid());
}

TEST(QtPropertiesModelFillTest, HeldRowsThatDoNotFitTheNodeAnyMoreAreRebuilt)
{
    PropertiesStage stage;
    addLight(*stage.a, "sun", 1, 0, 0);
    stage.select("a");
    const QPersistentModelIndex held = stage.instance(LightsGroup, 0, 0);
    addLight(*stage.a, "moon", 0, 0, 1);
    stage.select("a");
    EXPECT_EQ(stage.model->rowCount(stage.cell(LightsGroup, -1, 0)), 2);
}

TEST(QtPropertiesModelFillTest, NewRowHasItsChildrenWhenItsInsertionEnds)
{
    PropertiesStage stage;
    addLight(*stage.a, "sun", 1, 0, 0);
    addCamera(*stage.a, "eye", 1, 2, 3);
    std::vector<int> children;
    QObject::connect(stage.model.get(), &QAbstractItemModel::rowsInserted, [&](const QModelIndex& parent) {
        children.push_back(stage.model->rowCount(stage.model->index(0, 0, parent)));
    });
    stage.select("a");
    EXPECT_THAT(children, ElementsAre(1, 3));
}

TEST(QtPropertiesModelFillTest, NewRowsGoInFront)
{
    PropertiesStage stage;
    addLight(*stage.a, "sun", 1, 0, 0);
    addLight(*stage.a, "moon", 0, 0, 1);
    std::vector<void*> first;
    QObject::connect(stage.model.get(), &QAbstractItemModel::rowsInserted, [&](const QModelIndex& parent) {
        first.push_back(stage.model->index(0, 0, parent).internalPointer());
    });
    stage.select("a");
    ASSERT_EQ(first.size(), 2U);
    EXPECT_EQ(stage.cell(LightsGroup, 1, 0).internalPointer(), first[0]);
    EXPECT_EQ(stage.cell(LightsGroup, 0, 0).internalPointer(), first[1]);
}

TEST(QtPropertiesModelFillTest, EmptyLightAndCameraPointersAreSkipped)
{
    PropertiesStage stage;
    const auto hollow = boost::make_shared<HollowNode>("hollow", "");
    addLight(*hollow, "sun", 1, 0, 0);
    hollow->lights = 1;
    stage.a->addChildNode(hollow);
    stage.select("hollow");
    EXPECT_EQ(stage.model->rowCount(stage.cell(LightsGroup, -1, 0)), 2);
    EXPECT_EQ(stage.value(LightsGroup, 0, 0), QVariant("sun"));
    EXPECT_EQ(stage.model->rowCount(stage.cell(CamerasGroup, -1, 0)), 1);
    EXPECT_FALSE(stage.value(CamerasGroup, 0, 0).isValid());
    EXPECT_FALSE(stage.instanceValue(CamerasGroup, 0, 0, 0).isValid());
}

TEST(QtPropertiesModelFillTest, LightsThatCameWithoutANewSelectionHaveNoRowToBeFilled)
{
    PropertiesStage stage;
    stage.select("a");
    addLight(*stage.a, "sun", 1, 0, 0);
    addCamera(*stage.a, "eye", 1, 2, 3);
    stage.model->fillProperties();
    EXPECT_EQ(stage.model->rowCount(stage.cell(LightsGroup, -1, 0)), 0);
    EXPECT_EQ(stage.model->rowCount(stage.cell(CamerasGroup, -1, 0)), 0);
}

TEST(QtPropertiesModelFillTest, RowsShowTheNodeOfTheLastSelectionServedAndNotOneThatIsStillOnItsWay)
{
    PropertiesStage stage;
    stage.select("a");
    moveTo(*stage.b, 1, 2, 3);
    std::thread([&] { stage.select("b"); }).join();
    stage.model->fillProperties();
    EXPECT_EQ(stage.cell(IDGroup, -1).data(), QVariant("a"));
    QCoreApplication::processEvents();
    EXPECT_EQ(stage.cell(IDGroup, -1).data(), QVariant("b"));
}

TEST(QtPropertiesModelFillTest, ShownNodesAreCountedAndTheSameNodeAgainIsNot)
{
    PropertiesStage stage;
    EXPECT_EQ(stage.model->getShownCount(), 0);
    stage.select("a");
    stage.select("a");
    EXPECT_EQ(stage.model->getShownCount(), 1);
    stage.select("b");
    stage.select("");
    EXPECT_EQ(stage.model->getShownCount(), 3);
}

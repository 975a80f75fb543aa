#include "qt/PropertyItem.h"
#include "tests/qt/PropertiesStage.h"

#include <QMetaMethod>
#include <QSignalSpy>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <type_traits>

using halvern::qt::QtPropertiesModel;
using namespace halvern::test;
using testing::ElementsAre;

namespace {

const QStringList headers{"Property", "Value"};

std::vector<std::string> ownMethods(const QMetaObject& meta)
{
    std::vector<std::string> signatures;
    for (int i = meta.methodOffset(); i < meta.methodCount(); ++i)
        signatures.push_back(meta.method(i).methodSignature().toStdString());
    return signatures;
}

QStringList namesUnder(const QtPropertiesModel& model, const QModelIndex& parent = QModelIndex())
{
    QStringList names;
    for (int row = 0; row < model.rowCount(parent); ++row)
        names += model.index(row, 0, parent).data().toString();
    return names;
}

/// Emissions of a signal about rows or columns, as "row of the parent: first-last".
QStringList ranges(const QSignalSpy& spy)
{
    QStringList texts;
    for (const auto& arguments : spy)
        texts += QString("%1: %2-%3")
                     .arg(arguments[0].toModelIndex().row())
                     .arg(arguments[1].toInt())
                     .arg(arguments[2].toInt());
    return texts;
}

} // namespace

// The class

TEST(QtPropertiesModelTest, HasItsBasesInOrder)
{
    static_assert(std::is_base_of_v<QAbstractItemModel, QtPropertiesModel>);
    static_assert(std::is_base_of_v<HCE::EventBase, QtPropertiesModel>);
    static_assert(std::is_base_of_v<HS::ISceneController, QtPropertiesModel>);
    static_assert(std::is_base_of_v<boost::enable_shared_from_this<QtPropertiesModel>, QtPropertiesModel>);
    QtPropertiesModel model(headers);
    const char* qtBase = reinterpret_cast<const char*>(static_cast<QAbstractItemModel*>(&model));
    const char* eventBase = reinterpret_cast<const char*>(static_cast<HCE::EventBase*>(&model));
    const char* controller = reinterpret_cast<const char*>(static_cast<HS::ISceneController*>(&model));
    EXPECT_LT(qtBase, eventBase);
    EXPECT_LT(eventBase, controller);
}

TEST(QtPropertiesModelTest, MetaObjectListsSignalsThenSlots)
{
    EXPECT_STREQ(QtPropertiesModel::staticMetaObject.className(), "halvern::qt::QtPropertiesModel");
    EXPECT_THAT(ownMethods(QtPropertiesModel::staticMetaObject),
                ElementsAre("sceneSelection()", "nodeUpdate()", "createProperties()", "fillProperties()"));
}

TEST(QtPropertiesModelTest, MetaObjectKnowsTheBasesOfTheEngine)
{
    QtPropertiesModel model(headers);
    EXPECT_EQ(model.qt_metacast("HCE::EventBase"), static_cast<HCE::EventBase*>(&model));
    EXPECT_EQ(model.qt_metacast("HS::ISceneController"), static_cast<HS::ISceneController*>(&model));
}

TEST(QtPropertiesModelTest, HandsOutSharedPointersToItself)
{
    const auto model = boost::make_shared<QtPropertiesModel>(headers);
    EXPECT_EQ(model->shared_from_this(), model);
}

TEST(QtPropertiesModelTest, StartsWithoutAnEventManager)
{
    QtPropertiesModel model(headers);
    EXPECT_FALSE(model.getEventManager());
}

TEST(QtPropertiesModelTest, SignalsAreConnectedToTheSlotsOnce)
{
    QtPropertiesModel model(headers);
    QObject* object = &model;
    EXPECT_TRUE(QObject::disconnect(object, SIGNAL(sceneSelection()), object, SLOT(createProperties())));
    EXPECT_FALSE(QObject::disconnect(object, SIGNAL(sceneSelection()), object, SLOT(createProperties())));
    EXPECT_TRUE(QObject::disconnect(object, SIGNAL(nodeUpdate()), object, SLOT(fillProperties())));
    EXPECT_FALSE(QObject::disconnect(object, SIGNAL(nodeUpdate()), object, SLOT(fillProperties())));
}

TEST(QtPropertiesModelTest, ListensForTwoTypesAndLeavesWithItsLife)
{
    const auto events = boost::make_shared<SynchronousEventManager>();
    HCE::EventListener* listener = nullptr;
    {
        QtPropertiesModel model(headers);
        listener = &model;
        model.setEventManager(events);
        EXPECT_TRUE(events->isRegistered(listener));
        events->removeEventListener(listener, HCE::EventType("ObjectSelected"));
        EXPECT_TRUE(events->isRegistered(listener));
        events->removeEventListener(listener, HCE::EventType("NodeTransformationUpdate"));
        EXPECT_FALSE(events->isRegistered(listener));
        model.setEventManager(nullptr);
        model.setEventManager(events);
        EXPECT_TRUE(events->isRegistered(listener));
    }
    EXPECT_FALSE(events->isRegistered(listener));
}

// The fixed rows

TEST(QtPropertiesModelTest, HasSevenFixedRowsInOrder)
{
    const QtPropertiesModel model(headers);
    EXPECT_EQ(namesUnder(model),
              QStringList({"ID", "Translation", "Rotation", "Scale", "Layers", "Lights", "Cameras"}));
}

TEST(QtPropertiesModelTest, TransformRowsHaveXYZ)
{
    const QtPropertiesModel model(headers);
    for (const int group : {TranslationGroup, RotationGroup, ScaleGroup})
        EXPECT_EQ(namesUnder(model, model.index(group, 0)), QStringList({"X", "Y", "Z"}));
}

TEST(QtPropertiesModelTest, LayerRowsHaveTheirPlainNames)
{
    const QtPropertiesModel model(headers);
    EXPECT_EQ(namesUnder(model, model.index(LayersGroup, 0)),
              QStringList({"Hidden", "Cast Shadow", "Transparent", "Post Render"}));
}

TEST(QtPropertiesModelTest, IDLightsAndCamerasStartWithoutRows)
{
    const QtPropertiesModel model(headers);
    for (const int group : {IDGroup, LightsGroup, CamerasGroup})
        EXPECT_EQ(model.rowCount(model.index(group, 0)), 0);
}

TEST(QtPropertiesModelTest, ValueCellsAreInvalidAndNotEditableBeforeTheFirstSelection)
{
    const QtPropertiesModel model(headers);
    for (int group = IDGroup; group <= CamerasGroup; ++group)
        for (int row = -1; row < model.rowCount(model.index(group, 0)); ++row) {
            EXPECT_FALSE(cellOf(model, group, row).data().isValid());
            EXPECT_EQ(cellOf(model, group, row).flags(), Qt::ItemIsEnabled);
        }
}

TEST(QtPropertiesModelTest, NumberOfHeadersIsTheNumberOfColumnsEverywhere)
{
    const QtPropertiesModel model({"a", "b", "c"});
    EXPECT_EQ(model.columnCount(), 3);
    EXPECT_EQ(model.columnCount(model.index(1, 0)), 3);
    EXPECT_TRUE(model.index(0, 2, model.index(1, 0)).isValid());
    EXPECT_FALSE(model.index(0, 3, model.index(1, 0)).isValid());
}

TEST(QtPropertiesModelTest, WithoutHeadersThereAreNoCells)
{
    const QtPropertiesModel model(QStringList{});
    EXPECT_EQ(model.columnCount(), 0);
    EXPECT_FALSE(model.index(0, 0).isValid());
}

// Mapping

TEST(QtPropertiesModelTest, IndexAndParentLeadToAndFro)
{
    const QtPropertiesModel model(headers);
    const QModelIndex rotation = model.index(RotationGroup, 0);
    const QModelIndex y = model.index(1, 1, rotation);
    EXPECT_EQ(y.row(), 1);
    EXPECT_EQ(y.column(), 1);
    EXPECT_EQ(y.parent(), rotation);
    EXPECT_FALSE(rotation.parent().isValid());
    EXPECT_FALSE(model.parent(QModelIndex()).isValid());
}

TEST(QtPropertiesModelTest, ObjectParentIsStillToBeHad)
{
    QObject owner;
    const QtPropertiesModel model(headers, &owner);
    EXPECT_EQ(model.parent(), &owner);
}

TEST(QtPropertiesModelTest, IndexesOutOfRangeAreInvalid)
{
    const QtPropertiesModel model(headers);
    const QModelIndex rotation = model.index(RotationGroup, 0);
    EXPECT_FALSE(model.index(7, 0).isValid());
    EXPECT_FALSE(model.index(-1, 0).isValid());
    EXPECT_FALSE(model.index(0, -1).isValid());
    EXPECT_FALSE(model.index(3, 0, rotation).isValid());
    EXPECT_FALSE(model.index(0, 2, rotation).isValid());
}

TEST(QtPropertiesModelTest, OnlyColumnZeroHasRowsBelow)
{
    const QtPropertiesModel model(headers);
    const QModelIndex value = model.index(RotationGroup, 1);
    EXPECT_EQ(model.rowCount(model.index(RotationGroup, 0)), 3);
    EXPECT_EQ(model.rowCount(value), 0);
    EXPECT_FALSE(model.index(0, 0, value).isValid());
}

TEST(QtPropertiesModelTest, DataIsTheSameForDisplayAndEditAndNothingForOtherRoles)
{
    const QtPropertiesModel model(headers);
    const QModelIndex name = model.index(0, 0);
    EXPECT_EQ(model.data(name), QVariant("ID"));
    EXPECT_EQ(model.data(name, Qt::EditRole), QVariant("ID"));
    for (const int role : {int(Qt::ToolTipRole), int(Qt::BackgroundRole), int(Qt::UserRole)})
        EXPECT_FALSE(model.data(name, role).isValid());
    EXPECT_FALSE(model.data(QModelIndex()).isValid());
}

TEST(QtPropertiesModelTest, InvalidIndexHasNoFlagsAndACellThatIsNotEditableIsOnlyEnabled)
{
    const QtPropertiesModel model(headers);
    EXPECT_EQ(model.flags(QModelIndex()), Qt::NoItemFlags);
    EXPECT_EQ(model.flags(model.index(1, 0)), Qt::ItemIsEnabled);
}

// Headers

TEST(QtPropertiesModelTest, HeaderTextsAreShownHorizontallyOnly)
{
    const QtPropertiesModel model(headers);
    EXPECT_EQ(model.headerData(0, Qt::Horizontal), QVariant("Property"));
    EXPECT_EQ(model.headerData(1, Qt::Horizontal), QVariant("Value"));
    EXPECT_FALSE(model.headerData(2, Qt::Horizontal).isValid());
    EXPECT_FALSE(model.headerData(-1, Qt::Horizontal).isValid());
    EXPECT_FALSE(model.headerData(0, Qt::Vertical).isValid());
    EXPECT_FALSE(model.headerData(0, Qt::Horizontal, Qt::EditRole).isValid());
}

TEST(QtPropertiesModelTest, SetHeaderDataChangesTheTextAndSaysSo)
{
    qRegisterMetaType<Qt::Orientation>("Qt::Orientation"); // for the signal spy
    QtPropertiesModel model(headers);
    QSignalSpy changed(&model, SIGNAL(headerDataChanged(Qt::Orientation, int, int)));
    EXPECT_TRUE(model.setHeaderData(1, Qt::Horizontal, "Number"));
    EXPECT_EQ(model.headerData(1, Qt::Horizontal), QVariant("Number"));
    ASSERT_EQ(changed.count(), 1);
    EXPECT_EQ(changed[0][1].toInt(), 1);
    EXPECT_EQ(changed[0][2].toInt(), 1);
}

TEST(QtPropertiesModelTest, SetHeaderDataRefusesOtherRolesDirectionsAndSections)
{
    qRegisterMetaType<Qt::Orientation>("Qt::Orientation"); // for the signal spy
    QtPropertiesModel model(headers);
    QSignalSpy changed(&model, SIGNAL(headerDataChanged(Qt::Orientation, int, int)));
    EXPECT_FALSE(model.setHeaderData(0, Qt::Horizontal, "x", Qt::DisplayRole));
    EXPECT_FALSE(model.setHeaderData(0, Qt::Vertical, "x"));
    EXPECT_FALSE(model.setHeaderData(2, Qt::Horizontal, "x"));
    EXPECT_FALSE(model.setHeaderData(-1, Qt::Horizontal, "x"));
    EXPECT_EQ(changed.count(), 0);
}

// Editing of the tree

TEST(QtPropertiesModelTest, RowsAreInsertedWithTheirAnnouncements)
{
    QtPropertiesModel model(headers);
    QSignalSpy before(&model, SIGNAL(rowsAboutToBeInserted(QModelIndex, int, int)));
    QSignalSpy after(&model, SIGNAL(rowsInserted(QModelIndex, int, int)));
    const QModelIndex scale = model.index(ScaleGroup, 0);
    EXPECT_TRUE(model.insertRows(1, 2, scale));
    EXPECT_EQ(ranges(before), QStringList("3: 1-2"));
    EXPECT_EQ(ranges(after), QStringList("3: 1-2"));
    EXPECT_EQ(namesUnder(model, scale), QStringList({"X", "", "", "Y", "Z"}));
    EXPECT_TRUE(model.insertRows(7, 1));
    EXPECT_EQ(model.rowCount(), 8);
}

TEST(QtPropertiesModelTest, RowsAreRemovedWithTheirAnnouncements)
{
    QtPropertiesModel model(headers);
    QSignalSpy before(&model, SIGNAL(rowsAboutToBeRemoved(QModelIndex, int, int)));
    QSignalSpy after(&model, SIGNAL(rowsRemoved(QModelIndex, int, int)));
    const QModelIndex layers = model.index(LayersGroup, 0);
    EXPECT_TRUE(model.removeRows(1, 2, layers));
    EXPECT_EQ(ranges(before), QStringList("4: 1-2"));
    EXPECT_EQ(ranges(after), QStringList("4: 1-2"));
    EXPECT_EQ(namesUnder(model, layers), QStringList({"Hidden", "Post Render"}));
}

TEST(QtPropertiesModelTest, RowsOutOfRangeAreNeitherInsertedNorRemovedNorAnnounced)
{
    QtPropertiesModel model(headers);
    QSignalSpy inserted(&model, SIGNAL(rowsAboutToBeInserted(QModelIndex, int, int)));
    QSignalSpy removed(&model, SIGNAL(rowsAboutToBeRemoved(QModelIndex, int, int)));
    const QModelIndex value = model.index(ScaleGroup, 1);
    EXPECT_FALSE(model.insertRows(-1, 1));
    EXPECT_FALSE(model.insertRows(8, 1));
    EXPECT_FALSE(model.insertRows(0, 0));
    EXPECT_FALSE(model.insertRows(0, 1, value));
    EXPECT_FALSE(model.removeRows(-1, 1));
    EXPECT_FALSE(model.removeRows(6, 2));
    EXPECT_FALSE(model.removeRows(0, 0));
    EXPECT_FALSE(model.removeRows(0, 1, value));
    EXPECT_EQ(inserted.count() + removed.count(), 0);
    EXPECT_EQ(model.rowCount(), 7);
}

TEST(QtPropertiesModelTest, ColumnsAreInsertedAndRemovedInTheWholeTreeWithTheirAnnouncements)
{
    QtPropertiesModel model(headers);
    QSignalSpy inserted(&model, SIGNAL(columnsInserted(QModelIndex, int, int)));
    QSignalSpy removed(&model, SIGNAL(columnsRemoved(QModelIndex, int, int)));
    EXPECT_TRUE(model.insertColumns(0, 1));
    EXPECT_EQ(ranges(inserted), QStringList("-1: 0-0"));
    EXPECT_EQ(model.columnCount(), 3);
    EXPECT_EQ(model.index(0, 1, model.index(1, 0)).data(), QVariant("X"));
    EXPECT_TRUE(model.removeColumns(0, 1));
    EXPECT_EQ(ranges(removed), QStringList("-1: 0-0"));
    EXPECT_EQ(model.index(0, 0, model.index(1, 0)).data(), QVariant("X"));
    EXPECT_EQ(model.headerData(0, Qt::Horizontal), QVariant("Property"));
}

TEST(QtPropertiesModelTest, ColumnsOutOfRangeAreNeitherInsertedNorRemovedNorAnnounced)
{
    QtPropertiesModel model(headers);
    QSignalSpy inserted(&model, SIGNAL(columnsAboutToBeInserted(QModelIndex, int, int)));
    QSignalSpy removed(&model, SIGNAL(columnsAboutToBeRemoved(QModelIndex, int, int)));
    EXPECT_FALSE(model.insertColumns(3, 1));
    EXPECT_FALSE(model.insertColumns(0, 0));
    EXPECT_FALSE(model.insertColumns(-1, 1));
    EXPECT_FALSE(model.removeColumns(1, 2));
    EXPECT_FALSE(model.removeColumns(-1, 1));
    EXPECT_FALSE(model.removeColumns(0, 0));
    EXPECT_EQ(inserted.count() + removed.count(), 0);
}

TEST(QtPropertiesModelTest, FixedRowsMayBeRemovedAndAreNotFilledAnyMore)
{
    for (int group = IDGroup; group <= CamerasGroup; ++group) {
        PropertiesStage stage;
        addLight(*stage.a, "sun", 1, 1, 1);
        addCamera(*stage.a, "eye", 1, 2, 3);
        stage.select("a");
        stage.edit(TranslationGroup, 0, 5);
        EXPECT_TRUE(stage.model->removeRows(group, 1));
        EXPECT_EQ(stage.model->rowCount(), 6);
        stage.select("b");
        stage.select("a");
        stage.scene->update();
        stage.select("unknown");
        EXPECT_EQ(positionOf(*stage.a), Eigen::Vector3f(5, 0, 0));
    }
}

TEST(QtPropertiesModelTest, AllRowsMayBeRemoved)
{
    PropertiesStage stage;
    stage.select("a");
    EXPECT_TRUE(stage.model->removeRows(0, 7));
    stage.select("b");
    stage.select("");
    EXPECT_EQ(stage.model->rowCount(), 0);
}

TEST(QtPropertiesModelTest, FixedRowsBehindARemovedOneAreStillFilled)
{
    PropertiesStage stage;
    stage.select("a");
    EXPECT_TRUE(stage.model->removeRows(IDGroup, 1));
    moveTo(*stage.b, 1, 2, 3);
    stage.select("b");
    EXPECT_THAT(stage.values(TranslationGroup - 1), ElementsAre(1, 2, 3));
    EXPECT_FALSE(stage.cell(TranslationGroup - 1, -1).data().isValid());
}

TEST(QtPropertiesModelTest, RemovedValueRowReadsAsZero)
{
    PropertiesStage stage;
    moveTo(*stage.a, 1, 2, 3);
    stage.select("a");
    EXPECT_TRUE(stage.model->removeRows(2, 1, stage.model->index(TranslationGroup, 0)));
    stage.edit(TranslationGroup, 0, 7);
    stage.scene->update();
    EXPECT_EQ(positionOf(*stage.a), Eigen::Vector3f(7, 2, 0));
}

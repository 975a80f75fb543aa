#include "qt/QtMaterialPanelModel.h"
#include "tests/qt/MaterialScene.h"
#include "tests/qt/ViewProbe.h"
#include "tests/support/MetaObjects.h"
#include "tests/support/SynchronousEventManager.h"

#include <QMimeData>
#include <QSignalSpy>
#include <QThread>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <thread>
#include <type_traits>

using halvern::qt::QtMaterialPanelModel;
using namespace halvern::test;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

/// Notes who registers for what.
class RegistrationLog : public RecordingEventManager
{
public:
    void registerEventListener(HCE::EventListener* /*listener*/, HCE::EventType type) override
    {
        types.push_back(type.getName());
    }

    std::vector<std::string> types;
};

/// Counts the models that leave it before their destructor is through.
class LeavingLog : public RecordingEventManager
{
public:
    void removeEventListener(HCE::EventListener* listener) override
    {
        wholeModels += dynamic_cast<QtMaterialPanelModel*>(listener) ? 1 : 0;
    }
    using EventManager::removeEventListener;

    int wholeModels = 0;
};

/// The texts of all cells that have one, row by row.
QStringList textsOf(const QAbstractItemModel& model)
{
    QStringList texts;
    for (int row = 0; row < model.rowCount(); ++row)
        for (int column = 0; column < model.columnCount(); ++column)
            if (const QVariant text = model.index(row, column).data(); text.isValid())
                texts += text.toString();
    return texts;
}

/// A model that nothing is queued in, with its scene at hand.
class QtMaterialPanelModelTest : public testing::Test
{
protected:
    QtMaterialPanelModelTest() { model->update(); }

    /// Shows these materials in a grid of so many columns; every reset so far is forgotten.
    void show(const std::vector<std::string>& ids, int columns)
    {
        scene->setMaterials(makeMaterials(ids));
        model->setColumnCount(columns);
        model->setSceneManager(scene);
        model->update();
        resets.clear();
        scene->fetches = 0;
    }

    void send(const std::string& type, const std::string& data = "")
    {
        model->handleEvent(makeEvent(type, data));
    }

    const boost::shared_ptr<MaterialScene> scene = boost::make_shared<MaterialScene>();
    const std::unique_ptr<QtMaterialPanelModel> model = std::make_unique<QtMaterialPanelModel>();
    QSignalSpy resets{model.get(), SIGNAL(modelReset())};
};

} // namespace

// Class and meta-object

TEST_F(QtMaterialPanelModelTest, DerivesFromTableModelThenFromControllerThenFromEventBase)
{
    static_assert(std::is_convertible_v<QtMaterialPanelModel*, QAbstractTableModel*>);
    void* const table = static_cast<QAbstractTableModel*>(model.get());
    void* const controller = static_cast<HS::ISceneController*>(model.get());
    void* const base = static_cast<HCE::EventBase*>(model.get());
    EXPECT_EQ(table, model.get());
    EXPECT_LT(table, controller);
    EXPECT_LT(controller, base);
}

TEST_F(QtMaterialPanelModelTest, MetaObjectCarriesTheQualifiedNameAndNothingOfItsOwn)
{
    const QMetaObject& meta = *model->metaObject();
    EXPECT_STREQ(meta.className(), "halvern::qt::QtMaterialPanelModel");
    EXPECT_EQ(meta.superClass(), &QAbstractTableModel::staticMetaObject);
    EXPECT_THAT(ownMethods(meta), IsEmpty());
    EXPECT_EQ(meta.propertyCount(), meta.propertyOffset());
}

TEST_F(QtMaterialPanelModelTest, MetaObjectSpellsTheOtherBasesWithTheirAliases)
{
    EXPECT_EQ(model->qt_metacast("HCE::EventBase"), static_cast<HCE::EventBase*>(model.get()));
    EXPECT_EQ(model->qt_metacast("HS::ISceneController"), static_cast<HS::ISceneController*>(model.get()));
}

// Construction

TEST_F(QtMaterialPanelModelTest, HasNoRowAndNoColumnAtFirst)
{
    EXPECT_EQ(model->rowCount(), 0);
    EXPECT_EQ(model->columnCount(), 0);
    EXPECT_FALSE(model->index(0, 0).isValid());
    EXPECT_FALSE(model->getEventManager());
}

TEST_F(QtMaterialPanelModelTest, BelongsToTheParentItIsGiven)
{
    QObject parent;
    const auto* child = new QtMaterialPanelModel(&parent);
    EXPECT_EQ(child->QObject::parent(), &parent);
}

TEST_F(QtMaterialPanelModelTest, ListensForSceneAttachedThenForSceneUpdate)
{
    const auto events = boost::make_shared<RegistrationLog>();
    model->setEventManager(events);
    EXPECT_THAT(events->types, ElementsAre("SceneAttached", "SceneUpdate"));
}

TEST_F(QtMaterialPanelModelTest, TheFirstUpdateReturnsTrueWithNothingQueued)
{
    QtMaterialPanelModel fresh;
    const QSignalSpy freshResets(&fresh, SIGNAL(modelReset()));
    EXPECT_TRUE(fresh.update());
    EXPECT_FALSE(fresh.update());
    EXPECT_EQ(freshResets.count(), 0);
}

// The grid

TEST_F(QtMaterialPanelModelTest, HasARowMoreThanTheQuotientOfMaterialsAndColumns)
{
    struct Grid
    {
        int materials, columns, rows;
    };
    for (const Grid& grid : {Grid{1, 3, 1}, Grid{2, 3, 1}, Grid{3, 3, 2}, Grid{4, 3, 2}, Grid{6, 3, 3},
                             Grid{1, 1, 2}, Grid{5, 1, 6}, Grid{500, 7, 72}, Grid{500, 1000, 1}}) {
        show(makeIDs(grid.materials), grid.columns);
        EXPECT_EQ(model->rowCount(), grid.rows) << grid.materials << " in " << grid.columns;
        EXPECT_EQ(model->columnCount(), grid.columns);
    }
}

TEST_F(QtMaterialPanelModelTest, AnEmptyListHasNoRow)
{
    show({}, 3);
    EXPECT_EQ(model->rowCount(), 0);
    EXPECT_EQ(model->columnCount(), 3);
}

TEST_F(QtMaterialPanelModelTest, AColumnCountBelowOneHasTheRowsOfOneColumn)
{
    for (const int columns : {0, -1, -7}) {
        show({"a", "b", "c"}, columns);
        EXPECT_EQ(model->columnCount(), columns);
        EXPECT_EQ(model->rowCount(), 4);
    }
}

TEST_F(QtMaterialPanelModelTest, RowAndColumnCountIgnoreTheirParent)
{
    show({"a", "b", "c"}, 2);
    const QModelIndex cell = model->index(0, 1);
    EXPECT_EQ(model->rowCount(cell), 2);
    EXPECT_EQ(model->columnCount(cell), 2);
}

// Cells

TEST_F(QtMaterialPanelModelTest, ShowsTheMaterialsRowByRowInTheOrderOfTheScene)
{
    show({"c", "a", "b", "a"}, 2);
    EXPECT_EQ(model->index(0, 0).data(), "c");
    EXPECT_EQ(model->index(0, 1).data(), "a");
    EXPECT_EQ(model->index(1, 0).data(), "b");
    EXPECT_EQ(model->index(1, 1).data(), "a");
}

TEST_F(QtMaterialPanelModelTest, ReadsIDsAsUtf8)
{
    show({"Gr\xC3\xBCn"}, 1);
    EXPECT_EQ(model->index(0, 0).data(), QString::fromUtf8("Gr\xC3\xBCn"));
}

TEST_F(QtMaterialPanelModelTest, CellsBehindTheLastMaterialHaveNoData)
{
    show({"a", "b", "c"}, 3);
    EXPECT_TRUE(model->index(1, 0).isValid());
    for (int column = 0; column < 3; ++column)
        EXPECT_FALSE(model->index(1, column).data().isValid());
}

TEST_F(QtMaterialPanelModelTest, OnlyTheDisplayRoleHasData)
{
    show({"a"}, 1);
    EXPECT_EQ(model->data(model->index(0, 0)).type(), QVariant::String);
    for (int role = 0; role < Qt::UserRole + 2; ++role)
        EXPECT_EQ(model->data(model->index(0, 0), role).isValid(), role == Qt::DisplayRole) << role;
}

TEST_F(QtMaterialPanelModelTest, TheInvalidIndexHasNoData)
{
    show({"a"}, 1);
    EXPECT_FALSE(model->data(QModelIndex()).isValid());
}

TEST_F(QtMaterialPanelModelTest, HeadersHaveNoData)
{
    show({"a", "b"}, 2);
    for (const Qt::Orientation orientation : {Qt::Horizontal, Qt::Vertical})
        for (int role = 0; role < Qt::UserRole; ++role)
            EXPECT_FALSE(model->headerData(0, orientation, role).isValid());
}

TEST_F(QtMaterialPanelModelTest, EveryCellCanBeSelectedAndDraggedAnEmptyOneToo)
{
    show({"a"}, 2);
    for (int column = 0; column < 2; ++column) {
        EXPECT_EQ(model->flags(model->index(0, column)),
                  Qt::ItemIsSelectable | Qt::ItemIsDragEnabled | Qt::ItemIsEnabled);
        EXPECT_EQ(int(model->flags(model->index(0, column))), 37);
    }
}

TEST_F(QtMaterialPanelModelTest, TheInvalidIndexTakesDropsOnly)
{
    EXPECT_EQ(model->flags(QModelIndex()), Qt::ItemIsDropEnabled);
    EXPECT_EQ(int(model->flags(QModelIndex())), 8);
}

// Drags

TEST_F(QtMaterialPanelModelTest, ADragCarriesTheIDAsPlainTextAndNothingElse)
{
    show({"a", "Gr\xC3\xBCn"}, 2);
    const std::unique_ptr<QMimeData> mime(model->mimeData({model->index(0, 1)}));
    ASSERT_TRUE(mime);
    EXPECT_EQ(mime->text(), QString::fromUtf8("Gr\xC3\xBCn"));
    EXPECT_EQ(mime->formats(), QStringList("text/plain"));
}

TEST_F(QtMaterialPanelModelTest, ADragOfAnEmptyCellIsNone)
{
    show({"a"}, 2);
    EXPECT_EQ(model->mimeData({model->index(0, 1)}), nullptr);
    EXPECT_EQ(model->mimeData({QModelIndex()}), nullptr);
}

TEST_F(QtMaterialPanelModelTest, ADragOfAMaterialWithAnEmptyIDIsNone)
{
    show({""}, 1);
    EXPECT_TRUE(model->index(0, 0).data().isValid());
    EXPECT_EQ(model->mimeData({model->index(0, 0)}), nullptr);
}

TEST_F(QtMaterialPanelModelTest, ADragOfNoneOrOfTwoCellsIsNone)
{
    show({"a", "b"}, 2);
    EXPECT_EQ(model->mimeData({}), nullptr);
    EXPECT_EQ(model->mimeData({model->index(0, 0), model->index(0, 1)}), nullptr);
    EXPECT_EQ(model->mimeData({model->index(0, 0), model->index(0, 0)}), nullptr);
}

// What asks for a rebuild

TEST_F(QtMaterialPanelModelTest, ANewSceneIsShownInItsNextCycle)
{
    scene->setMaterials(makeMaterials({"a", "b"}));
    model->setColumnCount(1);
    resets.clear();
    model->setSceneManager(scene);
    EXPECT_EQ(resets.count(), 0);
    EXPECT_EQ(scene->fetches, 0);
    EXPECT_TRUE(model->update());
    EXPECT_EQ(resets.count(), 1);
    EXPECT_EQ(textsOf(*model), QStringList({"a", "b"}));
    EXPECT_FALSE(model->update());
}

TEST_F(QtMaterialPanelModelTest, AnEmptySceneManagerIsIgnored)
{
    show({"a"}, 1);
    model->setSceneManager(nullptr);
    EXPECT_FALSE(model->update());
    send("SceneAttached");
    model->update();
    EXPECT_EQ(textsOf(*model), QStringList("a"));
}

TEST_F(QtMaterialPanelModelTest, AnotherSceneTakesThePlaceOfTheFirst)
{
    show({"a"}, 1);
    const auto other = boost::make_shared<MaterialScene>(std::vector<std::string>{"b", "c"});
    model->setSceneManager(other);
    model->update();
    EXPECT_EQ(textsOf(*model), QStringList({"b", "c"}));
    EXPECT_EQ(scene->fetches, 0);
}

TEST_F(QtMaterialPanelModelTest, ASceneThatIsReplacedIsReleased)
{
    boost::weak_ptr<MaterialScene> old;
    {
        const auto first = boost::make_shared<MaterialScene>();
        old = first;
        model->setSceneManager(first);
    }
    EXPECT_FALSE(old.expired());
    model->setSceneManager(scene);
    EXPECT_TRUE(old.expired());
}

TEST_F(QtMaterialPanelModelTest, EverySceneAttachedAsksForARebuild)
{
    for (const char* data : {"", "anything", "MaterialList", "a, b"}) {
        show({"a"}, 1);
        send("SceneAttached", data);
        EXPECT_EQ(resets.count(), 0);
        EXPECT_TRUE(model->update());
        EXPECT_EQ(resets.count(), 1);
    }
}

TEST_F(QtMaterialPanelModelTest, SceneUpdateOfTheMaterialListAsksForARebuild)
{
    for (const char* data : {"MaterialList", "MaterialList, more", "MaterialList,"}) {
        show({"a"}, 1);
        send("SceneUpdate", data);
        EXPECT_EQ(resets.count(), 0);
        EXPECT_TRUE(model->update());
        EXPECT_EQ(resets.count(), 1);
    }
}

TEST_F(QtMaterialPanelModelTest, SceneUpdateOfAnythingElseIsIgnored)
{
    show({"a"}, 1);
    for (const char* data : {"", "MaterialLis", "MaterialLists", "MaterialList ", " MaterialList",
                             "materiallist", "M", "Other, MaterialList", "MaterialList\n", ", MaterialList"})
        send("SceneUpdate", data);
    EXPECT_FALSE(model->update());
    EXPECT_EQ(resets.count(), 0);
}

TEST_F(QtMaterialPanelModelTest, OtherEventsAreIgnored)
{
    show({"a"}, 1);
    send("SceneTopologyUpdate", "MaterialList");
    send("sceneattached");
    EXPECT_FALSE(model->update());
}

TEST_F(QtMaterialPanelModelTest, EventsReachItThroughAManagerThatDeliversAtOnce)
{
    show({"a"}, 1);
    const auto events = boost::make_shared<SynchronousEventManager>();
    model->setEventManager(events);
    events->triggerEvent("SceneAttached", "");
    events->triggerEvent("SceneUpdate", "MaterialList");
    EXPECT_TRUE(model->update());
    EXPECT_EQ(resets.count(), 2);
    EXPECT_EQ(events->getExceptionCount(), 0u);
}

TEST_F(QtMaterialPanelModelTest, EventsReachItThroughAManagerWithAThreadOfItsOwn)
{
    show({"a"}, 1);
    const auto events = boost::make_shared<HCE::EventManager>(true);
    model->setEventManager(events);
    events->triggerEvent("SceneAttached", "");
    events->triggerEvent("SceneUpdate", "MaterialList");
    events->waitUntilIdle();
    EXPECT_EQ(resets.count(), 0);
    EXPECT_TRUE(model->update());
    EXPECT_EQ(resets.count(), 2);
}

TEST_F(QtMaterialPanelModelTest, NoEventReachesItAfterItLeftItsManager)
{
    show({"a"}, 1);
    const auto events = boost::make_shared<SynchronousEventManager>();
    model->setEventManager(events);
    model->setEventManager(nullptr);
    events->triggerEvent("SceneAttached", "");
    EXPECT_FALSE(model->update());
}

// Rebuilds

TEST_F(QtMaterialPanelModelTest, TwoRequestsAreTwoResetsInOneUpdate)
{
    show({"a"}, 1);
    send("SceneAttached");
    send("SceneUpdate", "MaterialList");
    EXPECT_TRUE(model->update());
    EXPECT_EQ(resets.count(), 2);
    EXPECT_EQ(scene->fetches, 2);
    EXPECT_FALSE(model->update());
}

TEST_F(QtMaterialPanelModelTest, EachRebuildFetchesTheListItself)
{
    show({"a"}, 1);
    QStringList seen;
    QObject::connect(model.get(), &QAbstractItemModel::modelReset, [&] {
        seen += textsOf(*model).join(' ');
        scene->setMaterials(makeMaterials({"c", "d"}));
    });
    send("SceneAttached");
    send("SceneAttached");
    scene->setMaterials(makeMaterials({"b"}));
    model->update();
    EXPECT_EQ(seen, QStringList({"b", "c d"}));
}

TEST_F(QtMaterialPanelModelTest, TheListIsFetchedInsideTheReset)
{
    show({"a"}, 1);
    QStringList steps;
    QObject::connect(model.get(), &QAbstractItemModel::modelAboutToBeReset, [&] { steps += "begin"; });
    QObject::connect(model.get(), &QAbstractItemModel::modelReset, [&] { steps += "end"; });
    scene->onFetch = [&] { steps += "fetch"; };
    send("SceneAttached");
    model->update();
    EXPECT_EQ(steps, QStringList({"begin", "fetch", "end"}));
}

TEST_F(QtMaterialPanelModelTest, AListThatBecameEmptyLeavesNoRow)
{
    show({"a", "b"}, 1);
    EXPECT_EQ(model->rowCount(), 3);
    scene->setMaterials({});
    send("SceneAttached");
    model->update();
    EXPECT_EQ(model->rowCount(), 0);
    EXPECT_EQ(model->columnCount(), 1);
}

TEST_F(QtMaterialPanelModelTest, EmptyPointersInTheListAreSkipped)
{
    show({}, 2);
    MaterialList materials = makeMaterials({"a", "b"});
    materials.insert(materials.begin() + 1, nullptr);
    scene->setMaterials(materials);
    send("SceneAttached");
    model->update();
    EXPECT_EQ(textsOf(*model), QStringList({"a", "b"}));
    EXPECT_EQ(model->rowCount(), 2);
}

TEST_F(QtMaterialPanelModelTest, WithoutASceneARebuildKeepsTheRows)
{
    send("SceneAttached");
    EXPECT_TRUE(model->update());
    EXPECT_EQ(resets.count(), 1);
    model->setColumnCount(3);
    EXPECT_EQ(resets.count(), 2);
    EXPECT_EQ(model->rowCount(), 0);
    EXPECT_EQ(model->columnCount(), 3);
}

TEST_F(QtMaterialPanelModelTest, ARequestDuringARebuildWaitsForTheNextUpdate)
{
    show({"a"}, 1);
    scene->onFetch = [&] {
        scene->onFetch = nullptr;
        send("SceneAttached");
    };
    send("SceneAttached");
    EXPECT_TRUE(model->update());
    EXPECT_EQ(resets.count(), 1);
    EXPECT_TRUE(model->update());
    EXPECT_EQ(resets.count(), 2);
    EXPECT_FALSE(model->update());
}

TEST_F(QtMaterialPanelModelTest, NoLockIsHeldDuringARebuild)
{
    show({"a"}, 1);
    scene->onFetch = [&] {
        std::thread([&] {
            send("SceneAttached");
            model->setSceneManager(scene);
        }).join(); // would never end
    };
    send("SceneAttached");
    model->update();
    scene->onFetch = nullptr;
    EXPECT_EQ(resets.count(), 1);
    model->update();
    EXPECT_EQ(resets.count(), 3);
}

// Columns

TEST_F(QtMaterialPanelModelTest, SettingTheColumnsRebuildsAtOnceFromTheFreshList)
{
    show({"a"}, 1);
    scene->setMaterials(makeMaterials({"a", "b", "c"}));
    model->setColumnCount(2);
    EXPECT_EQ(resets.count(), 1);
    EXPECT_EQ(textsOf(*model), QStringList({"a", "b", "c"}));
    EXPECT_EQ(model->rowCount(), 2);
    EXPECT_FALSE(model->update());
}

TEST_F(QtMaterialPanelModelTest, SettingTheColumnsCountsTheRowsOfTheOldListFirst)
{
    show({"a", "b", "c", "d"}, 1);
    scene->setMaterials(makeMaterials({"a"}));
    int before = -1;
    QObject::connect(model.get(), &QAbstractItemModel::modelAboutToBeReset,
                     [&] { before = model->rowCount(); });
    model->setColumnCount(3);
    EXPECT_EQ(before, 2);
    EXPECT_EQ(model->rowCount(), 1);
}

TEST_F(QtMaterialPanelModelTest, SettingTheSameColumnsRebuildsToo)
{
    show({"a"}, 2);
    model->setColumnCount(2);
    EXPECT_EQ(resets.count(), 1);
}

TEST_F(QtMaterialPanelModelTest, SettingTheColumnsLeavesTheQueueAsItIs)
{
    show({"a"}, 1);
    send("SceneAttached");
    model->setColumnCount(2);
    EXPECT_EQ(resets.count(), 1);
    EXPECT_TRUE(model->update());
    EXPECT_EQ(resets.count(), 2);
}

TEST_F(QtMaterialPanelModelTest, TheColumnsMayBeSetByWhoSeesAReset)
{
    show({"a", "b", "c"}, 1);
    QObject::connect(model.get(), &QAbstractItemModel::modelReset, [&] {
        if (model->columnCount() == 1)
            model->setColumnCount(2);
    });
    send("SceneAttached");
    model->update();
    EXPECT_EQ(model->columnCount(), 2);
    EXPECT_EQ(model->rowCount(), 2);
}

// Threads

TEST_F(QtMaterialPanelModelTest, AnUpdateFromAnotherThreadLeavesTheResetsToItsOwn)
{
    show({"a"}, 1);
    QList<QThread*> threads;
    QObject::connect(
        model.get(), &QAbstractItemModel::modelReset, model.get(),
        [&] { threads += QThread::currentThread(); }, Qt::DirectConnection);
    send("SceneAttached");
    send("SceneAttached");
    scene->setMaterials(makeMaterials({"b"}));
    bool first = false;
    bool second = true;
    std::thread([&] {
        first = model->update();
        second = model->update();
    }).join(); // this thread serves no events meanwhile: nothing waits for it
    EXPECT_TRUE(first);
    EXPECT_FALSE(second);
    EXPECT_EQ(resets.count(), 0);
    EXPECT_EQ(scene->fetches, 0);
    EXPECT_EQ(textsOf(*model), QStringList("a"));

    QCoreApplication::processEvents();
    EXPECT_EQ(threads, QList<QThread*>({model->thread(), model->thread()}));
    EXPECT_EQ(scene->fetches, 2);
    EXPECT_EQ(textsOf(*model), QStringList("b"));
}

TEST_F(QtMaterialPanelModelTest, ResetsFromAnotherThreadComeOneAfterTheOther)
{
    show({"a"}, 1);
    QStringList steps;
    QObject::connect(model.get(), &QAbstractItemModel::modelAboutToBeReset, [&] { steps += "begin"; });
    QObject::connect(model.get(), &QAbstractItemModel::modelReset, [&] { steps += "end"; });
    send("SceneAttached");
    std::thread([&] { model->update(); }).join();
    send("SceneAttached");
    std::thread([&] { model->update(); }).join();
    QCoreApplication::processEvents();
    EXPECT_EQ(steps, QStringList({"begin", "end", "begin", "end"}));
}

TEST_F(QtMaterialPanelModelTest, RequestsOfManyThreadsAreAllServed)
{
    constexpr int Count = 300;
    show({"a"}, 1);
    std::atomic<bool> sending{true};
    std::thread cycle([&] {
        while (sending)
            model->update();
        model->update();
    });
    const auto sendAll = [this] {
        for (int k = 0; k < Count; ++k)
            send("SceneUpdate", "MaterialList");
    };
    std::thread senders[] = {std::thread(sendAll), std::thread(sendAll), std::thread(sendAll)};
    for (std::thread& sender : senders)
        sender.join();
    sending = false;
    cycle.join();
    EXPECT_TRUE(waitFor([&] { return resets.count() >= 3 * Count; }));
    EXPECT_EQ(resets.count(), 3 * Count);
}

// Destruction

TEST_F(QtMaterialPanelModelTest, WhatIsQueuedAtItsEndIsNeverRun)
{
    {
        QtMaterialPanelModel shortLived;
        shortLived.setSceneManager(scene);
        shortLived.handleEvent(makeEvent("SceneAttached"));
    }
    QCoreApplication::processEvents();
    EXPECT_EQ(scene->fetches, 0);
    EXPECT_EQ(scene.use_count(), 1);
}

TEST_F(QtMaterialPanelModelTest, WhatIsPostedAtItsEndIsNeverRun)
{
    {
        QtMaterialPanelModel shortLived;
        shortLived.setSceneManager(scene);
        std::thread([&] { shortLived.update(); }).join();
    }
    QCoreApplication::processEvents();
    EXPECT_EQ(scene->fetches, 0);
}

TEST_F(QtMaterialPanelModelTest, LeavesItsManagerWhileItIsWhole)
{
    const auto events = boost::make_shared<LeavingLog>();
    auto shortLived = std::make_unique<QtMaterialPanelModel>();
    shortLived->setEventManager(events);
    events->wholeModels = 0;
    shortLived.reset();
    EXPECT_EQ(events->wholeModels, 1);
}

TEST_F(QtMaterialPanelModelTest, MayEndUnderFire)
{
    const auto events = boost::make_shared<HCE::EventManager>(true);
    std::atomic<bool> sending{true};
    std::thread sender([&] {
        while (sending) {
            events->triggerEvent("SceneUpdate", "MaterialList");
            std::this_thread::yield();
        }
    });
    for (int i = 0; i < 200; ++i) {
        QtMaterialPanelModel shortLived;
        shortLived.setEventManager(events);
        shortLived.update();
    }
    sending = false;
    sender.join();
}

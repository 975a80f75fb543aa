#include "qt/QtMaterialPanel.h"
#include "qt/QtMaterialPanelModel.h"
#include "qt/QtMaterialPanelModelDelegate.h"
#include "tests/qt/MaterialScene.h"
#include "tests/qt/ViewProbe.h"
#include "tests/support/MetaObjects.h"
#include "tests/support/SynchronousEventManager.h"

#include <QHeaderView>
#include <QPointer>
#include <QResizeEvent>
#include <QScrollBar>
#include <QSignalSpy>
#include <QTest>
#include <QThread>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <thread>
#include <type_traits>

using halvern::qt::QtMaterialPanel;
using halvern::qt::QtMaterialPanelModel;
using halvern::qt::QtMaterialPanelModelDelegate;
using namespace halvern::test;
using testing::AllOf;
using testing::Each;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;

namespace {

using ControllerPtr = boost::shared_ptr<HS::ISceneController>;

/// A scene that notes when a controller comes or leaves, and knows the last that came.
class ControllerScene : public MaterialScene
{
public:
    ControllerScene(QStringList& log, QString name, const std::vector<std::string>& ids = {}) :
        MaterialScene(ids), log(log), name(std::move(name))
    {}

    void addSceneController(ControllerPtr controller) override
    {
        log += name + "+";
        last = controller;
        MaterialScene::addSceneController(controller);
    }
    void removeSceneController(ControllerPtr controller) override
    {
        log += name + "-";
        MaterialScene::removeSceneController(controller);
    }

    boost::weak_ptr<HS::ISceneController> last;

private:
    QStringList& log;
    const QString name;
};

/// A panel whose protected parts are open, and which counts how often it is painted.
class Panel : public QtMaterialPanel
{
public:
    using QtMaterialPanel::QtMaterialPanel;
    ~Panel() override { Panel::setEventManager(nullptr); }

    using QtMaterialPanel::handleModelReset;
    using QtMaterialPanel::resizeEvent;
    using QtMaterialPanel::selectionChanged;
    using QtMaterialPanel::showEffectEditor;

    bool event(QEvent* event) override
    {
        frames += event->type() == QEvent::Paint ? 1 : 0;
        return QtMaterialPanel::event(event);
    }
    void paintEvent(QPaintEvent* event) override
    {
        ++paints;
        QtMaterialPanel::paintEvent(event);
    }

    /// The base asks for it to repaint what was selected.
    QRegion visualRegionForSelection(const QItemSelection& selection) const override
    {
        if (onSelectionRegion)
            onSelectionRegion();
        return QtMaterialPanel::visualRegionForSelection(selection);
    }

    /// Tells the panel that its viewport has this width, whatever it has.
    void pretendWidth(int width)
    {
        QResizeEvent event(QSize(width, 200), QSize(1, 1));
        resizeEvent(&event);
    }

    QtMaterialPanelModel& grid() { return *qobject_cast<QtMaterialPanelModel*>(model()); }

    QPoint middleOf(int row, int column) { return visualRect(model()->index(row, column)).center(); }

    void click(int row, int column, Qt::KeyboardModifiers modifiers = Qt::NoModifier)
    {
        QTest::mouseClick(viewport(), Qt::LeftButton, modifiers, middleOf(row, column));
    }

    std::function<void()> onSelectionRegion;
    int frames = 0; // paintings of the panel itself
    int paints = 0; // and of its viewport
};

/// A panel with a recording manager and a scene.
class QtMaterialPanelTest : public testing::Test
{
protected:
    QtMaterialPanelTest() { panel->setEventManager(events); }

    /// Shows these materials in a panel that has room for so many columns and rows.
    void open(const std::vector<std::string>& ids, int columns = 3, int rows = 2)
    {
        scene->setMaterials(makeMaterials(ids));
        panel->setSceneManager(scene);
        panel->resize(columns * 100 + 50, rows * 120 + 20);
        panel->show();
        (void)QTest::qWaitForWindowExposed(panel.get());
        scene->update();
        settle();
        resets = std::make_unique<QSignalSpy>(panel->model(), SIGNAL(modelReset()));
    }

    std::vector<std::string> announced() const { return events->getData("MaterialSelected"); }

    QStringList log;
    const boost::shared_ptr<RecordingEventManager> events = boost::make_shared<RecordingEventManager>();
    const boost::shared_ptr<MaterialScene> scene = boost::make_shared<MaterialScene>();
    std::unique_ptr<Panel> panel = std::make_unique<Panel>();
    std::unique_ptr<QSignalSpy> resets;
};

} // namespace

// Class and meta-object

TEST_F(QtMaterialPanelTest, DerivesFromTableViewThenFromEventBase)
{
    static_assert(std::is_convertible_v<QtMaterialPanel*, QTableView*>);
    void* const view = static_cast<QTableView*>(panel.get());
    void* const base = static_cast<HCE::EventBase*>(panel.get());
    EXPECT_EQ(view, panel.get());
    EXPECT_LT(view, base);
}

TEST_F(QtMaterialPanelTest, MetaObjectCarriesTheQualifiedNameAndTheEventBaseAsItsAliasSpellsIt)
{
    const QMetaObject& meta = QtMaterialPanel::staticMetaObject;
    EXPECT_STREQ(meta.className(), "halvern::qt::QtMaterialPanel");
    EXPECT_EQ(meta.superClass(), &QTableView::staticMetaObject);
    EXPECT_EQ(panel->qt_metacast("HCE::EventBase"), static_cast<HCE::EventBase*>(panel.get()));
}

TEST_F(QtMaterialPanelTest, MetaObjectListsThreeProtectedSlots)
{
    const QMetaObject& meta = QtMaterialPanel::staticMetaObject;
    EXPECT_THAT(ownMethods(meta), ElementsAre("selectionChanged(QItemSelection,QItemSelection)",
                                              "handleModelReset()", "showEffectEditor(QModelIndex)"));
    for (int i = meta.methodOffset(); i < meta.methodCount(); ++i) {
        EXPECT_EQ(meta.method(i).methodType(), QMetaMethod::Slot);
        EXPECT_EQ(meta.method(i).access(), QMetaMethod::Protected);
    }
}

TEST_F(QtMaterialPanelTest, EachStatedConnectionExistsOnce)
{
    EXPECT_TRUE(isConnectedOnce(panel.get(), SIGNAL(doubleClicked(QModelIndex)), panel.get(),
                                SLOT(showEffectEditor(QModelIndex))));
    EXPECT_TRUE(isConnectedOnce(panel->model(), SIGNAL(modelReset()), panel.get(), SLOT(handleModelReset())));
}

// Construction

TEST_F(QtMaterialPanelTest, BelongsToTheParentItIsGiven)
{
    QWidget parent;
    EXPECT_EQ((new QtMaterialPanel(&parent))->parentWidget(), &parent);
}

TEST_F(QtMaterialPanelTest, IsABorderlessGridWithoutHeaders)
{
    EXPECT_FALSE(panel->showGrid());
    EXPECT_TRUE(panel->verticalHeader()->isHidden());
    EXPECT_TRUE(panel->horizontalHeader()->isHidden());
    const QTableView plain;
    for (QHeaderView* header : {panel->verticalHeader(), panel->horizontalHeader()}) {
        header->model()->insertRows(0, 1);
        EXPECT_EQ(header->defaultSectionSize(), header->orientation() == Qt::Vertical
                                                    ? plain.verticalHeader()->defaultSectionSize()
                                                    : plain.horizontalHeader()->defaultSectionSize());
    }
}

TEST_F(QtMaterialPanelTest, HeadersKeepTheirDefaultResizeMode)
{
    open({"a"});
    EXPECT_EQ(panel->horizontalHeader()->sectionResizeMode(0), QHeaderView::Interactive);
    EXPECT_EQ(panel->verticalHeader()->sectionResizeMode(0), QHeaderView::Interactive);
}

TEST_F(QtMaterialPanelTest, SelectsOneTileScrollsUprightOnlyAndCanBeDraggedFrom)
{
    EXPECT_EQ(panel->selectionMode(), QAbstractItemView::SingleSelection);
    EXPECT_EQ(panel->horizontalScrollBarPolicy(), Qt::ScrollBarAlwaysOff);
    EXPECT_EQ(panel->verticalScrollBarPolicy(), Qt::ScrollBarAsNeeded);
    EXPECT_TRUE(panel->dragEnabled());
}

TEST_F(QtMaterialPanelTest, OwnsItsModelAndItsDelegate)
{
    ASSERT_TRUE(qobject_cast<QtMaterialPanelModel*>(panel->model()));
    EXPECT_EQ(panel->model()->QObject::parent(), panel.get());
    ASSERT_TRUE(qobject_cast<QtMaterialPanelModelDelegate*>(panel->itemDelegate()));
    EXPECT_EQ(panel->itemDelegate()->parent(), panel.get());
}

TEST_F(QtMaterialPanelTest, HasNoEventManagerAtFirstAndSendsNothing)
{
    Panel fresh;
    EXPECT_FALSE(fresh.getEventManager());
    EXPECT_FALSE(fresh.grid().getEventManager());
    fresh.setSceneManager(scene);
    scene->setMaterials(makeMaterials({"a"}));
    fresh.pretendWidth(100);
    EXPECT_NO_THROW(fresh.setCurrentIndex(fresh.model()->index(0, 0)));
}

// Managers

TEST_F(QtMaterialPanelTest, TheModelLearnsOfTheEventManagerBeforeThePanel)
{
    class Order : public RecordingEventManager
    {
    public:
        void registerEventListener(HCE::EventListener* listener, HCE::EventType /*type*/) override
        {
            EXPECT_EQ(listener, static_cast<HCE::EventListener*>(&panel->grid()));
            panelsManager = panel->getEventManager();
            ++registrations;
        }
        Panel* panel = nullptr;
        boost::shared_ptr<HCE::EventManager> panelsManager;
        int registrations = 0;
    };
    const auto next = boost::make_shared<Order>();
    next->panel = panel.get();
    panel->setEventManager(next);
    EXPECT_EQ(next->registrations, 2);
    EXPECT_EQ(next->panelsManager, events);
    EXPECT_EQ(panel->getEventManager(), next);
    EXPECT_EQ(panel->grid().getEventManager(), next);
}

TEST_F(QtMaterialPanelTest, SendsThroughTheManagerItHasNow)
{
    open({"a", "b"});
    const auto next = boost::make_shared<RecordingEventManager>();
    panel->setEventManager(next);
    panel->click(0, 1);
    EXPECT_THAT(announced(), IsEmpty());
    EXPECT_THAT(next->getData("MaterialSelected"), ElementsAre("b"));
}

TEST_F(QtMaterialPanelTest, AnEmptySceneManagerIsIgnored)
{
    const auto first = boost::make_shared<ControllerScene>(log, "first");
    panel->setSceneManager(nullptr);
    panel->setSceneManager(first);
    panel->setSceneManager(nullptr);
    EXPECT_EQ(log, QStringList("first+"));
}

TEST_F(QtMaterialPanelTest, TheModelBecomesAControllerOfTheScene)
{
    const auto first = boost::make_shared<ControllerScene>(log, "first");
    panel->setSceneManager(first);
    EXPECT_EQ(first->last.lock().get(), static_cast<HS::ISceneController*>(&panel->grid()));
}

TEST_F(QtMaterialPanelTest, AnotherSceneManagerIsTakenAfterTheOldOneWasLeft)
{
    const auto first = boost::make_shared<ControllerScene>(log, "first");
    const auto second = boost::make_shared<ControllerScene>(log, "second");
    panel->setSceneManager(first);
    panel->setSceneManager(second);
    EXPECT_EQ(log, QStringList({"first+", "first-", "second+"}));
}

TEST_F(QtMaterialPanelTest, TheSameSceneManagerIsAddedToOnceMoreAndNeverLeft)
{
    const auto first = boost::make_shared<ControllerScene>(log, "first");
    panel->setSceneManager(first);
    panel->setSceneManager(first);
    EXPECT_EQ(log, QStringList({"first+", "first+"}));
}

// Layout

TEST_F(QtMaterialPanelTest, HasAColumnForEachHundredPixelsOfTheEventsWidth)
{
    struct Width
    {
        int pixels, columns;
    };
    panel->resize(777, 300);
    for (const Width& width : {Width{250, 2}, Width{99, 1}, Width{100, 1}, Width{199, 1}, Width{200, 2},
                               Width{1234, 12}, Width{0, 1}, Width{1, 1}}) {
        panel->pretendWidth(width.pixels);
        EXPECT_EQ(panel->model()->columnCount(), width.columns) << width.pixels;
    }
}

TEST_F(QtMaterialPanelTest, TheWidthOfTheViewportCounts)
{
    open(makeIDs(40), 3, 2);
    EXPECT_EQ(panel->model()->columnCount(), 3);
    ASSERT_TRUE(panel->verticalScrollBar()->isVisible());
    // Three hundred pixels are there, but not beside the scroll bar.
    panel->resize(300 + 2 * panel->frameWidth(), 260);
    settle();
    EXPECT_LT(panel->viewport()->width(), 300);
    EXPECT_EQ(panel->model()->columnCount(), 2);
}

TEST_F(QtMaterialPanelTest, AWidthWithOtherColumnsRebuildsAtOnce)
{
    open(makeIDs(5), 3);
    panel->pretendWidth(250);
    EXPECT_EQ(resets->count(), 1);
    EXPECT_EQ(panel->model()->columnCount(), 2);
    EXPECT_EQ(panel->model()->rowCount(), 3);
}

TEST_F(QtMaterialPanelTest, AWidthWithTheSameColumnsRepaintsWithoutARebuild)
{
    open(makeIDs(5), 3);
    const int frames = panel->frames;
    panel->pretendWidth(panel->viewport()->width());
    EXPECT_TRUE(waitFor([&] { return panel->frames > frames; }));
    const int paints = panel->paints;
    panel->resize(panel->width() - 20, panel->height());
    EXPECT_TRUE(waitFor([&] { return panel->paints > paints; }));
    EXPECT_EQ(resets->count(), 0);
}

TEST_F(QtMaterialPanelTest, AResetSetsAllWidthsToAHundredAndAllHeightsToAHundredAndTwenty)
{
    open(makeIDs(8), 3);
    panel->setColumnWidth(1, 37);
    panel->setRowHeight(2, 11);
    panel->grid().handleEvent(makeEvent("SceneAttached"));
    scene->update();
    ASSERT_EQ(panel->model()->columnCount(), 3);
    ASSERT_EQ(panel->model()->rowCount(), 3);
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(panel->columnWidth(i), 100);
        EXPECT_EQ(panel->rowHeight(i), 120);
    }
}

TEST_F(QtMaterialPanelTest, HandlingAResetAloneSetsTheSizesToo)
{
    open(makeIDs(8), 3);
    panel->setColumnWidth(0, 37);
    panel->setRowHeight(2, 11);
    panel->handleModelReset();
    EXPECT_EQ(panel->columnWidth(0), 100);
    EXPECT_EQ(panel->rowHeight(2), 120);
    EXPECT_EQ(resets->count(), 0);
}

TEST_F(QtMaterialPanelTest, AnotherHeightAloneLeavesTheScrollBarsRangeUntilTheNextReset)
{
    open(makeIDs(60), 3, 2);
    const int range = panel->verticalScrollBar()->maximum();
    ASSERT_GT(range, 0);
    panel->resize(panel->width(), panel->height() + 480);
    settle();
    EXPECT_EQ(panel->verticalScrollBar()->maximum(), range);
    panel->grid().handleEvent(makeEvent("SceneAttached"));
    scene->update();
    EXPECT_TRUE(waitFor([&] { return panel->verticalScrollBar()->maximum() < range; }));
}

TEST_F(QtMaterialPanelTest, AnEmptySceneLeavesItBlank)
{
    open({}, 2, 1);
    EXPECT_EQ(panel->model()->rowCount(), 0);
    const QImage image = grabScreen(*panel->viewport());
    const QColor base = panel->palette().color(QPalette::Base);
    for (const QPoint& point : {QPoint(1, 1), QPoint(50, 50), QPoint(150, 90)})
        EXPECT_EQ(image.pixelColor(point), base);
}

TEST_F(QtMaterialPanelTest, TilesStandSideBySideAndTheRowBehindThemIsEmpty)
{
    open({"a", "b", "c"}, 3, 2);
    EXPECT_EQ(panel->model()->rowCount(), 2);
    const QImage image = grabScreen(*panel->viewport());
    const QImage ball = QIcon(":/material_sphere.jpg").pixmap(98, 98).toImage();
    const QColor base = panel->palette().color(QPalette::Base);
    for (int column = 0; column < 3; ++column) {
        EXPECT_EQ(image.pixelColor(100 * column + 40, 40), ball.pixelColor(39, 39));
        EXPECT_EQ(image.pixelColor(100 * column + 90, 90), ball.pixelColor(89, 89));
        EXPECT_EQ(image.pixelColor(100 * column + 40, 160), base);
    }
}

// Selection

TEST_F(QtMaterialPanelTest, ClickingATileAnnouncesItsMaterial)
{
    open({"a", "Gr\xC3\xBCn"});
    panel->click(0, 1);
    EXPECT_THAT(announced(), ElementsAre("Gr\xC3\xBCn"));
    EXPECT_EQ(events->getCount(), 1u);
}

TEST_F(QtMaterialPanelTest, ArrowKeysAnnounceEachMaterialTheyReach)
{
    open({"a", "b", "c", "d"}, 3);
    panel->click(0, 0);
    for (const Qt::Key key : {Qt::Key_Right, Qt::Key_Right, Qt::Key_Left, Qt::Key_Down})
        QTest::keyClick(panel.get(), key);
    EXPECT_THAT(announced(), ElementsAre("a", "b", "c", "b", ""));
}

TEST_F(QtMaterialPanelTest, ASelectedTileIsHighlighted)
{
    open({"a", "b"});
    panel->click(0, 1);
    const QImage image = grabScreen(*panel->viewport());
    EXPECT_EQ(image.pixelColor(100, 0), panel->palette().color(QPalette::Highlight));
    EXPECT_NE(image.pixelColor(0, 0), panel->palette().color(QPalette::Highlight));
}

TEST_F(QtMaterialPanelTest, SelectingAnEmptyCellAnnouncesAnEmptyMaterial)
{
    open({"a", "b"}, 3);
    panel->click(0, 2);
    EXPECT_THAT(announced(), ElementsAre(""));
    panel->setCurrentIndex(QModelIndex());
    panel->click(0, 2);
    EXPECT_EQ(announced().size(), 2u);
}

TEST_F(QtMaterialPanelTest, SelectingTheSameTileAgainAnnouncesNothing)
{
    open({"a", "b"});
    panel->click(0, 0);
    panel->click(0, 0);
    EXPECT_THAT(announced(), ElementsAre("a"));
}

TEST_F(QtMaterialPanelTest, LosingTheSelectionAnnouncesNothing)
{
    open({"a", "b"});
    panel->click(0, 0);
    panel->click(0, 0, Qt::ControlModifier);
    EXPECT_FALSE(panel->selectionModel()->hasSelection());
    panel->click(0, 1);
    panel->clearSelection();
    EXPECT_THAT(announced(), ElementsAre("a", "b"));
}

TEST_F(QtMaterialPanelTest, SeveralNewlySelectedTilesAnnounceNothing)
{
    open({"a", "b", "c"});
    panel->setSelectionMode(QAbstractItemView::ExtendedSelection);
    panel->selectAll();
    EXPECT_THAT(announced(), IsEmpty());
}

TEST_F(QtMaterialPanelTest, OneMoreSelectedTileAnnouncesThatOne)
{
    open({"a", "b", "c"});
    panel->setSelectionMode(QAbstractItemView::MultiSelection);
    panel->click(0, 0);
    panel->click(0, 2);
    EXPECT_THAT(announced(), ElementsAre("a", "c"));
}

TEST_F(QtMaterialPanelTest, ARebuildDropsTheSelectionSilently)
{
    open({"a", "b"});
    panel->click(0, 1);
    events->clear();
    panel->grid().handleEvent(makeEvent("SceneAttached"));
    scene->update();
    settle();
    EXPECT_FALSE(panel->selectionModel()->hasSelection());
    EXPECT_FALSE(panel->currentIndex().isValid());
    EXPECT_EQ(events->getCount(), 0u);
}

TEST_F(QtMaterialPanelTest, TheViewTakesNoteOfTheSelectionBeforeItIsAnnounced)
{
    open({"a", "b"});
    std::vector<std::size_t> announcedBefore;
    panel->onSelectionRegion = [&] { announcedBefore.push_back(announced().size()); };
    panel->click(0, 1);
    panel->onSelectionRegion = nullptr;
    EXPECT_THAT(announcedBefore, AllOf(Not(IsEmpty()), Each(0u)));
    EXPECT_THAT(announced(), ElementsAre("b"));
}

TEST_F(QtMaterialPanelTest, ADoubleClickDoesNothing)
{
    open({"a", "b"});
    panel->click(0, 0);
    events->clear();
    const auto children = panel->findChildren<QObject*>();
    const auto windows = QApplication::topLevelWidgets();
    QTest::mouseDClick(panel->viewport(), Qt::LeftButton, Qt::NoModifier, panel->middleOf(0, 0));
    panel->showEffectEditor(panel->model()->index(0, 0));
    EXPECT_EQ(events->getCount(), 0u);
    EXPECT_EQ(resets->count(), 0);
    EXPECT_EQ(panel->findChildren<QObject*>(), children);
    EXPECT_EQ(QApplication::topLevelWidgets(), windows);
}

// With an engine

TEST_F(QtMaterialPanelTest, AMaterialAddedToARunningSceneAppears)
{
    const auto threaded = boost::make_shared<HCE::EventManager>(true);
    const auto running = boost::make_shared<HS::SceneManager>(threaded);
    panel->setEventManager(threaded);
    panel->setSceneManager(running);
    panel->pretendWidth(300);
    running->start();
    running->addMaterial(boost::make_shared<HS::Material>("gold", "effect"));
    EXPECT_TRUE(waitFor([&] { return panel->model()->index(0, 0).data() == "gold"; }));
    running->addMaterial(boost::make_shared<HS::Material>("clay", "effect"));
    EXPECT_TRUE(waitFor([&] { return panel->model()->index(0, 1).data() == "clay"; }));
    running->stop();
}

TEST_F(QtMaterialPanelTest, StandsResetsOfTheSceneThreadWhileItIsScrolledAndClicked)
{
    const auto threaded = boost::make_shared<HCE::EventManager>(true);
    scene->setEventManager(threaded);
    panel->setEventManager(threaded);
    open(makeIDs(200), 3, 3);
    scene->start();
    std::atomic<bool> sending{true};
    std::thread sender([&] {
        for (int i = 0; sending; ++i) {
            scene->setMaterials(makeMaterials(makeIDs(100 + i * 37 % 200)));
            threaded->triggerEvent(i % 2 ? "SceneAttached" : "SceneUpdate", "MaterialList");
            std::this_thread::sleep_for(std::chrono::milliseconds(2));
        }
    });
    QScrollBar& bar = *panel->verticalScrollBar();
    for (int i = 0; resets->count() < 150; ++i) {
        bar.setValue(i * 131 % (bar.maximum() + 1));
        panel->click(i % 3, i % 2);
        QTest::keyClick(panel.get(), i % 3 ? Qt::Key_Down : Qt::Key_Up);
        if (i % 10 == 0)
            panel->resize(250 + i % 200, 400);
        QCoreApplication::processEvents();
    }
    sending = false;
    sender.join();
    scene->setMaterials(makeMaterials({"last"}));
    threaded->triggerEvent("SceneAttached", "");
    EXPECT_TRUE(waitFor([&] { return panel->model()->index(0, 0).data() == "last"; }));
    scene->stop();
}

// Destruction

TEST_F(QtMaterialPanelTest, LeavesEventsAndSceneAtItsEnd)
{
    QStringList log;
    const auto synchronous = boost::make_shared<SynchronousEventManager>();
    const auto first = boost::make_shared<ControllerScene>(log, "first");
    panel->setEventManager(synchronous);
    panel->setSceneManager(first);
    HCE::EventListener* listener = &panel->grid();
    EXPECT_TRUE(synchronous->isRegistered(listener));
    panel.reset();
    EXPECT_FALSE(synchronous->isRegistered(listener));
    EXPECT_EQ(log, QStringList({"first+", "first-"}));
}

TEST_F(QtMaterialPanelTest, NothingOfItIsLeftBehind)
{
    QPointer<QObject> model = panel->model();
    boost::weak_ptr<MaterialScene> held;
    {
        const auto passing = boost::make_shared<MaterialScene>(std::vector<std::string>{"a"});
        held = passing;
        panel->setSceneManager(passing);
    }
    EXPECT_FALSE(held.expired());
    panel.reset();
    EXPECT_TRUE(model.isNull());
    EXPECT_TRUE(held.expired());
}

TEST_F(QtMaterialPanelTest, AModelThatIsHeldElsewhereOutlivesItAndEndsOnItsOwnThread)
{
    const auto keeper = boost::make_shared<ControllerScene>(log, "keeper");
    panel->setSceneManager(keeper);
    ControllerPtr held = keeper->last.lock();
    QPointer<QObject> model = panel->model();
    QThread* endedOn = nullptr;
    QObject::connect(model, &QObject::destroyed, [&] { endedOn = QThread::currentThread(); });
    panel.reset();
    ASSERT_FALSE(model.isNull());
    EXPECT_EQ(model->parent(), nullptr);
    std::thread([&] { held.reset(); }).join();
    EXPECT_EQ(endedOn, nullptr);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_EQ(endedOn, QThread::currentThread());
    EXPECT_TRUE(model.isNull());
}

TEST_F(QtMaterialPanelTest, MayEndWithItsParentWhileTheSceneRuns)
{
    const auto threaded = boost::make_shared<HCE::EventManager>(true);
    scene->setMaterials(makeMaterials(makeIDs(20)));
    scene->start();
    std::atomic<bool> sending{true};
    std::thread sender([&] {
        while (sending) {
            threaded->triggerEvent("SceneAttached", "");
            std::this_thread::sleep_for(std::chrono::microseconds(200));
        }
    });
    for (int i = 0; i < 50; ++i) {
        QWidget parent;
        auto* child = new Panel(&parent);
        child->setEventManager(threaded);
        child->setSceneManager(scene);
        child->resize(400, 300);
        parent.show();
        QCoreApplication::processEvents();
    }
    sending = false;
    sender.join();
    scene->stop();
    EXPECT_EQ(scene.use_count(), 1);
}

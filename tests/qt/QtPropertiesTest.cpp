#include "reference/scene/ActionLog.h"
#include "tests/qt/PropertiesPanel.h"

#include <QAbstractItemDelegate>
#include <QColorDialog>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QGridLayout>
#include <QMetaMethod>
#include <QTranslator>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <thread>
#include <type_traits>

using halvern::qt::QtProperties;
using halvern::qt::QtPropertiesModel;
using namespace halvern::test;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

enum Tab { Basics, Coord, Object };

/// Translates every text to its context and itself.
class ContextTranslator : public QTranslator
{
public:
    bool isEmpty() const override { return false; }
    QString translate(const char* context, const char* text, const char* /*disambiguation*/,
                      int /*n*/) const override
    {
        return QString("[%1] %2").arg(context, text);
    }
};

/// While it exists, keeps what Qt warns of.
class WarningLog
{
public:
    WarningLog() : before(qInstallMessageHandler(&WarningLog::note)) { lines().clear(); }
    ~WarningLog() { qInstallMessageHandler(before); }
    static QStringList& lines()
    {
        static QStringList lines;
        return lines;
    }

private:
    static void note(QtMsgType /*type*/, const QMessageLogContext& /*context*/, const QString& text)
    {
        lines() += text;
    }
    QtMessageHandler before;
};

QStringList shownRows(QTreeView& view)
{
    QStringList names;
    for (int row = 0; row < view.model()->rowCount(); ++row)
        if (!view.isRowHidden(row, QModelIndex()))
            names += view.model()->index(row, 0).data().toString();
    return names;
}

/// Notes in what order a manager loses the panel's model.
class LeaveLog : public halvern::scene::SceneManager
{
public:
    LeaveLog(QStringList& log, QString name) : SceneManager(nullptr), log(log), name(std::move(name)) {}
    void addSceneController(boost::shared_ptr<halvern::scene::ISceneController> controller) override
    {
        log += name + "+";
        SceneManager::addSceneController(controller);
    }
    void removeSceneController(boost::shared_ptr<halvern::scene::ISceneController> controller) override
    {
        log += name + "-";
        SceneManager::removeSceneController(controller);
    }

private:
    QStringList& log;
    const QString name;
};

/// A panel and a scene with the nodes "a" and "b"; "a" has a light and a camera.
class QtPropertiesTest : public testing::Test
{
protected:
    QtPropertiesTest()
    {
        addLight(*a, "sun", 1, 0, 0);
        addCamera(*a, "eye", 1, 100, 45);
        moveTo(*a, 1, 2, 3);
        scene->setRoot(makeNode("root", {a, b}));
        panel->setEventManager(events);
        panel->setSceneManager(scene);
    }
    ~QtPropertiesTest() override
    {
        panel.reset();
        scene->setEventManager(nullptr);
    }

    void select(const std::string& id) { events->triggerEvent("ObjectSelected", id + ", Window"); }
    QModelIndex cell(int group, int row, int column = 1)
    {
        return cellOf(panel->model(), group, row, column);
    }
    QModelIndex instance(int group, int row, int child)
    {
        return instanceCellOf(panel->model(), group, row, child);
    }

    boost::shared_ptr<SynchronousEventManager> events = boost::make_shared<SynchronousEventManager>();
    NodePtr a = makeNode("a");
    NodePtr b = makeNode("b");
    ScenePtr scene = boost::make_shared<halvern::scene::SceneManager>(events);
    std::unique_ptr<PropertiesPanel> panel = std::make_unique<PropertiesPanel>();
};

} // namespace

// The class

TEST_F(QtPropertiesTest, IsAPlainWidgetWithoutSignalsAndSlotsOfItsOwn)
{
    static_assert(std::is_base_of_v<QWidget, QtProperties>);
    static_assert(!std::is_base_of_v<HCE::EventListener, QtProperties>);
    const QMetaObject& meta = QtProperties::staticMetaObject;
    EXPECT_STREQ(meta.className(), "halvern::qt::QtProperties");
    EXPECT_STREQ(meta.superClass()->className(), "QWidget");
    EXPECT_EQ(meta.methodCount(), meta.methodOffset());
}

TEST_F(QtPropertiesTest, TakesItsParent)
{
    QWidget parent;
    const QtProperties child(&parent);
    EXPECT_EQ(child.parentWidget(), &parent);
    EXPECT_EQ(panel->parentWidget(), nullptr);
}

// Construction

TEST_F(QtPropertiesTest, HasThreeTabsAndOpensOnCoord)
{
    QStringList texts;
    for (int tab = 0; tab < panel->tabs().count(); ++tab)
        texts += panel->tabs().tabText(tab);
    EXPECT_EQ(texts, QStringList({"Basics", "Coord", "Object"}));
    EXPECT_EQ(panel->tabs().currentIndex(), Coord);
}

TEST_F(QtPropertiesTest, TabsStandInAGridLayout)
{
    const auto* layout = qobject_cast<QGridLayout*>(panel->layout());
    ASSERT_TRUE(layout);
    EXPECT_EQ(layout->count(), 1);
    EXPECT_EQ(layout->itemAt(0)->widget(), &panel->tabs());
}

TEST_F(QtPropertiesTest, EachTabShowsItsTopLevelRowsOnly)
{
    EXPECT_EQ(shownRows(panel->view(Basics)), QStringList({"ID", "Layers"}));
    EXPECT_EQ(shownRows(panel->view(Coord)), QStringList({"Translation", "Rotation", "Scale"}));
    EXPECT_EQ(shownRows(panel->view(Object)), QStringList({"Lights", "Cameras"}));
}

TEST_F(QtPropertiesTest, AllViewsShareOneModelAndOneDelegate)
{
    QAbstractItemDelegate* delegate = panel->view(0).itemDelegate();
    EXPECT_EQ(delegate->metaObject()->className(), QByteArray("halvern::qt::QtPropertiesItemDelegate"));
    EXPECT_EQ(delegate->parent(), panel.get());
    EXPECT_EQ(panel->model().QObject::parent(), nullptr);
    for (int tab = 0; tab < 3; ++tab) {
        EXPECT_EQ(panel->view(tab).model(), &panel->model());
        EXPECT_EQ(panel->view(tab).itemDelegate(), delegate);
    }
}

TEST_F(QtPropertiesTest, ViewsAlternateTheirColoursAndEditOnEveryTrigger)
{
    for (int tab = 0; tab < 3; ++tab) {
        EXPECT_TRUE(panel->view(tab).alternatingRowColors());
        EXPECT_EQ(panel->view(tab).editTriggers(), QAbstractItemView::AllEditTriggers);
    }
}

TEST_F(QtPropertiesTest, NewPanelHasItsGroupsUnfoldedAndEmpty)
{
    const PropertiesPanel fresh;
    auto& view = const_cast<PropertiesPanel&>(fresh).view(Coord);
    for (const int group : {TranslationGroup, RotationGroup, ScaleGroup}) {
        EXPECT_TRUE(view.isExpanded(view.model()->index(group, 0)));
        for (int row = 0; row < 3; ++row)
            EXPECT_FALSE(cellOf(*view.model(), group, row).data().isValid());
    }
}

TEST_F(QtPropertiesTest, FirstColumnIsAsWideAsItsContents)
{
    auto& view = panel->view(Coord);
    const int width = view.columnWidth(0);
    view.resizeColumnToContents(0);
    EXPECT_EQ(view.columnWidth(0), width);
}

TEST_F(QtPropertiesTest, HeaderTextsAreTranslatedAndTabAndRowTextsAreNot)
{
    ContextTranslator translator;
    QCoreApplication::installTranslator(&translator);
    auto translated = std::make_unique<PropertiesPanel>();
    QCoreApplication::removeTranslator(&translator);
    EXPECT_EQ(translated->model().headerData(0, Qt::Horizontal),
              QVariant("[halvern::qt::QtProperties] Property"));
    EXPECT_EQ(translated->model().headerData(1, Qt::Horizontal),
              QVariant("[halvern::qt::QtProperties] Value"));
    EXPECT_EQ(translated->tabs().tabText(0), "Basics");
    EXPECT_EQ(translated->model().index(1, 0).data(), QVariant("Translation"));
}

// Managers

TEST_F(QtPropertiesTest, FollowsSelectionsOfItsEventManager)
{
    select("a");
    EXPECT_EQ(cell(IDGroup, -1).data(), QVariant("a"));
    panel->setEventManager(nullptr);
    select("b");
    EXPECT_EQ(cell(IDGroup, -1).data(), QVariant("a"));
    panel->setEventManager(events);
    select("b");
    EXPECT_EQ(cell(IDGroup, -1).data(), QVariant("b"));
}

TEST_F(QtPropertiesTest, ModelListensAndThePanelTakesNoPart)
{
    EXPECT_TRUE(events->isRegistered(&panel->model()));
    EXPECT_EQ(panel->model().getEventManager(), events);
}

TEST_F(QtPropertiesTest, EmptySceneManagerDoesNothing)
{
    select("a");
    panel->setSceneManager(nullptr);
    EXPECT_EQ(cell(IDGroup, -1).data(), QVariant("a"));
    panel->model().setData(cell(TranslationGroup, 0), 9);
    scene->update();
    EXPECT_EQ(positionOf(*a).x(), 9) << "the model is still in the cycle of the scene";
}

TEST_F(QtPropertiesTest, AnotherSceneManagerTakesTheModelFromTheFirst)
{
    QStringList log;
    const auto first = boost::make_shared<LeaveLog>(log, "1");
    const auto second = boost::make_shared<LeaveLog>(log, "2");
    {
        PropertiesPanel other;
        other.setSceneManager(first);
        other.setSceneManager(first);
        other.setSceneManager(second);
        EXPECT_EQ(log, QStringList({"1+", "1+", "1-", "2+"}));
    }
    EXPECT_EQ(log, QStringList({"1+", "1+", "1-", "2+", "2-"}));
}

TEST_F(QtPropertiesTest, SelectionsAreLookedUpInTheNewSceneManager)
{
    const auto other = makeScene(makeNode("other"));
    panel->setSceneManager(other);
    select("other");
    EXPECT_EQ(cell(IDGroup, -1).data(), QVariant("other"));
    select("a");
    EXPECT_EQ(cell(IDGroup, -1).data(), QVariant(""));
}

// Rows

TEST_F(QtPropertiesTest, LightAndCameraRowsAppearInTheObjectTabOnlyUnderUnfoldedGroups)
{
    panel->open(Object);
    select("a");
    QCoreApplication::processEvents();
    for (const int group : {LightsGroup, CamerasGroup}) {
        auto& view = panel->view(Object);
        EXPECT_TRUE(view.isExpanded(cell(group, -1, 0)));
        EXPECT_TRUE(view.visualRect(cell(group, 0, 0)).isValid());
        EXPECT_FALSE(view.isExpanded(cell(group, 0, 0))) << "the rows below stay folded";
        EXPECT_TRUE(panel->view(Basics).isRowHidden(group, QModelIndex()));
        EXPECT_TRUE(panel->view(Coord).isRowHidden(group, QModelIndex()));
    }
}

TEST_F(QtPropertiesTest, HiddenRowsStayHiddenOverSelections)
{
    for (const char* id : {"a", "b", "unknown", "a"})
        select(id);
    EXPECT_EQ(shownRows(panel->view(Basics)), QStringList({"ID", "Layers"}));
    EXPECT_EQ(shownRows(panel->view(Coord)), QStringList({"Translation", "Rotation", "Scale"}));
    EXPECT_EQ(shownRows(panel->view(Object)), QStringList({"Lights", "Cameras"}));
}

// Editing

TEST_F(QtPropertiesTest, TypedXMovesTheNodeAndReturnAnnouncesIt)
{
    panel->open(Coord);
    select("a");
    auto* spinBox = panel->edit<QDoubleSpinBox>(Coord, cell(TranslationGroup, 0));
    ASSERT_TRUE(spinBox);
    spinBox->selectAll();
    QTest::keyClicks(spinBox, "2.5");
    scene->update();
    EXPECT_EQ(positionOf(*a), Eigen::Vector3f(2.5F, 2, 3));
    QTest::keyClick(spinBox, Qt::Key_Return);
    QCoreApplication::processEvents();
    EXPECT_THAT(events->getData("TranslationAction"), ElementsAre("a,1.5\n  0\n  0"));
}

TEST_F(QtPropertiesTest, ConfirmedTypingIsOneStepThatTheEngineTakesBackExactly)
{
    std::vector<halvern::scene::TransformStep> steps;
    const auto log = boost::make_shared<halvern::scene::ActionLog>(
        events, [&steps](const auto& step) { steps.push_back(step); });
    scene->addSceneController(log);
    moveTo(*a, 1.2345F, 2, 3);
    panel->open(Coord);
    select("a");
    auto* spinBox = panel->edit<QDoubleSpinBox>(Coord, cell(TranslationGroup, 0));
    ASSERT_TRUE(spinBox);
    spinBox->selectAll();
    QTest::keyClicks(spinBox, "2.5");
    QTest::keyClick(spinBox, Qt::Key_Return);
    QCoreApplication::processEvents();
    for (int cycle = 0; cycle < 3; ++cycle)
        scene->update();
    ASSERT_EQ(steps.size(), 1U);
    EXPECT_EQ(positionOf(*a), Eigen::Vector3f(2.5F, 2, 3));
    log->undo(steps[0]);
    scene->update();
    EXPECT_EQ(positionOf(*a), Eigen::Vector3f(1.2345F, 2, 3));
    EXPECT_EQ(cell(TranslationGroup, 0).data(), QVariant(1.23));
    log->redo(steps[0]);
    scene->update();
    EXPECT_EQ(cell(TranslationGroup, 0).data(), QVariant(2.5));
    scene->removeSceneController(log);
}

TEST_F(QtPropertiesTest, ClickOnAValueOpensItsEditorAndOnAnIDNone)
{
    panel->open(Basics);
    select("a");
    QCoreApplication::processEvents();
    auto& view = panel->view(Basics);
    const auto click = [&](const QModelIndex& index) {
        QTest::mouseClick(view.viewport(), Qt::LeftButton, {}, view.visualRect(index).center());
    };
    click(cell(IDGroup, -1));
    EXPECT_FALSE(view.indexWidget(cell(IDGroup, -1)));
    click(cell(LayersGroup, 1));
    EXPECT_TRUE(QTest::qWaitFor(
        [&] { return qobject_cast<QComboBox*>(view.indexWidget(cell(LayersGroup, 1))) != nullptr; }, 10000));
}

TEST_F(QtPropertiesTest, MoveOfTheCurrentCellOpensItsEditorTheColourDialogToo)
{
    panel->open(Object);
    select("a");
    auto& view = panel->view(Object);
    view.expandAll();
    view.setCurrentIndex(instance(CamerasGroup, 0, 0));
    EXPECT_TRUE(qobject_cast<QDoubleSpinBox*>(view.indexWidget(instance(CamerasGroup, 0, 0))));
    view.setFocus();
    view.setCurrentIndex(instance(LightsGroup, 0, 0));
    EXPECT_TRUE(qobject_cast<QColorDialog*>(view.indexWidget(instance(LightsGroup, 0, 0))));
}

TEST_F(QtPropertiesTest, TabsAlwaysShowTheSameNode)
{
    select("a");
    panel->model().setData(cell(TranslationGroup, 0), 7.0);
    for (int tab = 0; tab < 3; ++tab)
        EXPECT_EQ(cellOf(*panel->view(tab).model(), TranslationGroup, 0).data(), QVariant(7.0));
}

TEST_F(QtPropertiesTest, EditorOfOneTabDisturbsTheOthersInNothing)
{
    panel->open(Coord);
    select("a");
    const WarningLog warnings;
    for (const Qt::Key key : {Qt::Key_Tab, Qt::Key_Backtab, Qt::Key_Return, Qt::Key_Escape}) {
        auto* spinBox = panel->edit<QDoubleSpinBox>(Coord, cell(TranslationGroup, 1));
        ASSERT_TRUE(spinBox);
        QTest::keyClicks(spinBox, "8");
        QTest::keyClick(spinBox, key);
        QCoreApplication::processEvents();
        for (const int tab : {Basics, Object}) {
            EXPECT_FALSE(panel->view(tab).currentIndex().isValid());
            EXPECT_THAT(panel->view(tab).viewport()->findChildren<QDoubleSpinBox*>(), IsEmpty());
        }
        panel->view(Coord).setFocus();
        panel->view(Coord).setCurrentIndex(QModelIndex());
        QCoreApplication::processEvents();
    }
    EXPECT_EQ(WarningLog::lines(), QStringList()) << "Qt warns of editors of other views";
}

TEST_F(QtPropertiesTest, AnotherNodeClosesEditorsAtOnceWithoutWriting)
{
    panel->open(Basics);
    select("a");
    ASSERT_TRUE(panel->edit<QComboBox>(Basics, cell(LayersGroup, 0)));
    b->addToLayer("hidden");
    select("b");
    EXPECT_FALSE(panel->view(Basics).indexWidget(cell(LayersGroup, 0)));
    scene->update();
    EXPECT_TRUE(b->inLayer("hidden"));
    EXPECT_EQ(cell(LayersGroup, 0).data(), QVariant(true));
}

// The end

TEST_F(QtPropertiesTest, PanelWithAFocusedEditorMayBeDestroyedAndEndsItsEdit)
{
    const int groups[]{TranslationGroup, RotationGroup};
    for (const int group : groups) {
        panel = std::make_unique<PropertiesPanel>();
        panel->setEventManager(events);
        panel->setSceneManager(scene);
        panel->open(Coord);
        select("b");
        auto* spinBox = panel->edit<QDoubleSpinBox>(Coord, cell(group, 2));
        ASSERT_TRUE(spinBox);
        EXPECT_TRUE(spinBox->hasFocus());
        spinBox->selectAll();
        QTest::keyClicks(spinBox, "5");
        EXPECT_EQ(cell(group, 2).data(), QVariant(5.0));
        panel.reset();
        QCoreApplication::processEvents();
    }
    EXPECT_EQ(events->getCount("TranslationAction"), 1U);
    EXPECT_EQ(events->getCount("RotationAction"), 1U);
}

TEST_F(QtPropertiesTest, PanelWithAnOpenChoiceOrColourDialogMayBeDestroyed)
{
    for (const bool dialog : {false, true}) {
        panel = std::make_unique<PropertiesPanel>();
        panel->setEventManager(events);
        panel->setSceneManager(scene);
        panel->open(dialog ? Object : Basics);
        select("a");
        const QModelIndex index = dialog ? instance(LightsGroup, 0, 0) : cell(LayersGroup, 0);
        panel->view(dialog ? Object : Basics).expandAll();
        ASSERT_TRUE(panel->edit(dialog ? Object : Basics, index));
        panel.reset();
        QCoreApplication::processEvents();
    }
}

TEST_F(QtPropertiesTest, PanelReleasesModelAndSceneWithItsEnd)
{
    const boost::weak_ptr<QtPropertiesModel> model = panel->model().shared_from_this();
    select("a");
    panel->model().setData(cell(TranslationGroup, 0), 9);
    panel.reset();
    EXPECT_TRUE(model.expired());
    EXPECT_EQ(scene.use_count(), 1);
    events->triggerEvent("ObjectSelected", "b, Window");
    EXPECT_FALSE(scene->update());
}

TEST_F(QtPropertiesTest, ModelThatIsReleasedLastByAnotherThreadIsDeletedOnItsOwn)
{
    auto model = panel->model().shared_from_this();
    const QPointer<QtPropertiesModel> watched = model.get();
    panel.reset();
    ASSERT_TRUE(watched);
    std::thread([last = std::move(model)]() mutable { last.reset(); }).join();
    EXPECT_TRUE(watched) << "not by the other thread";
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_FALSE(watched);
}

TEST_F(QtPropertiesTest, PanelInALayoutOfItsHostDiesWithIt)
{
    auto* host = new QWidget;
    auto* child = new QtProperties(host);
    child->setEventManager(events);
    child->setSceneManager(scene);
    select("a");
    delete host;
    select("b");
    scene->update();
}

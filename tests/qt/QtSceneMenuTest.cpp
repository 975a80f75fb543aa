#include "tests/qt/ScenePanel.h"
#include "tests/support/RecordingEventManager.h"

#include <QApplication>
#include <QContextMenuEvent>
#include <QMenu>
#include <QPointer>
#include <QTimer>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <memory>

using namespace halvern::test;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

/// What was seen of a menu while it was open.
struct SeenMenu
{
    bool shown = false;
    QStringList texts;
    QStringList checked;
    QPoint position;
    bool plain = false; ///< modal, without a parent and a default action
};

SeenMenu look(const QMenu& menu)
{
    SeenMenu seen;
    seen.shown = true;
    for (const QAction* action : menu.actions()) {
        seen.texts += action->text();
        if (action->isChecked())
            seen.checked += action->text();
    }
    seen.position = menu.pos();
    seen.plain = !menu.parent() && !menu.defaultAction() && menu.windowType() == Qt::Popup;
    return seen;
}

/// Clicks on the entry with that text; with none, closes the menu.
void choose(QMenu& menu, const QString& text)
{
    for (QAction* action : menu.actions())
        if (action->text() == text) {
            QTest::mouseClick(&menu, Qt::LeftButton, Qt::NoModifier, menu.actionGeometry(action).center());
            return;
        }
    menu.close();
}

/// Asks for the context menu as a right click at that point of the tree does, and runs `use` on the menu
/// while it is open. Returns when the menu has gone, or at once if there is none.
void openMenu(ScenePanel& panel, QPoint position, const std::function<void(QMenu&)>& use)
{
    QTimer watch; // QMenu::exec runs an event loop of its own
    QObject::connect(&watch, &QTimer::timeout, [&] {
        auto* menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
        if (!menu)
            return;
        watch.stop();
        use(*menu);
    });
    watch.start(1);
    QWidget* viewport = panel.tree().viewport();
    QContextMenuEvent event(QContextMenuEvent::Mouse, position, viewport->mapToGlobal(position));
    QApplication::sendEvent(viewport, &event);
}

SeenMenu openMenu(ScenePanel& panel, QPoint position, const QString& entry = "")
{
    SeenMenu seen;
    openMenu(panel, position, [&](QMenu& menu) {
        seen = look(menu);
        choose(menu, entry);
    });
    return seen;
}

/// Notes the changes that it is asked for, whether they change something or not.
class NotingNode : public halvern::scene::Node
{
public:
    NotingNode(std::string id, QStringList& log) : Node(id, id), log(log) {}
    void setVisible(bool visible) override
    {
        log += QString::fromStdString(getID()) + (visible ? " show" : " hide");
        Node::setVisible(visible);
    }
    void addToLayer(std::string layer) override
    {
        log += QString::fromStdString(getID() + " +" + layer);
        Node::addToLayer(layer);
    }
    void removeFromLayer(std::string layer) override
    {
        log += QString::fromStdString(getID() + " -" + layer);
        Node::removeFromLayer(layer);
    }

private:
    QStringList& log;
};

struct Layer
{
    const char* name;
    const char* entry;
};

const Layer layers[]{
    {"cast_shadow", "Cast Shadow"}, {"transparent", "Transparent"}, {"post_render", "Post Render"}};

/// An open panel over four nodes below a root; the first has a child.
class QtSceneMenuTest : public testing::Test
{
protected:
    QtSceneMenuTest()
    {
        panel->setEventManager(events);
        panel->setSceneManager(makeScene(root));
        panel->open();
    }

    void select(std::initializer_list<const char*> ids)
    {
        panel->select(ids);
        events->clear();
    }

    SeenMenu openMenuOn(const char* id, const QString& entry = "")
    {
        return openMenu(*panel, panel->rowOf(id), entry);
    }

    QBrush background(const char* id) { return panel->item(id).background(0); }
    QBrush foreground(const char* id) { return panel->item(id).foreground(0); }

    /// The data of the events since the last select, each after its type.
    std::vector<std::string> sent()
    {
        std::vector<std::string> texts;
        for (const auto& event : events->getEvents())
            texts.push_back(event.getEventType().getName() + ":" + event.getEventData().getData());
        return texts;
    }

    NodePtr a = makeNode("a", {makeNode("child")});
    NodePtr b = makeNode("b");
    NodePtr c = makeNode("c");
    NodePtr d = makeNode("d");
    NodePtr root = makeNode("root", {a, b, c, d});
    boost::shared_ptr<RecordingEventManager> events = boost::make_shared<RecordingEventManager>();
    std::unique_ptr<ScenePanel> panel = std::make_unique<ScenePanel>();
};

} // namespace

// The menu

TEST_F(QtSceneMenuTest, ListsTheFourTogglesWithTransparentBeforePostRender)
{
    const SeenMenu menu = openMenuOn("a");
    EXPECT_EQ(menu.texts, QStringList({"Hidden", "Cast Shadow", "Transparent", "Post Render"}));
    EXPECT_TRUE(menu.plain);
}

TEST_F(QtSceneMenuTest, HasTheSameActionsEachTime)
{
    QList<QAction*> first;
    openMenu(*panel, panel->rowOf("a"), [&](QMenu& menu) {
        first = menu.actions();
        menu.close();
    });
    QList<QAction*> second;
    openMenu(*panel, panel->rowOf("b"), [&](QMenu& menu) {
        second = menu.actions();
        menu.close();
    });
    EXPECT_EQ(first, second);
    EXPECT_EQ(first.value(0), &panel->action("Hidden"));
}

TEST_F(QtSceneMenuTest, IsNotShownOnEmptySpace)
{
    const QPoint empty(10, panel->tree().viewport()->height() - 5);
    ASSERT_FALSE(panel->tree().itemAt(empty));
    EXPECT_FALSE(openMenu(*panel, empty).shown);
}

TEST_F(QtSceneMenuTest, IsNotShownOnAnItemThatIsNoSceneItemOrHasNoNode)
{
    auto* foreign = new QTreeWidgetItem(&panel->tree(), QStringList({"foreign", "foreign"}));
    const QPoint onForeign = panel->tree().visualItemRect(foreign).center();
    EXPECT_FALSE(openMenu(*panel, onForeign).shown);
    dynamic_cast<halvern::qt::QtSceneItem&>(panel->item("d")).setNode(nullptr);
    EXPECT_FALSE(openMenuOn("d").shown);
}

TEST_F(QtSceneMenuTest, MarksWhatTheNodeUnderTheCursorIs)
{
    EXPECT_THAT(openMenuOn("a").checked, IsEmpty());
    a->setVisible(false);
    EXPECT_EQ(openMenuOn("a").checked, QStringList("Hidden"));
    a->setVisible(true);
    for (const Layer& layer : layers) {
        a->addToLayer(layer.name);
        EXPECT_EQ(openMenuOn("a").checked, QStringList(layer.entry));
        a->removeFromLayer(layer.name);
    }
}

TEST_F(QtSceneMenuTest, MarksFollowTheCursorNotTheSelection)
{
    b->addToLayer("transparent");
    select({"b"});
    EXPECT_THAT(openMenuOn("a").checked, IsEmpty());
    select({"a"});
    EXPECT_EQ(openMenuOn("b").checked, QStringList("Transparent"));
}

TEST_F(QtSceneMenuTest, LayerHiddenIsNotTheToggleHidden)
{
    a->addToLayer("hidden");
    EXPECT_THAT(openMenuOn("a").checked, IsEmpty());
    select({"b"});
    openMenuOn("b", "Hidden");
    EXPECT_FALSE(b->isVisible());
    EXPECT_FALSE(b->inLayer("hidden"));
}

TEST_F(QtSceneMenuTest, OpensAtThePointMappedThroughTheTreeNotItsViewport)
{
    const QPoint row = panel->rowOf("a");
    const QPoint throughTree = panel->tree().mapToGlobal(row);
    ASSERT_NE(throughTree, panel->tree().viewport()->mapToGlobal(row));
    EXPECT_EQ(openMenuOn("a").position, throughTree);
}

TEST_F(QtSceneMenuTest, ChangesNothingWhenItIsClosedWithoutAChoice)
{
    select({"a"});
    EXPECT_TRUE(openMenuOn("a").shown);
    EXPECT_TRUE(a->isVisible());
    EXPECT_THAT(sent(), IsEmpty());
}

// Hidden

TEST_F(QtSceneMenuTest, HidingTurnsTheItemGrayAndFoldsIt)
{
    select({"a"});
    openMenuOn("a", "Hidden");
    EXPECT_FALSE(a->isVisible());
    EXPECT_EQ(foreground("a"), QBrush(Qt::gray));
    EXPECT_FALSE(panel->item("a").isExpanded());
    EXPECT_THAT(sent(), ElementsAre("UpdateViews:"));
}

TEST_F(QtSceneMenuTest, ShowingAgainTurnsTheItemBlackButLeavesItFolded)
{
    select({"a"});
    openMenuOn("a", "Hidden");
    openMenuOn("a", "Hidden");
    EXPECT_TRUE(a->isVisible());
    EXPECT_EQ(foreground("a"), QBrush(Qt::black));
    EXPECT_FALSE(panel->item("a").isExpanded());
    EXPECT_THAT(sent(), ElementsAre("UpdateViews:", "UpdateViews:"));
}

TEST_F(QtSceneMenuTest, HidingLeavesTheBackgroundAndTheLayersAlone)
{
    select({"a"});
    openMenuOn("a", "Cast Shadow");
    openMenuOn("a", "Hidden");
    EXPECT_EQ(background("a"), QBrush(Qt::lightGray));
    EXPECT_TRUE(a->inLayer("cast_shadow"));
}

// Layers

TEST_F(QtSceneMenuTest, LayerIsEnteredAndLeftWithLightGrayAndWhite)
{
    select({"a"});
    for (const Layer& layer : layers) {
        openMenuOn("a", layer.entry);
        EXPECT_TRUE(a->inLayer(layer.name)) << layer.name;
        EXPECT_EQ(background("a"), QBrush(Qt::lightGray)) << layer.name;
        openMenuOn("a", layer.entry);
        EXPECT_FALSE(a->inLayer(layer.name)) << layer.name;
        EXPECT_EQ(background("a"), QBrush(Qt::white)) << layer.name;
    }
    EXPECT_EQ(sent(), std::vector<std::string>(6, "UpdateViews:"));
    EXPECT_FALSE(panel->item("a").data(0, Qt::ForegroundRole).isValid());
    EXPECT_TRUE(panel->item("a").isExpanded());
}

TEST_F(QtSceneMenuTest, ThreeLayersShareOneColourThatShowsTheLastChange)
{
    select({"a"});
    openMenuOn("a", "Cast Shadow");
    openMenuOn("a", "Post Render");
    openMenuOn("a", "Post Render");
    EXPECT_TRUE(a->inLayer("cast_shadow"));
    EXPECT_EQ(background("a"), QBrush(Qt::white));
}

TEST_F(QtSceneMenuTest, RebuiltTreeShowsTheShadowLayerAlone)
{
    select({"a"});
    openMenuOn("a", "Transparent");
    select({"b"});
    openMenuOn("b", "Cast Shadow");
    openMenuOn("b", "Transparent");
    openMenuOn("b", "Transparent");
    panel->reloadTree();
    EXPECT_EQ(background("a"), QBrush(Qt::white));
    EXPECT_EQ(background("b"), QBrush(Qt::lightGray));
}

// What a choice applies to

TEST_F(QtSceneMenuTest, ThreeSelectedNodesTakeTheOppositeStateOfAFourthUnderTheCursor)
{
    a->addToLayer("cast_shadow");
    select({"a", "b", "c"});
    openMenuOn("d", "Cast Shadow");
    for (const auto& node : {a, b, c})
        EXPECT_TRUE(node->inLayer("cast_shadow"));
    EXPECT_FALSE(d->inLayer("cast_shadow"));
    EXPECT_THAT(sent(), ElementsAre("UpdateViews:"));
    d->addToLayer("cast_shadow");
    openMenuOn("d", "Cast Shadow");
    for (const auto& node : {a, b, c})
        EXPECT_FALSE(node->inLayer("cast_shadow"));
    EXPECT_TRUE(d->inLayer("cast_shadow"));
}

TEST_F(QtSceneMenuTest, SelectedNodesAreNotToggledOneByOne)
{
    b->setVisible(false);
    select({"a", "b"});
    openMenuOn("a", "Hidden");
    EXPECT_FALSE(a->isVisible());
    EXPECT_FALSE(b->isVisible());
}

TEST_F(QtSceneMenuTest, WithNothingSelectedAChoiceChangesAndSendsNothing)
{
    select({});
    openMenuOn("a", "Hidden");
    openMenuOn("a", "Cast Shadow");
    EXPECT_TRUE(a->isVisible());
    EXPECT_FALSE(a->inLayer("cast_shadow"));
    EXPECT_EQ(background("a"), QBrush(Qt::white));
    EXPECT_THAT(sent(), IsEmpty());
}

TEST_F(QtSceneMenuTest, SelectionAtTheTimeOfTheChoiceCounts)
{
    select({"a"});
    openMenu(*panel, panel->rowOf("a"), [&](QMenu& menu) {
        panel->select({"b"});
        choose(menu, "Hidden");
    });
    EXPECT_TRUE(a->isVisible());
    EXPECT_FALSE(b->isVisible());
}

TEST_F(QtSceneMenuTest, NodesAreAskedInTheOrderOfSelectionWhateverTheyAreAlready)
{
    QStringList log;
    const auto x = boost::make_shared<NotingNode>("x", log);
    const auto y = boost::make_shared<NotingNode>("y", log);
    x->addToLayer("transparent");
    panel->setSceneManager(makeScene(makeNode("root", {x, y})));
    select({"y", "x"});
    log.clear();
    for (const char* entry : {"Hidden", "Cast Shadow", "Transparent", "Post Render"}) {
        panel->action(entry).setChecked(false);
        panel->action(entry).trigger();
        panel->action(entry).trigger();
    }
    EXPECT_EQ(log, QStringList({"y hide", "x hide", "y show", "x show", "y +cast_shadow", "x +cast_shadow",
                                "y -cast_shadow", "x -cast_shadow", "y +transparent", "x +transparent",
                                "y -transparent", "x -transparent", "y +post_render", "x +post_render",
                                "y -post_render", "x -post_render"}));
}

TEST_F(QtSceneMenuTest, UpdateViewsIsSentEvenWhenNothingReallyChanged)
{
    b->setVisible(false);
    select({"b"});
    openMenuOn("a", "Hidden");
    EXPECT_THAT(sent(), ElementsAre("UpdateViews:"));
}

TEST_F(QtSceneMenuTest, WithoutAnEventManagerTheChangeIsMade)
{
    panel->setEventManager(nullptr);
    select({"a"});
    openMenuOn("a", "Hidden");
    openMenuOn("a", "Transparent");
    EXPECT_FALSE(a->isVisible());
    EXPECT_TRUE(a->inLayer("transparent"));
    EXPECT_EQ(background("a"), QBrush(Qt::lightGray));
    EXPECT_THAT(sent(), IsEmpty());
}

TEST_F(QtSceneMenuTest, SelectedItemsWithoutANodeAreSkipped)
{
    auto* foreign = new QTreeWidgetItem(&panel->root(), QStringList({"foreign", "foreign"}));
    dynamic_cast<halvern::qt::QtSceneItem&>(panel->item("b")).setNode(nullptr);
    select({"foreign", "b", "c"});
    openMenuOn("c", "Hidden");
    openMenuOn("c", "Transparent");
    EXPECT_FALSE(c->isVisible());
    EXPECT_TRUE(c->inLayer("transparent"));
    EXPECT_TRUE(b->isVisible());
    EXPECT_FALSE(foreign->data(0, Qt::ForegroundRole).isValid());
    EXPECT_EQ(background("b"), QBrush(Qt::white));
    EXPECT_THAT(sent(), ElementsAre("UpdateViews:", "UpdateViews:"));
}

// What may happen while the menu is open

TEST_F(QtSceneMenuTest, TreeMayBeRebuiltWhileTheMenuIsOpen)
{
    select({"a"});
    openMenu(*panel, panel->rowOf("a"), [&](QMenu& menu) {
        panel->reloadTree();
        choose(menu, "Hidden");
    });
    EXPECT_TRUE(a->isVisible()) << "the rebuilt tree has no selection";
    EXPECT_THAT(sent(), IsEmpty());
}

TEST_F(QtSceneMenuTest, PanelMayBeDestroyedWhileTheMenuIsOpen)
{
    select({"a"});
    bool closed = false;
    openMenu(*panel, panel->rowOf("a"), [&](QMenu& menu) {
        panel.reset();
        EXPECT_TRUE(menu.actions().isEmpty());
        closed = menu.close();
    });
    EXPECT_TRUE(closed);
    EXPECT_TRUE(a->isVisible());
}

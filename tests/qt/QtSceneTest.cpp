#include "engine/scene/Camera.h"
#include "engine/scene/Light.h"
#include "tests/qt/ScenePanel.h"
#include "tests/support/MetaObjects.h"
#include "tests/support/RecordingEventManager.h"

#include <QHeaderView>
#include <QMetaMethod>
#include <QSignalSpy>
#include <QTranslator>
#include <QVBoxLayout>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <type_traits>

using halvern::qt::QtScene;
using halvern::qt::QtSceneItem;
using namespace halvern::test;
using testing::ElementsAre;

namespace {

QStringList actionTexts(ScenePanel& panel)
{
    QStringList texts;
    for (const QAction* action : panel.findChildren<QAction*>(QString(), Qt::FindDirectChildrenOnly))
        texts += action->text();
    return texts;
}

/// Translates every text to its context and itself.
class ContextTranslator : public QTranslator
{
public:
    bool isEmpty() const override { return false; }
    QString translate(const char* context, const char* text, const char* /*disambiguation*/,
                      int /*n*/) const override
    {
        return QString("[%1] ").arg(context) + text;
    }
};

/// A node some of whose children have gone since they were counted.
class ThinnedNode : public halvern::scene::Node
{
public:
    using Node::Node;
    unsigned int getChildCount() const override { return Node::getChildCount() + 2; }
    boost::shared_ptr<Node> getChildNode(unsigned int index) const override
    {
        return index == 0 ? nullptr : Node::getChildNode(index - 1);
    }
};

/// Everything that an item shows, for comparing two trees.
QStringList appearance(QTreeWidgetItem& root)
{
    QStringList lines;
    walk(root, [&](QTreeWidgetItem& item) {
        const QVariant foreground = item.data(0, Qt::ForegroundRole);
        lines += QStringList{item.text(0),
                             item.text(1),
                             QString::number(item.childCount()),
                             QString::number(item.columnCount()),
                             item.isExpanded() ? "unfolded" : "folded",
                             foreground.isValid() ? foreground.value<QBrush>().color().name() : "none",
                             item.background(0).color().name(),
                             item.background(1).color().name()}
                     .join(' ');
    });
    return lines;
}

/// Shows a node and all below it in the plainest way, under a tree that follows each step. Returns their
/// number.
int fillItemByItem(QTreeWidgetItem& item, const halvern::scene::Node& node)
{
    const QString id = QString::fromStdString(node.getID());
    const QString name = QString::fromStdString(node.getName());
    item.setText(0, name.isEmpty() ? id : name);
    item.setText(1, id);
    item.setExpanded(node.isVisible());
    if (!node.isVisible())
        item.setForeground(0, Qt::gray);
    item.setBackground(0, node.inLayer("cast_shadow") ? Qt::lightGray : Qt::white);
    int count = 1;
    for (unsigned int i = 0; i < node.getChildCount(); ++i)
        count += fillItemByItem(*new QTreeWidgetItem(&item), *node.getChildNode(i));
    return count;
}

/// A graph with every kind of node that a built tree tells apart.
NodePtr makeMixedGraph()
{
    const auto hidden = makeNode("hidden", {makeNode("underHidden", {makeNode("deep")})});
    hidden->setVisible(false);
    const auto casting = makeNode("casting", {makeNode("leaf")});
    casting->addToLayer("cast_shadow");
    const auto both = makeNode("both", {makeNode("underBoth")});
    both->setVisible(false);
    both->addToLayer("cast_shadow");
    return makeNode("root", {hidden, casting, both, makeNode("plain")});
}

} // namespace

// Class and meta-object

TEST(QtSceneTest, DerivesFromWidgetThenFromEventListener)
{
    static_assert(std::is_convertible_v<QtScene*, QWidget*>);
    static_assert(std::is_convertible_v<QtScene*, HCE::EventListener*>);
    QtScene panel;
    EXPECT_EQ(static_cast<void*>(&panel), static_cast<QWidget*>(&panel));
    EXPECT_LT(static_cast<void*>(&panel), static_cast<HCE::EventListener*>(&panel));
}

TEST(QtSceneTest, MetaObjectCarriesTheQualifiedNameAndTheListenerAsItsAliasSpellsIt)
{
    QtScene panel;
    EXPECT_STREQ(panel.metaObject()->className(), "halvern::qt::QtScene");
    EXPECT_EQ(panel.metaObject()->superClass(), &QWidget::staticMetaObject);
    EXPECT_EQ(panel.qt_metacast("HCE::EventListener"), static_cast<HCE::EventListener*>(&panel));
}

TEST(QtSceneTest, MetaObjectListsTheThreeSignalsThenTheEightSlots)
{
    EXPECT_THAT(ownMethods(QtScene::staticMetaObject),
                ElementsAre("triggerEvent(HCE::Event)", "sceneSelection(QString)", "sceneUpdated()",
                            "sendSelectionEvent()", "selectItem(QString)", "reloadTree()",
                            "showContextMenu(QPoint)", "hideNode()", "castShadowNode()", "transparentNode()",
                            "postRenderNode()"));
    const QMetaObject& meta = QtScene::staticMetaObject;
    for (int i = meta.methodOffset(); i < meta.methodCount(); ++i) {
        const bool signal = i < meta.methodOffset() + 3;
        EXPECT_EQ(meta.method(i).methodType(), signal ? QMetaMethod::Signal : QMetaMethod::Slot);
        EXPECT_EQ(meta.method(i).access(), signal ? QMetaMethod::Public : QMetaMethod::Protected);
    }
}

TEST(QtSceneTest, EventIsAMetaTypeOfItsAliasName)
{
    const QtScene panel;
    const int type = QMetaType::type("HCE::Event");
    EXPECT_NE(type, QMetaType::UnknownType);
    EXPECT_EQ(type, qMetaTypeId<HCE::Event>());
}

TEST(QtSceneTest, EachStatedConnectionExistsOnce)
{
    ScenePanel panel;
    QTreeWidget* tree = &panel.tree();
    EXPECT_TRUE(isConnectedOnce(tree, SIGNAL(itemSelectionChanged()), &panel, SLOT(sendSelectionEvent())));
    EXPECT_TRUE(isConnectedOnce(&panel, SIGNAL(sceneSelection(QString)), &panel, SLOT(selectItem(QString))));
    EXPECT_TRUE(isConnectedOnce(&panel, SIGNAL(sceneUpdated()), &panel, SLOT(reloadTree())));
    EXPECT_TRUE(isConnectedOnce(tree, SIGNAL(customContextMenuRequested(QPoint)), &panel,
                                SLOT(showContextMenu(QPoint))));
    EXPECT_TRUE(isConnectedOnce(&panel.action("Hidden"), SIGNAL(triggered()), &panel, SLOT(hideNode())));
    EXPECT_TRUE(
        isConnectedOnce(&panel.action("Cast Shadow"), SIGNAL(triggered()), &panel, SLOT(castShadowNode())));
    EXPECT_TRUE(
        isConnectedOnce(&panel.action("Transparent"), SIGNAL(triggered()), &panel, SLOT(transparentNode())));
    EXPECT_TRUE(
        isConnectedOnce(&panel.action("Post Render"), SIGNAL(triggered()), &panel, SLOT(postRenderNode())));
}

// Construction

TEST(QtSceneTest, IsEmptyWithABlankSummaryAtFirst)
{
    ScenePanel panel;
    EXPECT_EQ(panel.tree().topLevelItemCount(), 0);
    EXPECT_EQ(panel.summary(), "");
}

TEST(QtSceneTest, BelongsToTheParentItIsGiven)
{
    QWidget parent;
    auto* panel = new QtScene(&parent);
    EXPECT_EQ(panel->parentWidget(), &parent);
}

TEST(QtSceneTest, TreeStandsOverTheSummaryInAVerticalLayout)
{
    ScenePanel panel;
    const auto* layout = qobject_cast<QVBoxLayout*>(panel.layout());
    ASSERT_TRUE(layout);
    ASSERT_EQ(layout->count(), 2);
    EXPECT_EQ(layout->itemAt(0)->widget(), &panel.tree());
    EXPECT_EQ(layout->itemAt(1)->widget(), panel.findChild<QLabel*>());
    EXPECT_EQ(panel.tree().parentWidget(), &panel);
}

TEST(QtSceneTest, TreeHasACustomMenuAndExtendedSelectionAndNoHeader)
{
    ScenePanel panel;
    EXPECT_TRUE(panel.tree().isHeaderHidden());
    EXPECT_EQ(panel.tree().contextMenuPolicy(), Qt::CustomContextMenu);
    EXPECT_EQ(panel.tree().selectionMode(), QAbstractItemView::ExtendedSelection);
}

TEST(QtSceneTest, ActionsAreCheckableAndWereMadeWithPostRenderBeforeTransparent)
{
    ScenePanel panel;
    EXPECT_EQ(actionTexts(panel), QStringList({"Hidden", "Cast Shadow", "Post Render", "Transparent"}));
    for (const QString& text : actionTexts(panel)) {
        EXPECT_TRUE(panel.action(text).isCheckable());
        EXPECT_FALSE(panel.action(text).isChecked());
    }
}

TEST(QtSceneTest, TextsAreTranslatedInTheContextOfTheClassButNoNameIsNot)
{
    ContextTranslator translator;
    QCoreApplication::installTranslator(&translator);
    ScenePanel panel;
    panel.setSceneManager(makeScene(makeNode("root"), ""));
    const QString summary = panel.summary();
    const QStringList texts = actionTexts(panel);
    QCoreApplication::removeTranslator(&translator);
    EXPECT_EQ(summary, "[halvern::qt::QtScene] Scene: <No Name> (1 elements).");
    EXPECT_EQ(texts,
              QStringList({"[halvern::qt::QtScene] Hidden", "[halvern::qt::QtScene] Cast Shadow",
                           "[halvern::qt::QtScene] Post Render", "[halvern::qt::QtScene] Transparent"}));
}

// The tree

TEST(QtSceneTest, ShowsEveryNodeInTheOrderOfTheGraph)
{
    ScenePanel panel;
    panel.setSceneManager(makeScene(makeNode("r", {makeNode("b", {makeNode("c")}), makeNode("a")})));
    EXPECT_EQ(panel.tree().topLevelItemCount(), 1);
    EXPECT_EQ(outline(panel.root()), QStringList({"rName|r", " bName|b", "  cName|c", " aName|a"}));
}

TEST(QtSceneTest, ShowsNodesOfEveryKind)
{
    const auto light = makeNode("light");
    light->addInstanceLight(boost::make_shared<halvern::scene::Light>("sun"));
    const auto camera = makeNode("camera");
    camera->addInstanceCamera(boost::make_shared<halvern::scene::Camera>("eye"));
    const auto layered = makeNode("layered");
    layered->addToLayer("hidden");
    ScenePanel panel;
    panel.setSceneManager(makeScene(makeNode("group", {light, camera, layered})));
    EXPECT_EQ(panel.root().childCount(), 3);
}

TEST(QtSceneTest, ItemsHoldTheirNodes)
{
    const auto child = makeNode("child");
    const auto root = makeNode("root", {child});
    ScenePanel panel;
    panel.setSceneManager(makeScene(root));
    const auto* rootItem = dynamic_cast<QtSceneItem*>(&panel.root());
    const auto* childItem = dynamic_cast<QtSceneItem*>(&panel.item("child"));
    ASSERT_TRUE(rootItem && childItem);
    EXPECT_EQ(rootItem->getNode(), root);
    EXPECT_EQ(childItem->getNode(), child);
}

TEST(QtSceneTest, NodeWithoutANameShowsItsID)
{
    ScenePanel panel;
    panel.setSceneManager(makeScene(makeNode("id", "")));
    EXPECT_EQ(panel.root().text(0), "id");
    EXPECT_EQ(panel.root().text(1), "id");
}

TEST(QtSceneTest, IDStandsInASecondColumnThatTheTreeDoesNotHave)
{
    ScenePanel panel;
    panel.setSceneManager(makeScene(makeNode("id", "name")));
    EXPECT_EQ(panel.tree().columnCount(), 1);
    EXPECT_EQ(panel.root().text(0), "name");
    EXPECT_EQ(panel.root().text(1), "id");
}

TEST(QtSceneTest, NamesAndIDsAreUtf8)
{
    ScenePanel panel;
    panel.setSceneManager(makeScene(makeNode("t\xC3\xBCr", "T\xC3\xBCr")));
    EXPECT_EQ(panel.root().text(0), QStringLiteral("T\u00FCr"));
    EXPECT_EQ(panel.root().text(1), QStringLiteral("t\u00FCr"));
}

TEST(QtSceneTest, VisibleNodesAreUnfoldedLeavesToo)
{
    ScenePanel panel;
    panel.setSceneManager(makeScene(makeNode("root", {makeNode("inner", {makeNode("leaf")})})));
    for (const char* id : {"root", "inner", "leaf"})
        EXPECT_TRUE(panel.item(id).isExpanded()) << id;
}

TEST(QtSceneTest, HiddenNodeIsGrayAndFolded)
{
    const auto hidden = makeNode("hidden", {makeNode("visible", {makeNode("leaf")})});
    hidden->setVisible(false);
    ScenePanel panel;
    panel.setSceneManager(makeScene(makeNode("root", {hidden})));
    EXPECT_EQ(panel.item("hidden").foreground(0), QBrush(Qt::gray));
    EXPECT_FALSE(panel.item("hidden").isExpanded());
    EXPECT_TRUE(panel.item("visible").isExpanded());
}

TEST(QtSceneTest, VisibleNodeHasNoForegroundOfItsOwn)
{
    ScenePanel panel;
    panel.setSceneManager(makeScene(makeNode("root")));
    EXPECT_FALSE(panel.root().data(0, Qt::ForegroundRole).isValid());
}

TEST(QtSceneTest, ShadowCasterIsLightGrayAndAnyOtherNodeExplicitlyWhite)
{
    const auto casting = makeNode("casting");
    casting->addToLayer("cast_shadow");
    const auto layered = makeNode("layered");
    for (const char* layer : {"transparent", "post_render", "hidden", "Cast_Shadow"})
        layered->addToLayer(layer);
    ScenePanel panel;
    panel.setSceneManager(makeScene(makeNode("root", {casting, layered})));
    EXPECT_EQ(panel.item("casting").background(0), QBrush(Qt::lightGray));
    EXPECT_EQ(panel.item("layered").background(0), QBrush(Qt::white));
    EXPECT_EQ(panel.root().background(0), QBrush(Qt::white));
}

TEST(QtSceneTest, OnlyColumnZeroIsColoured)
{
    const auto root = makeNode("root");
    root->setVisible(false);
    root->addToLayer("cast_shadow");
    ScenePanel panel;
    panel.setSceneManager(makeScene(root));
    EXPECT_FALSE(panel.root().data(1, Qt::ForegroundRole).isValid());
    EXPECT_FALSE(panel.root().data(1, Qt::BackgroundRole).isValid());
}

TEST(QtSceneTest, EveryVisibleNodeIsAnnouncedAsExpandedOnceParentsFirst)
{
    ScenePanel panel;
    QStringList expanded;
    QObject::connect(&panel.tree(), &QTreeWidget::itemExpanded,
                     [&](QTreeWidgetItem* item) { expanded += item->text(1); });
    QSignalSpy collapsed(&panel.tree(), SIGNAL(itemCollapsed(QTreeWidgetItem*)));
    panel.setSceneManager(makeScene(makeMixedGraph()));
    EXPECT_EQ(expanded,
              QStringList({"root", "underHidden", "deep", "casting", "leaf", "underBoth", "plain"}));
    EXPECT_EQ(collapsed.count(), 0);
}

TEST(QtSceneTest, TreeEqualsOneThatIsFilledItemByItem)
{
    const auto root = makeMixedGraph();
    for (const bool shown : {false, true}) {
        QTreeWidget reference;
        reference.setVisible(shown);
        QSignalSpy expanded(&reference, SIGNAL(itemExpanded(QTreeWidgetItem*)));
        auto* top = new QTreeWidgetItem(&reference);
        EXPECT_EQ(fillItemByItem(*top, *root), 9);
        EXPECT_EQ(expanded.count(), 7);

        ScenePanel panel;
        panel.setVisible(shown);
        panel.setSceneManager(makeScene(root));
        EXPECT_EQ(appearance(panel.root()), appearance(*top));
    }
}

TEST(QtSceneTest, PopulateTreeFillsAnItemThatIsInATreeAlready)
{
    const auto root = makeMixedGraph();
    ScenePanel panel;
    panel.setSceneManager(makeScene(root));
    QTreeWidget tree;
    QSignalSpy expanded(&tree, SIGNAL(itemExpanded(QTreeWidgetItem*)));
    auto* top = new QtSceneItem(root, &tree);
    EXPECT_EQ(panel.populateTree(top), 9);
    EXPECT_EQ(appearance(panel.root()), appearance(*top));
    EXPECT_EQ(expanded.count(), 7);
}

TEST(QtSceneTest, TreeEntersTheWidgetInOnePiece)
{
    ScenePanel panel;
    QSignalSpy inserted(panel.tree().model(), SIGNAL(rowsInserted(QModelIndex, int, int)));
    panel.setSceneManager(makeScene(makeMixedGraph()));
    EXPECT_EQ(inserted.count(), 1);
}

TEST(QtSceneTest, PopulateTreeCountsTheItemAndAllBelowIt)
{
    ScenePanel panel;
    QtSceneItem* const noParent = nullptr;
    QtSceneItem alone(makeNode("alone"), noParent);
    EXPECT_EQ(panel.populateTree(&alone), 1);
    QtSceneItem family(makeNode("a", {makeNode("b", {makeNode("c")}), makeNode("d")}), noParent);
    EXPECT_EQ(panel.populateTree(&family), 4);
}

TEST(QtSceneTest, ChildrenThatHaveGoneMeanwhileAreSkipped)
{
    const auto root = boost::make_shared<ThinnedNode>("root", "");
    root->addChildNode(makeNode("left"));
    ScenePanel panel;
    panel.setSceneManager(makeScene(root));
    EXPECT_EQ(outline(panel.root()), QStringList({"root|root", " leftName|left"}));
    EXPECT_EQ(panel.summary(), "Scene: Garden (2 elements).");
}

TEST(QtSceneTest, ItemWithoutANodeStaysEmptyAndCountsNothing)
{
    ScenePanel panel;
    QtSceneItem empty(nullptr, static_cast<QtSceneItem*>(nullptr));
    EXPECT_EQ(panel.populateTree(&empty), 0);
    EXPECT_EQ(empty.text(0), "");
}

TEST(QtSceneTest, DeepSceneIsShownWhole)
{
    auto node = makeNode("leaf");
    for (int depth = 0; depth < 2000; ++depth)
        node = makeNode("n" + std::to_string(depth), {node});
    ScenePanel panel;
    panel.setSceneManager(makeScene(node));
    EXPECT_EQ(panel.summary(), "Scene: Garden (2001 elements).");
    EXPECT_TRUE(panel.findItem("leaf", 1));
}

// The summary

TEST(QtSceneTest, SummaryCountsTheRootAndSaysElementsForOne)
{
    ScenePanel panel;
    panel.setSceneManager(makeScene(makeNode("root")));
    EXPECT_EQ(panel.summary(), "Scene: Garden (1 elements).");
    panel.setSceneManager(makeScene(makeMixedGraph()));
    EXPECT_EQ(panel.summary(), "Scene: Garden (9 elements).");
}

TEST(QtSceneTest, SummaryOfASceneWithoutANameSaysNoName)
{
    ScenePanel panel;
    panel.setSceneManager(makeScene(makeNode("root"), ""));
    EXPECT_EQ(panel.summary(), "Scene: <No Name> (1 elements).");
}

TEST(QtSceneTest, SceneNameIsLatin1)
{
    ScenePanel panel;
    panel.setSceneManager(makeScene(makeNode("root"), "T\xFCr"));
    EXPECT_EQ(panel.summary(), QStringLiteral("Scene: T\u00FCr (1 elements)."));
}

TEST(QtSceneTest, SceneNameIsShownAsItIs)
{
    ScenePanel panel;
    panel.setSceneManager(makeScene(makeNode("root"), "<b>%1 %2</b>"));
    EXPECT_EQ(panel.summary(), "Scene: <b>%1 %2</b> (1 elements).");
    EXPECT_EQ(panel.findChild<QLabel*>()->textFormat(), Qt::PlainText);
}

// Scenes that come and go

TEST(QtSceneTest, EmptySceneManagerIsIgnored)
{
    const auto scene = makeScene(makeNode("root"));
    ScenePanel panel;
    panel.setSceneManager(scene);
    QSignalSpy rebuilt(panel.tree().model(), SIGNAL(modelReset()));
    panel.setSceneManager(nullptr);
    EXPECT_EQ(rebuilt.count(), 0);
    scene->setRoot(makeNode("other"));
    panel.reloadTree();
    EXPECT_EQ(panel.root().text(1), "other");
}

TEST(QtSceneTest, SceneWithoutARootIsStoredButTreeAndSummaryStay)
{
    ScenePanel panel;
    panel.setSceneManager(makeScene(makeNode("root"), "old"));
    const auto rootless = makeScene(nullptr, "new");
    panel.setSceneManager(rootless);
    EXPECT_EQ(panel.root().text(1), "root");
    EXPECT_EQ(panel.summary(), "Scene: old (1 elements).");
    EXPECT_EQ(panel.findItem("root", 1), &panel.root());
    rootless->setRoot(makeNode("late"));
    panel.reloadTree();
    EXPECT_EQ(panel.root().text(1), "late");
    EXPECT_EQ(panel.summary(), "Scene: new (1 elements).");
}

TEST(QtSceneTest, NewSceneReplacesTheOldWhichIsReleased)
{
    auto root = makeNode("old");
    auto old = makeScene(root);
    const boost::weak_ptr<halvern::scene::SceneManager> oldScene = old;
    const boost::weak_ptr<halvern::scene::Node> oldRoot = root;
    ScenePanel panel;
    panel.setSceneManager(old);
    old.reset();
    root.reset();
    EXPECT_FALSE(oldScene.expired());
    panel.setSceneManager(makeScene(makeNode("new")));
    EXPECT_TRUE(oldScene.expired());
    EXPECT_TRUE(oldRoot.expired());
    EXPECT_EQ(panel.tree().topLevelItemCount(), 1);
    EXPECT_EQ(panel.root().text(1), "new");
}

TEST(QtSceneTest, ReloadTreeShowsTheStoredSceneAnew)
{
    const auto root = makeNode("root", {makeNode("child")});
    ScenePanel panel;
    panel.setSceneManager(makeScene(root));
    root->addChildNode(makeNode("added"));
    panel.reloadTree();
    EXPECT_EQ(outline(panel.root()), QStringList({"rootName|root", " childName|child", " addedName|added"}));
    EXPECT_EQ(panel.summary(), "Scene: Garden (3 elements).");
}

TEST(QtSceneTest, ReloadTreeKeepsNeitherSelectionNorFolding)
{
    ScenePanel panel;
    panel.setSceneManager(makeScene(makeNode("root", {makeNode("child")})));
    panel.select({"child"});
    panel.root().setExpanded(false);
    QSignalSpy changed(&panel.tree(), SIGNAL(itemSelectionChanged()));
    panel.reloadTree();
    EXPECT_TRUE(panel.selection().isEmpty());
    EXPECT_TRUE(panel.root().isExpanded());
    EXPECT_EQ(changed.count(), 1);
}

TEST(QtSceneTest, ReloadTreeWithoutASceneDoesNothing)
{
    ScenePanel panel;
    panel.reloadTree();
    EXPECT_EQ(panel.tree().topLevelItemCount(), 0);
    EXPECT_EQ(panel.summary(), "");
}

TEST(QtSceneTest, SceneUpdatedReloadsTheTreeEachTimeItIsEmitted)
{
    ScenePanel panel;
    panel.setSceneManager(makeScene(makeNode("root")));
    QSignalSpy rebuilt(panel.tree().model(), SIGNAL(modelReset()));
    emit panel.sceneUpdated();
    emit panel.sceneUpdated();
    EXPECT_EQ(rebuilt.count(), 2);
}

TEST(QtSceneTest, NothingIsFoundWhileTheOldItemsGo)
{
    ScenePanel panel;
    panel.setSceneManager(makeScene(makeNode("root", {makeNode("child")})));
    panel.select({"child"});
    QTreeWidgetItem* found = &panel.root();
    QObject::connect(&panel.tree(), &QTreeWidget::itemSelectionChanged,
                     [&] { found = panel.findItem("root", 1); });
    panel.reloadTree();
    EXPECT_EQ(found, nullptr);
}

TEST(QtSceneTest, DestructorReleasesTheEventManagerThenTheScene)
{
    QStringList released;
    const auto note = [&released](const char* name) {
        return [&released, name](auto* object) {
            released += name;
            delete object;
        };
    };
    {
        ScenePanel panel;
        auto* sceneManager = new halvern::scene::SceneManager(nullptr);
        panel.setSceneManager(boost::shared_ptr<halvern::scene::SceneManager>(sceneManager, note("scene")));
        panel.setEventManager(
            boost::shared_ptr<HCE::EventManager>(new HCE::EventManager(false), note("events")));
    }
    EXPECT_EQ(released, QStringList({"events", "scene"}));
}

// Search

TEST(QtSceneTest, NothingIsFoundBeforeTheFirstScene)
{
    ScenePanel panel;
    EXPECT_EQ(panel.findItem("", 0), nullptr);
}

TEST(QtSceneTest, FindItemMatchesTheRootItselfFirst)
{
    ScenePanel panel;
    panel.setSceneManager(makeScene(makeNode("same", {makeNode("same")})));
    EXPECT_EQ(panel.findItem("same", 1), &panel.root());
}

TEST(QtSceneTest, FindItemTakesTheFirstInDepthFirstPreOrder)
{
    ScenePanel panel;
    panel.setSceneManager(
        makeScene(makeNode("root", {makeNode("a", {makeNode("twin", "deep")}), makeNode("twin", "flat")})));
    EXPECT_EQ(panel.findItem("twin", 1)->text(0), "deep");
}

TEST(QtSceneTest, FindItemComparesTheWholeTextOfTheColumnExactly)
{
    ScenePanel panel;
    panel.setSceneManager(makeScene(makeNode("root", {makeNode("id", "Name")})));
    EXPECT_EQ(panel.findItem("Name", 0), panel.root().child(0));
    EXPECT_EQ(panel.findItem("id", 1), panel.root().child(0));
    EXPECT_EQ(panel.findItem("id", 0), nullptr);
    EXPECT_EQ(panel.findItem("Name", 1), nullptr);
    EXPECT_EQ(panel.findItem("name", 0), nullptr);
    EXPECT_EQ(panel.findItem("Nam", 0), nullptr);
    EXPECT_EQ(panel.findItem("Name ", 0), nullptr);
}

TEST(QtSceneTest, FindItemWorkerSearchesFromItsItemOn)
{
    ScenePanel panel;
    panel.setSceneManager(makeScene(makeNode("root", {makeNode("a", {makeNode("b")}), makeNode("c")})));
    QTreeWidgetItem* a = &panel.item("a");
    EXPECT_EQ(panel.findItemWorker(a, "a", 1), a);
    EXPECT_EQ(panel.findItemWorker(a, "b", 1), a->child(0));
    EXPECT_EQ(panel.findItemWorker(a, "c", 1), nullptr);
    EXPECT_EQ(panel.findItemWorker(nullptr, "a", 1), nullptr);
}

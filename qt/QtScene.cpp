#include "qt/QtScene.h"

#include "engine/core/event/EventManager.h"
#include "engine/scene/Node.h"
#include "engine/scene/SceneManager.h"
#include "qt/QtSceneItem.h"
#include "qt/TreeWidget.h"

#include <QAction>
#include <QBrush>
#include <QHeaderView>
#include <QLabel>
#include <QMenu>
#include <QSignalBlocker>
#include <QVBoxLayout>

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

namespace halvern::qt {

namespace {

enum Column { NameColumn, IDColumn };

const char* const originTag = "QtScene";
const char* const castShadowLayer = "cast_shadow";
const char* const transparentLayer = "transparent";
const char* const postRenderLayer = "post_render";

/// Shared by all items; a brush of its own for each would take more memory than its texts.
const QBrush& getBackground(bool inLayer)
{
    static const QBrush plain(Qt::white);
    static const QBrush marked(Qt::lightGray);
    return inLayer ? marked : plain;
}

boost::shared_ptr<scene::Node> getNode(QTreeWidgetItem* item)
{
    const auto* sceneItem = dynamic_cast<QtSceneItem*>(item);
    return sceneItem ? sceneItem->getNode() : nullptr;
}

struct Texts
{
    QString name;
    QString id;
};

Texts getTexts(const scene::Node& node)
{
    QString id = QString::fromStdString(node.getID());
    QString name = QString::fromStdString(node.getName());
    return {name.isEmpty() ? id : std::move(name), std::move(id)};
}

void setColors(QTreeWidgetItem& item, bool visible, bool castsShadow)
{
    if (!visible)
        item.setForeground(NameColumn, Qt::gray);
    item.setBackground(NameColumn, getBackground(castsShadow));
}

QtSceneItem makePattern(bool visible, bool castsShadow)
{
    QtSceneItem pattern(nullptr, static_cast<QtSceneItem*>(nullptr));
    pattern.setData(IDColumn, Qt::BackgroundRole, {}); // counts the column
    setColors(pattern, visible, castsShadow);
    return pattern;
}

/// Fills items and makes those below them, as copies of a few patterns: copies share their colours, which
/// otherwise take more time and memory than the texts.
class TreeFiller
{
public:
    /// Returns the number of nodes from this one on.
    int fill(QtSceneItem& item, const scene::Node& node)
    {
        const bool visible = node.isVisible();
        const Texts texts = getTexts(node);
        item.setText(NameColumn, texts.name);
        item.setText(IDColumn, texts.id);
        setColors(item, visible, node.inLayer(castShadowLayer));
        return fillBelow(item, node, visible);
    }

    /// The items of visible nodes, in depth-first pre-order.
    const std::vector<QTreeWidgetItem*>& getVisible() const { return visibleItems; }

private:
    int fillBelow(QtSceneItem& item, const scene::Node& node, bool visible)
    {
        item.setExpanded(visible); // has no effect outside of a tree
        if (visible)
            visibleItems.push_back(&item);
        int count = 1;
        const unsigned int childCount = node.getChildCount();
        for (unsigned int i = 0; i < childCount; ++i)
            if (auto child = node.getChildNode(i))
                count += add(item, std::move(child));
        return count;
    }

    int add(QtSceneItem& parent, boost::shared_ptr<scene::Node> newNode)
    {
        const scene::Node& node = *newNode;
        const bool visible = node.isVisible();
        const QtSceneItem& pattern = patterns[visible][node.inLayer(castShadowLayer)];
        Texts texts = getTexts(node);
        auto* item = new QtSceneItem(pattern, std::move(newNode), std::move(texts.name), std::move(texts.id));
        parent.addChild(item);
        return fillBelow(*item, node, visible);
    }

    const QtSceneItem patterns[2][2]{{makePattern(false, false), makePattern(false, true)},
                                     {makePattern(true, false), makePattern(true, true)}};
    std::vector<QTreeWidgetItem*> visibleItems;
};

QTreeWidgetItem* findFirst(QTreeWidgetItem* item, const QString& text, int column)
{
    if (item->text(column) == text)
        return item;
    for (int i = 0; i < item->childCount(); ++i)
        if (QTreeWidgetItem* found = findFirst(item->child(i), text, column))
            return found;
    return nullptr;
}

} // namespace

QtScene::QtScene(QWidget* parent) : QWidget(parent)
{
    qRegisterMetaType<HCE::Event>("HCE::Event");

    mainLayout = new QVBoxLayout(this);
    createTree();
    sceneLabel = new QLabel;
    sceneLabel->setTextFormat(Qt::PlainText); // a scene may be called "<b>"
    mainLayout->addWidget(sceneLabel);
    hideAction = createToggle(tr("Hidden"));
    castShadowAction = createToggle(tr("Cast Shadow"));
    postRenderAction = createToggle(tr("Post Render"));
    transparentAction = createToggle(tr("Transparent"));

    connectAll();
}

QtScene::~QtScene()
{
    setEventManager(nullptr);
}

void QtScene::setEventManager(boost::shared_ptr<HCE::EventManager> newEventManager)
{
    if (eventManager)
        eventManager->removeEventListener(this);
    eventManager = std::move(newEventManager);
    if (!eventManager)
        return;
    for (const char* type : {"ObjectSelected", "SceneAttached", "SceneTopologyUpdate"})
        eventManager->registerEventListener(this, HCE::EventType(type));
}

void QtScene::setSceneManager(boost::shared_ptr<scene::SceneManager> newSceneManager)
{
    if (!newSceneManager)
        return;
    sceneManager = std::move(newSceneManager);
    const auto root = sceneManager->getRoot();
    if (!root)
        return;
    const int count = rebuildTree(root);
    const std::string name = sceneManager->getSceneName();
    sceneLabel->setText(
        tr("Scene: %1 (%2 elements).")
            .arg(QString::fromLatin1(name.empty() ? "<No Name>" : name.c_str()), QString::number(count)));
}

QTreeWidgetItem* QtScene::findItem(QString text, int column)
{
    return findItemWorker(rootItem, text, column);
}

void QtScene::handleEvent(HCE::Event event)
{
    const std::string type = event.getEventType().getName();
    if (type == "ObjectSelected") {
        const HCE::EventData data = event.getEventData();
        if (data.getArg(2) != originTag)
            emit sceneSelection(QString::fromStdString(data.getArg(1)));
    } else if (type == "SceneTopologyUpdate" || type == "SceneAttached") {
        ++reloadRequests; // first: a rebuild that begins after this serves the call that the signal makes
        emit sceneUpdated();
    }
}

void QtScene::sendSelectionEvent()
{
    const QList<QTreeWidgetItem*> selection = treeWidget->selectedItems();
    if (!eventManager || selection.isEmpty())
        return;
    const std::string id = selection.first()->text(IDColumn).toStdString();
    eventManager->triggerEvent("SelectObject", id + ", " + originTag);
}

void QtScene::selectItem(QString item)
{
    if (item.isEmpty()) {
        treeWidget->clearSelection();
        return;
    }
    QTreeWidgetItem* found = findItem(item, IDColumn);
    if (!found)
        return;
    const QSignalBlocker blocker(treeWidget);
    treeWidget->setCurrentItem(found);
}

void QtScene::reloadTree()
{
    // One rebuild serves all events that have come when it begins; the calls for them have nothing to do.
    const int requests = reloadRequests.exchange(0);
    const bool served = requests == 0 && servedReloads > 0;
    servedReloads = std::max(0, servedReloads + requests - 1);
    if (!served)
        setSceneManager(sceneManager);
}

void QtScene::showContextMenu(const QPoint& position)
{
    const auto node = getNode(treeWidget->itemAt(position));
    if (!node)
        return;
    hideAction->setChecked(!node->isVisible());
    castShadowAction->setChecked(node->inLayer(castShadowLayer));
    transparentAction->setChecked(node->inLayer(transparentLayer));
    postRenderAction->setChecked(node->inLayer(postRenderLayer));
    // While the menu is open the tree may be rebuilt and this panel destroyed: touch neither after it.
    QMenu::exec({hideAction, castShadowAction, transparentAction, postRenderAction},
                treeWidget->mapToGlobal(position));
}

void QtScene::hideNode()
{
    changeSelected([hide = hideAction->isChecked()](QTreeWidgetItem& item, scene::Node& node) {
        node.setVisible(!hide);
        item.setForeground(NameColumn, hide ? Qt::gray : Qt::black);
        if (hide)
            item.setExpanded(false);
    });
}

void QtScene::castShadowNode()
{
    setLayerOfSelected(castShadowLayer, castShadowAction->isChecked());
}

void QtScene::transparentNode()
{
    setLayerOfSelected(transparentLayer, transparentAction->isChecked());
}

void QtScene::postRenderNode()
{
    setLayerOfSelected(postRenderLayer, postRenderAction->isChecked());
}

int QtScene::populateTree(QtSceneItem* item)
{
    const auto node = item->getNode();
    return node ? TreeFiller().fill(*item, *node) : 0;
}

QTreeWidgetItem* QtScene::findItemWorker(QTreeWidgetItem* item, QString text, int column)
{
    return item ? findFirst(item, text, column) : nullptr;
}

QAction* QtScene::createToggle(const QString& text)
{
    auto* action = new QAction(text, this);
    action->setCheckable(true);
    return action;
}

void QtScene::createTree()
{
    treeWidget = new TreeWidget(this);
    treeWidget->setHeaderHidden(true);
    treeWidget->setContextMenuPolicy(Qt::CustomContextMenu);
    treeWidget->setSelectionMode(QAbstractItemView::ExtendedSelection);
    mainLayout->addWidget(treeWidget);
}

void QtScene::connectAll()
{
    connect(treeWidget, SIGNAL(itemSelectionChanged()), this, SLOT(sendSelectionEvent()));
    connect(this, SIGNAL(sceneSelection(QString)), this, SLOT(selectItem(QString)));
    connect(this, SIGNAL(sceneUpdated()), this, SLOT(reloadTree()));
    connect(treeWidget, SIGNAL(customContextMenuRequested(QPoint)), this, SLOT(showContextMenu(QPoint)));
    connect(hideAction, SIGNAL(triggered()), this, SLOT(hideNode()));
    connect(castShadowAction, SIGNAL(triggered()), this, SLOT(castShadowNode()));
    connect(transparentAction, SIGNAL(triggered()), this, SLOT(transparentNode()));
    connect(postRenderAction, SIGNAL(triggered()), this, SLOT(postRenderNode()));
}

int QtScene::rebuildTree(const boost::shared_ptr<scene::Node>& root)
{
    rootItem = nullptr; // before clear(), which announces the lost selection while the items go
    treeWidget->clear();
    // Filled outside of the tree, which would follow every single step.
    rootItem = new QtSceneItem(root, static_cast<QtSceneItem*>(nullptr));
    TreeFiller filler;
    const int count = filler.fill(*rootItem, *root);
    treeWidget->insertTopLevelItem(0, rootItem);
    for (QTreeWidgetItem* item : filler.getVisible())
        item->setExpanded(true);
    return count;
}

void QtScene::setLayerOfSelected(const char* layer, bool add)
{
    changeSelected([layer, add](QTreeWidgetItem& item, scene::Node& node) {
        if (add)
            node.addToLayer(layer);
        else
            node.removeFromLayer(layer);
        // The three layers share one colour, on purpose: it shows the last change.
        item.setBackground(NameColumn, getBackground(add));
    });
}

template <class Change>
void QtScene::changeSelected(Change change)
{
    const QList<QTreeWidgetItem*> selection = treeWidget->selectedItems();
    if (selection.isEmpty())
        return;
    for (QTreeWidgetItem* item : selection)
        if (const auto node = getNode(item))
            change(*item, *node);
    if (eventManager)
        eventManager->triggerEvent("UpdateViews", "");
}

} // namespace halvern::qt

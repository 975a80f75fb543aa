/// What the scene tree costs, compared with bare tree items that show the same.
#include "bench/Measure.h"
#include "engine/scene/Node.h"
#include "engine/scene/SceneManager.h"
#include "qt/QtScene.h"
#include "tests/support/Heap.h"

#include <QApplication>
#include <QTreeWidget>

#include <boost/make_shared.hpp>

#include <cmath>
#include <cstdlib>
#include <string>
#include <vector>

namespace {

using namespace halvern;
using namespace halvern::bench;

using NodePtr = boost::shared_ptr<scene::Node>;

/// A graph of `size` nodes; in a branched one each node has up to eight children, in a flat one all are
/// children of the root. Every tenth node is hidden, every third casts a shadow, every seventh has no name.
NodePtr makeGraph(int size, bool branched)
{
    std::vector<NodePtr> nodes;
    for (int i = 0; i < size; ++i) {
        const std::string number = std::to_string(i);
        const std::string name = i % 7 == 6 ? "" : "Part " + number + " of the model";
        nodes.push_back(boost::make_shared<scene::Node>("node-" + number, name));
        nodes[i]->setVisible(i % 10 != 9);
        if (i % 3 == 0)
            nodes[i]->addToLayer("cast_shadow");
        if (i > 0)
            nodes[branched ? (i - 1) / 8 : 0]->addChildNode(nodes[i]);
    }
    return nodes[0];
}

/// What an item shows, ready to be set.
struct Row
{
    QString name;
    QString id;
    bool visible;
    bool castsShadow;
    std::vector<Row> children;
};

Row makeRow(const scene::Node& node)
{
    const QString id = QString::fromStdString(node.getID());
    const QString name = QString::fromStdString(node.getName());
    Row row{name.isEmpty() ? id : name, id, node.isVisible(), node.inLayer("cast_shadow"), {}};
    for (unsigned int i = 0; i < node.getChildCount(); ++i)
        row.children.push_back(makeRow(*node.getChildNode(i)));
    return row;
}

/// The floor: bare items filled outside of the widget, with the same texts, brushes and folding. The texts
/// are shared with the rows, so that they cost neither time nor memory.
class BareTree
{
public:
    explicit BareTree(QTreeWidget& tree) : tree(tree) {}

    void rebuild(const Row& root)
    {
        tree.clear();
        auto* item = new QTreeWidgetItem;
        fill(item, root);
        tree.insertTopLevelItem(0, item);
        expand(item, root);
    }

private:
    void fill(QTreeWidgetItem* item, const Row& row)
    {
        item->setText(0, row.name);
        item->setText(1, row.id);
        if (!row.visible)
            item->setForeground(0, Qt::gray);
        item->setBackground(0, row.castsShadow ? lightGray : white);
        for (const Row& child : row.children)
            fill(new QTreeWidgetItem(item), child);
    }

    void expand(QTreeWidgetItem* item, const Row& row)
    {
        item->setExpanded(row.visible);
        for (int i = 0; i < item->childCount(); ++i)
            expand(item->child(i), row.children[std::size_t(i)]);
    }

    QTreeWidget& tree;
    const QBrush white = Qt::white;
    const QBrush lightGray = Qt::lightGray;
};

QTreeWidgetItem* findBare(QTreeWidgetItem* item, const QString& text, int column)
{
    if (item->text(column) == text)
        return item;
    for (int i = 0; i < item->childCount(); ++i)
        if (QTreeWidgetItem* found = findBare(item->child(i), text, column))
            return found;
    return nullptr;
}

struct Compared
{
    double panel;
    double bare;
    double ratio() const { return panel / bare; }
};

/// Milliseconds on the processor, medians of works that take turns.
template <class Work, class Floor>
Compared measure(int rounds, Work work, Floor floor)
{
    std::vector<double> times;
    std::vector<double> floors;
    for (int i = 0; i < rounds; ++i) {
        times.push_back(getProcessorMilliseconds(work));
        floors.push_back(getProcessorMilliseconds(floor));
    }
    return {getMedian(times), getMedian(floors)};
}

/// A panel and a bare tree that show the same graph.
class Pair
{
public:
    Pair(int size, bool branched) : size(size), graph(makeGraph(size, branched))
    {
        sceneManager->setRoot(graph);
        panel.show();
        tree.show();
        QCoreApplication::processEvents();
    }

    /// Bytes per node that the first build takes.
    Compared measureHeap()
    {
        const auto before = test::getHeapInUse();
        bare.rebuild(row);
        const auto between = test::getHeapInUse();
        panel.setSceneManager(sceneManager);
        const auto after = test::getHeapInUse();
        return {double(after - between) / size, double(between - before) / size};
    }

    Compared measureRebuild()
    {
        return measure(
            300000 / size + 9, [this] { panel.setSceneManager(sceneManager); },
            [this] { bare.rebuild(row); });
    }

    /// Milliseconds to read the nodes, which the bare items are spared.
    double measureReading()
    {
        const auto read = [this] { readCount += makeRow(*graph).children.size(); };
        return measure(9, read, [] {}).panel;
    }

    /// Searches the whole tree of the panel, in vain.
    Compared measureSearch()
    {
        const QString id = "node-xxxxx";
        QTreeWidgetItem* root = panel.findItem("node-0", 1);
        return measure(
            21, [&] { found = panel.findItem(id, 1); }, [&] { found = findBare(root, id, 1); });
    }

private:
    const int size;
    const NodePtr graph;
    const Row row = makeRow(*graph);
    boost::shared_ptr<scene::SceneManager> sceneManager = boost::make_shared<scene::SceneManager>(nullptr);
    qt::QtScene panel;
    QTreeWidget tree;
    BareTree bare{tree};
    const void* volatile found = nullptr;
    std::size_t readCount = 0;
};

bool ok = true;

/// Returns the milliseconds of a rebuild.
double compareScenes(int size, bool branched)
{
    Pair pair(size, branched);
    const Compared heap = pair.measureHeap();
    const Compared rebuild = pair.measureRebuild();
    const double reading = pair.measureReading();
    const Compared search = pair.measureSearch();
    std::printf("%d nodes, %s\n", size, branched ? "up to 8 below each" : "all below the root");
    std::printf("    rebuild %.2f ms, bare %.2f ms and %.2f ms to read the nodes\n", rebuild.panel,
                rebuild.bare, reading);
    std::printf("    search %.2f ms, bare %.2f ms; heap %.0f bytes a node, bare %.0f\n", search.panel,
                search.bare, heap.panel, heap.bare);
    ok &= report("rebuild, to a fill of bare items from texts that stand ready", rebuild.ratio(), 1.2, "x");
    ok &= report("rebuild, to the same and reading the nodes", rebuild.panel / (rebuild.bare + reading), 1.2,
                 "x");
    ok &= report("heap per node, to a bare item's", heap.ratio(), 1.1, "x");
    ok &= report("findItem, to a bare recursion", search.ratio(), 1.3, "x");
    return rebuild.panel;
}

} // namespace

int main(int argc, char** argv)
{
    if (!qEnvironmentVariableIsSet("DISPLAY") && !qEnvironmentVariableIsSet("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    const QApplication application(argc, argv);
    compareScenes(10000, false);
    compareScenes(100000, false);
    const double small = compareScenes(10000, true);
    const double large = compareScenes(100000, true);
    ok &= report("growth exponent of a rebuild, 10000 to 100000 nodes", std::log10(large / small), 1.3, "");
    return ok ? EXIT_SUCCESS : EXIT_FAILURE;
}

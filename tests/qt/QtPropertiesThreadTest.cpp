#include "tests/qt/PropertiesPanel.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <functional>
#include <memory>
#include <random>
#include <thread>

using namespace halvern::test;

namespace {

constexpr int NodeCount = 6;

/// Runs the work over and over in a thread of its own until it is destroyed, at a pace that the GUI thread
/// can follow.
class Worker
{
public:
    explicit Worker(std::function<void(int round)> work) :
        thread([this, work = std::move(work)] {
            for (int round = 0; !stop; ++round) {
                work(round);
                ++rounds;
                std::this_thread::sleep_for(std::chrono::microseconds(200));
            }
        })
    {}
    ~Worker()
    {
        stop = true;
        thread.join();
    }

    std::atomic<int> rounds{0};

private:
    std::atomic<bool> stop{false};
    std::thread thread;
};

/// A scene that runs on its thread, a manager that delivers on its own, and a panel on both. Node i has i
/// lights and cameras.
class QtPropertiesThreadTest : public testing::Test
{
protected:
    QtPropertiesThreadTest()
    {
        const auto root = makeNode("root");
        for (int i = 0; i < NodeCount; ++i) {
            nodes.push_back(makeNode("n" + std::to_string(i)));
            for (int k = 0; k < i; ++k) {
                addLight(*nodes.back(), "light", 1, 1, 1);
                addCamera(*nodes.back(), "camera", 1, 100, 45);
            }
            root->addChildNode(nodes.back());
        }
        scene->setRoot(root);
        attach();
        scene->start();
    }
    ~QtPropertiesThreadTest() override
    {
        panel.reset();
        scene->stop();
        scene->setEventManager(nullptr);
    }

    void attach()
    {
        panel = std::make_unique<PropertiesPanel>();
        panel->setEventManager(events);
        panel->setSceneManager(scene);
    }

    void select(int node)
    {
        events->triggerEvent("ObjectSelected",
                             (node < NodeCount ? "n" + std::to_string(node) : "none") + ", x");
    }

    bool settles(const std::function<bool()>& condition) { return QTest::qWaitFor(condition, 30000); }

    QString shownID() { return panel->model().index(IDGroup, 1).data().toString(); }

    boost::shared_ptr<RecordingEventManager> events =
        boost::make_shared<RecordingEventManager>(RecordingEventManager::Delivery::Threaded);
    std::vector<NodePtr> nodes;
    ScenePtr scene = boost::make_shared<halvern::scene::SceneManager>(events);
    std::unique_ptr<PropertiesPanel> panel;
};

} // namespace

TEST_F(QtPropertiesThreadTest, SelectionReachesThePanelFromAnotherThread)
{
    std::thread([this] { select(3); }).join();
    EXPECT_TRUE(settles([this] { return shownID() == "n3"; }));
    EXPECT_EQ(panel->model().rowCount(panel->model().index(LightsGroup, 0)), 3);
}

TEST_F(QtPropertiesThreadTest, EditReachesTheNodeOnTheScenesThreadAndComesBack)
{
    select(1);
    ASSERT_TRUE(settles([this] { return shownID() == "n1"; }));
    panel->model().setData(cellOf(panel->model(), TranslationGroup, 1), 4.567);
    EXPECT_TRUE(settles([this] { return positionOf(*nodes[1]).y() == 4.567F; }));
    EXPECT_TRUE(
        settles([this] { return cellOf(panel->model(), TranslationGroup, 1).data() == QVariant(4.57); }));
}

TEST_F(QtPropertiesThreadTest, SelectionsUpdatesAndEditsFromThreeThreadsAtOnceLeaveNothingBehind)
{
    {
        Worker selector([this](int round) { select(round % (NodeCount + 1)); });
        Worker mover(
            [this](int round) { moveTo(*nodes[std::size_t(round % NodeCount)], float(round), 0, 0); });
        auto& model = panel->model();
        for (int round = 0; selector.rounds < 400 || mover.rounds < 400; ++round) {
            const int group = TranslationGroup + round % 4;
            const QModelIndex cell = cellOf(model, group, round % 3);
            model.beginValueEdit(cell);
            model.setData(cell, group == LayersGroup ? QVariant(round % 2 == 0) : QVariant(round * 0.01));
            model.commitValueEdit();
            const QModelIndex color = instanceCellOf(model, LightsGroup, 0, 0);
            if (color.isValid())
                model.setData(color, QColor(round % 256, 0, 0));
            QCoreApplication::processEvents();
        }
    }
    select(2);
    ASSERT_TRUE(settles([this] { return shownID() == "n2"; }));
    panel->model().setData(cellOf(panel->model(), ScaleGroup, 0), 12.5);
    EXPECT_TRUE(settles([this] { return nodes[2]->getScale().x() == 12.5F; }));
    EXPECT_EQ(panel->model().rowCount(panel->model().index(LightsGroup, 0)), 2);
}

TEST_F(QtPropertiesThreadTest, FifteenHundredSelectionsWithOpenEditorsAndUnfoldedViews)
{
    std::mt19937 random(5);
    const auto upTo = [&](int count) { return static_cast<int>(random() % unsigned(count)); };
    panel->open(0);
    auto& model = panel->model();
    for (int i = 0; i < 1500; ++i) {
        select(upTo(NodeCount + 1));
        if (upTo(2))
            events->waitUntilIdle();
        const int tab = upTo(3);
        panel->tabs().setCurrentIndex(tab);
        auto& view = panel->view(tab);
        if (upTo(3) == 0)
            view.expandAll();
        const QModelIndex group = model.index(upTo(7), 0);
        QModelIndex cell = model.index(upTo(4), 1, group);
        if (cell.isValid() && upTo(2) && model.rowCount(cell.siblingAtColumn(0)) > 0 && i % 10 == 0)
            cell = model.index(0, 1, cell.siblingAtColumn(0));
        if (cell.isValid() && (cell.flags() & Qt::ItemIsEditable) && !view.isRowHidden(group.row(), {}))
            view.setCurrentIndex(cell);
        if (QWidget* editor = QApplication::focusWidget())
            QTest::keyClick(editor, upTo(8) ? Qt::Key_7 : Qt::Key_Return);
        QCoreApplication::processEvents();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
    select(NodeCount - 1);
    ASSERT_TRUE(settles([this] { return shownID() == "n5"; }));
    EXPECT_EQ(model.rowCount(model.index(LightsGroup, 0)), NodeCount - 1);
    EXPECT_EQ(model.rowCount(model.index(CamerasGroup, 0)), NodeCount - 1);
}

TEST_F(QtPropertiesThreadTest, PanelsMayBeDestroyedWhileTheEngineRunsAndAnEditorHasTheFocus)
{
    Worker selector([this](int round) { select(round % 3); });
    Worker mover([this](int round) { moveTo(*nodes[std::size_t(round % 3)], float(round), 0, 0); });
    for (int i = 0; i < 20; ++i) {
        panel->open(1);
        const QModelIndex cell = cellOf(panel->model(), TranslationGroup, i % 3);
        ASSERT_TRUE(settles([&] { return bool(cell.flags() & Qt::ItemIsEditable); }));
        if (auto* editor = panel->edit(1, cell))
            QTest::keyClicks(editor, "12");
        attach();
        QCoreApplication::processEvents();
    }
}

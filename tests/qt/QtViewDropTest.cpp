#include "engine/scene/Material.h"
#include "engine/scene/Node.h"
#include "engine/scene/SceneManager.h"
#include "engine/window/ILayout.h"
#include "engine/window/Viewport.h"
#include "qt/QtMaterialPanel.h"
#include "tests/qt/Dragging.h"
#include "tests/qt/MaterialScene.h"
#include "tests/qt/ViewProbe.h"

#include <QApplication>
#include <QDrag>
#include <QDropEvent>
#include <QHBoxLayout>
#include <QMimeData>
#include <QSignalSpy>
#include <QTest>
#include <QTimer>
#include <QWindow>

#include <boost/lexical_cast.hpp>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <stdexcept>

using namespace halvern::test;
using halvern::engine::window::ILayout;
using halvern::engine::window::Viewport;
using halvern::qt::QtMaterialPanel;
using halvern::scene::Material;
using halvern::scene::Node;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

/// Notes the picks that it is asked for.
class PickLayout : public ILayout
{
public:
    boost::shared_ptr<Viewport> getViewport() override { return {}; }
    void requestPick(int x, int y, std::string tag) override
    {
        picks.push_back(std::to_string(x) + ' ' + std::to_string(y) + ' ' + tag);
        if (onPick)
            onPick();
    }

    std::vector<std::string> picks;
    std::function<void()> onPick; // runs inside each request
};

class PickWindow : public FakeWindow
{
public:
    explicit PickWindow(CallLog& log) : FakeWindow(log) {}
    boost::shared_ptr<ILayout> getLayout() override { return layout; }

    boost::shared_ptr<PickLayout> layout = boost::make_shared<PickLayout>();
};

/// A panel as others derive it.
class DerivedPanel : public QtMaterialPanel
{
public:
    ~DerivedPanel() override { DerivedPanel::setEventManager(nullptr); }
};

/// A view of 200 x 100 over a scene with two nodes and three materials.
class QtViewDropTest : public testing::Test
{
protected:
    QtViewDropTest()
    {
        node->addChildNode(other);
        scene->setRoot(node);
        for (const char* id : {"gold", "silver", ""})
            scene->addMaterial(boost::make_shared<Material>(id, "effect"));
        window->sceneManager = scene;
        view.resize(200, 100);
        view.setWindow(window);
        panel.resize(250, 150);
        mime.setText("gold");
    }

    /// Drops the text at a place of the view.
    QDropEvent drop(const QString& text, QPointF place = QPointF(30, 20))
    {
        mime.setText(text);
        QDropEvent event(place, Qt::CopyAction | Qt::MoveAction, &mime, Qt::LeftButton, Qt::NoModifier);
        event.ignore();
        view.dropEvent(&event);
        return event;
    }

    void answer(const std::string& data) { view.handleObjectPicked(makeEvent("ObjectPicked", data)); }

    /// ID of the material in the slot that all answers name.
    std::string materialOf(Node& picked)
    {
        const auto material = picked.getMaterial(1, 2);
        return material ? material->getMaterialID() : "none";
    }

    std::vector<std::string>& picks() { return window->layout->picks; }

    CallLog log;
    const boost::shared_ptr<Node> node = boost::make_shared<Node>("node", "node");
    const boost::shared_ptr<Node> other = boost::make_shared<Node>("other", "other");
    const boost::shared_ptr<HS::SceneManager> scene = boost::make_shared<HS::SceneManager>(nullptr);
    const boost::shared_ptr<PickWindow> window = boost::make_shared<PickWindow>(log);
    QtMaterialPanel panel;
    QMimeData mime;
    WindowlessView view;
};

const char Answer[] = "node, 1, 2, 5, 6, DropMaterial";

} // namespace

// Drags over the view

TEST_F(QtViewDropTest, ADragOutOfAMaterialPanelIsTakenAsAMove)
{
    whileDraggedFrom(&panel, [&] {
        const Qt::DropActions both = Qt::CopyAction | Qt::MoveAction;
        QDragEnterEvent enter(QPoint(1, 1), both, &mime, Qt::LeftButton, Qt::NoModifier);
        QDragMoveEvent move(QPoint(1, 1), both, &mime, Qt::LeftButton, Qt::NoModifier);
        enter.ignore();
        move.ignore();
        view.dragEnterEvent(&enter);
        view.dragMoveEvent(&move);
        for (const QDropEvent* event : {static_cast<QDropEvent*>(&enter), static_cast<QDropEvent*>(&move)}) {
            EXPECT_TRUE(event->isAccepted());
            EXPECT_EQ(event->dropAction(), Qt::MoveAction);
        }
    });
    EXPECT_THAT(picks(), IsEmpty());
}

TEST_F(QtViewDropTest, ADragOutOfADerivedPanelIsTakenToo)
{
    DerivedPanel derived;
    whileDraggedFrom(&derived, [&] { EXPECT_TRUE(drop("gold").isAccepted()); });
    EXPECT_EQ(picks().size(), 1u);
}

TEST_F(QtViewDropTest, ADragOutOfAnythingElseIsLeftAsItIs)
{
    QTableView table;
    QObject object;
    for (QObject* source : {static_cast<QObject*>(&table), &object, static_cast<QObject*>(&view),
                            static_cast<QObject*>(panel.viewport())})
        whileDraggedFrom(source, [&] {
            for (const bool accepted : {false, true}) {
                QDragEnterEvent enter(QPoint(1, 1), Qt::CopyAction, &mime, Qt::LeftButton, Qt::NoModifier);
                QDragMoveEvent move(QPoint(1, 1), Qt::LinkAction, &mime, Qt::LeftButton, Qt::NoModifier);
                QDropEvent drop(QPoint(1, 1), Qt::CopyAction, &mime, Qt::LeftButton, Qt::NoModifier);
                const Qt::DropAction actions[] = {enter.dropAction(), move.dropAction(), drop.dropAction()};
                for (QEvent* event :
                     {static_cast<QEvent*>(&enter), static_cast<QEvent*>(&move), static_cast<QEvent*>(&drop)})
                    event->setAccepted(accepted);
                view.dragEnterEvent(&enter);
                view.dragMoveEvent(&move);
                view.dropEvent(&drop);
                EXPECT_EQ(enter.isAccepted(), accepted);
                EXPECT_EQ(move.isAccepted(), accepted);
                EXPECT_EQ(drop.isAccepted(), accepted);
                EXPECT_EQ(enter.dropAction(), actions[0]);
                EXPECT_EQ(move.dropAction(), actions[1]);
                EXPECT_EQ(drop.dropAction(), actions[2]);
            }
        });
    EXPECT_THAT(picks(), IsEmpty());
}

TEST_F(QtViewDropTest, WhatADragCarriesDoesNotCount)
{
    QMimeData picture;
    picture.setData("image/png", "no text at all");
    whileDraggedFrom(&panel, [&] {
        QDragEnterEvent enter(QPoint(1, 1), Qt::CopyAction, &picture, Qt::LeftButton, Qt::NoModifier);
        enter.ignore();
        view.dragEnterEvent(&enter);
        EXPECT_TRUE(enter.isAccepted());
        QDropEvent drop(QPoint(1, 1), Qt::CopyAction, &picture, Qt::LeftButton, Qt::NoModifier);
        drop.ignore();
        view.dropEvent(&drop);
        EXPECT_TRUE(drop.isAccepted());
    });
    EXPECT_EQ(picks().size(), 1u);
}

// Drops

TEST_F(QtViewDropTest, ADropAsksWhatIsThereWithYUpwards)
{
    whileDraggedFrom(&panel, [&] {
        drop("gold", QPointF(30, 20));
        drop("gold", QPointF(0, 0));
        drop("gold", QPointF(199, 99));
    });
    EXPECT_THAT(picks(), ElementsAre("30 80 DropMaterial", "0 100 DropMaterial", "199 1 DropMaterial"));
}

TEST_F(QtViewDropTest, ADropIsTakenAsAMove)
{
    whileDraggedFrom(&panel, [&] {
        const QDropEvent event = drop("gold");
        EXPECT_TRUE(event.isAccepted());
        EXPECT_EQ(event.dropAction(), Qt::MoveAction);
    });
}

TEST_F(QtViewDropTest, TheAnswerPutsTheDroppedMaterialOnThePickedNode)
{
    whileDraggedFrom(&panel, [&] { drop("gold"); });
    EXPECT_EQ(materialOf(*node), "none");
    answer(Answer);
    EXPECT_EQ(materialOf(*node), "gold");
    EXPECT_EQ(materialOf(*other), "none");
}

TEST_F(QtViewDropTest, AnyTextIsTakenAsTheID)
{
    const auto strange = boost::make_shared<Material>(" two\nlines \xC3\xBC ", "effect");
    scene->addMaterial(strange);
    whileDraggedFrom(&panel, [&] { drop(QString::fromUtf8(" two\nlines \xC3\xBC ")); });
    answer(Answer);
    EXPECT_EQ(node->getMaterial(1, 2), strange);
}

TEST_F(QtViewDropTest, TheMaterialIsThereWhenTheAnswerComesAtOnce)
{
    window->layout->onPick = [&] { answer(Answer); };
    whileDraggedFrom(&panel, [&] { EXPECT_TRUE(drop("gold").isAccepted()); });
    EXPECT_EQ(materialOf(*node), "gold");
}

TEST_F(QtViewDropTest, AnAnswerServesOneDrop)
{
    whileDraggedFrom(&panel, [&] { drop("gold"); });
    answer(Answer);
    answer("other, 1, 2, 5, 6, DropMaterial"); // loads the material with the empty ID
    EXPECT_EQ(materialOf(*node), "gold");
    EXPECT_EQ(materialOf(*other), "");
}

TEST_F(QtViewDropTest, AnAnswerThatNamesNoNodeOfTheSceneServesTheDropToo)
{
    whileDraggedFrom(&panel, [&] { drop("gold"); });
    answer("nobody, 1, 2, 5, 6, DropMaterial");
    answer(Answer);
    EXPECT_EQ(materialOf(*node), "");
}

TEST_F(QtViewDropTest, ADropWaitsForAnAnswerThatHitsSomething)
{
    whileDraggedFrom(&panel, [&] { drop("gold"); });
    answer(", , , 5, 6, DropMaterial");
    answer("node, 1, 2, 5, 6, Select");
    EXPECT_THROW(answer("node, x, 2, 5, 6, DropMaterial"), boost::bad_lexical_cast);
    EXPECT_THROW(answer("node, 1, x, 5, 6, DropMaterial"), boost::bad_lexical_cast);
    EXPECT_EQ(materialOf(*node), "none");
    answer(Answer);
    EXPECT_EQ(materialOf(*node), "gold");
}

TEST_F(QtViewDropTest, ASecondDropTakesThePlaceOfTheFirst)
{
    whileDraggedFrom(&panel, [&] {
        drop("gold");
        drop("silver");
    });
    answer(Answer);
    EXPECT_EQ(materialOf(*node), "silver");
    EXPECT_EQ(picks().size(), 2u);
}

TEST_F(QtViewDropTest, ARefusedDropLeavesTheWaitingOneAlone)
{
    whileDraggedFrom(&panel, [&] { drop("gold"); });
    QTableView table;
    whileDraggedFrom(&table, [&] { EXPECT_FALSE(drop("silver").isAccepted()); });
    answer(Answer);
    EXPECT_EQ(materialOf(*node), "gold");
}

TEST_F(QtViewDropTest, WithoutALayoutTheDropIsTakenAndWaits)
{
    window->layout.reset();
    whileDraggedFrom(&panel, [&] {
        const QDropEvent event = drop("gold");
        EXPECT_TRUE(event.isAccepted());
        EXPECT_EQ(event.dropAction(), Qt::MoveAction);
    });
    answer(Answer);
    EXPECT_EQ(materialOf(*node), "gold");
}

TEST_F(QtViewDropTest, WithoutAWindowTheDropIsTakenAndWaits)
{
    WindowlessView bare;
    whileDraggedFrom(&panel, [&] {
        QDropEvent event(QPoint(1, 1), Qt::CopyAction, &mime, Qt::LeftButton, Qt::NoModifier);
        event.ignore();
        bare.dropEvent(&event);
        EXPECT_TRUE(event.isAccepted());
    });
    bare.setWindow(window);
    bare.handleObjectPicked(makeEvent("ObjectPicked", Answer));
    EXPECT_EQ(materialOf(*node), "gold");
}

TEST_F(QtViewDropTest, AFailureOfTheEngineStaysInsideTheDrop)
{
    window->layout->onPick = [] { throw std::runtime_error("pick"); };
    whileDraggedFrom(&panel, [&] { EXPECT_NO_THROW(EXPECT_TRUE(drop("gold").isAccepted())); });
    answer(Answer);
    EXPECT_EQ(materialOf(*node), "gold");
}

// With the mouse

TEST_F(QtViewDropTest, ATileDraggedWithTheMouseLandsWhereItIsDropped)
{
    QWidget top;
    auto* draggedFrom = new QtMaterialPanel;
    auto* draggedTo = new WindowlessView;
    auto* layout = new QHBoxLayout(&top);
    layout->addWidget(draggedFrom);
    layout->addWidget(draggedTo);
    draggedFrom->setSceneManager(scene);
    showView(top, 600, 300);
    draggedTo->setWindow(window);
    scene->update();
    settle();
    const QStringList before = {draggedFrom->model()->index(0, 0).data().toString(),
                                draggedFrom->model()->index(0, 1).data().toString()};
    ASSERT_EQ(before, QStringList({"gold", "silver"}));

    QWindow* const screen = top.windowHandle();
    const auto inWindow = [&](QWidget* widget, QPoint point) { return widget->mapTo(&top, point); };
    const QPoint tile = inWindow(draggedFrom->viewport(), QPoint(150, 50));
    const QPoint target = inWindow(draggedTo, QPoint(40, 30));
    constexpr int Moves = 10;
    QTest::mousePress(screen, Qt::LeftButton, Qt::NoModifier, tile);
    // The move that starts the drag returns at its end: each step asks for the next one first.
    std::function<void(int)> go = [&](int step) {
        if (!picks().empty() || step > 500) {
            QDrag::cancel();
            return;
        }
        QTimer::singleShot(20, &top, [&, step] { go(step + 1); });
        if (step <= Moves)
            QTest::mouseMove(screen, tile + (target - tile) * step / Moves);
        else if (step == Moves + 2)
            QTest::mouseRelease(screen, Qt::LeftButton, Qt::NoModifier, target);
    };
    go(1);
    EXPECT_TRUE(waitFor([&] { return !picks().empty(); }));
    settle();
    EXPECT_THAT(picks(), ElementsAre("40 " + std::to_string(draggedTo->height() - 30) + " DropMaterial"));
    draggedTo->handleObjectPicked(makeEvent("ObjectPicked", Answer));
    EXPECT_EQ(materialOf(*node), "silver");
    // A move, but the material stays where it was.
    EXPECT_EQ(draggedFrom->model()->index(0, 1).data(), "silver");
}

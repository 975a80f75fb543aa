#include "ShownStudio.h"

#include "engine/scene/AnimationManager.h"

#include <QAbstractItemModel>
#include <QColorDialog>
#include <QComboBox>
#include <QDockWidget>
#include <QKeySequence>
#include <QSlider>
#include <QTabWidget>
#include <QTableView>
#include <QTreeView>

using namespace studiotest;

namespace {

class PanelsTest : public ShownStudio
{
protected:
    QDockWidget* dock(const QString& name) { return window.findChild<QDockWidget*>(name); }

    QTreeView* properties()
    {
        auto* tabs = dock("Halvern_Properties")->findChild<QTabWidget*>();
        return tabs ? qobject_cast<QTreeView*>(tabs->currentWidget()) : nullptr;
    }

    /// The value cell of a row such as "Translation", "X".
    QModelIndex cell(const QString& group, const QString& row)
    {
        const QAbstractItemModel& model = *properties()->model();
        const QModelIndex parent = model.match(model.index(0, 0), Qt::DisplayRole, group).value(0);
        return model.match(model.index(0, 0, parent), Qt::DisplayRole, row).value(0).siblingAtColumn(1);
    }

    /// Opens the editor of the cell with a click, types and confirms.
    void type(const QModelIndex& index, const QString& text)
    {
        properties()->scrollTo(index);
        click(*properties()->viewport(), properties()->visualRect(index).center());
        QWidget* editor = properties()->indexWidget(index);
        ASSERT_NE(editor, nullptr);
        QTest::keyClick(editor, Qt::Key_A, Qt::ControlModifier);
        QTest::keyClicks(editor, text);
        QTest::keyClick(editor, Qt::Key_Return);
    }

    /// Selects the node in the tree and waits until the properties show it.
    void edit(const QString& name)
    {
        select(name);
        const float x = node(name)->getTranslation().x();
        ASSERT_TRUE(waitFor([&] {
            return cell("Translation", "X").data().toString() != "" &&
                   std::abs(cell("Translation", "X").data().toFloat() - x) < 0.01F;
        }));
    }

    bool waitForX(const QString& name, float x)
    {
        return waitFor([&] { return std::abs(node(name)->getTranslation().x() - x) < 1e-4F; });
    }
};

} // namespace

TEST_F(PanelsTest, EveryPanelHasADockOfItsName)
{
    open(Showcase);
    for (const char* name : {"Halvern_Scene_Tree", "Halvern_Properties", "Halvern_Materials",
                             "Halvern_Material", "Halvern_Animation"}) {
        ASSERT_TRUE(dock(name)) << name;
        EXPECT_EQ(dock(name)->isVisible(), QString(name) != "Halvern_Animation") << name;
    }
}

TEST_F(PanelsTest, ASmallWindowLeavesTheRoomToTheView)
{
    window.resize(700, 500);
    window.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&window));
    EXPECT_GE(window.getView()->width(), 350);
    auto* properties = window.findChild<QDockWidget*>("Halvern_Properties");
    EXPECT_FALSE(properties->isVisible());
    properties->toggleViewAction()->trigger();
    EXPECT_TRUE(properties->isVisible());
}

TEST_F(PanelsTest, TheAnimationDockShowsTheSceneWhenItIsOpened)
{
    open(Showcase);
    const auto animations = scene.sceneManager->getAnimationManager();
    auto* box = dock("Halvern_Animation")->findChild<QComboBox*>();
    EXPECT_EQ(box->count(), 0);
    dock("Halvern_Animation")->toggleViewAction()->trigger();
    EXPECT_EQ(box->count(), int(scene.sceneManager->getAnimationsLibrary().size()));
    EXPECT_EQ(box->count(), 2);
    EXPECT_TRUE(animations->paused());
}

TEST_F(PanelsTest, ATypedPlaceMovesTheNodeAndUndoTakesItBack)
{
    open(Showcase);
    edit("Colonnade");
    const float before = node("Colonnade")->getTranslation().x();
    const QImage still = picture();

    type(cell("Translation", "X"), "1.5");
    EXPECT_TRUE(waitForX("Colonnade", 1.5F));
    EXPECT_GT(countChanged(still, picture()), 1000);

    QAction* undo = nullptr;
    ASSERT_TRUE(waitFor([&] { return (undo = findAction("&Undo Move Colonnade")) != nullptr; }));
    EXPECT_EQ(undo->shortcut(), QKeySequence(QKeySequence::Undo));
    undo->trigger();
    EXPECT_TRUE(waitForX("Colonnade", before));
    EXPECT_LT(countChanged(still, picture()), 100);

    findAction("&Redo Move Colonnade")->trigger();
    EXPECT_TRUE(waitForX("Colonnade", 1.5F));
}

TEST_F(PanelsTest, ATypedAngleTurnsTheNodeAndUndoTakesItBack)
{
    open(Showcase);
    edit("Colonnade");
    const Eigen::Matrix4f before = node("Colonnade")->getRotation();
    const auto turned = [&] { return (node("Colonnade")->getRotation() - before).norm(); };

    type(cell("Rotation", "Y"), "40");
    EXPECT_TRUE(waitFor([&] { return turned() > 0.5F; }));
    QAction* undo = nullptr;
    ASSERT_TRUE(waitFor([&] { return (undo = findAction("&Undo Turn Colonnade")) != nullptr; }));
    undo->trigger();
    EXPECT_TRUE(waitFor([&] { return turned() < 1e-5F; }));
}

TEST_F(PanelsTest, AColourOfALightChangesThePictureWhileItsDialogIsOpen)
{
    open(Showcase);
    select("Sun");
    dock("Halvern_Properties")->findChild<QTabWidget*>()->setCurrentIndex(2);
    const QAbstractItemModel& model = *properties()->model();
    const QModelIndex lights = model.match(model.index(0, 0), Qt::DisplayRole, "Lights").value(0);
    ASSERT_TRUE(waitFor([&] { return model.rowCount(lights) == 1; }));
    const QImage still = picture();

    properties()->expandAll();
    const QModelIndex index = model.index(0, 1, model.index(0, 0, lights));
    properties()->setCurrentIndex(index);
    auto* dialog = qobject_cast<QColorDialog*>(properties()->indexWidget(index));
    ASSERT_TRUE(dialog);
    dialog->setCurrentColor(QColor(0, 0, 255));
    EXPECT_TRUE(waitFor([&] { return countChanged(still, picture()) > 1000; }));
    EXPECT_TRUE(dialog->isVisible());
}

TEST_F(PanelsTest, AnotherSceneHasNothingToUndo)
{
    open(Showcase);
    edit("Colonnade");
    type(cell("Translation", "X"), "1.5");
    ASSERT_TRUE(waitFor([&] { return findAction("&Undo Move Colonnade"); }));
    const auto* old = scene.sceneManager.get();
    loader.load(House);
    ASSERT_TRUE(QTest::qWaitFor([&] { return scene.sceneManager.get() != old; }, 60'000));
    settle();
    ASSERT_TRUE(findAction("&Undo"));
    EXPECT_FALSE(findAction("&Undo")->isEnabled());
}

TEST_F(PanelsTest, AnotherSceneEmptiesTheProperties)
{
    open(Showcase);
    edit("Colonnade");
    const auto* old = scene.sceneManager.get();
    loader.load(House);
    ASSERT_TRUE(QTest::qWaitFor([&] { return scene.sceneManager.get() != old; }, 60'000));
    EXPECT_TRUE(waitFor([&] { return cell("Translation", "X").data().toString().isEmpty(); }));
}

TEST_F(PanelsTest, TheMaterialsOfTheSceneAreShown)
{
    open(Showcase);
    auto* table = dock("Halvern_Materials")->findChild<QTableView*>();
    if (!table)
        table = qobject_cast<QTableView*>(dock("Halvern_Materials")->widget());
    ASSERT_TRUE(table);
    const auto count = int(scene.sceneManager->getMaterialList().size());
    const auto shown = [&] {
        int cells = 0;
        for (int row = 0; row < table->model()->rowCount(); ++row)
            for (int column = 0; column < table->model()->columnCount(); ++column)
                cells += table->model()->index(row, column).data().toString().isEmpty() ? 0 : 1;
        return cells;
    };
    EXPECT_GE(count, 9);
    EXPECT_TRUE(waitFor([&] { return shown() == count; })) << shown() << " of " << count;
}

TEST_F(PanelsTest, AParameterOfTheChosenMaterialChangesThePicture)
{
    open(Showcase);
    auto* table = qobject_cast<QTableView*>(dock("Halvern_Materials")->widget());
    ASSERT_TRUE(table);
    const auto lawn = [&] {
        return table->model()->match(table->model()->index(0, 1), Qt::DisplayRole, "Lawn").value(0);
    };
    ASSERT_TRUE(waitFor([&] { return lawn().isValid(); }));
    click(*table->viewport(), table->visualRect(lawn()).center());

    QSlider* slider = nullptr;
    ASSERT_TRUE(waitFor([&] {
        return (slider = dock("Halvern_Material")->findChild<QSlider*>()) != nullptr;
    })) << "no editor came";
    const QImage still = picture();
    slider->setFocus();
    QTest::keyClick(slider, Qt::Key_End);
    EXPECT_GT(countChanged(still, picture()), 5000);
}

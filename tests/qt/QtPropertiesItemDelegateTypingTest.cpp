#include "tests/qt/TypingTest.h"

#include <QColorDialog>
#include <QComboBox>
#include <QDoubleSpinBox>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using namespace halvern::test;
using testing::ElementsAre;

using QtPropertiesItemDelegateTypingTest = TypingTest;

// Typing

TEST_F(QtPropertiesItemDelegateTypingTest, FractionCanBeTypedKeyByKeyAndIsCommittedLive)
{
    auto* spinBox = open<QDoubleSpinBox>(stage.cell(TranslationGroup, 0));
    ASSERT_TRUE(spinBox);
    const std::pair<char, std::pair<const char*, float>> steps[]{
        {'2', {"2", 2.0F}}, {'.', {"2.", 2.0F}}, {'5', {"2.5", 2.5F}}};
    for (const auto& [key, expected] : steps) {
        QTest::keyClick(spinBox, key);
        EXPECT_EQ(spinBox->text(), expected.first);
        stage.scene->update();
        EXPECT_EQ(spinBox->text(), expected.first) << "the node's echo must not touch the text";
        EXPECT_EQ(positionOf(*stage.a).x(), expected.second);
    }
    EXPECT_EQ(stage.actionCount(), 0U);
}

TEST_F(QtPropertiesItemDelegateTypingTest, NegativeFractionCanBeTypedKeyByKey)
{
    auto* spinBox = type(stage.cell(TranslationGroup, 2), "-12.34");
    ASSERT_TRUE(spinBox);
    EXPECT_EQ(spinBox->text(), "-12.34");
    EXPECT_EQ(positionOf(*stage.a), Eigen::Vector3f(1, 2, -12.34F));
    QTest::keyClick(spinBox, Qt::Key_Return);
    settle();
    EXPECT_THAT(stage.translations(), ElementsAre("a,     0\n     0\n-15.34"));
}

TEST_F(QtPropertiesItemDelegateTypingTest, EchoesThatComeLateDoNotTouchTheText)
{
    auto* spinBox = open<QDoubleSpinBox>(stage.cell(TranslationGroup, 0));
    ASSERT_TRUE(spinBox);
    for (const char key : {'-', '1', '2', '.', '3', '4'}) {
        QTest::keyClick(spinBox, key);
        stage.events->triggerEvent("NodeTransformationUpdate", "a"); // the node lags behind
    }
    EXPECT_EQ(spinBox->text(), "-12.34");
    stage.scene->update();
    EXPECT_EQ(positionOf(*stage.a).x(), -12.34F);
}

TEST_F(QtPropertiesItemDelegateTypingTest, CameraValueAndScaleCanBeTypedToo)
{
    type(stage.instance(CamerasGroup, 0, 2), "33.25");
    type(stage.cell(ScaleGroup, 1), "0.75");
    EXPECT_EQ(stage.a->getInstanceCamera(0)->getYFov(), 33.25F);
    EXPECT_EQ(stage.a->getScale().y(), 0.75F);
    EXPECT_EQ(stage.actionCount(), 0U);
}

TEST_F(QtPropertiesItemDelegateTypingTest, TypedAngleTurnsTheNode)
{
    auto* spinBox = type(stage.cell(RotationGroup, 2), "30");
    ASSERT_TRUE(spinBox);
    QTest::keyClick(spinBox, Qt::Key_Return);
    settle();
    EXPECT_THAT(stage.rotations(), ElementsAre("a,0.866025388 0.5 0 -0.5 0.866025388 0 0 0 1 "));
    EXPECT_NEAR(stage.a->getRotation()(1, 0), 0.5, 1e-6);
}

TEST_F(QtPropertiesItemDelegateTypingTest, ArrowsStepByATenthLive)
{
    auto* spinBox = open<QDoubleSpinBox>(stage.cell(TranslationGroup, 0));
    ASSERT_TRUE(spinBox);
    QTest::keyClick(spinBox, Qt::Key_Up);
    QTest::keyClick(spinBox, Qt::Key_Up);
    QTest::keyClick(spinBox, Qt::Key_Down);
    stage.scene->update();
    EXPECT_EQ(positionOf(*stage.a).x(), 1.1F);
}

TEST_F(QtPropertiesItemDelegateTypingTest, NumbersBeyondAMillionAreRefused)
{
    auto* spinBox = type(stage.cell(TranslationGroup, 0), "10000017.125");
    ASSERT_TRUE(spinBox);
    EXPECT_EQ(spinBox->text(), "100000.12");
    EXPECT_LE(spinBox->value(), 1000000);
}

TEST_F(QtPropertiesItemDelegateTypingTest, ChoiceByKeyPutsTheNodeIntoTheLayerWithTheNextPass)
{
    auto* comboBox = open<QComboBox>(stage.cell(LayersGroup, 1));
    ASSERT_TRUE(comboBox);
    EXPECT_EQ(comboBox->currentIndex(), 0);
    QTest::keyClick(comboBox, Qt::Key_Down);
    EXPECT_EQ(stage.value(LayersGroup, 1), QVariant(true));
    EXPECT_FALSE(stage.a->inLayer("cast_shadow"));
    stage.scene->update();
    EXPECT_TRUE(stage.a->inLayer("cast_shadow"));
    QTest::keyClick(comboBox, Qt::Key_Up);
    stage.scene->update();
    EXPECT_FALSE(stage.a->inLayer("cast_shadow"));
    EXPECT_EQ(stage.actionCount(), 0U);
}

TEST_F(QtPropertiesItemDelegateTypingTest, DecimalCommaCanBeTypedWhereItIsUsedAndChangesNoEventText)
{
    QLocale::setDefault(QLocale(QLocale::German, QLocale::Germany));
    view.setLocale(QLocale());
    auto* spinBox = type(stage.cell(TranslationGroup, 1), "3,5");
    ASSERT_TRUE(spinBox);
    EXPECT_EQ(spinBox->text(), "3,5");
    QTest::keyClick(spinBox, Qt::Key_Return);
    settle();
    QLocale::setDefault(QLocale::c());
    EXPECT_THAT(stage.translations(), ElementsAre("a,  0\n1.5\n  0"));
}

TEST_F(QtPropertiesItemDelegateTypingTest, NoEditorOpensForIDs)
{
    for (const QModelIndex& cell : {stage.cell(IDGroup, -1), stage.cell(LightsGroup, 0, 0),
                                    stage.cell(LightsGroup, 0), stage.cell(CamerasGroup, 0, 0)})
        EXPECT_FALSE(open(cell));
}

// Ends of an edit

TEST_F(QtPropertiesItemDelegateTypingTest, ReturnAgainWithoutAChangeSendsNothing)
{
    auto* spinBox = type(stage.cell(TranslationGroup, 0), "5");
    ASSERT_TRUE(spinBox);
    QTest::keyRelease(spinBox, Qt::Key_Return);
    QTest::keyRelease(spinBox, Qt::Key_Return);
    EXPECT_THAT(stage.translations(), ElementsAre("a,4\n0\n0"));
}

TEST_F(QtPropertiesItemDelegateTypingTest, ChangesAfterReturnCountFromTheValueConfirmed)
{
    auto* spinBox = type(stage.cell(TranslationGroup, 0), "5");
    ASSERT_TRUE(spinBox);
    QTest::keyRelease(spinBox, Qt::Key_Return);
    QTest::keyClick(spinBox, Qt::Key_Up);
    QTest::keyClick(spinBox, Qt::Key_Escape);
    settle();
    EXPECT_THAT(stage.translations(), ElementsAre("a,4\n0\n0", "a,0.0999999\n        0\n        0"));
}

TEST_F(QtPropertiesItemDelegateTypingTest, OpeningAndLeavingACellWritesItAtTheEditorsPrecision)
{
    const QModelIndex near = stage.instance(CamerasGroup, 0, 0);
    ASSERT_TRUE(open(near));
    EXPECT_EQ(near.data(), QVariant(static_cast<double>(0.126F)));
    view.setFocus();
    settle();
    EXPECT_EQ(near.data(), QVariant(0.13));
    EXPECT_TRUE(stage.model->update());
    EXPECT_EQ(stage.a->getInstanceCamera(0)->getZNear(), 0.13F);
}

TEST_F(QtPropertiesItemDelegateTypingTest, EscapeLeavesTheCellOfAnUntouchedEditorAlone)
{
    const QModelIndex near = stage.instance(CamerasGroup, 0, 0);
    auto* editor = open(near);
    ASSERT_TRUE(editor);
    QTest::keyClick(editor, Qt::Key_Escape);
    settle();
    EXPECT_EQ(near.data(), QVariant(static_cast<double>(0.126F)));
    EXPECT_FALSE(stage.model->update());
}

TEST_F(QtPropertiesItemDelegateTypingTest, TabGoesOnToTheNextCellWithItsOwnEdit)
{
    auto* x = type(stage.cell(TranslationGroup, 0), "5");
    ASSERT_TRUE(x);
    QTest::keyClick(x, Qt::Key_Tab);
    settle();
    auto* y = qobject_cast<QDoubleSpinBox*>(view.indexWidget(stage.cell(TranslationGroup, 1)));
    ASSERT_TRUE(y);
    QTest::keyClicks(y, "7");
    QTest::keyClick(y, Qt::Key_Escape);
    settle();
    EXPECT_THAT(stage.translations(), ElementsAre("a,4\n0\n0", "a,0\n5\n0"));
}

// Another selection under an open editor

TEST_F(QtPropertiesItemDelegateTypingTest, AnotherNodeEndsTheEditForTheOldAndClosesTheEditorWithoutWriting)
{
    auto* spinBox = type(stage.cell(TranslationGroup, 0), "5");
    ASSERT_TRUE(spinBox);
    stage.select("b");
    EXPECT_THAT(stage.translations(), ElementsAre("a,4\n0\n0"));
    settle();
    EXPECT_FALSE(isOpen(stage.cell(TranslationGroup, 0)));
    EXPECT_THAT(stage.values(TranslationGroup), ElementsAre(100, 200, 300));
    stage.scene->update();
    EXPECT_EQ(positionOf(*stage.b), Eigen::Vector3f(100, 200, 300));
    EXPECT_EQ(stage.actionCount(), 1U);
}

TEST_F(QtPropertiesItemDelegateTypingTest, LossOfTheSelectionClosesTheEditorToo)
{
    auto* comboBox = open<QComboBox>(stage.cell(LayersGroup, 0));
    ASSERT_TRUE(comboBox);
    stage.select("");
    settle();
    EXPECT_FALSE(isOpen(stage.cell(LayersGroup, 0)));
    EXPECT_EQ(stage.value(LayersGroup, 0), QVariant(""));
}

TEST_F(QtPropertiesItemDelegateTypingTest, SameNodeAgainLeavesEditorAndEditAlone)
{
    auto* spinBox = type(stage.cell(TranslationGroup, 0), "5");
    ASSERT_TRUE(spinBox);
    stage.select("a");
    settle();
    EXPECT_TRUE(isOpen(stage.cell(TranslationGroup, 0)));
    EXPECT_EQ(stage.actionCount(), 0U);
    QTest::keyClick(spinBox, '7');
    EXPECT_EQ(spinBox->text(), "57");
    QTest::keyClick(spinBox, Qt::Key_Return);
    settle();
    EXPECT_THAT(stage.translations(), ElementsAre("a,56\n 0\n 0"));
}

TEST_F(QtPropertiesItemDelegateTypingTest, SameNodeAgainLeavesTheEditorOfACameraOpenBeforeAnyChangeToo)
{
    const QPersistentModelIndex far = stage.instance(CamerasGroup, 0, 1);
    QPointer<QWidget> editor = open(far);
    ASSERT_TRUE(editor);
    stage.select("a");
    settle();
    EXPECT_TRUE(editor);
    EXPECT_TRUE(isOpen(far));
}

TEST_F(QtPropertiesItemDelegateTypingTest, EditorOfACameraGoesWithItsRowAndSendsNothing)
{
    QPointer<QWidget> editor = type(stage.instance(CamerasGroup, 0, 1), "50");
    ASSERT_TRUE(editor);
    stage.select("b");
    EXPECT_TRUE(QTest::qWaitFor([&] { return !editor; }, 10000));
    EXPECT_EQ(stage.a->getInstanceCamera(0)->getZFar(), 50);
    EXPECT_EQ(stage.actionCount(), 0U);
    stage.change(TranslationGroup, 0, 101);
    EXPECT_EQ(stage.actionCount(), 1U) << "the bracket was closed";
}

// The colour dialog

TEST_F(QtPropertiesItemDelegateTypingTest, ColourChangesTheLightWhileTheDialogIsOpen)
{
    const QModelIndex cell = stage.instance(LightsGroup, 0, 0);
    auto* dialog = open<QColorDialog>(cell);
    ASSERT_TRUE(dialog);
    EXPECT_TRUE(dialog->isVisible());
    EXPECT_EQ(dialog->currentColor(), QColor(Qt::red));
    dialog->setCurrentColor(QColor(0, 51, 255));
    EXPECT_EQ(cell.data(), QVariant(QColor(0, 51, 255)));
    stage.scene->update();
    EXPECT_EQ(stage.a->getInstanceLight(0)->getColor(), Eigen::Vector3f(0, 0.2F, 1));
    EXPECT_TRUE(dialog->isVisible());
}

TEST_F(QtPropertiesItemDelegateTypingTest, CancellingTheDialogKeepsTheColour)
{
    const QModelIndex cell = stage.instance(LightsGroup, 0, 0);
    QPointer<QColorDialog> dialog = open<QColorDialog>(cell);
    ASSERT_TRUE(dialog);
    dialog->setCurrentColor(QColor(0, 51, 255));
    dialog->reject();
    EXPECT_TRUE(QTest::qWaitFor([&] { return !dialog; }, 10000));
    EXPECT_EQ(cell.data(), QVariant(QColor(0, 51, 255)));
    stage.scene->update();
    EXPECT_EQ(stage.a->getInstanceLight(0)->getColor(), Eigen::Vector3f(0, 0.2F, 1));
    EXPECT_EQ(stage.actionCount(), 0U);
    EXPECT_FALSE(isOpen(cell));
}

TEST_F(QtPropertiesItemDelegateTypingTest, AnotherNodeClosesTheDialogWithoutWriting)
{
    QPointer<QColorDialog> dialog = open<QColorDialog>(stage.instance(LightsGroup, 0, 0));
    ASSERT_TRUE(dialog);
    stage.select("b");
    EXPECT_TRUE(QTest::qWaitFor([&] { return !dialog; }, 10000));
    EXPECT_FALSE(stage.model->update());
    EXPECT_EQ(stage.b->getInstanceLight(0)->getColor(), Eigen::Vector3f(0, 1, 0));
}

TEST_F(QtPropertiesItemDelegateTypingTest, DialogOfTheSameNodeStaysOpen)
{
    QPointer<QColorDialog> dialog = open<QColorDialog>(stage.instance(LightsGroup, 0, 0));
    ASSERT_TRUE(dialog);
    stage.select("a");
    settle();
    ASSERT_TRUE(dialog);
    EXPECT_TRUE(dialog->isVisible());
    dialog->setCurrentColor(Qt::blue);
    stage.scene->update();
    EXPECT_EQ(stage.a->getInstanceLight(0)->getColor(), Eigen::Vector3f(0, 0, 1));
}

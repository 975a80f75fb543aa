#include "qt/QtPropertiesItemDelegate.h"
#include "tests/qt/PropertiesStage.h"

#include <QBrush>
#include <QColorDialog>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QLayout>
#include <QLineEdit>
#include <QMetaMethod>
#include <QSignalSpy>
#include <QStandardItemModel>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>

using halvern::qt::QtPropertiesItemDelegate;
using namespace halvern::test;
using testing::ElementsAre;

namespace {

std::vector<std::string> ownMethods(const QMetaObject& meta)
{
    std::vector<std::string> signatures;
    for (int i = meta.methodOffset(); i < meta.methodCount(); ++i)
        signatures.push_back(meta.method(i).methodSignature().toStdString());
    return signatures;
}

/// Notes the roles of all writes, and takes them.
class RoleLog : public QStandardItemModel
{
public:
    RoleLog() : QStandardItemModel(1, 2) {}
    bool setData(const QModelIndex& index, const QVariant& value, int role) override
    {
        roles.push_back(role);
        values.push_back(value);
        return QStandardItemModel::setData(index, value, role);
    }
    std::vector<int> roles;
    std::vector<QVariant> values;
};

/// A delegate over a stage whose node "a" has five lights and five cameras.
class QtPropertiesItemDelegateTest : public testing::Test
{
protected:
    QtPropertiesItemDelegateTest()
    {
        for (int i = 0; i < 5; ++i) {
            addLight(*stage.a, "light" + std::to_string(i), 1, 0, 0);
            addCamera(*stage.a, "camera" + std::to_string(i), 0.126F, 100, 45);
        }
        moveTo(*stage.a, 1, 2, 3);
        stage.select("a");
    }

    /// An editor as a view makes it.
    template <class Editor = QWidget>
    Editor* create(const QModelIndex& index)
    {
        editors.emplace_back(delegate.createEditor(&viewport, QStyleOptionViewItem(), index));
        return qobject_cast<Editor*>(editors.back().get());
    }

    PropertiesStage stage;
    QWidget viewport;
    QtPropertiesItemDelegate delegate;
    std::vector<std::unique_ptr<QWidget>> editors;
};

} // namespace

TEST_F(QtPropertiesItemDelegateTest, MetaObjectListsItsSlotsInOrder)
{
    EXPECT_STREQ(QtPropertiesItemDelegate::staticMetaObject.className(),
                 "halvern::qt::QtPropertiesItemDelegate");
    EXPECT_STREQ(QtPropertiesItemDelegate::staticMetaObject.superClass()->className(), "QStyledItemDelegate");
    EXPECT_THAT(
        ownMethods(QtPropertiesItemDelegate::staticMetaObject),
        ElementsAre("editorValueChanged(double)", "comboBoxValueChanged(int)", "colorValueChanged(QColor)"));
}

// Kinds of rows

TEST_F(QtPropertiesItemDelegateTest, CoordinatesHaveASpinBox)
{
    for (const int group : {TranslationGroup, RotationGroup, ScaleGroup})
        for (int row = 0; row < 3; ++row)
            EXPECT_TRUE(create<QDoubleSpinBox>(stage.cell(group, row)));
}

TEST_F(QtPropertiesItemDelegateTest, CameraValuesHaveASpinBoxUnderEveryCamera)
{
    for (int row = 0; row < 5; ++row)
        for (int child = 0; child < 3; ++child)
            EXPECT_TRUE(create<QDoubleSpinBox>(stage.instance(CamerasGroup, row, child)));
}

TEST_F(QtPropertiesItemDelegateTest, LayersHaveAChoice)
{
    for (int row = 0; row < 4; ++row)
        EXPECT_TRUE(create<QComboBox>(stage.cell(LayersGroup, row)));
}

TEST_F(QtPropertiesItemDelegateTest, ColourOfTheFirstLightHasADialog)
{
    EXPECT_TRUE(create<QColorDialog>(stage.instance(LightsGroup, 0, 0)));
}

TEST_F(QtPropertiesItemDelegateTest, ColoursOfTheSecondToFourthLightCountAsCoordinatesAndOfTheFifthAsALayer)
{
    for (int row = 1; row <= 3; ++row)
        EXPECT_TRUE(create<QDoubleSpinBox>(stage.instance(LightsGroup, row, 0)));
    EXPECT_TRUE(create<QComboBox>(stage.instance(LightsGroup, 4, 0)));
}

TEST_F(QtPropertiesItemDelegateTest, AnythingElseHasTheDefaultEditor)
{
    EXPECT_TRUE(create<QLineEdit>(stage.cell(IDGroup, -1)));
    for (const int group : {LightsGroup, CamerasGroup}) {
        QWidget* editor = create(stage.cell(group, 0, 0));
        EXPECT_TRUE(qobject_cast<QLineEdit*>(editor)) << "a text";
    }
}

// Editors

TEST_F(QtPropertiesItemDelegateTest, SpinBoxHasTwoDecimalsSmallStepsAWideRangeAndAcceleration)
{
    for (const QModelIndex& index : {stage.cell(TranslationGroup, 0), stage.instance(CamerasGroup, 0, 0)}) {
        const auto* spinBox = create<QDoubleSpinBox>(index);
        EXPECT_EQ(spinBox->decimals(), 2);
        EXPECT_EQ(spinBox->singleStep(), 0.1);
        EXPECT_EQ(spinBox->minimum(), -1000000);
        EXPECT_EQ(spinBox->maximum(), 1000000);
        EXPECT_TRUE(spinBox->isAccelerated());
        EXPECT_EQ(spinBox->parentWidget(), &viewport);
    }
}

TEST_F(QtPropertiesItemDelegateTest, ChoiceIsFalseOrTrueWithoutIconsAndUserValues)
{
    const auto* comboBox = create<QComboBox>(stage.cell(LayersGroup, 0));
    ASSERT_EQ(comboBox->count(), 2);
    EXPECT_EQ(comboBox->itemText(0), "false");
    EXPECT_EQ(comboBox->itemText(1), "true");
    for (const int i : {0, 1}) {
        EXPECT_TRUE(comboBox->itemIcon(i).isNull());
        EXPECT_FALSE(comboBox->itemData(i).isValid());
    }
    EXPECT_EQ(comboBox->parentWidget(), &viewport);
}

TEST_F(QtPropertiesItemDelegateTest, ColourDialogBelongsToTheViewAndIsAWindow)
{
    const auto* dialog = create<QColorDialog>(stage.instance(LightsGroup, 0, 0));
    EXPECT_EQ(dialog->parentWidget(), &viewport);
    EXPECT_TRUE(dialog->isWindow());
}

TEST_F(QtPropertiesItemDelegateTest, EditorsAreConnectedToTheirSlotsOnce)
{
    const auto once = [this](QObject* editor, const char* signal, const char* slot) {
        return QObject::disconnect(editor, signal, &delegate, slot) &&
               !QObject::disconnect(editor, signal, &delegate, slot);
    };
    EXPECT_TRUE(once(create(stage.cell(ScaleGroup, 0)), SIGNAL(valueChanged(double)),
                     SLOT(editorValueChanged(double))));
    EXPECT_TRUE(once(create(stage.cell(LayersGroup, 0)), SIGNAL(currentIndexChanged(int)),
                     SLOT(comboBoxValueChanged(int))));
    EXPECT_TRUE(once(create(stage.instance(LightsGroup, 0, 0)), SIGNAL(currentColorChanged(QColor)),
                     SLOT(colorValueChanged(QColor))));
}

TEST_F(QtPropertiesItemDelegateTest, EditorTakesTheItemsRectangleTheColourDialogToo)
{
    QStyleOptionViewItem option;
    option.rect = QRect(30, 40, 200, 20);
    auto* spinBox = create(stage.cell(ScaleGroup, 0));
    delegate.updateEditorGeometry(spinBox, option, stage.cell(ScaleGroup, 0));
    EXPECT_EQ(spinBox->geometry(), option.rect);
    auto* dialog = create(stage.instance(LightsGroup, 0, 0));
    dialog->setMinimumSize(1, 1);
    dialog->layout()->setSizeConstraint(QLayout::SetNoConstraint);
    delegate.updateEditorGeometry(dialog, option, stage.instance(LightsGroup, 0, 0));
    EXPECT_EQ(dialog->geometry().topLeft(), option.rect.topLeft());
}

// From the model into the editor

TEST_F(QtPropertiesItemDelegateTest, SpinBoxGetsTheCellsNumber)
{
    auto* spinBox = create<QDoubleSpinBox>(stage.cell(TranslationGroup, 1));
    delegate.setEditorData(spinBox, stage.cell(TranslationGroup, 1));
    EXPECT_EQ(spinBox->value(), 2);
    EXPECT_EQ(spinBox->cleanText(), "2.00");
}

TEST_F(QtPropertiesItemDelegateTest, EditorsMadeElsewhereAreFilledToo)
{
    QDoubleSpinBox spinBox;
    delegate.setEditorData(&spinBox, stage.cell(TranslationGroup, 2));
    EXPECT_EQ(spinBox.value(), 3);
    stage.edit(LayersGroup, 0, true);
    QComboBox comboBox;
    comboBox.addItems({"false", "true"});
    delegate.setEditorData(&comboBox, stage.cell(LayersGroup, 0));
    EXPECT_EQ(comboBox.currentIndex(), 1);
}

TEST_F(QtPropertiesItemDelegateTest, SpinBoxRoundsAndLimitsWhatTheCellHolds)
{
    auto* spinBox = create<QDoubleSpinBox>(stage.instance(CamerasGroup, 0, 0));
    delegate.setEditorData(spinBox, stage.instance(CamerasGroup, 0, 0));
    EXPECT_EQ(spinBox->value(), 0.13);
    stage.edit(ScaleGroup, 0, 2.0e6);
    auto* limited = create<QDoubleSpinBox>(stage.cell(ScaleGroup, 0));
    delegate.setEditorData(limited, stage.cell(ScaleGroup, 0));
    EXPECT_EQ(limited->value(), 1000000);
}

TEST_F(QtPropertiesItemDelegateTest, ChoiceGetsTheCellsBool)
{
    const QModelIndex cell = stage.cell(LayersGroup, 1);
    auto* comboBox = create<QComboBox>(cell);
    for (const bool member : {true, false}) {
        stage.edit(LayersGroup, 1, member);
        delegate.setEditorData(comboBox, cell);
        EXPECT_EQ(comboBox->currentIndex(), member ? 1 : 0);
    }
}

TEST_F(QtPropertiesItemDelegateTest, DialogGetsTheCellsColourThroughItsTextWithEightBits)
{
    const QModelIndex cell = stage.instance(LightsGroup, 0, 0);
    auto* dialog = create<QColorDialog>(cell);
    stage.model->setData(cell, QColor::fromRgbF(0.1, 0.5, 0.9, 1));
    delegate.setEditorData(dialog, cell);
    EXPECT_EQ(dialog->currentColor(), QColor(26, 128, 230));
    stage.model->setData(cell, "green");
    delegate.setEditorData(dialog, cell);
    EXPECT_EQ(dialog->currentColor(), QColor(0, 128, 0));
}

TEST_F(QtPropertiesItemDelegateTest, DialogIsBlackForATextThatNamesNoColour)
{
    const QModelIndex cell = stage.instance(LightsGroup, 0, 0);
    auto* dialog = create<QColorDialog>(cell);
    dialog->setCurrentColor(Qt::red);
    stage.model->setData(cell, "");
    delegate.setEditorData(dialog, cell);
    EXPECT_EQ(dialog->currentColor().rgb(), QColor(Qt::black).rgb());
}

TEST_F(QtPropertiesItemDelegateTest, OtherEditorsAreLeftAsTheyAre)
{
    auto* lineEdit = create<QLineEdit>(stage.cell(IDGroup, -1));
    delegate.setEditorData(lineEdit, stage.cell(IDGroup, -1));
    EXPECT_EQ(lineEdit->text(), "");
}

TEST_F(QtPropertiesItemDelegateTest, FillingAnEditorIsNoChangeByTheUser)
{
    QSignalSpy committed(&delegate, SIGNAL(commitData(QWidget*)));
    const QModelIndex cells[]{stage.cell(TranslationGroup, 2), stage.cell(LayersGroup, 0),
                              stage.instance(LightsGroup, 0, 0)};
    stage.edit(LayersGroup, 0, true);
    for (const QModelIndex& cell : cells)
        delegate.setEditorData(create(cell), cell);
    EXPECT_EQ(committed.count(), 0);
}

TEST_F(QtPropertiesItemDelegateTest, TextThatStandsForTheCellsValueAlreadyIsKept)
{
    const QModelIndex near = stage.instance(CamerasGroup, 0, 0);
    auto* spinBox = create<QDoubleSpinBox>(near);
    auto* text = spinBox->findChild<QLineEdit*>();
    spinBox->selectAll();
    QTest::keyClicks(text, "12.3");
    stage.model->setData(near, static_cast<double>(12.3F));
    delegate.setEditorData(spinBox, near);
    EXPECT_EQ(text->text(), "12.3") << "a float's 12.3 is the same at two decimals";
    stage.model->setData(near, 12.4);
    delegate.setEditorData(spinBox, near);
    EXPECT_EQ(text->text(), "12.40");
}

TEST_F(QtPropertiesItemDelegateTest, ColourIsComparedByItsEightBits)
{
    const QModelIndex cell = stage.instance(LightsGroup, 0, 0);
    auto* dialog = create<QColorDialog>(cell);
    dialog->setCurrentColor(QColor(26, 0, 0));
    QSignalSpy changed(dialog, SIGNAL(currentColorChanged(QColor)));
    stage.model->setData(cell, QColor::fromRgbF(0.1, 0, 0, 1));
    delegate.setEditorData(dialog, cell);
    EXPECT_EQ(changed.count(), 0);
    EXPECT_EQ(dialog->currentColor(), QColor(26, 0, 0));
}

// From the editor into the model

TEST_F(QtPropertiesItemDelegateTest, SpinBoxWritesADouble)
{
    const QModelIndex cell = stage.cell(ScaleGroup, 0);
    auto* spinBox = create<QDoubleSpinBox>(cell);
    spinBox->setValue(7.25);
    delegate.setModelData(spinBox, stage.model.get(), cell);
    EXPECT_EQ(cell.data(), QVariant(7.25));
}

TEST_F(QtPropertiesItemDelegateTest, SpinBoxReadsItsTextBeforeItWrites)
{
    const QModelIndex cell = stage.cell(ScaleGroup, 0);
    auto* spinBox = create<QDoubleSpinBox>(cell);
    spinBox->setKeyboardTracking(false);
    spinBox->selectAll();
    QTest::keyClicks(spinBox, "8.5");
    delegate.setModelData(spinBox, stage.model.get(), cell);
    EXPECT_EQ(cell.data(), QVariant(8.5));
}

TEST_F(QtPropertiesItemDelegateTest, ChoiceWritesABool)
{
    const QModelIndex cell = stage.cell(LayersGroup, 3);
    auto* comboBox = create<QComboBox>(cell);
    for (const int index : {1, 0}) {
        comboBox->setCurrentIndex(index);
        delegate.setModelData(comboBox, stage.model.get(), cell);
        EXPECT_EQ(cell.data(), QVariant(index == 1));
        EXPECT_EQ(cell.data().type(), QVariant::Bool);
    }
}

TEST_F(QtPropertiesItemDelegateTest, DialogWritesItsColour)
{
    const QModelIndex cell = stage.instance(LightsGroup, 0, 0);
    auto* dialog = create<QColorDialog>(cell);
    dialog->setCurrentColor(QColor(1, 2, 3));
    delegate.setModelData(dialog, stage.model.get(), cell);
    EXPECT_EQ(cell.data(), QVariant(QColor(1, 2, 3)));
}

TEST_F(QtPropertiesItemDelegateTest, DialogThenWritesABrushForTheBackgroundWhichTheModelRefuses)
{
    RoleLog log;
    auto* dialog = create<QColorDialog>(stage.instance(LightsGroup, 0, 0));
    dialog->setCurrentColor(QColor(1, 2, 3));
    delegate.setModelData(dialog, &log, log.index(0, 1));
    EXPECT_THAT(log.roles, ElementsAre(Qt::EditRole, Qt::BackgroundRole));
    EXPECT_EQ(log.values.at(0), QVariant(QColor(1, 2, 3)));
    EXPECT_EQ(log.values.at(1), QVariant(QBrush(QColor(1, 2, 3), Qt::SolidPattern)));
    EXPECT_FALSE(
        stage.model->setData(stage.instance(LightsGroup, 0, 0), log.values.at(1), Qt::BackgroundRole));
}

TEST_F(QtPropertiesItemDelegateTest, OtherEditorsWriteNothing)
{
    auto* lineEdit = create<QLineEdit>(stage.cell(IDGroup, -1));
    lineEdit->setText("other");
    delegate.setModelData(lineEdit, stage.model.get(), stage.cell(IDGroup, -1));
    EXPECT_EQ(stage.cell(IDGroup, -1).data(), QVariant("a"));
    EXPECT_FALSE(stage.model->update());
}

TEST_F(QtPropertiesItemDelegateTest, FirstWriteBeginsAnEditAndFurtherOnesDoNot)
{
    const QModelIndex cell = stage.cell(TranslationGroup, 0);
    auto* spinBox = create<QDoubleSpinBox>(cell);
    for (const double x : {5.0, 6.0, 7.0}) {
        spinBox->setValue(x);
        delegate.setModelData(spinBox, stage.model.get(), cell);
    }
    stage.model->commitValueEdit();
    EXPECT_THAT(stage.translations(), ElementsAre("a,6\n0\n0"));
}

TEST_F(QtPropertiesItemDelegateTest, ModelsOfOtherKindsAreWrittenWithoutAnEdit)
{
    RoleLog log;
    auto* spinBox = create<QDoubleSpinBox>(stage.cell(TranslationGroup, 0));
    spinBox->setValue(5);
    delegate.setModelData(spinBox, &log, log.index(0, 1));
    EXPECT_EQ(log.index(0, 1).data(Qt::EditRole), QVariant(5.0));
    QFocusEvent out(QEvent::FocusOut);
    delegate.eventFilter(spinBox, &out);
    EXPECT_EQ(stage.actionCount(), 0U);
}

// The slots and the filter

TEST_F(QtPropertiesItemDelegateTest, SlotsCommitTheObjectLastSeenAndNotTheSender)
{
    auto* first = create<QDoubleSpinBox>(stage.cell(TranslationGroup, 0));
    auto* second = create<QDoubleSpinBox>(stage.cell(TranslationGroup, 1));
    QEvent event(QEvent::None);
    delegate.eventFilter(first, &event);
    delegate.eventFilter(second, &event);
    std::vector<QWidget*> committed;
    QObject::connect(&delegate, &QAbstractItemDelegate::commitData,
                     [&](QWidget* editor) { committed.push_back(editor); });
    first->setValue(5);
    delegate.editorValueChanged(1);
    delegate.comboBoxValueChanged(2);
    delegate.colorValueChanged(Qt::red);
    EXPECT_THAT(committed, ElementsAre(second, second, second, second));
}

TEST_F(QtPropertiesItemDelegateTest, SlotsCommitNothingBeforeAnEditorWasSeenOrAfterItDied)
{
    std::vector<QWidget*> committed;
    QObject::connect(&delegate, &QAbstractItemDelegate::commitData,
                     [&](QWidget* editor) { committed.push_back(editor); });
    delegate.editorValueChanged(1);
    {
        QDoubleSpinBox editor;
        QEvent event(QEvent::None);
        delegate.eventFilter(&editor, &event);
    }
    delegate.editorValueChanged(1);
    EXPECT_THAT(committed, ElementsAre(nullptr, nullptr));
}

TEST_F(QtPropertiesItemDelegateTest, ReleaseOfReturnOrEnterCommitsAndBeginsANewEditAtOnce)
{
    const QModelIndex cell = stage.cell(TranslationGroup, 0);
    auto* spinBox = create<QDoubleSpinBox>(cell);
    QObject::connect(&delegate, &QAbstractItemDelegate::commitData,
                     [&](QWidget* editor) { delegate.setModelData(editor, stage.model.get(), cell); });
    double x = 1;
    for (const Qt::Key key : {Qt::Key_Return, Qt::Key_Enter, Qt::Key_Return}) {
        spinBox->setValue(x += 2);
        QKeyEvent release(QEvent::KeyRelease, key, Qt::NoModifier);
        delegate.eventFilter(spinBox, &release);
    }
    EXPECT_THAT(stage.translations(), ElementsAre("a,2\n0\n0", "a,2\n0\n0", "a,2\n0\n0"));
    stage.edit(TranslationGroup, 0, 17);
    stage.model->commitValueEdit();
    EXPECT_EQ(stage.translations().back(), "a,10\n 0\n 0") << "the bracket was open";
}

TEST_F(QtPropertiesItemDelegateTest, OtherKeysAndPressesCommitNothing)
{
    auto* spinBox = create<QDoubleSpinBox>(stage.cell(TranslationGroup, 0));
    QSignalSpy committed(&delegate, SIGNAL(commitData(QWidget*)));
    for (const Qt::Key key : {Qt::Key_Space, Qt::Key_Escape, Qt::Key_5}) {
        QKeyEvent release(QEvent::KeyRelease, key, Qt::NoModifier);
        EXPECT_FALSE(delegate.eventFilter(spinBox, &release));
    }
    EXPECT_EQ(committed.count(), 0);
}

TEST_F(QtPropertiesItemDelegateTest, ModelThatDiedIsForgotten)
{
    auto model = boost::make_shared<halvern::qt::QtPropertiesModel>(QStringList({"Property", "Value"}));
    auto* spinBox = create<QDoubleSpinBox>(cellOf(*model, TranslationGroup, 0));
    delegate.setModelData(spinBox, model.get(), cellOf(*model, TranslationGroup, 0));
    model.reset();
    QKeyEvent release(QEvent::KeyRelease, Qt::Key_Return, Qt::NoModifier);
    delegate.eventFilter(spinBox, &release);
    QFocusEvent out(QEvent::FocusOut);
    delegate.eventFilter(spinBox, &out);
    delegate.destroyEditor(editors.back().release(), QModelIndex());
    EXPECT_EQ(stage.actionCount(), 0U);
}

TEST_F(QtPropertiesItemDelegateTest, EndOfAnEditorEndsItsEditAndLeavesThatOfAnotherAlone)
{
    const QModelIndex x = stage.cell(TranslationGroup, 0);
    const QModelIndex y = stage.cell(TranslationGroup, 1);
    auto* spinBox = create<QDoubleSpinBox>(y);
    spinBox->setValue(5);
    delegate.setModelData(spinBox, stage.model.get(), y);
    create(x);
    delegate.destroyEditor(editors.back().release(), x);
    EXPECT_EQ(stage.actionCount(), 0U);
    editors.pop_back();
    delegate.destroyEditor(editors.back().release(), y);
    EXPECT_THAT(stage.translations(), ElementsAre("a,0\n3\n0"));
}

#include "qt/QtPropertiesItemDelegate.h"

#include <QBrush>
#include <QColorDialog>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QIcon>
#include <QKeyEvent>
#include <QSignalBlocker>

namespace halvern::qt {

namespace {

const char* const shownCountProperty = "halvern_shownCount";

enum class Kind { Number, Layer, Color, Other };

/// Goes by bare row numbers in this order, on purpose: a value under the second light counts as a coordinate.
Kind getKind(const QModelIndex& index)
{
    const QModelIndex parent = index.parent();
    const int parentRow = parent.row();
    const int grandparentRow = parent.parent().row();
    if (parentRow >= 1 && parentRow <= 3)
        return Kind::Number;
    if (grandparentRow == 6)
        return Kind::Number;
    if (parentRow == 4)
        return Kind::Layer;
    if (grandparentRow == 5)
        return Kind::Color;
    return Kind::Other;
}

int getShownCount(const QModelIndex& index)
{
    const auto* model = qobject_cast<const QtPropertiesModel*>(index.model());
    return model ? model->getShownCount() : 0;
}

/// A text that is being typed stays as it is when it stands for the value already.
void showNumber(QDoubleSpinBox& spinBox, double value)
{
    if (spinBox.textFromValue(spinBox.value()) != spinBox.textFromValue(value))
        spinBox.setValue(value);
}

void showColor(QColorDialog& dialog, const QString& text)
{
    QColor color;
    color.setNamedColor(text);
    if (dialog.currentColor().rgb() != color.rgb())
        dialog.setCurrentColor(color);
}

bool isReturn(const QEvent& event)
{
    if (event.type() != QEvent::KeyRelease)
        return false;
    const int key = static_cast<const QKeyEvent&>(event).key();
    return key == Qt::Key_Return || key == Qt::Key_Enter;
}

} // namespace

QtPropertiesItemDelegate::QtPropertiesItemDelegate(QObject* parent) : QStyledItemDelegate(parent) {}

QtPropertiesItemDelegate::~QtPropertiesItemDelegate() = default;

bool QtPropertiesItemDelegate::eventFilter(QObject* object, QEvent* event)
{
    const QPointer<QObject> editor = object;
    const bool isFiltered = QStyledItemDelegate::eventFilter(object, event);
    if (isReturn(*event)) {
        emit commitData(qobject_cast<QWidget*>(editor.data()));
        if (editModel) {
            editModel->commitValueEdit();
            editModel->beginValueEdit(editIndex); // the next change counts from here
        }
    }
    if (event->type() == QEvent::FocusOut)
        endEdit();
    lastEditor = editor;
    return isFiltered;
}

QWidget* QtPropertiesItemDelegate::createEditor(QWidget* parent, const QStyleOptionViewItem& option,
                                                const QModelIndex& index) const
{
    QWidget* editor = nullptr;
    switch (getKind(index)) {
    case Kind::Number:
        editor = createSpinBox(parent);
        break;
    case Kind::Layer:
        editor = createComboBox(parent);
        break;
    case Kind::Color:
        editor = createColorDialog(parent);
        break;
    case Kind::Other:
        editor = QStyledItemDelegate::createEditor(parent, option, index);
        break;
    }
    if (editor)
        editor->setProperty(shownCountProperty, getShownCount(index));
    return editor;
}

void QtPropertiesItemDelegate::destroyEditor(QWidget* editor, const QModelIndex& index) const
{
    if (editor == editingEditor) // another one may have begun an edit meanwhile
        endEdit();
    QStyledItemDelegate::destroyEditor(editor, index);
}

void QtPropertiesItemDelegate::setEditorData(QWidget* editor, const QModelIndex& index) const
{
    const QVariant shownCount = editor->property(shownCountProperty);
    if (shownCount.isValid() && shownCount.toInt() != getShownCount(index)) {
        emit const_cast<QtPropertiesItemDelegate*>(this)->closeEditor(editor); // was made for another node
        return;
    }
    const QSignalBlocker blocker(editor);
    const QVariant value = index.data(Qt::EditRole);
    if (auto* spinBox = qobject_cast<QDoubleSpinBox*>(editor))
        showNumber(*spinBox, value.toDouble());
    else if (auto* comboBox = qobject_cast<QComboBox*>(editor))
        comboBox->setCurrentIndex(value.toBool() ? 1 : 0);
    else if (auto* dialog = qobject_cast<QColorDialog*>(editor))
        showColor(*dialog, value.toString());
}

void QtPropertiesItemDelegate::setModelData(QWidget* editor, QAbstractItemModel* model,
                                            const QModelIndex& index) const
{
    editModel = qobject_cast<QtPropertiesModel*>(model);
    editIndex = index;
    editingEditor = editor;
    if (editModel)
        editModel->beginValueEdit(index);
    if (auto* spinBox = qobject_cast<QDoubleSpinBox*>(editor)) {
        if (!isTyping)
            spinBox->interpretText();
        model->setData(index, spinBox->value(), Qt::EditRole);
    } else if (auto* comboBox = qobject_cast<QComboBox*>(editor)) {
        model->setData(index, comboBox->currentIndex() != 0, Qt::EditRole);
    } else if (auto* dialog = qobject_cast<QColorDialog*>(editor)) {
        const QColor color = dialog->currentColor();
        model->setData(index, color, Qt::EditRole);
        model->setData(index, QBrush(color), Qt::BackgroundRole); // for models that take it; ours does not
    }
}

void QtPropertiesItemDelegate::updateEditorGeometry(QWidget* editor, const QStyleOptionViewItem& option,
                                                    const QModelIndex& /*index*/) const
{
    editor->setGeometry(option.rect);
}

void QtPropertiesItemDelegate::editorValueChanged(double /*value*/)
{
    isTyping = true;
    commitLastEditor();
    isTyping = false;
}

void QtPropertiesItemDelegate::comboBoxValueChanged(int /*index*/)
{
    commitLastEditor();
}

void QtPropertiesItemDelegate::colorValueChanged(QColor /*color*/)
{
    commitLastEditor();
}

QWidget* QtPropertiesItemDelegate::createSpinBox(QWidget* parent) const
{
    auto* spinBox = new QDoubleSpinBox(parent);
    spinBox->setDecimals(2);
    spinBox->setSingleStep(0.1);
    spinBox->setRange(-1000000, 1000000);
    spinBox->setAccelerated(true);
    connect(spinBox, SIGNAL(valueChanged(double)), this, SLOT(editorValueChanged(double)));
    return spinBox;
}

QWidget* QtPropertiesItemDelegate::createComboBox(QWidget* parent) const
{
    auto* comboBox = new QComboBox(parent);
    comboBox->addItem(QIcon(), "false");
    comboBox->addItem(QIcon(), "true");
    connect(comboBox, SIGNAL(currentIndexChanged(int)), this, SLOT(comboBoxValueChanged(int)));
    return comboBox;
}

QWidget* QtPropertiesItemDelegate::createColorDialog(QWidget* parent) const
{
    auto* dialog = new QColorDialog(parent);
    connect(dialog, SIGNAL(currentColorChanged(QColor)), this, SLOT(colorValueChanged(QColor)));
    return dialog;
}

/// The editor in use, which is not always the sender.
void QtPropertiesItemDelegate::commitLastEditor()
{
    emit commitData(qobject_cast<QWidget*>(lastEditor.data()));
}

void QtPropertiesItemDelegate::endEdit() const
{
    if (!editModel)
        return;
    editModel->commitValueEdit();
    editModel.clear();
    editingEditor.clear();
    editIndex = QPersistentModelIndex();
}

} // namespace halvern::qt

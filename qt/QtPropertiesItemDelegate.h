#pragma once

#include "engine/Export.h"
#include "qt/QtPropertiesModel.h"

#include <QPersistentModelIndex>
#include <QPointer>
#include <QStyledItemDelegate>
#include <QWidget>

class QColor;

namespace halvern::qt {

/// Edits the values of a QtPropertiesModel: numbers in a spin box, layers by a choice, colours in a dialog.
///
/// Every change is written into the model at once. The first one begins an edit of the model; Return and the
/// end of the editor, whatever the reason, commit it. Another node under an open editor closes it without
/// writing.
class HALVERN_QT_API QtPropertiesItemDelegate : public QStyledItemDelegate
{
    Q_OBJECT

public:
    explicit QtPropertiesItemDelegate(QObject* parent = nullptr);
    ~QtPropertiesItemDelegate() override;

    bool eventFilter(QObject* object, QEvent* event) override;
    QWidget* createEditor(QWidget* parent, const QStyleOptionViewItem& option,
                          const QModelIndex& index) const override;
    void destroyEditor(QWidget* editor, const QModelIndex& index) const override;
    void setEditorData(QWidget* editor, const QModelIndex& index) const override;
    void setModelData(QWidget* editor, QAbstractItemModel* model, const QModelIndex& index) const override;
    void updateEditorGeometry(QWidget* editor, const QStyleOptionViewItem& option,
                              const QModelIndex& index) const override;

public slots:
    void editorValueChanged(double value);
    void comboBoxValueChanged(int index);
    void colorValueChanged(QColor color);

private:
    QWidget* createSpinBox(QWidget* parent) const;
    QWidget* createComboBox(QWidget* parent) const;
    QWidget* createColorDialog(QWidget* parent) const;
    void commitLastEditor();
    void endEdit() const;

    QPointer<QObject> lastEditor; // what eventFilter saw last
    mutable QPointer<QtPropertiesModel> editModel;
    mutable QPersistentModelIndex editIndex;

    mutable QPointer<QWidget> editingEditor; // the one that wrote last
    bool isTyping = false;                   // the number in the spin box has just been read from its text
};

} // namespace halvern::qt

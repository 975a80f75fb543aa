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
    /// One can serve several views.
    explicit QtPropertiesItemDelegate(QObject* parent = nullptr);
    ~QtPropertiesItemDelegate() override;

    /// Sees the events of the editors: the release of Return or Enter commits the edit and begins another, a
    /// lost focus ends it.
    bool eventFilter(QObject* object, QEvent* event) override;

    /// Chosen by the cell's place in the tree: a spin box for numbers (two decimals, a million either way), a
    /// choice of "false" and "true" for layers, a dialog for colours; for all else the base class's.
    QWidget* createEditor(QWidget* parent, const QStyleOptionViewItem& option,
                          const QModelIndex& index) const override;

    /// Ends the edit that the editor began.
    void destroyEditor(QWidget* editor, const QModelIndex& index) const override;

    /// Shows the value, or closes the editor if the model shows another node by now.
    void setEditorData(QWidget* editor, const QModelIndex& index) const override;

    /// Begins an edit of the model, if none is in progress, and writes the editor's value.
    void setModelData(QWidget* editor, QAbstractItemModel* model, const QModelIndex& index) const override;

    /// The whole cell.
    void updateEditorGeometry(QWidget* editor, const QStyleOptionViewItem& option,
                              const QModelIndex& index) const override;

public slots:
    /** @{ */
    /// An editor's value has changed: writes that of the editor which had the last event. The argument does
    /// not count.
    void editorValueChanged(double value);
    void comboBoxValueChanged(int index);
    void colorValueChanged(QColor color);
    /** @} */

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

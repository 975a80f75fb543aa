#include "qt/PropertiesView.h"

#include <QAbstractItemDelegate>

namespace halvern::qt {

/// The base does nothing for an editor while the rows wait to be laid out.
void PropertiesView::dataChanged(const QModelIndex& topLeft, const QModelIndex& bottomRight,
                                 const QVector<int>& roles)
{
    if (QWidget* editor = indexWidget(topLeft))
        itemDelegate()->setEditorData(editor, topLeft);
    QTreeView::dataChanged(topLeft, bottomRight, roles);
}

void PropertiesView::commitData(QWidget* editor)
{
    if (isOwn(editor))
        QTreeView::commitData(editor);
}

/// The base would warn, or go on to the next cell of a view that edits nothing.
void PropertiesView::closeEditor(QWidget* editor, QAbstractItemDelegate::EndEditHint hint)
{
    if (isOwn(editor))
        QTreeView::closeEditor(editor, hint);
}

bool PropertiesView::isOwn(const QWidget* editor) const
{
    return editor && editor->parentWidget() == viewport();
}

} // namespace halvern::qt

#include "qt/PropertiesView.h"

#include <QAbstractItemDelegate>

namespace halvern::qt {

/// The base does nothing for an editor while rows wait to be laid out, as they do after each selection.
void PropertiesView::dataChanged(const QModelIndex& topLeft, const QModelIndex& bottomRight,
                                 const QVector<int>& roles)
{
    if (QWidget* editor = indexWidget(topLeft))
        itemDelegate()->setEditorData(editor, topLeft);
    QTreeView::dataChanged(topLeft, bottomRight, roles);
}

} // namespace halvern::qt

#pragma once

#include "engine/Export.h"

#include <QTreeView>

namespace halvern::qt {

/// A tree whose open editor follows a change of its cell at once.
class HALVERN_QT_API PropertiesView : public QTreeView
{
    Q_OBJECT

public:
    using QTreeView::QTreeView;

    void dataChanged(const QModelIndex& topLeft, const QModelIndex& bottomRight,
                     const QVector<int>& roles = QVector<int>()) override;
};

} // namespace halvern::qt

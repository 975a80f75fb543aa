#pragma once

#include "engine/Export.h"

#include <QTreeView>

namespace halvern::qt {

/// A tree that shares its delegate with others: what the delegate says about their editors it ignores. Its
/// own open editor follows a change of its cell at once.
class HALVERN_QT_API PropertiesView : public QTreeView
{
    Q_OBJECT

public:
    using QTreeView::QTreeView;

    void dataChanged(const QModelIndex& topLeft, const QModelIndex& bottomRight,
                     const QVector<int>& roles = QVector<int>()) override;

protected slots:
    void commitData(QWidget* editor) override;
    void closeEditor(QWidget* editor, QAbstractItemDelegate::EndEditHint hint) override;

private:
    bool isOwn(const QWidget* editor) const;
};

} // namespace halvern::qt

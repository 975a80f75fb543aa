#pragma once

#include "engine/Export.h"

#include <QStyledItemDelegate>

#include <memory>

class QIcon;

namespace halvern::qt {

/// Paints a material as a tile of 100 x 120 pixels: the picture of a ball over the material's ID.
class HALVERN_QT_API QtMaterialPanelModelDelegate : public QStyledItemDelegate
{
    Q_OBJECT

public:
    /// Reads the picture from the library's resources.
    explicit QtMaterialPanelModelDelegate(QObject* parent = nullptr);
    ~QtMaterialPanelModelDelegate() override;

    /// The tile lies at the corner of the option's rectangle, whose size does not count. One without a text
    /// is empty, also when it is selected.
    void paint(QPainter* painter, const QStyleOptionViewItem& option,
               const QModelIndex& index) const override;

    /// Always the size of a tile.
    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override;

private:
    const std::unique_ptr<QIcon> icon;
};

} // namespace halvern::qt

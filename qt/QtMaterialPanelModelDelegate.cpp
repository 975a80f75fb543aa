#include "qt/QtMaterialPanelModelDelegate.h"

#include <QIcon>
#include <QPainter>

namespace halvern::qt {

namespace {

const QSize tileSize(100, 120);
constexpr int PictureSize = 98;

} // namespace

QtMaterialPanelModelDelegate::QtMaterialPanelModelDelegate(QObject* parent) :
    QStyledItemDelegate(parent), icon(std::make_unique<QIcon>(":/material_sphere.jpg"))
{}

QtMaterialPanelModelDelegate::~QtMaterialPanelModelDelegate() = default;

void QtMaterialPanelModelDelegate::paint(QPainter* painter, const QStyleOptionViewItem& option,
                                         const QModelIndex& index) const
{
    const QRect tile(option.rect.topLeft(), tileSize);
    const auto brushOf = [&](QPalette::ColorRole role) {
        return option.palette.brush(QPalette::Current, role);
    };
    const QString text = index.data(Qt::DisplayRole).toString();
    if (text.isEmpty()) {
        painter->fillRect(tile, brushOf(QPalette::Base));
        return;
    }
    const bool selected = option.state & QStyle::State_Selected;
    if (selected)
        painter->fillRect(tile, brushOf(QPalette::Highlight));

    painter->save();
    painter->setRenderHint(QPainter::Antialiasing);
    painter->drawPixmap(tile.topLeft() + QPoint(1, 1),
                        icon->pixmap(PictureSize, PictureSize, QIcon::Normal, QIcon::Off));
    // The pen colours the text; the brush has no effect on it, on purpose.
    painter->setBrush(selected ? brushOf(QPalette::HighlightedText) : QBrush(Qt::black, Qt::SolidPattern));
    painter->drawText(QRect(tile.left(), tile.top() + 100, 100, 20), Qt::AlignHCenter | Qt::AlignVCenter,
                      text);
    painter->restore();
}

QSize QtMaterialPanelModelDelegate::sizeHint(const QStyleOptionViewItem& /*option*/,
                                             const QModelIndex& /*index*/) const
{
    return tileSize;
}

} // namespace halvern::qt

#include "qt/TreeWidget.h"

#include <QMouseEvent>

namespace halvern::qt {

void TreeWidget::mouseDoubleClickEvent(QMouseEvent* event)
{
    if (event->button() != Qt::RightButton)
        QTreeView::mouseDoubleClickEvent(event);
}

} // namespace halvern::qt

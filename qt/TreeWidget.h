#pragma once

#include <QTreeWidget>

namespace halvern::qt {

/// A tree that swallows double clicks of the right mouse button, which belongs to the context menu.
class TreeWidget : public QTreeWidget
{
    Q_OBJECT

public:
    using QTreeWidget::QTreeWidget;

protected:
    void mouseDoubleClickEvent(QMouseEvent* event) override;
};

} // namespace halvern::qt

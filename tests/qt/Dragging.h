#pragma once

#include <QDrag>
#include <QMimeData>
#include <QTimer>

#include <functional>

namespace halvern::test {

/// Runs work while something is dragged out of the source.
inline void whileDraggedFrom(QObject* source, const std::function<void()>& work)
{
    auto* drag = new QDrag(source);
    drag->setMimeData(new QMimeData);
    QTimer::singleShot(0, [&] {
        work();
        QDrag::cancel();
    });
    drag->exec(Qt::CopyAction);
}

} // namespace halvern::test

#include "studio/Screenshot.h"

#include <QPixmap>
#include <QScreen>
#include <QWidget>
#include <QWindow>

namespace halvern::studio {

bool saveScreenshot(const QWidget& widget, const QString& fileName)
{
    const QWidget* window = widget.window();
    const QPoint corner = widget.mapTo(window, QPoint(0, 0));
    const QPixmap picture = window->windowHandle()->screen()->grabWindow(
        window->winId(), corner.x(), corner.y(), widget.width(), widget.height());
    return picture.save(fileName, "PNG");
}

} // namespace halvern::studio

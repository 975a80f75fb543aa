#include "studio/Screenshot.h"

#include <QBuffer>
#include <QFile>
#include <QPixmap>
#include <QScreen>
#include <QWidget>
#include <QWindow>

namespace halvern::studio {

namespace {

QPixmap grab(const QWidget& widget)
{
    const QWidget* window = widget.window();
    const QPoint corner = widget.mapTo(window, QPoint(0, 0));
    return window->windowHandle()->screen()->grabWindow(window->winId(), corner.x(), corner.y(),
                                                        widget.width(), widget.height());
}

} // namespace

QString saveScreenshot(const QWidget& widget, const QString& fileName)
{
    QByteArray png;
    QBuffer buffer(&png);
    buffer.open(QIODevice::WriteOnly);
    if (!grab(widget).save(&buffer, "PNG"))
        return "the screen cannot be read";
    // QPixmap::save to the file itself would not notice a full disk.
    QFile file(fileName);
    if (file.open(QIODevice::WriteOnly | QIODevice::Unbuffered) && file.write(png) == png.size())
        return {};
    return file.errorString();
}

} // namespace halvern::studio

#include "qt/OverlayText.h"

#include <QPainter>

namespace halvern::qt {

OverlayText::OverlayText(const QString& styleSheet)
{
    document.setDefaultStyleSheet(styleSheet); // counts only for a text that is set afterwards
}

void OverlayText::setHtml(const QString& newHtml)
{
    if (newHtml == html)
        return;
    html = newHtml;
    document.setTextWidth(-1); // the width of the old text would break the lines of the new one
    document.setHtml(html);
    document.setTextWidth(document.idealWidth());
}

QSizeF OverlayText::size() const
{
    return document.size();
}

void OverlayText::draw(QPainter& painter)
{
    document.drawContents(&painter);
}

} // namespace halvern::qt

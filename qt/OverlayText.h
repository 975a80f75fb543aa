#pragma once

#include <QSizeF>
#include <QString>
#include <QTextDocument>

class QPainter;

namespace halvern::qt {

/// A small rich text drawn over the view, laid out at its natural width. The layout is kept until the
/// text changes: it costs more than the drawing.
class OverlayText
{
public:
    explicit OverlayText(const QString& styleSheet);

    void setHtml(const QString& newHtml);
    QSizeF size() const;

    /// Draws the text with its top left corner at the painter's origin.
    void draw(QPainter& painter);

private:
    QTextDocument document;
    QString html;
};

} // namespace halvern::qt

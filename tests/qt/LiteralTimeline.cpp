#include "tests/qt/LiteralTimeline.h"

#include <QPainter>
#include <QStyle>

#include <cmath>
#include <limits>

namespace halvern::test {

namespace {

int truncate(double number)
{
    constexpr double Least = std::numeric_limits<int>::min();
    constexpr double Most = std::numeric_limits<int>::max();
    return std::isnan(number) ? std::numeric_limits<int>::min()
                              : static_cast<int>(std::min(std::max(number, Least), Most));
}

/// A pixel so far outside may be anywhere there; painters do not reckon with all of 32 bits.
int toPixel(double number)
{
    return std::min(std::max(truncate(number), -1000000), 1000000);
}

/// What 32 bits keep of a number.
std::int64_t wrap(std::int64_t number)
{
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(number));
}

QPen makePen(double width, const QColor& colour)
{
    return QPen(QBrush(colour), width, Qt::SolidLine, Qt::SquareCap, Qt::BevelJoin);
}

QBrush makeGradient(const QColor& first, const QColor& second)
{
    QLinearGradient gradient(QPointF(0, 0), QPointF(0, 1));
    gradient.setColorAt(0.0, first);
    gradient.setColorAt(1.0, second);
    return gradient;
}

class Painting
{
public:
    Painting(QPainter& painter, const Timeline& timeline, const QRect& part) :
        painter(painter),
        t(timeline),
        part(part),
        width(timeline.size.width()),
        height(timeline.size.height()),
        showsEngine(t.hasManager && t.maximum != 0)
    {}

    void paint()
    {
        painter.fillRect(part, makeGradient(QColor(150, 150, 150), QColor(200, 200, 200)));
        painter.setPen(makePen(1.0, QColor(153, 153, 153)));
        const float p = t.maximum == 0 ? 0 : float(t.value) * (float(width) / float(t.maximum));
        const QRect handle(toPixel(p - 5.0), 0, 10, height);
        painter.fillRect(handle, makeGradient(QColor(100, 100, 100), QColor(150, 150, 150)));
        painter.drawRects(&handle, 1);
        if (showsEngine && t.hasAnimation)
            paintFrames();
        paintTimeLine();
        QPen white;
        white.setWidth(2);
        white.setColor(QColor(255, 255, 255));
        painter.setPen(white);
        painter.drawLine(toPixel(p), 0, toPixel(p), height);
        if (showsEngine)
            paintPlayback();
    }

private:
    int positionOf(int milliseconds) const
    {
        return toPixel(QStyle::sliderPositionFromValue(t.minimum, t.maximum, milliseconds, width, false));
    }

    void paintFrames()
    {
        for (const float time : t.frameTimes) {
            painter.setPen(makePen(2.0, QColor(255, 231, 46)));
            const int x = positionOf(truncate(time * 1000.0f));
            painter.drawLine(x, 0, x, height);
        }
    }

    void paintTimeLine()
    {
        QPen pen;
        pen.setWidth(2);
        pen.setColor(QColor(0, 0, 0));
        painter.setPen(pen);
        if (t.maximum <= 500)
            return;
        int last = -1;
        for (std::int64_t time = 500; time < t.maximum; time += 500) {
            QFont font;
            font.setFamily("Bavaria");
            font.setPointSize(10);
            painter.setFont(font);
            const int x = positionOf(int(time));
            if (x == last)
                continue;
            last = x;
            if (time % 1000 == 0) {
                painter.drawLine(QLineF(x, height - height / 4, x, height));
                painter.drawText(x, height - height / 4, QString::number(time));
            } else {
                painter.drawLine(QLineF(x, height - height / 8, x, height));
            }
        }
    }

    void paintPlayback()
    {
        const std::int64_t currentMs = t.currentMicroseconds / 1000;
        const int xr = toPixel(float(part.width()) * (float(currentMs) / float(t.maximum)));
        painter.setPen(makePen(2.0, QColor(255, 0, 0)));
        painter.drawLine(xr, 0, xr, height);
        const auto tolerance = float(t.maximum / 100);
        for (const float time : t.frameTimes) {
            const float fms = time * 1000.0f;
            if (std::abs(fms - float(t.hoverValue)) < tolerance)
                paintHighlight(fms);
            if (std::abs(float(currentMs) - fms) < 5.0)
                paintHighlight(fms);
        }
    }

    void paintHighlight(float fms)
    {
        const QPen pen = makePen(2.0, QColor(0, 255, 0));
        const int x = positionOf(truncate(fms));
        painter.fillRect(QRect(x - 5, 0, 10, height),
                         makeGradient(QColor(0, 200, 0, 150), QColor(0, 250, 0, 150)));
        painter.setPen(pen);
        painter.drawLine(x, 0, x, height);
    }

    QPainter& painter;
    const Timeline& t;
    const QRect part;
    const int width;
    const int height;
    const bool showsEngine;
};

} // namespace

int valueLiterally(const Timeline& t, int x)
{
    if (t.maximum == 0 || t.size.width() == 0)
        return t.minimum;
    const std::int64_t range = wrap(std::int64_t(t.maximum) - t.minimum);
    const std::int64_t v = wrap(t.minimum + wrap(x * range) / t.size.width());
    return truncate(double(wrap(t.maximum * v)) / double(t.maximum));
}

QImage paintLiterally(const Timeline& timeline)
{
    return paintLiterally(timeline, QRect(QPoint(0, 0), timeline.size));
}

QImage paintLiterally(const Timeline& timeline, const QRect& part)
{
    QImage image(timeline.size, QImage::Format_RGB32);
    image.fill(Qt::black);
    QPainter painter(&image);
    painter.setClipRect(part);
    Painting(painter, timeline, part).paint();
    return image;
}

} // namespace halvern::test

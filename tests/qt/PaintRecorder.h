#pragma once

#include <QGuiApplication>
#include <QPaintDevice>
#include <QPaintEngine>
#include <QPainter>
#include <QScreen>

#include <ostream>
#include <vector>

namespace halvern::test {

/// What was painted, in the coordinates of the device.
struct Painted
{
    struct Line
    {
        QLineF line;
        QColor pen;
    };

    struct Box
    {
        QRectF rectangle;
        QColor pen;
        QColor brush;
        Qt::BrushStyle style;
    };

    struct Text
    {
        QPointF position;
        QString text;
        QFont font;
        QColor pen;
        QBrush brush;

        bool operator==(const Text& other) const
        {
            return position == other.position && text == other.text && font == other.font && pen == other.pen;
        }
    };

    /// The lines drawn with a pen of this colour.
    std::vector<QLineF> linesOf(const QColor& pen) const
    {
        std::vector<QLineF> found;
        for (const Line& line : lines)
            if (line.pen == pen)
                found.push_back(line.line);
        return found;
    }

    std::vector<Line> lines;
    std::vector<Box> boxes;
    std::vector<Text> texts;
};

/// A paint device that notes what is painted on it.
class PaintRecorder : public QPaintDevice
{
public:
    QPaintEngine* paintEngine() const override { return &engine; }

    Painted painted;

protected:
    int metric(PaintDeviceMetric metric) const override
    {
        switch (metric) {
        case PdmWidth:
        case PdmHeight:
            return 1000;
        case PdmDpiX:
        case PdmPhysicalDpiX:
            return qRound(QGuiApplication::primaryScreen()->logicalDotsPerInchX());
        case PdmDpiY:
        case PdmPhysicalDpiY:
            return qRound(QGuiApplication::primaryScreen()->logicalDotsPerInchY());
        case PdmDepth:
            return 32;
        case PdmDevicePixelRatio:
            return 1;
        default:
            return QPaintDevice::metric(metric);
        }
    }

private:
    class Engine : public QPaintEngine
    {
    public:
        explicit Engine(Painted& painted) : QPaintEngine(AllFeatures), painted(painted) {}

        bool begin(QPaintDevice* /*device*/) override { return true; }
        bool end() override { return true; }
        Type type() const override { return User; }
        void updateState(const QPaintEngineState& /*state*/) override {}
        void drawPixmap(const QRectF& /*to*/, const QPixmap& /*pixmap*/, const QRectF& /*from*/) override {}

        void drawLines(const QLineF* drawn, int count) override
        {
            for (int i = 0; i < count; ++i)
                painted.lines.push_back({painter()->combinedTransform().map(drawn[i]), pen()});
        }

        void drawRects(const QRectF* drawn, int count) override
        {
            for (int i = 0; i < count; ++i)
                painted.boxes.push_back({painter()->combinedTransform().mapRect(drawn[i]), pen(),
                                         painter()->brush().color(), painter()->brush().style()});
        }

        void drawTextItem(const QPointF& position, const QTextItem& item) override
        {
            painted.texts.push_back({painter()->combinedTransform().map(position), item.text(), item.font(),
                                     pen(), painter()->brush()});
        }

    private:
        QColor pen() const { return painter()->pen().color(); }

        Painted& painted;
    };

    mutable Engine engine{painted};
};

inline void PrintTo(const Painted::Text& text, std::ostream* out)
{
    *out << '"' << text.text.toStdString() << "\" at " << text.position.x() << ' ' << text.position.y()
         << " in " << text.font.toString().toStdString() << ", pen "
         << text.pen.name(QColor::HexArgb).toStdString();
}

} // namespace halvern::test

inline void PrintTo(const QLineF& line, std::ostream* out)
{
    *out << '(' << line.x1() << ' ' << line.y1() << ")-(" << line.x2() << ' ' << line.y2() << ')';
}

inline void PrintTo(const QRectF& rectangle, std::ostream* out)
{
    *out << rectangle.width() << 'x' << rectangle.height() << '+' << rectangle.x() << '+' << rectangle.y();
}

#include "reference/scene/Importer.h"
#include "tests/qt/ViewProbe.h"

#include <QOpenGLWidget>
#include <QPainter>
#include <QTest>

#include <gtest/gtest.h>

using namespace halvern::test;

namespace {

void drawText(QPainter& painter, const QRect& area)
{
    painter.setRenderHints(QPainter::Antialiasing | QPainter::TextAntialiasing |
                           QPainter::HighQualityAntialiasing);
    painter.fillRect(area, QColor(20, 40, 60));
    painter.setPen(Qt::white);
    painter.setFont(QFont("Verdana", 13));
    painter.drawText(QPoint(10, 30), "Triangles: 12345");
    painter.setFont(QFont("Verdana", 9));
    painter.drawText(QPoint(10, 60),
                     QString::fromUtf8("The quick brown fox, \xc3\xa4\xc3\xb6\xc3\xbc\xc3\x9f"));
}

class PlainWidget : public QOpenGLWidget
{
protected:
    void paintEvent(QPaintEvent* /*event*/) override
    {
        QPainter painter(this);
        drawText(painter, rect());
    }
};

/// Paints in the place of the statistics.
class TextView : public ViewProbe
{
protected:
    void drawStats(QPainter& painter, QPaintEvent* /*event*/) override { drawText(painter, rect()); }
};

QImage pictureOfPlainWidget()
{
    PlainWidget plain;
    showView(plain);
    return grabScreen(plain);
}

} // namespace

TEST(QtViewTextTest, TextOverALitSceneLooksAsOnAPlainWidget)
{
    const QImage expected = pictureOfPlainWidget();
    TextView view;
    showView(view);
    view.attach(halvern::scene::importScene("data/scenes/showcase.glb", {}).sceneManager);
    for (int frame = 0; frame < 3; ++frame) { // glyphs are cached after the first
        view.setShowStats(false);
        repaintView(view);
        EXPECT_NE(grabScreen(view), expected);
        view.setShowStats(true);
        repaintView(view);
        EXPECT_EQ(grabScreen(view), expected);
    }
}

TEST(QtViewTextTest, TextIsThere)
{
    const QImage picture = pictureOfPlainWidget();
    int bright = 0;
    for (int y = 0; y < picture.height(); ++y)
        for (int x = 0; x < picture.width(); ++x)
            bright += picture.pixelColor(x, y).lightness() > 200 ? 1 : 0;
    EXPECT_GT(bright, 100);
    EXPECT_LT(bright, picture.width() * picture.height() / 4);
}

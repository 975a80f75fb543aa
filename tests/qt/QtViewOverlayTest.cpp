#include "engine/renderer/IRenderer.h"
#include "engine/window/ILayout.h"
#include "engine/window/Viewport.h"
#include "tests/qt/PaintRecorder.h"
#include "tests/qt/ViewProbe.h"

#include <QPaintEvent>
#include <QTextDocument>
#include <QTimer>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>

using namespace halvern::test;
using halvern::engine::logic::LogicManager;
using halvern::engine::renderer::IRenderer;
using halvern::engine::window::ILayout;
using halvern::engine::window::Viewport;
using std::chrono::milliseconds;
using std::chrono::steady_clock;
using testing::IsEmpty;
using testing::SizeIs;

namespace {

const QColor BoxPen(220, 220, 255, 255);
const QColor StatsBrush(100, 100, 255, 20);
const QColor TextBoxBrush(180, 180, 200, 200);
const QColor GridPen(255, 255, 255, 20);
const QColor GraphPen(0, 255, 0);

struct FixedRenderer : IRenderer
{
    unsigned int getTriangleCount() override { return triangles; }
    unsigned int getVertexCount() override { return vertices; }
    unsigned int triangles = 0;
    unsigned int vertices = 0;
};

struct FixedViewport : Viewport
{
    boost::shared_ptr<IRenderer> getSceneRenderer() override { return renderer; }
    boost::shared_ptr<IRenderer> renderer;
};

struct FixedLayout : ILayout
{
    boost::shared_ptr<Viewport> getViewport() override { return viewport; }
    void requestPick(int /*x*/, int /*y*/, std::string /*tag*/) override {}
    boost::shared_ptr<Viewport> viewport;
};

/// A window that counts what it is told to, and renders as long as it is told to.
class CountingWindow : public FakeWindow
{
public:
    using FakeWindow::FakeWindow;

    boost::shared_ptr<ILayout> getLayout() override { return layout; }

    void count(unsigned int triangles, unsigned int vertices)
    {
        renderer->triangles = triangles;
        renderer->vertices = vertices;
        viewport->renderer = renderer;
        fixedLayout->viewport = viewport;
        layout = fixedLayout;
    }

    void update() override
    {
        waste(updateTime);
        begin = steady_clock::now();
    }

    void render() override { waste(renderTime); }

    /// The first call after render.
    boost::shared_ptr<halvern::engine::fx::FXRenderTarget> getColorRenderTarget() override
    {
        wasExact = steady_clock::now() - begin < renderTime + milliseconds(1);
        return nullptr;
    }

    milliseconds updateTime{0};
    milliseconds renderTime{0};
    bool wasExact = false; // nothing held the last rendering up for a millisecond

    boost::shared_ptr<ILayout> layout;
    const boost::shared_ptr<FixedLayout> fixedLayout = boost::make_shared<FixedLayout>();
    const boost::shared_ptr<FixedViewport> viewport = boost::make_shared<FixedViewport>();
    const boost::shared_ptr<FixedRenderer> renderer = boost::make_shared<FixedRenderer>();

private:
    static void waste(milliseconds time)
    {
        const auto end = steady_clock::now() + time;
        while (steady_clock::now() < end)
            ;
    }

    steady_clock::time_point begin;
};

/// The painted overlays, on a painter of the test's.
class OverlayView : public WindowlessView
{
public:
    OverlayView() { findChild<QTimer*>()->stop(); }

    using QtView::drawMessageAtCursor;
    using QtView::drawMessageAtPosition;
    using QtView::drawStats;

    Painted recordStats()
    {
        return record([this](QPainter& painter, QPaintEvent* event) { drawStats(painter, event); });
    }

    Painted recordCursor()
    {
        return record([this](QPainter& painter, QPaintEvent* event) { drawMessageAtCursor(painter, event); });
    }

    Painted recordMessage(QPoint position, const QString& text, float level)
    {
        return record([&](QPainter& painter, QPaintEvent* event) {
            drawMessageAtPosition(painter, event, position, text, level);
        });
    }

    template <class Draw>
    Painted record(Draw draw)
    {
        PaintRecorder recorder;
        QPainter painter(&recorder);
        QPaintEvent event(rect());
        draw(painter, &event);
        painter.end();
        return recorder.painted;
    }
};

/// Lays a text out at its natural width.
class Document : public QTextDocument
{
public:
    Document(const QString& style, const QString& html)
    {
        setDefaultStyleSheet(style);
        setHtml(html);
        setTextWidth(idealWidth());
    }

    std::vector<Painted::Text> textsAt(QPoint position)
    {
        PaintRecorder recorder;
        QPainter painter(&recorder);
        painter.translate(position);
        drawContents(&painter);
        painter.end();
        return recorder.painted.texts;
    }
};

Document statsDocument(const QString& triangles, const QString& vertices, const QString& milliseconds)
{
    return {"* { color: #FFFFFF; font-family: Verdana, Times }",
            "<h4 align=\"center\">Studio Stats</h4><p align=\"center\"><table width=\"100%\" "
            "height=\"180\"><tr><td align=\"left\">Triangles:</td><td align=\"right\">" +
                triangles + "</td></tr><tr><td align=\"left\">Vertices:</td><td align=\"right\">" + vertices +
                "</td></tr><tr><td align=\"left\">Timing:</td><td align=\"right\">" + milliseconds +
                "</td></tr><tr><td colspan=\"2\" width=\"150\"></td></tr></table>"};
}

Document cursorDocument(const QString& text)
{
    return {"* { color: #FFFFFF; font-family: Verdana, Times; font-size:16pt; }",
            "<p align=\"center\"><table width=\"100%\" ><tr><td align=\"left\">" + text +
                "</td></tr></table>"};
}

QRectF boxAt(QPointF corner, const QSizeF& size, qreal margin)
{
    return {corner, size + QSizeF(margin, margin)};
}

/// The graph's coordinates have their origin at its left end of the base line.
QLineF onGraph(qreal x1, qreal y1, qreal x2, qreal y2)
{
    return QLineF(x1, y1, x2, y2).translated(24, 216);
}

/// All texts in reading order.
std::string words(const Painted& painted)
{
    std::string found;
    for (const auto& text : painted.texts)
        found += text.text.toStdString();
    return found;
}

class QtViewOverlayTest : public testing::Test
{
protected:
    QtViewOverlayTest()
    {
        showView(view, 200, 100);
        view.setWindow(window);
    }

    /// Renders a frame that takes so many milliseconds, without its painted overlays.
    void render(int duration)
    {
        window->renderTime = milliseconds(duration);
        view.makeCurrent();
        do
            view.paintGL();
        while (!window->wasExact);
    }

    /// The polyline of a frame with statistics that took so many milliseconds.
    std::vector<QLineF> graphAfter(int duration)
    {
        render(duration);
        return view.recordStats().linesOf(GraphPen);
    }

    /// Where the newest point of the graph is, in hundredths of its height.
    qreal newestHeight() { return 216 - view.recordStats().linesOf(GraphPen).front().y1(); }

    void skipStats(int frames)
    {
        for (int i = 0; i < frames; ++i)
            view.recordStats();
    }

    CallLog log;
    OverlayView view;
    boost::shared_ptr<CountingWindow> window = boost::make_shared<CountingWindow>(log);
};

} // namespace

// Statistics

TEST_F(QtViewOverlayTest, StatsShowTheRenderersCountsAndTheRenderTime)
{
    window->count(4294967295u, 1234567);
    render(7);
    EXPECT_EQ(words(view.recordStats()), "Studio StatsTriangles:4294967295Vertices:1234567Timing:7");
}

TEST_F(QtViewOverlayTest, TheUpdateOfTheWindowIsNotInTheRenderTime)
{
    window->updateTime = milliseconds(20);
    render(3);
    EXPECT_EQ(words(view.recordStats()), "Studio StatsTriangles:0Vertices:0Timing:3");
}

TEST_F(QtViewOverlayTest, StatsTextStartsAtSixteenInWhite)
{
    window->count(12, 34);
    Document document = statsDocument("12", "34", "0");
    const auto texts = view.recordStats().texts;
    EXPECT_EQ(texts, document.textsAt(QPoint(16, 16)));
    for (const auto& text : texts)
        EXPECT_EQ(text.pen, QColor(Qt::white)) << text.text.toStdString();
}

TEST_F(QtViewOverlayTest, StatsBoxIsElevenLargerThanItsText)
{
    window->count(12, 34);
    const auto boxes = view.recordStats().boxes;
    ASSERT_THAT(boxes, SizeIs(1));
    EXPECT_EQ(boxes[0].rectangle, boxAt(QPointF(10, 10), statsDocument("12", "34", "0").size(), 11));
    EXPECT_EQ(boxes[0].pen, BoxPen);
    EXPECT_EQ(boxes[0].brush, StatsBrush);
    EXPECT_EQ(boxes[0].style, Qt::SolidPattern);
}

TEST_F(QtViewOverlayTest, StatsFollowTheCounts)
{
    window->count(1, 2);
    const auto before = view.recordStats();
    EXPECT_EQ(view.recordStats().texts, before.texts);
    window->count(1000000000, 2);
    const auto after = view.recordStats();
    EXPECT_EQ(after.texts, statsDocument("1000000000", "2", "0").textsAt(QPoint(16, 16)));
    EXPECT_GT(after.boxes[0].rectangle.width(), before.boxes[0].rectangle.width());
}

TEST_F(QtViewOverlayTest, WhatIsMissingCountsAsZeroAndTheBoxIsDrawn)
{
    const auto expectZeros = [this](const char* missing) {
        const auto stats = view.recordStats();
        EXPECT_EQ(stats.texts, statsDocument("0", "0", "0").textsAt(QPoint(16, 16))) << missing;
        EXPECT_THAT(stats.boxes, SizeIs(1)) << missing;
        EXPECT_THAT(stats.linesOf(GridPen), SizeIs(51 + 34)) << missing;
    };
    expectZeros("layout");
    window->layout = window->fixedLayout;
    expectZeros("viewport");
    window->fixedLayout->viewport = window->viewport;
    expectZeros("renderer");
    window->fixedLayout->viewport = boost::make_shared<Viewport>();
    expectZeros("renderer of a plain viewport");
}

TEST_F(QtViewOverlayTest, WithoutAWindowCountsAreZero)
{
    OverlayView windowless;
    EXPECT_EQ(windowless.recordStats().texts, statsDocument("0", "0", "0").textsAt(QPoint(16, 16)));
}

TEST_F(QtViewOverlayTest, StatsAddToThePaintersTransform)
{
    window->count(12, 34);
    const auto boxes = view.record([this](QPainter& painter, QPaintEvent* event) {
                               painter.translate(100, 200);
                               view.drawStats(painter, event);
                           })
                           .boxes;
    EXPECT_EQ(boxes[0].rectangle.topLeft(), QPointF(110, 210));
}

TEST_F(QtViewOverlayTest, GridHasUprightsEveryThreePixelsAndNoTopEdge)
{
    std::vector<QLineF> expected;
    for (int x = 0; x <= 150; x += 3)
        expected.push_back(onGraph(x, -100, x, 0));
    for (int y = 0; y >= -99; y -= 3)
        expected.push_back(onGraph(0, y, 150, y));
    ASSERT_THAT(expected, SizeIs(51 + 34));
    EXPECT_EQ(view.recordStats().linesOf(GridPen), expected);
}

TEST_F(QtViewOverlayTest, StatsLookLikeTheirLinesDrawnOneByOne)
{
    window->count(12, 34);
    render(2);
    const auto blank = [] {
        QImage picture(300, 300, QImage::Format_ARGB32_Premultiplied);
        picture.fill(QColor(60, 40, 20));
        return picture;
    };
    QImage drawn = blank();
    QPaintEvent event(view.rect());
    QPainter painter(&drawn);
    painter.setRenderHints(QPainter::Antialiasing | QPainter::TextAntialiasing);
    view.drawStats(painter, &event);
    painter.end();

    QImage expected = blank();
    Document document = statsDocument("12", "34", "2");
    painter.begin(&expected);
    painter.setRenderHints(QPainter::Antialiasing | QPainter::TextAntialiasing);
    painter.translate(10, 10);
    painter.setPen(BoxPen);
    painter.setBrush(StatsBrush);
    painter.drawRect(boxAt(QPointF(0, 0), document.size(), 11));
    painter.translate(6, 6);
    document.drawContents(&painter);
    painter.translate(8, 200);
    painter.setPen(GridPen);
    for (int x = 0; x <= 150; x += 3)
        painter.drawLine(QLineF(x, -100, x, 0));
    for (int y = 0; y >= -99; y -= 3)
        painter.drawLine(QLineF(0, y, 150, y));
    painter.setPen(GraphPen);
    painter.drawLine(QLineF(147, -100, 147, 0));
    for (int x = 147; x > 0; x -= 3)
        painter.drawLine(QLineF(x, 0, x - 3, 0));
    painter.end();
    EXPECT_EQ(drawn, expected);
}

TEST_F(QtViewOverlayTest, GraphsNewestSegmentStartsUprightThreePixelsLeftOfTheEdge)
{
    const auto graph = graphAfter(4);
    ASSERT_THAT(graph, SizeIs(50));
    EXPECT_EQ(graph[0], onGraph(147, -100, 147, 0));
    for (int i = 1; i < 50; ++i)
        EXPECT_EQ(graph[i], onGraph(150 - 3 * i, 0, 147 - 3 * i, 0)) << i;
}

TEST_F(QtViewOverlayTest, GraphMovesThreePixelsAFrame)
{
    graphAfter(4);
    const auto graph = graphAfter(2);
    ASSERT_THAT(graph, SizeIs(50));
    EXPECT_EQ(graph[0], onGraph(147, -50, 144, -100)); // twice the point that was the newest
    EXPECT_EQ(graph[1], onGraph(144, -100, 144, 0));
    EXPECT_EQ(graph[2], onGraph(144, 0, 141, 0));
    EXPECT_EQ(graph[49], onGraph(3, 0, 0, 0));
}

TEST_F(QtViewOverlayTest, GraphsHeightsAreFractions)
{
    graphAfter(3);
    EXPECT_DOUBLE_EQ(graphAfter(1)[0].y1(), 216 - 100 / 3.0);
}

TEST_F(QtViewOverlayTest, AHigherPeakScalesTheWholeGraphAnew)
{
    graphAfter(2);
    const auto graph = graphAfter(4);
    EXPECT_EQ(graph[0].p1(), QPointF(24 + 147, 216 - 100));
    EXPECT_EQ(graph[0].p2(), QPointF(24 + 144, 216 - 50));
}

TEST_F(QtViewOverlayTest, APeakOfZeroDrawsNoGraphButTheGrid)
{
    render(0);
    const auto stats = view.recordStats();
    EXPECT_THAT(stats.linesOf(GraphPen), IsEmpty());
    EXPECT_THAT(stats.linesOf(GridPen), SizeIs(51 + 34));
}

TEST_F(QtViewOverlayTest, GraphMovesWhileThePeakIsZero)
{
    render(0);
    view.recordStats();
    const auto graph = graphAfter(1);
    EXPECT_EQ(graph[0], onGraph(147, -100, 144, 0));
    EXPECT_EQ(graph[1], onGraph(144, 0, 144, 0));
}

TEST_F(QtViewOverlayTest, ThePeakOutlivesItsPoint)
{
    graphAfter(4);
    render(1);
    skipStats(100);
    EXPECT_EQ(newestHeight(), 25);
}

TEST_F(QtViewOverlayTest, APeakOfFrameOneIsResetInFrameOneThousandAndThree)
{
    graphAfter(4);
    render(1);
    skipStats(1000);
    EXPECT_EQ(newestHeight(), 25);  // frame 1002
    EXPECT_EQ(newestHeight(), 100); // frame 1003
}

TEST_F(QtViewOverlayTest, ANewPeakDoesNotStartTheCountAnew)
{
    graphAfter(4);
    render(1);
    skipStats(500);
    graphAfter(8); // frame 502, which is not counted
    render(1);
    skipStats(500);
    EXPECT_EQ(newestHeight(), 12.5); // frame 1003
    EXPECT_EQ(newestHeight(), 100);
}

TEST_F(QtViewOverlayTest, TheResetStartsTheCountAnew)
{
    graphAfter(4);
    render(1);
    skipStats(1002);
    graphAfter(2); // frame 1004
    render(1);
    skipStats(999);
    EXPECT_EQ(newestHeight(), 50); // frame 2004: 1000 frames are counted
    EXPECT_EQ(newestHeight(), 50);
    EXPECT_EQ(newestHeight(), 100);
}

TEST_F(QtViewOverlayTest, FramesWithoutStatisticsDoNotCount)
{
    graphAfter(4);
    render(1);
    skipStats(600);
    for (int i = 0; i < 600; ++i)
        view.paintGL();
    render(1);
    const auto graph = view.recordStats().linesOf(GraphPen);
    EXPECT_EQ(graph[0], onGraph(147, -25, 144, -25));
    EXPECT_EQ(graph[49], onGraph(0, -25, -3, -25));
    skipStats(399);
    EXPECT_EQ(newestHeight(), 25);
    EXPECT_EQ(newestHeight(), 100);
}

// Text at the cursor

TEST_F(QtViewOverlayTest, CursorBoxIsWhereTheEngineHasTheMouse)
{
    window->logicManager = boost::make_shared<LogicManager>();
    window->logicManager->mouseMoved(30, 40, 0);
    view.showStringAtCursor("hello");
    Document document = cursorDocument("hello");
    const auto cursor = view.recordCursor();
    ASSERT_THAT(cursor.boxes, SizeIs(1));
    EXPECT_EQ(cursor.boxes[0].rectangle, boxAt(QPointF(30, 60), document.size(), 1));
    EXPECT_EQ(cursor.boxes[0].pen, BoxPen);
    EXPECT_EQ(cursor.boxes[0].brush, TextBoxBrush);
    EXPECT_EQ(cursor.boxes[0].style, Qt::SolidPattern);
    EXPECT_EQ(cursor.texts, document.textsAt(QPoint(30, 60)));
    EXPECT_EQ(words(cursor), "hello");
    EXPECT_EQ(cursor.texts[0].pen, QColor(Qt::white));
    EXPECT_EQ(cursor.texts[0].font.pointSize(), 16);
}

TEST_F(QtViewOverlayTest, CursorTextIsHtml)
{
    window->logicManager = boost::make_shared<LogicManager>();
    view.showStringAtCursor("<b>bold</b> &amp; <i>more</i>");
    const auto cursor = view.recordCursor();
    EXPECT_EQ(cursor.texts, cursorDocument("<b>bold</b> &amp; <i>more</i>").textsAt(QPoint(0, 100)));
    EXPECT_EQ(cursor.texts.front().text, "bold");
    EXPECT_TRUE(cursor.texts.front().font.bold());
}

TEST_F(QtViewOverlayTest, CursorBoxFollowsTextAndMouse)
{
    window->logicManager = boost::make_shared<LogicManager>();
    view.showStringAtCursor("short");
    view.recordCursor();
    view.showStringAtCursor("a longer text");
    window->logicManager->mouseMoved(-5, 120, 0);
    EXPECT_EQ(view.recordCursor().boxes[0].rectangle,
              boxAt(QPointF(-5, -20), cursorDocument("a longer text").size(), 1));
}

TEST_F(QtViewOverlayTest, CursorBoxResetsThePaintersTransform)
{
    window->logicManager = boost::make_shared<LogicManager>();
    view.showStringAtCursor("hello");
    const auto boxes = view.record([this](QPainter& painter, QPaintEvent* event) {
                               view.drawStats(painter, event);
                               view.drawMessageAtCursor(painter, event);
                           })
                           .boxes;
    EXPECT_EQ(boxes.back().rectangle.topLeft(), QPointF(0, 100));
}

TEST_F(QtViewOverlayTest, WithoutALogicManagerThereIsNoCursorBox)
{
    window->logicManager = nullptr;
    view.showStringAtCursor("hello");
    EXPECT_THAT(view.recordCursor().boxes, IsEmpty());
    EXPECT_THAT(view.recordCursor().texts, IsEmpty());
}

TEST_F(QtViewOverlayTest, WithoutAWindowThereIsNoCursorBox)
{
    OverlayView windowless;
    windowless.showStringAtCursor("hello");
    EXPECT_THAT(windowless.recordCursor().boxes, IsEmpty());
}

TEST_F(QtViewOverlayTest, AnEmptyTextTurnsTheCursorBoxOff)
{
    window->logicManager = boost::make_shared<LogicManager>();
    window->logicManager->mouseMoved(50, 60, 0);
    repaintView(view);
    const QImage bare = grabScreen(view);
    view.showStringAtCursor("hello");
    repaintView(view);
    EXPECT_NE(grabScreen(view), bare);
    view.showStringAtCursor("");
    repaintView(view);
    EXPECT_EQ(grabScreen(view), bare);
}

// Messages

TEST_F(QtViewOverlayTest, AMessageIsDrawnAtTwiceItsPosition)
{
    const auto message = view.recordMessage(QPoint(30, 20), "hello", 1);
    ASSERT_THAT(message.texts, SizeIs(1));
    EXPECT_EQ(message.texts[0].position, QPointF(60, 40));
    EXPECT_EQ(message.texts[0].text, "hello");
    EXPECT_EQ(message.texts[0].font.family(), "Verdana");
    EXPECT_EQ(message.texts[0].font.pointSize(), 13);
    EXPECT_EQ(message.texts[0].brush, QBrush(TextBoxBrush, Qt::SolidPattern));
    EXPECT_THAT(message.boxes, IsEmpty());
}

TEST_F(QtViewOverlayTest, AMessagesLevelIsItsOpacityUpToOne)
{
    const std::pair<float, int> cases[] = {{0.0F, 0},   {0.2F, 51},  {0.5F, 127}, {0.999F, 254},
                                           {1.0F, 255}, {1.1F, 255}, {5.1F, 255}};
    for (const auto& [level, alpha] : cases)
        EXPECT_EQ(view.recordMessage(QPoint(30, 20), "hello", level).texts[0].pen,
                  QColor(250, 250, 250, alpha))
            << level;
}

TEST_F(QtViewOverlayTest, AMessageIsNoHtml)
{
    EXPECT_EQ(view.recordMessage(QPoint(1, 1), "<b>a</b> & b", 1).texts[0].text, "<b>a</b> & b");
}

TEST_F(QtViewOverlayTest, EveryMessageResetsThePaintersTransform)
{
    const auto texts = view.record([this](QPainter& painter, QPaintEvent* event) {
                               painter.translate(500, 500);
                               view.drawMessageAtPosition(painter, event, QPoint(30, 20), "a", 1);
                               view.drawMessageAtPosition(painter, event, QPoint(10, 15), "b", 1);
                           })
                           .texts;
    ASSERT_THAT(texts, SizeIs(2));
    EXPECT_EQ(texts[0].position, QPointF(60, 40));
    EXPECT_EQ(texts[1].position, QPointF(20, 30));
}

// The screen

namespace {

/// The smallest rectangle round all pixels that differ.
QRect differenceOf(const QImage& one, const QImage& other)
{
    QRect found;
    for (int y = 0; y < one.height(); ++y)
        for (int x = 0; x < one.width(); ++x)
            if (one.pixel(x, y) != other.pixel(x, y))
                found |= QRect(x, y, 1, 1);
    return found;
}

} // namespace

TEST_F(QtViewOverlayTest, TheScreenShowsTheStatisticsInTheirBox)
{
    showView(view, 300, 300);
    window->count(12, 34);
    repaintView(view);
    const QImage bare = grabScreen(view);
    view.setShowStats(true);
    repaintView(view);
    const QRect changed = differenceOf(grabScreen(view), bare);
    // A frame has three digits of milliseconds at the most, which leaves the box its width.
    const QRect box = boxAt(QPointF(10, 10), statsDocument("12", "34", "0").size(), 11).toAlignedRect();
    EXPECT_NEAR(changed.left(), box.left(), 1);
    EXPECT_NEAR(changed.top(), box.top(), 1);
    EXPECT_NEAR(changed.right(), box.right(), 1);
    EXPECT_NEAR(changed.bottom(), box.bottom(), 1);

    view.setShowStats(false);
    repaintView(view);
    EXPECT_EQ(grabScreen(view), bare);
}

TEST_F(QtViewOverlayTest, TheScreenShowsAMessageAtTwiceItsPosition)
{
    window->count(12, 34);
    repaintView(view);
    const QImage bare = grabScreen(view);
    view.handleDisplayMessageAt(makeEvent("DisplayMessageAt", "HH, 40, 30"));
    for (int i = 0; i < 5; ++i)
        view.updateMessageDisplay();
    repaintView(view);
    const QRect changed = differenceOf(grabScreen(view), bare);
    EXPECT_NEAR(changed.left(), 80, 3);
    EXPECT_NEAR(changed.bottom(), 60, 2); // the letters stand on their position
    EXPECT_GT(changed.height(), 8);
}

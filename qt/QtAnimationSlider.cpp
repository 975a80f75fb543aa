#include "qt/QtAnimationSlider.h"

#include "engine/scene/AnimationManager.h"

#include <QImage>
#include <QMouseEvent>
#include <QPaintEvent>
#include <QPainter>
#include <QStyle>
#include <QTimer>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <utility>

namespace halvern::qt {

namespace {

constexpr int RepaintInterval = 50; // milliseconds
constexpr int TickStep = 500;       // milliseconds
constexpr int MarkWidth = 10;       // of the handle and of a highlight, in pixels

// So many fills over one another end in a colour that one more does not change. (Seven do.)
constexpr int FillsUntilSteady = 8;

/// Truncates; what does not fit becomes the nearest that does.
int toInt(double number)
{
    if (!(number > std::numeric_limits<int>::min())) // not a number, too
        return std::numeric_limits<int>::min();
    if (number >= std::numeric_limits<int>::max())
        return std::numeric_limits<int>::max();
    return static_cast<int>(number);
}

/// A pixel far outside may be anywhere outside; sums with this one do not overflow.
int toPixel(double number)
{
    constexpr int FarOutside = 1000000;
    return std::clamp(toInt(number), -FarOutside, FarOutside);
}

int wrap(std::uint32_t number)
{
    return static_cast<int>(number);
}

/// The product as 32 bits hold it.
int multiply(int first, int second)
{
    return wrap(static_cast<std::uint32_t>(first) * static_cast<std::uint32_t>(second));
}

float toMilliseconds(float seconds)
{
    return seconds * 1000.0f;
}

bool haveSameBytes(const std::vector<float>& first, const std::vector<float>& second)
{
    return first.size() == second.size() &&
           (first.empty() || std::memcmp(first.data(), second.data(), first.size() * sizeof(float)) == 0);
}

/// One pixel high, on purpose: the first row has the middle colour, all below it the second.
QLinearGradient makeGradient(const QColor& first, const QColor& second)
{
    QLinearGradient gradient(0, 0, 0, 1);
    gradient.setColorAt(0, first);
    gradient.setColorAt(1, second);
    return gradient;
}

/// The pixels of a line two pixels wide from top to bottom, at a fraction of its cost.
void paintLine(QPainter& painter, int x, const QRect& box, const QColor& colour)
{
    painter.fillRect(QRect(x - 1, box.top(), 2, box.height()), colour);
}

/// Calls paint(rectangle) for each run of columns of the box for which isMember(column) holds.
template <class IsMember, class Paint>
void forEachRun(const QRect& box, IsMember isMember, Paint paint)
{
    int begin = box.left();
    for (int column = box.left(); column <= box.left() + box.width(); ++column) {
        if (column < box.left() + box.width() && isMember(column))
            continue;
        if (begin < column)
            paint(QRect(begin, box.top(), column - begin, box.height()));
        begin = column + 1;
    }
}

/// Calls use(milliseconds, times) for each keyframe near the mouse, the engine's time, or both.
template <class Use>
void forEachNear(const std::vector<float>& frames, float mouseTime, float tolerance, float currentTime,
                 Use use)
{
    const auto countNear = [&](float milliseconds) {
        return int(std::fabs(milliseconds - mouseTime) < tolerance) +
               int(std::fabs(currentTime - milliseconds) < 5.0f);
    };
    constexpr std::size_t BlockSize = 64; // looked at as a whole first: the compiler makes vectors of that
    for (std::size_t begin = 0; begin < frames.size(); begin += BlockSize) {
        const std::size_t end = std::min(begin + BlockSize, frames.size());
        int near = 0;
        for (std::size_t i = begin; i < end; ++i)
            near += countNear(toMilliseconds(frames[i]));
        for (std::size_t i = begin; near > 0 && i < end; ++i)
            if (const int times = countNear(toMilliseconds(frames[i])))
                use(toMilliseconds(frames[i]), times);
    }
}

/// What many highlights leave of one another, column by column: a green line hides all before it.
class Highlights
{
public:
    explicit Highlights(int width) : columns(static_cast<std::size_t>(width)), begin(width) {}

    void add(int x)
    {
        repeats = x == last ? repeats + 1 : 0;
        last = x;
        if (repeats > FillsUntilSteady)
            return;
        const int from = std::max(x - MarkWidth / 2, 0);
        const int to = std::min(x + MarkWidth / 2, static_cast<int>(columns.size()));
        for (int column = from; column < to; ++column) {
            Column& mark = columns[static_cast<std::size_t>(column)];
            const bool isLine = column == x - 1 || column == x;
            mark = {mark.hasLine || isLine, isLine ? 0 : std::min(mark.fills + 1, FillsUntilSteady)};
        }
        begin = std::min(begin, from);
        end = std::max(end, to);
    }

    void paint(QPainter& painter, int height) const
    {
        const auto run = [&](int from, int to) { return QRect(from, 0, to - from, height); };
        for (int from = begin, to = begin; from < end; from = to) {
            const Column& mark = columns[static_cast<std::size_t>(from)];
            while (to < end && columns[static_cast<std::size_t>(to)] == mark)
                ++to;
            paint(painter, run(from, to), mark);
        }
    }

private:
    struct Column
    {
        bool hasLine = false;
        int fills = 0; // since the last line

        bool operator==(const Column& other) const
        {
            return hasLine == other.hasLine && fills == other.fills;
        }
    };

    /// The colours of the first row and of all below it.
    struct Shade
    {
        QColor top;
        QColor rest;
    };

    static QBrush makeFill() { return makeGradient(QColor(0, 200, 0, 150), QColor(0, 250, 0, 150)); }

    static void paint(QPainter& painter, const QRect& run, const Column& mark)
    {
        static const QBrush fill = makeFill();
        static const auto shades = makeShades();
        const Shade& shade = shades[static_cast<std::size_t>(mark.fills)];
        const QRect top(run.left(), 0, run.width(), 1);
        // In the end the fills leave the same, below the first row, whatever was there before.
        const bool isSteady = mark.fills == FillsUntilSteady;
        if (mark.hasLine || isSteady)
            painter.fillRect(run.adjusted(0, 1, 0, 0), shade.rest);
        if (mark.hasLine)
            painter.fillRect(top, shade.top);
        for (int i = 0; !mark.hasLine && i < mark.fills; ++i)
            painter.fillRect(isSteady ? top : run, fill);
    }

    /// What a line looks like under so many fills, so that it takes one of a single colour.
    static std::array<Shade, FillsUntilSteady + 1> makeShades()
    {
        QImage column(1, 2, QImage::Format_RGB32);
        column.fill(QColor(0, 255, 0));
        QPainter painter(&column);
        std::array<Shade, FillsUntilSteady + 1> shades;
        for (Shade& shade : shades) {
            shade = {column.pixelColor(0, 0), column.pixelColor(0, 1)};
            painter.fillRect(column.rect(), makeFill());
        }
        return shades;
    }

    std::vector<Column> columns;
    int begin; // of the columns that have marks
    int end = 0;
    int last = 0;
    int repeats = 0; // of the last
};

} // namespace

QtAnimationSlider::QtAnimationSlider(QWidget* parent) : QAbstractSlider(parent)
{
    setOrientation(Qt::Horizontal);
    setMouseTracking(true);

    auto* timer = new QTimer(this);
    connect(timer, SIGNAL(timeout()), this, SLOT(update()));
    timer->start(RepaintInterval);
}

QtAnimationSlider::~QtAnimationSlider() = default;

void QtAnimationSlider::setAnimationManager(boost::shared_ptr<scene::AnimationManager> newAnimationManager)
{
    animationManager = std::move(newAnimationManager);
}

void QtAnimationSlider::paintEvent(QPaintEvent* event)
{
    updateFace();
    QPainter painter(this);
    painter.drawPixmap(0, 0, face);
    if (animationManager && hasExtent())
        paintPlayback(painter, event->rect().width());
}

void QtAnimationSlider::mouseMoveEvent(QMouseEvent* event)
{
    hoverValue = valueAt(event->x());
    if (event->buttons() & Qt::LeftButton)
        setValue(hoverValue);
    repaint();
    QWidget::mouseMoveEvent(event);
}

void QtAnimationSlider::mouseReleaseEvent(QMouseEvent* event)
{
    if (event->button() == Qt::LeftButton)
        setValue(selectNearestFrame(valueAt(event->x())));
    repaint();
    QWidget::mouseReleaseEvent(event);
}

void QtAnimationSlider::mouseDoubleClickEvent(QMouseEvent* event)
{
    const int milliseconds = valueAt(event->x());
    if (animationManager)
        animationManager->setTime(boost::posix_time::microseconds(std::int64_t(milliseconds) * 1000));
    setValue(milliseconds);
    repaint();
    QWidget::mouseDoubleClickEvent(event);
}

void QtAnimationSlider::resizeEvent(QResizeEvent* /*event*/)
{
    repaint();
}

bool QtAnimationSlider::Look::hasScaleOf(const Look& other) const
{
    return size == other.size && minimum == other.minimum && maximum == other.maximum;
}

bool QtAnimationSlider::Look::operator==(const Look& other) const
{
    return hasScaleOf(other) && pixelRatio == other.pixelRatio && font == other.font &&
           value == other.value && hasAnimation == other.hasAnimation;
}

bool QtAnimationSlider::hasExtent() const
{
    return maximum() != 0 && width() != 0;
}

int QtAnimationSlider::valueAt(int x) const
{
    if (!hasExtent())
        return minimum();
    const auto from = static_cast<std::uint32_t>(minimum());
    const int range = wrap(static_cast<std::uint32_t>(maximum()) - from);
    const int position = wrap(from + static_cast<std::uint32_t>(multiply(x, range) / width()));
    // There and back, on purpose: a product that does not fit into 32 bits gives another value.
    return toInt(double(multiply(maximum(), position)) / double(maximum()));
}

int QtAnimationSlider::selectNearestFrame(int value)
{
    if (!animationManager || !animationManager->getAnimation())
        return value;
    const auto tolerance = static_cast<float>(maximum() / 100);
    const std::vector<float> times = animationManager->getFrameTimes();
    for (const float time : times) {
        const float milliseconds = toMilliseconds(time);
        if (std::fabs(milliseconds - static_cast<float>(value)) < tolerance)
            return toInt(milliseconds); // the first that is close, on purpose not the closest
    }
    return value;
}

int QtAnimationSlider::columnOf(int milliseconds) const
{
    return toPixel(QStyle::sliderPositionFromValue(minimum(), maximum(), milliseconds, width(), false));
}

bool QtAnimationSlider::takeFrameTimes()
{
    if (!animationManager || !hasExtent())
        return false;
    const std::vector<float>& times = animationManager->getFrameTimes();
    if (haveSameBytes(times, frameTimes))
        return false;
    frameTimes = times;
    return true;
}

void QtAnimationSlider::placeFrames()
{
    hasFrame.assign(static_cast<std::size_t>(width()), false);
    std::optional<int> milliseconds; // of the keyframe before
    for (const float time : frameTimes) {
        const int now = toInt(toMilliseconds(time));
        if (std::exchange(milliseconds, now) == now)
            continue;
        const int x = columnOf(now);
        for (const int column : {x - 1, x})
            if (column >= 0 && column < width())
                hasFrame[static_cast<std::size_t>(column)] = true;
    }
}

void QtAnimationSlider::updateFace()
{
    const bool hasNewFrames = takeFrameTimes();
    const bool hasAnimation = animationManager && hasExtent() && animationManager->getAnimation();
    const Look now{size(), devicePixelRatioF(), font(), minimum(), maximum(), value(), hasAnimation};
    if (!hasNewFrames && look == now)
        return;
    if (hasNewFrames || !look || !look->hasScaleOf(now))
        placeFrames();
    look = now;
    face = QPixmap(size() * devicePixelRatioF());
    face.setDevicePixelRatio(devicePixelRatioF());
    QPainter painter(&face);
    paintFace(painter);
}

void QtAnimationSlider::paintFace(QPainter& painter)
{
    painter.fillRect(rect(), makeGradient(QColor(150, 150, 150), QColor(200, 200, 200)));
    const float pixelsPerMillisecond = static_cast<float>(width()) / static_cast<float>(maximum());
    const float place = hasExtent() ? static_cast<float>(value()) * pixelsPerMillisecond : 0;
    paintHandle(painter, toPixel(place - 5.0));
    if (look->hasAnimation)
        paintFrames(painter);
    paintTimeLine(painter);
    paintLine(painter, toPixel(place), rect(), QColor(255, 255, 255));
}

void QtAnimationSlider::paintHandle(QPainter& painter, int left)
{
    const QRect handle(left, 0, MarkWidth, height());
    painter.fillRect(handle, makeGradient(QColor(100, 100, 100), QColor(150, 150, 150)));
    painter.setPen(QPen(QBrush(QColor(153, 153, 153)), 1.0));
    painter.drawRect(handle); // its right side is a pixel outside of the handle, on purpose
}

void QtAnimationSlider::paintFrames(QPainter& painter)
{
    forEachRun(
        rect(), [&](int column) { return hasFrame[static_cast<std::size_t>(column)]; },
        [&](const QRect& run) { painter.fillRect(run, QColor(255, 231, 46)); });
}

void QtAnimationSlider::paintTimeLine(QPainter& painter)
{
    painter.setPen(Qt::black);
    QFont labelFont = font();
    labelFont.setFamily("Bavaria");
    labelFont.setPointSize(10);
    painter.setFont(labelFont);
    int column = -1;
    for (std::int64_t time = TickStep; time < maximum(); time += TickStep) {
        const int x = columnOf(static_cast<int>(time));
        if (std::exchange(column, x) == x)
            continue;
        const bool isSecond = time % 1000 == 0;
        const int length = height() / (isSecond ? 4 : 8);
        // The square cap of a line starts a pixel above it.
        paintLine(painter, x, QRect(0, height() - length - 1, width(), length + 1), Qt::black);
        if (isSecond)
            painter.drawText(x, height() - length, QString::number(time));
    }
}

void QtAnimationSlider::paintPlayback(QPainter& painter, int paintedWidth)
{
    const auto currentTime = static_cast<float>(animationManager->getCurrentTime().ticks() / 1000);
    // By the width of what is painted, on purpose: it is the slider's unless a part of it is painted.
    const float place = static_cast<float>(paintedWidth) * (currentTime / static_cast<float>(maximum()));
    paintLine(painter, toPixel(place), rect(), QColor(255, 0, 0));

    const auto tolerance = static_cast<float>(maximum() / 100);
    const auto mouseTime = static_cast<float>(hoverValue);
    Highlights highlights(width());
    forEachNear(frameTimes, mouseTime, tolerance, currentTime, [&](float milliseconds, int times) {
        for (int i = 0; i < times; ++i) // twice if it is near to both, on purpose
            highlights.add(columnOf(toInt(milliseconds)));
    });
    highlights.paint(painter, height());
}

} // namespace halvern::qt

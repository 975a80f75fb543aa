// What does a paint of the time line cost with many keyframes and long ranges? Paints that show the same
// twice, as the repaint timer asks for, and paints in which the value has moved.
#include "bench/Measure.h"
#include "engine/scene/Animation.h"
#include "engine/scene/AnimationManager.h"
#include "qt/QtAnimationSlider.h"

#include <QApplication>
#include <QImage>
#include <QMouseEvent>

#include <boost/make_shared.hpp>

#include <string>

using namespace halvern;

namespace {

constexpr int Rounds = 300;
constexpr QSize Size(1000, 80);

/// Has keyframes without the cost of recording them.
class Keyframes : public scene::AnimationManager
{
public:
    /// Evenly spread over the range.
    Keyframes(int count, int milliseconds)
    {
        for (int i = 0; i < count; ++i)
            times.push_back(static_cast<float>(i) * static_cast<float>(milliseconds) / 1000 /
                            static_cast<float>(count));
    }

    boost::shared_ptr<scene::Animation> getAnimation() override { return animation; }
    const std::vector<float>& getFrameTimes() override { return times; }
    boost::posix_time::time_duration getCurrentTime() override
    {
        return boost::posix_time::microseconds(5000000);
    }

private:
    const boost::shared_ptr<scene::Animation> animation = boost::make_shared<scene::Animation>("a", "");
    std::vector<float> times;
};

/// A time line with the mouse over its middle.
class Timeline
{
public:
    Timeline(int count, int milliseconds)
    {
        slider.setAnimationManager(boost::make_shared<Keyframes>(count, milliseconds));
        slider.setRange(0, milliseconds);
        slider.resize(Size);
        QMouseEvent move(QEvent::MouseMove, QPointF(Size.width() / 2, 10), Qt::NoButton, Qt::NoButton,
                         Qt::NoModifier);
        QApplication::sendEvent(&slider, &move);
    }

    void paint() { slider.render(&image, QPoint(), QRegion(), {}); }

    void moveAndPaint()
    {
        slider.setValue(slider.value() == 0 ? slider.maximum() / 3 : 0);
        paint();
    }

private:
    qt::QtAnimationSlider slider{nullptr};
    QImage image{Size, QImage::Format_RGB32};
};

} // namespace

int main(int argc, char** argv)
{
    if (!qEnvironmentVariableIsSet("DISPLAY") && !qEnvironmentVariableIsSet("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    const QApplication application(argc, argv);

    constexpr int TenSeconds = 10000;
    Timeline few(10, TenSeconds);
    bool holds = true;
    for (const auto& [count, bound] : {std::pair(10000, 3.0), std::pair(100000, 10.0)}) {
        Timeline many(count, TenSeconds);
        const std::string amount = std::to_string(count) + " keyframes against 10";
        holds &= bench::compare(("a paint of the same, " + amount).c_str(), bound, Rounds,
                                [&] { many.paint(); }, [&] { few.paint(); });
        holds &= bench::compare(("a paint after a move, " + amount).c_str(), bound, Rounds,
                                [&] { many.moveAndPaint(); }, [&] { few.moveAndPaint(); });
    }
    Timeline longLine(10, 1000 * TenSeconds);
    holds &= bench::compare(
        "a paint of the same, a range of 10000 s against 10 s", 2, Rounds, [&] { longLine.paint(); },
        [&] { few.paint(); });
    return holds ? 0 : 1;
}

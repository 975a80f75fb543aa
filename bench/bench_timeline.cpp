// What does a paint of the time line cost with many keyframes and long ranges? Paints while it plays, as the
// repaint timer asks for, paints in which the value has moved, and paints after a keyframe did.
#include "bench/Measure.h"
#include "engine/scene/Animation.h"
#include "engine/scene/AnimationManager.h"
#include "qt/QtAnimationSlider.h"

#include <QApplication>
#include <QImage>
#include <QMouseEvent>

#include <boost/make_shared.hpp>

#include <cmath>
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
        played = (played + 50) % 10000; // goes on from one paint to the next
        return boost::posix_time::milliseconds(played);
    }

    void moveKeyframe() { times.back() = std::nextafter(times.back(), 0.0f); }

private:
    const boost::shared_ptr<scene::Animation> animation = boost::make_shared<scene::Animation>("a", "");
    std::vector<float> times;
    int played = 0;
};

/// A time line with the mouse over its middle.
class Timeline
{
public:
    Timeline(int count, int milliseconds) : keyframes(boost::make_shared<Keyframes>(count, milliseconds))
    {
        slider.setAnimationManager(keyframes);
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

    void moveKeyframeAndPaint()
    {
        keyframes->moveKeyframe();
        paint();
    }

private:
    const boost::shared_ptr<Keyframes> keyframes;
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
        holds &= bench::compare(("a paint while it plays, " + amount).c_str(), bound, Rounds,
                                [&] { many.paint(); }, [&] { few.paint(); });
        holds &= bench::compare(("a paint after a move, " + amount).c_str(), bound, Rounds,
                                [&] { many.moveAndPaint(); }, [&] { few.moveAndPaint(); });
        holds &= bench::compare(("a paint after an edit, " + amount).c_str(), bound, Rounds,
                                [&] { many.moveKeyframeAndPaint(); }, [&] { few.moveKeyframeAndPaint(); });
    }
    Timeline longLine(10, 1000 * TenSeconds);
    holds &= bench::compare(
        "a paint while it plays, a range of 10000 s against 10 s", 2, Rounds, [&] { longLine.paint(); },
        [&] { few.paint(); });
    return holds ? 0 : 1;
}

/// What the material panel costs with 500 materials: its first fill, and the resets that come while it is
/// scrolled.
#include "bench/Measure.h"
#include "engine/core/event/EventManager.h"
#include "engine/scene/Material.h"
#include "engine/scene/SceneManager.h"
#include "qt/QtMaterialPanel.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QScrollBar>

#include <boost/make_shared.hpp>

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <ctime>
#include <string>
#include <thread>
#include <vector>

namespace {

using namespace halvern;
using namespace halvern::bench;

constexpr double Frame = 1000.0 / 60; // milliseconds

using ScenePtr = boost::shared_ptr<scene::SceneManager>;

/// What this thread alone takes of the processor: a busy machine makes it no longer.
double getThreadMilliseconds()
{
    timespec time{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return double(time.tv_sec) * 1e3 + double(time.tv_nsec) / 1e6;
}

boost::shared_ptr<scene::Material> makeMaterial(int number)
{
    return boost::make_shared<scene::Material>("Material " + std::to_string(number), "standard");
}

ScenePtr makeScene(boost::shared_ptr<core::event::EventManager> events, int count)
{
    auto sceneManager = boost::make_shared<scene::SceneManager>(events);
    for (int i = 0; i < count; ++i)
        sceneManager->addMaterial(makeMaterial(i));
    return sceneManager;
}

/// Counts its paintings and its resets.
class Panel : public qt::QtMaterialPanel
{
public:
    explicit Panel(int columns)
    {
        connect(model(), &QAbstractItemModel::modelReset, [this] { ++resets; });
        resize(columns * 100 + 40, 600);
        show();
        waitFor([this] { return paints > 0; });
    }
    ~Panel() override { Panel::setEventManager(nullptr); }

    void paintEvent(QPaintEvent* event) override
    {
        QtMaterialPanel::paintEvent(event);
        ++paints;
    }

    template <class Condition>
    void waitFor(Condition condition)
    {
        QElapsedTimer timer;
        timer.start();
        while (!condition() && timer.elapsed() < 10000)
            QCoreApplication::processEvents();
    }

    int paints = 0;
    int resets = 0;
};

/// From the scene manager's arrival to the painted tiles, in a panel that is on the screen.
double measureFill(int columns)
{
    Panel panel(columns);
    const ScenePtr sceneManager = makeScene(nullptr, 500);
    return getMilliseconds([&] {
        panel.setSceneManager(sceneManager);
        sceneManager->update();
        const int before = panel.paints;
        panel.waitFor([&] { return panel.paints > before; });
    });
}

/// The times that the GUI thread was busy in the rounds in which a reset from the scene's thread came in:
/// the reset, a step of scrolling, and the picture that follows.
std::vector<double> measureResets(int columns, int count)
{
    const auto events = boost::make_shared<core::event::EventManager>(true);
    const ScenePtr sceneManager = makeScene(events, 500);
    Panel panel(columns);
    panel.setEventManager(events);
    panel.setSceneManager(sceneManager);
    sceneManager->update();
    sceneManager->start();
    std::atomic<bool> sending{true};
    std::thread sender([&] {
        for (int i = 500; sending; ++i) {
            if (i % 10 == 0)
                sceneManager->addMaterial(makeMaterial(i));
            else
                events->triggerEvent("SceneUpdate", "MaterialList");
            std::this_thread::sleep_for(std::chrono::milliseconds(17));
        }
    });
    std::vector<double> times;
    QScrollBar& bar = *panel.verticalScrollBar();
    for (int i = 0; int(times.size()) < count; ++i) {
        const int resets = panel.resets;
        const int paints = panel.paints;
        const double begin = getThreadMilliseconds();
        bar.setValue(i * 7 % (bar.maximum() + 1));
        while (panel.paints == paints)
            QCoreApplication::processEvents();
        if (panel.resets > resets)
            times.push_back(getThreadMilliseconds() - begin);
    }
    sending = false;
    sender.join();
    sceneManager->stop();
    return times;
}

} // namespace

int main(int argc, char** argv)
{
    if (!qEnvironmentVariableIsSet("DISPLAY") && !qEnvironmentVariableIsSet("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    const QApplication application(argc, argv);
    bool ok = report("the program's first fill with 500 materials", measureFill(3), 50, " ms");
    for (const int columns : {1, 3, 8}) {
        std::printf("%d column%s\n", columns, columns == 1 ? "" : "s");
        std::vector<double> fills(9);
        std::generate(fills.begin(), fills.end(), [columns] { return measureFill(columns); });
        ok &= report("first fill with 500 materials", getMedian(fills), 50, " ms");
        const std::vector<double> times = measureResets(columns, 100);
        std::printf("    a reset while scrolling: median %.2f ms\n", getMedian(times));
        ok &= report("longest reset of a hundred while scrolling",
                     *std::max_element(times.begin(), times.end()), Frame, " ms");
    }
    return ok ? EXIT_SUCCESS : EXIT_FAILURE;
}

#include "studio/BatchRun.h"

#include "qt/QtView.h"
#include "studio/Console.h"
#include "studio/FrameDriver.h"
#include "studio/MainWindow.h"
#include "studio/ProcessClock.h"
#include "studio/Screenshot.h"

#include <QCoreApplication>

namespace halvern::studio {

namespace {

/// Frames before a screenshot of a studio that goes on running.
const int SettlingFrames = 3;

} // namespace

BatchRun::BatchRun(const Options& newOptions, MainWindow* newWindow, std::FILE* newOutput) :
    QObject(newWindow), options(newOptions), window(newWindow), output(newOutput)
{
    connect(window, &MainWindow::opened, this, &BatchRun::start);
}

void BatchRun::start(const LoadedScene& loaded)
{
    disconnect(window, &MainWindow::opened, this, nullptr);
    report.file = loaded.file;
    report.counts = loaded.scene.counts;
    report.loadMilliseconds = loaded.milliseconds;

    FrameDriver* driver = window->getFrameDriver();
    driver->forgetFrame();
    driver->setContinuous(true);
    connect(driver, &FrameDriver::frameShown, this, &BatchRun::count);
}

void BatchRun::count()
{
    if (!timer.isValid()) {
        report.firstFrameMilliseconds = millisecondsSinceProcessStart();
        timer.start();
        return;
    }
    report.frameMilliseconds.push_back(timer.nsecsElapsed() / 1e6);
    timer.start();
    const int wanted = options.frames > 0 ? options.frames : SettlingFrames;
    if (int(report.frameMilliseconds.size()) < wanted)
        return;
    window->getFrameDriver()->setContinuous(false);
    disconnect(window->getFrameDriver(), nullptr, this, nullptr);
    finish();
}

void BatchRun::finish()
{
    if (!saveScreenshots())
        return QCoreApplication::exit(ExitFile);
    if (options.json)
        printLine(output, toJson(report));
    if (options.frames == 0)
        return;
    // Requests that wait already would make one more frame.
    window->setUpdatesEnabled(false);
    QCoreApplication::exit(ExitDone);
}

bool BatchRun::saveScreenshots() const
{
    const std::pair<const QWidget*, QString> wanted[] = {{window, options.screenshot},
                                                         {window->getView(), options.viewScreenshot}};
    for (const auto& [widget, file] : wanted) {
        if (file.isEmpty() || saveScreenshot(*widget, file))
            continue;
        printLine(stderr, "halvern-studio: cannot write " + file.toUtf8());
        return false;
    }
    return true;
}

} // namespace halvern::studio

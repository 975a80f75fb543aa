#include "studio/BatchRun.h"

#include "qt/QtView.h"
#include "studio/Console.h"
#include "studio/FrameDriver.h"
#include "studio/MainWindow.h"
#include "studio/ProcessClock.h"
#include "studio/Screenshot.h"

#include <QCoreApplication>

#include <cerrno>

namespace halvern::studio {

namespace {

/// Frames before a screenshot of a studio that goes on running.
const int SettlingFrames = 3;

void complain(const QString& what, const QString& error)
{
    printLine(stderr, QString("halvern-studio: cannot write %1: %2").arg(what, error).toUtf8());
}

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

    if (!options.screenshot.isEmpty())
        window->fillDocks();
    timer.start();
    FrameDriver* driver = window->getFrameDriver();
    driver->forgetFrame();
    driver->setContinuous(true);
    connect(driver, &FrameDriver::frameShown, this, &BatchRun::count);
}

void BatchRun::count()
{
    if (report.frameMilliseconds.empty())
        report.firstFrameMilliseconds = millisecondsSinceProcessStart();
    report.frameMilliseconds.push_back(timer.nsecsElapsed() / 1e6);
    timer.start();
    const int wanted = options.frames > 0 ? options.frames : SettlingFrames;
    if (int(report.frameMilliseconds.size()) < wanted)
        return;
    window->getFrameDriver()->setContinuous(false);
    disconnect(window->getFrameDriver(), nullptr, this, nullptr);
    // The first frame sets the scene up; its time stands only where no other follows.
    if (report.frameMilliseconds.size() > 1)
        report.frameMilliseconds.erase(report.frameMilliseconds.begin());
    finish();
}

void BatchRun::finish()
{
    if (!saveScreenshots() || !printReport())
        return QCoreApplication::exit(ExitFile);
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
        const QString error = file.isEmpty() ? QString() : saveScreenshot(*widget, file);
        if (error.isEmpty())
            continue;
        complain(file, error);
        return false;
    }
    return true;
}

bool BatchRun::printReport() const
{
    if (!options.json || printLine(output, toJson(report)))
        return true;
    complain("the report", qt_error_string(errno));
    return false;
}

} // namespace halvern::studio

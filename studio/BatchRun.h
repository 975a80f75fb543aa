#pragma once

#include "studio/Options.h"
#include "studio/Report.h"

#include <QElapsedTimer>
#include <QObject>

#include <cstdio>

namespace halvern::studio {

class MainWindow;
struct LoadedScene;

/// What scripts ask for: so many frames of the first model, then the screenshots, the report and the end.
class BatchRun : public QObject
{
    Q_OBJECT
public:
    /// The report goes to `output`.
    BatchRun(const Options& options, MainWindow* window, std::FILE* output);

private slots:
    void start(const halvern::studio::LoadedScene& loaded);
    void count();

private:
    void finish();
    bool saveScreenshots() const;
    bool printReport() const;

    const Options options;
    MainWindow* const window;
    std::FILE* const output;
    Report report;
    QElapsedTimer timer;
};

} // namespace halvern::studio

#pragma once

#include "reference/scene/Importer.h"

#include <QObject>
#include <QString>

#include <chrono>
#include <functional>
#include <future>
#include <list>
#include <memory>

namespace halvern::studio {

/// A model file that was read, and how long that took.
struct LoadedScene
{
    QString file;
    scene::ImportedScene scene;
    double milliseconds = 0;
};

/// Reads model files in threads of their own, one result at a time. GUI thread. Works before there is an
/// application object, so that reading starts first of all; the signals come once events are processed.
class SceneLoader : public QObject
{
    Q_OBJECT
public:
    using Import = std::function<scene::ImportedScene(const std::string&, const scene::ImportOptions&)>;

    explicit SceneLoader(Import import = scene::importScene);

    /// Waits for the threads.
    ~SceneLoader() override;

    /// Starts reading the file, in place of the one that is being read.
    void load(const QString& file);

    bool isLoading() const;

    /// The file that is being read; empty when none is.
    QString getFile() const;

    /// Cancels and waits; false when a thread still runs after that time.
    bool stop(std::chrono::milliseconds patience);

public slots:
    /// Nothing more comes from the file that is being read. Its thread ends when the importer next asks.
    void cancel();

signals:
    void started(const QString& file);
    void progressed(int percent);

    // Each load ends with one of these:
    void loaded(const LoadedScene& loaded);
    void failed(const QString& message);
    void cancelled();

private slots:
    void takePosted();

private:
    struct Job;

    void run(const std::shared_ptr<Job>& job);
    void report(const std::shared_ptr<Job>& job, float share);
    /// Calls the function on the GUI thread, unless the job is no longer the current one.
    void post(const std::shared_ptr<Job>& job, std::function<void()> function);
    void finish(const std::shared_ptr<Job>& job, std::function<void()> announce);
    void drop();

    const Import import;
    std::shared_ptr<Job> current;
    std::list<std::future<void>> threads;
};

} // namespace halvern::studio

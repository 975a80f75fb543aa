#include "studio/SceneLoader.h"

#include "reference/engine/ImageDecoder.h"

#include <QElapsedTimer>

#include <atomic>
#include <mutex>
#include <vector>

namespace halvern::studio {

struct SceneLoader::Job
{
    explicit Job(QString newFile) : file(std::move(newFile)) {}

    const QString file;
    std::atomic<bool> cancelled{false};
    std::atomic<int> percent{0};
    std::atomic<bool> percentPosted{false};

    std::mutex mutex;
    std::vector<std::function<void()>> posted; ///< Guarded by the mutex.
};

SceneLoader::SceneLoader(Import newImport) : import(std::move(newImport)) {}

SceneLoader::~SceneLoader()
{
    drop();
    threads.clear();
}

void SceneLoader::load(const QString& file)
{
    drop();
    threads.remove_if([](const std::future<void>& thread) {
        return thread.wait_for(std::chrono::seconds(0)) == std::future_status::ready;
    });
    current = std::make_shared<Job>(file);
    threads.push_back(std::async(std::launch::async, [this, job = current] { run(job); }));
    emit started(file);
}

bool SceneLoader::isLoading() const
{
    return current != nullptr;
}

QString SceneLoader::getFile() const
{
    return current ? current->file : QString();
}

bool SceneLoader::stop(std::chrono::milliseconds patience)
{
    drop();
    const auto deadline = std::chrono::steady_clock::now() + patience;
    for (const std::future<void>& thread : threads)
        if (thread.wait_until(deadline) != std::future_status::ready)
            return false;
    return true;
}

void SceneLoader::cancel()
{
    if (!current)
        return;
    drop();
    emit cancelled();
}

void SceneLoader::run(const std::shared_ptr<Job>& job)
{
    scene::ImportOptions options;
    options.decodeImage = engine::decodeImage;
    options.progress = [&](float share) {
        report(job, share);
        return !job->cancelled;
    };
    try {
        QElapsedTimer timer;
        timer.start();
        LoadedScene result{job->file, import(job->file.toStdString(), options), 0};
        result.milliseconds = timer.nsecsElapsed() / 1e6;
        finish(job, [this, result] { emit loaded(result); });
    } catch (const scene::ImportCancelled&) {
        // Only cancel() does that, and it has told already.
    } catch (const scene::ImportError& error) {
        finish(job, [this, message = QString::fromStdString(error.what())] { emit failed(message); });
    } catch (const std::exception& error) {
        const QString message = QString("%1: %2").arg(job->file, error.what());
        finish(job, [this, message] { emit failed(message); });
    }
}

void SceneLoader::report(const std::shared_ptr<Job>& job, float share)
{
    job->percent = static_cast<int>(share * 100);
    if (job->percentPosted.exchange(true))
        return;
    // A job that held itself by what it posted would never go.
    post(job, [this, posted = job.get()] {
        posted->percentPosted = false;
        emit progressed(posted->percent);
    });
}

void SceneLoader::post(const std::shared_ptr<Job>& job, std::function<void()> function)
{
    {
        const std::lock_guard<std::mutex> lock(job->mutex);
        if (job->cancelled)
            return;
        job->posted.push_back(std::move(function));
    }
    QMetaObject::invokeMethod(this, "takePosted", Qt::QueuedConnection);
}

void SceneLoader::takePosted()
{
    const std::shared_ptr<Job> job = current;
    if (!job)
        return;
    std::vector<std::function<void()>> functions;
    {
        const std::lock_guard<std::mutex> lock(job->mutex);
        functions.swap(job->posted);
    }
    for (const auto& function : functions)
        if (job == current)
            function();
}

void SceneLoader::finish(const std::shared_ptr<Job>& job, std::function<void()> announce)
{
    post(job, [this, announce = std::move(announce)] {
        current.reset();
        announce();
    });
}

void SceneLoader::drop()
{
    if (!current)
        return;
    // What it posted goes now; the thread may keep the job until the next load.
    std::vector<std::function<void()>> dropped;
    {
        const std::lock_guard<std::mutex> lock(current->mutex);
        current->cancelled = true;
        dropped.swap(current->posted);
    }
    current.reset();
}

} // namespace halvern::studio

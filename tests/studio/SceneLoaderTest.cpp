#include "StudioHelpers.h"

#include "studio/SceneLoader.h"

#include <QCoreApplication>
#include <QThread>

#include <boost/weak_ptr.hpp>

#include <gtest/gtest.h>

using namespace halvern;
using namespace halvern::studio;
using namespace studiotest;

namespace {

/// Counts what a loader says, and from which thread.
struct Listener
{
    explicit Listener(SceneLoader& loader)
    {
        QObject::connect(&loader, &SceneLoader::loaded, [this](const LoadedScene& scene) {
            loaded.push_back(scene);
            thread = QThread::currentThread();
        });
        QObject::connect(&loader, &SceneLoader::failed, [this](const QString& m) { failures.append(m); });
        QObject::connect(&loader, &SceneLoader::cancelled, [this] { ++cancelled; });
        QObject::connect(&loader, &SceneLoader::progressed, [this](int p) { percents.push_back(p); });
    }

    std::vector<LoadedScene> loaded;
    QStringList failures;
    int cancelled = 0;
    std::vector<int> percents;
    QThread* thread = nullptr;
};

auto gated(GatedImport& import)
{
    return [&import](const auto& file, const auto& options) { return import(file, options); };
}

} // namespace

TEST(SceneLoaderTest, ASceneArrivesOnTheThreadOfTheLoader)
{
    GatedImport import;
    import.open();
    SceneLoader loader(gated(import));
    Listener listener(loader);
    loader.load("a.obj");
    EXPECT_TRUE(loader.isLoading());
    EXPECT_EQ(loader.getFile(), "a.obj");
    EXPECT_TRUE(listener.loaded.empty()) << "never inside load()";
    ASSERT_TRUE(waitFor([&] { return !listener.loaded.empty(); }));
    EXPECT_EQ(listener.loaded[0].file, "a.obj");
    EXPECT_EQ(listener.loaded[0].scene.counts.nodes, 1u);
    EXPECT_EQ(listener.thread, QThread::currentThread());
    EXPECT_FALSE(loader.isLoading());
    EXPECT_EQ(loader.getFile(), "");
}

TEST(SceneLoaderTest, AnErrorArrivesWithItsText)
{
    GatedImport import;
    import.error = "no such file";
    import.open();
    SceneLoader loader(gated(import));
    Listener listener(loader);
    loader.load("a.obj");
    ASSERT_TRUE(waitFor([&] { return !listener.failures.isEmpty(); }));
    EXPECT_EQ(listener.failures, QStringList("a.obj: no such file"));
    EXPECT_FALSE(loader.isLoading());
}

TEST(SceneLoaderTest, AnyOtherExceptionIsAnErrorThatNamesTheFile)
{
    SceneLoader loader([](auto&&...) -> scene::ImportedScene { throw std::bad_alloc(); });
    Listener listener(loader);
    loader.load("a.obj");
    ASSERT_TRUE(waitFor([&] { return !listener.failures.isEmpty(); }));
    EXPECT_TRUE(listener.failures[0].startsWith("a.obj: "));
}

TEST(SceneLoaderTest, ProgressIsPercent)
{
    GatedImport import;
    SceneLoader loader(gated(import));
    Listener listener(loader);
    loader.load("a.obj");
    ASSERT_TRUE(waitFor([&] { return !listener.percents.empty(); }));
    EXPECT_EQ(listener.percents[0], 50);
    loader.cancel();
}

TEST(SceneLoaderTest, ProgressNeverPilesUp)
{
    std::promise<void> reported;
    SceneLoader loader([&](const std::string&, const scene::ImportOptions& options) {
        for (int i = 0; i <= 10000; ++i)
            options.progress(i / 10000.f);
        reported.set_value();
        return oneNodeScene();
    });
    Listener listener(loader);
    loader.load("a.obj");
    reported.get_future().wait(); // with no event processed meanwhile
    ASSERT_TRUE(waitFor([&] { return !listener.loaded.empty(); }));
    EXPECT_EQ(listener.percents, std::vector<int>{100});
}

TEST(SceneLoaderTest, AfterCancelNothingArrives)
{
    GatedImport import;
    SceneLoader loader(gated(import));
    Listener listener(loader);
    loader.load("a.obj");
    loader.cancel();
    EXPECT_EQ(listener.cancelled, 1);
    EXPECT_FALSE(loader.isLoading());
    EXPECT_TRUE(loader.stop(std::chrono::seconds(10)));
    QCoreApplication::processEvents();
    EXPECT_TRUE(listener.loaded.empty());
    EXPECT_TRUE(listener.failures.isEmpty());
    EXPECT_EQ(listener.cancelled, 1);
}

TEST(SceneLoaderTest, CancelLetsGoOfASceneThatHasNotArrived)
{
    boost::weak_ptr<scene::SceneManager> read;
    std::promise<void> done;
    SceneLoader loader([&](auto&&...) {
        const scene::ImportedScene scene = oneNodeScene();
        read = scene.sceneManager;
        done.set_value();
        return scene;
    });
    loader.load("a.obj");
    done.get_future().wait();
    loader.cancel(); // its result is posted, or is about to be
    EXPECT_TRUE(loader.stop(std::chrono::seconds(10)));
    EXPECT_TRUE(read.expired());
}

TEST(SceneLoaderTest, ASceneThatIsReadInSpiteOfCancelDoesNotArrive)
{
    std::promise<void> gate;
    SceneLoader loader([&](auto&&...) {
        gate.get_future().wait();
        return oneNodeScene();
    });
    Listener listener(loader);
    loader.load("a.obj");
    loader.cancel();
    gate.set_value();
    EXPECT_TRUE(loader.stop(std::chrono::seconds(10)));
    QCoreApplication::processEvents();
    EXPECT_TRUE(listener.loaded.empty());
}

TEST(SceneLoaderTest, CancelWithNothingToCancelSaysNothing)
{
    SceneLoader loader;
    Listener listener(loader);
    loader.cancel();
    EXPECT_EQ(listener.cancelled, 0);
}

TEST(SceneLoaderTest, ANewLoadTakesThePlaceOfTheOldOne)
{
    GatedImport import;
    SceneLoader loader([&](const std::string& file, const scene::ImportOptions& options) {
        return file == "b.obj" ? oneNodeScene() : import(file, options);
    });
    Listener listener(loader);
    loader.load("a.obj");
    loader.load("b.obj");
    ASSERT_TRUE(waitFor([&] { return !loader.isLoading(); }));
    import.open();
    EXPECT_TRUE(loader.stop(std::chrono::seconds(10)));
    QCoreApplication::processEvents();
    ASSERT_EQ(listener.loaded.size(), 1u);
    EXPECT_EQ(listener.loaded[0].file, "b.obj");
    EXPECT_EQ(listener.cancelled, 0);
}

TEST(SceneLoaderTest, AnImporterThatDoesNotListenDoesNotHoldUpTheEnd)
{
    std::promise<void> gate;
    SceneLoader loader([&](auto&&...) {
        gate.get_future().wait();
        return oneNodeScene();
    });
    loader.load("a.obj");
    EXPECT_FALSE(loader.stop(std::chrono::milliseconds(10)));
    gate.set_value();
    EXPECT_TRUE(loader.stop(std::chrono::seconds(10)));
}

TEST(SceneLoaderTest, TheImporterGetsADecoderOfPictures)
{
    bool decodes = false;
    SceneLoader loader([&](const std::string&, const scene::ImportOptions& options) {
        decodes = bool(options.decodeImage);
        return oneNodeScene();
    });
    loader.load("a.obj");
    ASSERT_TRUE(waitFor([&] { return !loader.isLoading(); }));
    EXPECT_TRUE(decodes);
}

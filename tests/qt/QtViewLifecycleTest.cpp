#include "engine/core/interfaces/IOpenGLHandler.h"
#include "tests/qt/ViewProbe.h"
#include "tests/support/Heap.h"
#include "tests/support/Process.h"
#include "tests/support/RecordingEventManager.h"

#include <QApplication>
#include <QPainter>
#include <QTest>

#include <gtest/gtest.h>

using namespace halvern::test;

namespace {

class NullHandler : public halvern::core::interfaces::IOpenGLHandler
{
public:
    bool isInitialized() override { return true; }
    void initialize() override {}
    void render() override {}
};

/// A view with everything in it that a host puts there, but no painted text: Qt and the driver keep some
/// 15 KB of every context that painted one, of a plain QOpenGLWidget too.
void liveOnce(const boost::shared_ptr<HCE::EventManager>& manager)
{
    auto view = std::make_unique<ViewProbe>();
    view->setEventManager(manager);
    showView(*view, 160, 120);
    view->setLogo(QImage(16, 16, QImage::Format_ARGB32));
    view->addOpenGLHandler(boost::make_shared<NullHandler>());
    view->loadEffect("file", "node", 0, 0);
    manager->triggerEvent("SyncScene", "");
    manager->triggerEvent("ObjectPicked", "node, 0, 0, 5, 6, DropMaterial");
    manager->waitUntilIdle();
    settle();
    view.reset();
    settle();
}

} // namespace

TEST(QtViewLifecycleTest, AHundredLivesLeaveNothingBehind)
{
    const auto manager = boost::make_shared<HCE::EventManager>(true);
    for (int i = 0; i < 20; ++i)
        liveOnce(manager);
    const std::size_t heap = getHeapInUse();
    const std::size_t resident = getResidentBytes();
    const std::size_t files = getOpenFileCount();
    for (int i = 0; i < 100; ++i)
        liveOnce(manager);
    EXPECT_EQ(getOpenFileCount(), files);
    EXPECT_LT(getHeapInUse(), heap + 256 * 1024);
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__) // they keep what is freed
    EXPECT_LT(getResidentBytes(), resident + 8 * 1024 * 1024);
#else
    (void)resident;
#endif
}

TEST(QtViewLifecycleTest, AViewThatWasNeverShownDies)
{
    for (int i = 0; i < 100; ++i) {
        ViewProbe view;
        view.setLogo(QImage(16, 16, QImage::Format_ARGB32));
        view.loadEffect("file", "node", 0, 0);
    }
}

TEST(QtViewLifecycleTest, AViewDiesWithItsParent)
{
    const auto manager = boost::make_shared<RecordingEventManager>();
    auto parent = std::make_unique<QWidget>();
    auto* view = new ViewProbe;
    view->setParent(parent.get());
    view->setEventManager(manager);
    showView(*parent);
    ASSERT_TRUE(manager->isRegistered(view));
    parent.reset();
    EXPECT_FALSE(manager->isRegistered(view));
}

TEST(QtViewLifecycleTest, HidingAndShowingKeepsTheWindow)
{
    ViewProbe view;
    showView(view);
    const auto window = view.getWindow();
    view.hide();
    settle();
    view.show();
    settle();
    EXPECT_EQ(view.getWindow(), window);
}

TEST(QtViewLifecycleTest, TwoViewsDoNotDisturbEachOther)
{
    CallLog log;
    ViewProbe left;
    ViewProbe right;
    const auto window = showWithFakeWindow(left, log);
    showView(right);
    right.move(400, 100);
    left.makeCurrent();
    window->colorTarget =
        boost::make_shared<halvern::engine::fx::FXRenderTarget>(makeTexture({QColor(0, 255, 0)}));
    for (int i = 0; i < 3; ++i) {
        repaintView(right);
        repaintView(left);
        EXPECT_EQ(grabScreen(left).pixelColor(100, 50), QColor(0, 255, 0));
    }
    EXPECT_NE(left.getWindow(), right.getWindow());
}

#include "engine/scene/SceneManager.h"
#include "tests/qt/ViewProbe.h"

#include <QApplication>
#include <QHBoxLayout>
#include <QTest>

#include <gtest/gtest.h>

using namespace halvern::test;
using halvern::engine::fx::FXRenderTarget;
using halvern::scene::SceneManager;

namespace {

bool isSharing()
{
    return QCoreApplication::testAttribute(Qt::AA_ShareOpenGLContexts);
}

/// Two top level windows; the view of the test wanders, another one stays in the first of them.
/// The suite runs with shared contexts and, with HALVERN_TEST_UNSHARED=1, without.
class QtViewReparentTest : public testing::Test
{
protected:
    QtViewReparentTest()
    {
        tops[0].setGeometry(50, 50, 400, 200);
        tops[1].setGeometry(500, 50, 300, 250);
        layouts[0].addWidget(stays);
        layouts[0].addWidget(wanders);
        tops[0].show();
        tops[1].show();
        EXPECT_TRUE(QTest::qWaitForWindowExposed(&tops[1]));
        settle();

        stays->setWindow(window);
        stays->makeCurrent();
        window->colorTarget =
            boost::make_shared<FXRenderTarget>(makeTexture({Qt::blue, Qt::green, Qt::yellow, Qt::cyan}));
        wanders->attach(scene);
        settle();
    }

    void moveTo(int top)
    {
        layouts[top].addWidget(wanders);
        settle();
        repaintView(*wanders);
    }

    CallLog log;
    QWidget tops[2];
    QHBoxLayout layouts[2]{QHBoxLayout(&tops[0]), QHBoxLayout(&tops[1])};
    ViewProbe* stays = new ViewProbe(nullptr, "stays");
    ViewProbe* wanders = new ViewProbe(nullptr, "wanders");
    boost::shared_ptr<FakeWindow> window = boost::make_shared<FakeWindow>(log);
    boost::shared_ptr<SceneManager> scene = boost::make_shared<SceneManager>(nullptr);
};

} // namespace

TEST_F(QtViewReparentTest, SixMovesKeepSceneSizeAndPictureOfBothViews)
{
    const QColor background = grabScreen(*wanders).pixelColor(20, 20);
    EXPECT_NE(background, QColor(Qt::red));
    for (int i = 1; i <= 6; ++i) {
        const auto before = wanders->getWindow();
        moveTo(i % 2);
        ASSERT_TRUE(wanders->getWindow());
        EXPECT_EQ(wanders->getWindow() == before, isSharing()) << "a new context has a new window";
        EXPECT_EQ(wanders->getWindow()->getSceneManager(), scene);
        EXPECT_EQ(wanders->getWindow()->getSize(), Eigen::Vector2i(wanders->width(), wanders->height()));
        EXPECT_EQ(grabScreen(*wanders).pixelColor(20, 20), background);

        repaintView(*stays);
        const QImage picture = grabScreen(*stays);
        EXPECT_EQ(picture.pixelColor(0, picture.height() - 1), QColor(Qt::blue));
        EXPECT_EQ(picture.pixelColor(picture.width() - 1, 0), QColor(Qt::cyan));
    }
}

TEST_F(QtViewReparentTest, ANewContextIsConnectedToCleanup)
{
    moveTo(1);
    EXPECT_TRUE(
        QObject::disconnect(wanders->context(), SIGNAL(aboutToBeDestroyed()), wanders, SLOT(cleanup())));
}

TEST_F(QtViewReparentTest, TasksRunInTheNewContext)
{
    QOpenGLContext* context = nullptr;
    wanders->setParent(nullptr);
    wanders->queueTask([&] { context = QOpenGLContext::currentContext(); });
    moveTo(1);
    EXPECT_EQ(context, wanders->context());
}

TEST_F(QtViewReparentTest, AViewBesideAMovedOneMayDie)
{
    moveTo(0);
    moveTo(1);
    layouts[1].addWidget(stays);
    settle();
    delete stays;
    settle();
    repaintView(*wanders);
    EXPECT_EQ(wanders->getWindow()->getSceneManager(), scene);
}

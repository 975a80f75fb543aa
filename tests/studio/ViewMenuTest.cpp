#include "StudioHelpers.h"

#include "engine/core/event/EventListener.h"
#include "engine/core/event/EventManager.h"
#include "engine/scene/AnimationManager.h"
#include "engine/scene/SceneManager.h"
#include "engine/window/Window.h"
#include "qt/QtView.h"
#include "studio/FrameDriver.h"
#include "studio/MainWindow.h"

#include <QApplication>
#include <QMenu>
#include <QMenuBar>
#include <QPointer>
#include <QProcess>
#include <QScreen>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QWindow>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <mutex>
#include <utility>
#include <vector>

using namespace halvern;
using namespace halvern::studio;
using namespace studiotest;
using testing::ElementsAre;

// The menus of the studio as a user's hand reaches them: the X server gets the events from outside.

namespace {

/// Notes the data of the events of one type.
class Listener : public HCE::EventListener
{
public:
    Listener(boost::shared_ptr<HCE::EventManager> newManager, const char* type) : manager(newManager)
    {
        manager->registerEventListener(this, HCE::EventType(type));
    }
    ~Listener() override { manager->removeEventListener(this); }

    void handleEvent(HCE::Event event) override
    {
        const std::lock_guard<std::mutex> lock(mutex);
        data.push_back(event.getEventData().getData());
    }

    /// Of all events that were triggered by now.
    std::vector<std::string> getData()
    {
        manager->waitUntilIdle();
        const std::lock_guard<std::mutex> lock(mutex);
        return data;
    }

private:
    const boost::shared_ptr<HCE::EventManager> manager;
    std::mutex mutex;
    std::vector<std::string> data;
};

/// The share of pixels that differ.
double difference(const QImage& one, const QImage& other)
{
    int count = 0;
    for (int y = 0; y < one.height(); ++y)
        for (int x = 0; x < one.width(); ++x)
            count += one.pixel(x, y) != other.pixel(x, y);
    return double(count) / (one.width() * one.height());
}

QStringList texts(const QMenu& menu)
{
    QStringList found;
    for (const QAction* action : menu.actions())
        found.append(action->text());
    return found;
}

class ViewMenuTest : public testing::Test
{
protected:
    void SetUp() override
    {
        if (QStandardPaths::findExecutable("xdotool").isEmpty() || QGuiApplication::platformName() != "xcb")
            GTEST_SKIP() << "needs an X server and xdotool";
        window.setGeometry(100, 100, 700, 500);
        window.show();
        bool opened = false;
        bool shown = false;
        const auto opening = QObject::connect(&window, &MainWindow::opened, [&] { opened = true; });
        const auto frames =
            QObject::connect(window.getFrameDriver(), &FrameDriver::frameShown, [&] { shown = opened; });
        loader.load("data/scenes/showcase.glb");
        ASSERT_TRUE(waitFor([&] { return shown; }));
        QObject::disconnect(opening);
        QObject::disconnect(frames);
        waitForRest();
    }

    ~ViewMenuTest() override
    {
        while (QWidget* popup = QApplication::activePopupWidget())
            popup->close();
    }

    static void send(const QStringList& arguments)
    {
        QProcess xdotool;
        xdotool.start("xdotool", arguments);
        EXPECT_TRUE(waitFor([&] { return xdotool.state() == QProcess::NotRunning; }));
        EXPECT_EQ(xdotool.exitCode(), 0) << xdotool.readAllStandardError().toStdString();
    }

    static void click(const QWidget& widget, QPoint position, int button)
    {
        const QPoint global = widget.mapToGlobal(position);
        send({"mousemove", QString::number(global.x()), QString::number(global.y()), "click",
              QString::number(button)});
    }

    static QMenu* openMenu() { return qobject_cast<QMenu*>(QApplication::activePopupWidget()); }

    /// Right click into the middle of the view; null if no menu opens.
    QMenu* openContextMenu()
    {
        click(view, view.rect().center(), 3);
        waitFor([] { return openMenu() != nullptr; });
        return openMenu();
    }

    /// Clicks on an entry; returns its submenu.
    static QMenu* choose(QMenu& menu, const QString& text)
    {
        for (QAction* action : menu.actions()) {
            if (action->text() != text)
                continue;
            click(menu, menu.actionGeometry(action).center(), 1);
            QMenu* sub = action->menu();
            EXPECT_TRUE(waitFor([&] { return sub ? sub->isVisible() : !menu.isVisible(); }));
            return sub;
        }
        ADD_FAILURE() << "no entry " << text.toStdString();
        return nullptr;
    }

    /// Chooses from a menu of the menu bar.
    void chooseFromBar(const QString& title, const QString& text)
    {
        for (QAction* action : window.menuBar()->actions())
            if (action->text() == title) {
                click(*window.menuBar(), window.menuBar()->actionGeometry(action).center(), 1);
                ASSERT_TRUE(waitFor([&] { return action->menu()->isVisible(); }));
                choose(*action->menu(), text);
            }
    }

    /// What of the view is on the screen.
    QImage look() const
    {
        const QPoint corner = view.mapTo(&window, QPoint(0, 0));
        return window.windowHandle()
            ->screen()
            ->grabWindow(window.winId(), corner.x(), corner.y(), view.width(), view.height())
            .toImage();
    }

    /// Until two looks in succession are the same.
    void waitForRest()
    {
        QImage last;
        EXPECT_TRUE(waitFor([&] {
            processEventsFor(200);
            return std::exchange(last, look()) == look();
        }));
    }

    /// Until nearly everything looks different.
    bool waitForAnotherPicture(const QImage& before)
    {
        return waitFor([&] { return difference(look(), before) > 0.3; });
    }

    SceneLoader loader;
    MainWindow window{&loader, false};
    qt::QtView& view = *window.getView();
};

} // namespace

TEST_F(ViewMenuTest, ChoosingACameraChangesThePictureAndSendsOneEvent)
{
    Listener listener(view.getEventManager(), "ActiveCamera");
    const QImage before = look();
    QMenu* menu = openContextMenu();
    ASSERT_TRUE(menu);
    EXPECT_EQ(texts(*menu), QStringList({"Cameras", "", "Animations"}));
    QMenu* cameras = choose(*menu, "Cameras");
    ASSERT_TRUE(cameras);
    EXPECT_EQ(texts(*cameras), QStringList({"Overview", "Detail", "Top"}));
    EXPECT_THAT(listener.getData(), ElementsAre());

    choose(*cameras, "Top");
    EXPECT_TRUE(waitForAnotherPicture(before));
    EXPECT_THAT(listener.getData(), ElementsAre("Top"));
    waitForRest();
    const QImage top = look();

    ASSERT_TRUE(menu = openContextMenu());
    ASSERT_TRUE(cameras = choose(*menu, "Cameras"));
    choose(*cameras, "Detail");
    EXPECT_TRUE(waitForAnotherPicture(top));
    EXPECT_THAT(listener.getData(), ElementsAre("Top", "Detail"));
}

TEST_F(ViewMenuTest, AnimationsArePausedAndResumed)
{
    const auto animations = view.getWindow()->getSceneManager()->getAnimationManager();
    const auto chooseAnimations = [this](const QString& text) {
        QMenu* menu = openContextMenu();
        ASSERT_TRUE(menu);
        QMenu* entries = choose(*menu, "Animations");
        ASSERT_TRUE(entries);
        choose(*entries, text);
    };
    chooseAnimations("Pause");
    EXPECT_TRUE(waitFor([&] { return animations->paused(); }));
    chooseAnimations("Resume");
    EXPECT_TRUE(waitFor([&] { return !animations->paused(); }));
}

TEST_F(ViewMenuTest, TheStatisticsAreSwitchedOnAndOff)
{
    const QRect box(10, 10, 150, 200);
    const QImage before = look().copy(box);
    chooseFromBar("&View", "&Statistics");
    EXPECT_TRUE(waitFor([&] { return difference(look().copy(box), before) > 0.5; }));
    chooseFromBar("&View", "&Statistics");
    EXPECT_TRUE(waitFor([&] { return look().copy(box) == before; }));
}

TEST_F(ViewMenuTest, ALogoIsChosenShownAndSwitchedOff)
{
    QTemporaryDir folder;
    const QString file = folder.filePath("logo.png");
    QImage logo(60, 30, QImage::Format_RGB32);
    logo.fill(Qt::red);
    ASSERT_TRUE(logo.save(file));
    const QRect corner(view.width() - 70, view.height() - 40, 60, 30);
    const QImage before = look().copy(corner);

    chooseFromBar("&File", "Set &Logo...");
    ASSERT_TRUE(waitFor([] { return QApplication::activeModalWidget() != nullptr; }));
    const QPointer<QWidget> dialog = QApplication::activeModalWidget();
    ASSERT_TRUE(waitFor([&] { return dialog->windowHandle()->isExposed(); }));
    // There may be no window manager that gives it the keyboard.
    send({"windowfocus", QString::number(dialog->winId())});
    send({"type", file});
    EXPECT_TRUE(waitFor([&] {
        if (dialog)
            send({"key", "Return"}); // the first may go to the list of completions
        processEventsFor(100);
        return !dialog;
    }));
    EXPECT_TRUE(waitFor([&] { return look().copy(corner) == logo; }));
    chooseFromBar("&View", "&Logo");
    EXPECT_TRUE(waitFor([&] { return look().copy(corner) == before; }));
}

TEST_F(ViewMenuTest, PresentationModeHasNoContextMenu)
{
    chooseFromBar("&View", "&Presentation Mode");
    waitForRest();
    click(view, view.rect().center(), 3);
    processEventsFor(300);
    EXPECT_EQ(openMenu(), nullptr);
    EXPECT_TRUE(view.findChildren<QMenu*>().isEmpty());
    chooseFromBar("&View", "&Presentation Mode");
    EXPECT_TRUE(openContextMenu());
}

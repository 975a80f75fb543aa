#pragma once

#include "StudioHelpers.h"

#include "engine/core/event/EventManager.h"
#include "engine/scene/Node.h"
#include "engine/scene/SceneManager.h"
#include "qt/QtView.h"
#include "studio/FrameDriver.h"
#include "studio/MainWindow.h"

#include <QAction>
#include <QTest>
#include <QTreeWidget>
#include <QWindow>

#include <gtest/gtest.h>

namespace studiotest {

using namespace halvern;
using namespace halvern::studio;

inline const QString Showcase = HALVERN_STUDIO_DATA "/scenes/showcase.glb";
inline const QString House = HALVERN_TEST_MODELS "/IFC/AC14-FZK-Haus.ifc";

/// How many pixels differ by more than a rounding.
inline int countChanged(const QImage& a, const QImage& b)
{
    int changed = 0;
    for (int y = 0; y < a.height(); ++y)
        for (int x = 0; x < a.width(); ++x) {
            const QRgb p = a.pixel(x, y);
            const QRgb q = b.pixel(x, y);
            changed += std::abs(qRed(p) - qRed(q)) + std::abs(qGreen(p) - qGreen(q)) +
                           std::abs(qBlue(p) - qBlue(q)) >
                       12;
        }
    return changed;
}

/// The studio on a real model, driven by the mouse.
class ShownStudio : public testing::Test
{
protected:
    void open(const QString& file)
    {
        QObject::connect(&window, &MainWindow::opened, [this](const LoadedScene& l) { scene = l.scene; });
        window.resize(1240, 900);
        window.show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(&window));
        loader.load(file);
        ASSERT_TRUE(QTest::qWaitFor([&] { return tree() && tree()->topLevelItemCount() == 1; }, 60'000));
        settle();
    }

    qt::QtView* view() { return window.getView(); }
    QTreeWidget* tree() { return window.findChild<QTreeWidget*>(); }

    QAction* findAction(const QString& text)
    {
        for (QAction* action : window.findChildren<QAction*>())
            if (action->text() == text)
                return action;
        return nullptr;
    }

    QTreeWidgetItem* item(const QString& name)
    {
        return tree()->findItems(name, Qt::MatchExactly | Qt::MatchRecursive).value(0);
    }

    boost::shared_ptr<scene::Node> node(const QString& name)
    {
        return scene.sceneManager->getNodeByID(item(name)->text(1).toStdString());
    }

    /// Waits until all events are delivered and what they ask for is painted.
    void settle()
    {
        int frames = 0;
        const auto connection =
            QObject::connect(window.getFrameDriver(), &FrameDriver::frameShown, [&frames] { ++frames; });
        view()->getEventManager()->waitUntilIdle();
        QCoreApplication::processEvents();
        view()->getEventManager()->waitUntilIdle();
        view()->update();
        EXPECT_TRUE(waitFor([&] { return frames > 0; }));
        QObject::disconnect(connection);
    }

    QImage picture()
    {
        settle();
        return view()->grabFramebuffer();
    }

    /// A click as the window system reports it.
    void click(const QWidget& widget, const QPoint& place, Qt::MouseButton button = Qt::LeftButton)
    {
        QTest::mouseClick(window.windowHandle(), button, Qt::NoModifier, widget.mapTo(&window, place));
    }

    QPoint rowOf(const QString& name)
    {
        tree()->scrollToItem(item(name));
        return tree()->visualItemRect(item(name)).center();
    }

    void select(const QString& name)
    {
        click(*tree()->viewport(), rowOf(name));
        ASSERT_EQ(selection(), QStringList(name));
    }

    QStringList selection()
    {
        QStringList names;
        for (const QTreeWidgetItem* selected : tree()->selectedItems())
            names += selected->text(0);
        return names;
    }

    SceneLoader loader;
    MainWindow window{&loader, false};
    scene::ImportedScene scene;
};

} // namespace studiotest

#pragma once

#include "qt/QtAnimationDock.h"
#include "qt/QtAnimationSlider.h"
#include "tests/qt/FakeAnimations.h"

#include <QAction>
#include <QApplication>
#include <QComboBox>
#include <QMessageBox>
#include <QPushButton>
#include <QSpinBox>
#include <QTest>
#include <QTimer>

#include <gtest/gtest.h>

#include <functional>

namespace halvern::test {

/// Runs an action that may open a modal window, and `use` on that window while it is open. Returns whether
/// there was one.
inline bool withModal(const std::function<void()>& action, const std::function<void(QWidget&)>& use)
{
    bool seen = false;
    QTimer watch; // the window runs an event loop of its own
    QObject::connect(&watch, &QTimer::timeout, [&] {
        QWidget* window = QApplication::activeModalWidget();
        if (!window)
            return;
        watch.stop();
        seen = true;
        use(*window);
    });
    watch.start(1);
    action();
    return seen;
}

/// Answers the message box that an action opens. Returns whether there was one.
inline bool withAnswer(QMessageBox::StandardButton answer, const std::function<void()>& action)
{
    return withModal(action, [&](QWidget& window) {
        auto* box = qobject_cast<QMessageBox*>(&window);
        ASSERT_TRUE(box);
        QTest::mouseClick(box->button(answer), Qt::LeftButton);
    });
}

/// A dock whose parts are open.
class DockProbe : public qt::QtAnimationDock
{
public:
    DockProbe() : QtAnimationDock(nullptr) {}

    using QtAnimationDock::toggleEditing;

    qt::QtAnimationSlider& slider() { return *findChild<qt::QtAnimationSlider*>(); }
    QComboBox& combo() { return *findChild<QComboBox*>(); }
    QSpinBox& currentTime() { return *findChildren<QSpinBox*>().at(0); }
    QSpinBox& length() { return *findChildren<QSpinBox*>().at(1); }

    QAction& action(const QString& text)
    {
        for (QAction* action : findChildren<QAction*>(QString(), Qt::FindDirectChildrenOnly))
            if (action->text() == text)
                return *action;
        qFatal("no action of that text");
    }

    QAction& playAction() { return action("&Pause Animations"); }
    QAction& insertAction() { return action("&Insert Keyframe"); }
    QAction& newAction() { return action("&New Animation"); }
    QAction& deleteKeyAction() { return action("&Delete Keyframe"); }
    QAction& editAction() { return action("&Edit Mode"); }
    QAction& cameraAction() { return action("&Add Camera"); }
    QAction& deleteAction() { return action("&Delete Animation"); }

    QStringList listed()
    {
        QStringList texts;
        for (int i = 0; i < combo().count(); ++i)
            texts += combo().itemText(i);
        return texts;
    }

    /// Which of the four that edit mode may switch are enabled, in the order of toggleEditing().
    std::vector<bool> enabled()
    {
        return {currentTime().isEnabled(), length().isEnabled(), insertAction().isEnabled(),
                deleteKeyAction().isEnabled()};
    }

    void callSlot(const char* name) { QMetaObject::invokeMethod(this, name, Qt::DirectConnection); }
    void callSlot(const char* name, int argument)
    {
        QMetaObject::invokeMethod(this, name, Qt::DirectConnection, Q_ARG(int, argument));
    }
};

/// Whether an icon is the picture of that resource.
inline bool isIcon(const QIcon& icon, const QString& path)
{
    const QImage picture = icon.pixmap(48).toImage();
    return !picture.isNull() && picture == QIcon(path).pixmap(48).toImage();
}

/// A dock with a scene of two animations, "walk" of 10 and "run" of 4 seconds; the first is chosen.
class DockTest : public testing::Test
{
protected:
    DockTest()
    {
        walk = scene->put("walk");
        run = scene->put("run", 4000);
        dock.setSceneManager(scene);
        calls.take();
    }

    const std::vector<bool> all{true, true, true, true};
    const std::vector<bool> none{false, false, false, false};

    Calls calls;
    const boost::shared_ptr<FakeAnimationScene> scene = boost::make_shared<FakeAnimationScene>(calls);
    boost::shared_ptr<FakeAnimation> walk;
    boost::shared_ptr<FakeAnimation> run;
    DockProbe dock;
};

} // namespace halvern::test

/// Makes failures print texts.
inline void PrintTo(const QString& text, std::ostream* out)
{
    *out << '"' << text.toStdString() << '"';
}

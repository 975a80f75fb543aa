#pragma once

#include "qt/QtFXMaterial.h"
#include "tests/support/FakeEffects.h"
#include "tests/support/SynchronousEventManager.h"

#include <QApplication>
#include <QComboBox>
#include <QErrorMessage>
#include <QGridLayout>
#include <QLabel>
#include <QPointer>
#include <QPushButton>
#include <QScrollArea>
#include <QSlider>
#include <QTest>
#include <QTextEdit>
#include <QTimer>

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <ostream>

namespace halvern::test {

/// An editor whose parts are open.
class FXMaterialProbe : public qt::QtFXMaterial
{
public:
    using QtFXMaterial::QtFXMaterial;
    ~FXMaterialProbe() override { QtFXMaterial::setEventManager(nullptr); }

    using QtFXMaterial::changeTechnique;
    using QtFXMaterial::editEffect;
    using QtFXMaterial::getHalvernQtView;
    using QtFXMaterial::reloadEffect;
    using QtFXMaterial::setColorParameter;
    using QtFXMaterial::setSliderParameter;
    using QtFXMaterial::setTextureParameter;
    using QtFXMaterial::updateParameterWidget;

    template <class Child>
    Child& only()
    {
        const auto children = findChildren<Child*>(QString(), Qt::FindDirectChildrenOnly);
        if (children.size() != 1)
            qFatal("not one child of the kind");
        return *children.first();
    }

    QLabel& title() { return only<QLabel>(); }
    QScrollArea& area() { return only<QScrollArea>(); }
    QWidget& container() { return *area().widget(); }
    QGridLayout& grid() { return dynamic_cast<QGridLayout&>(*container().layout()); }

    QWidget* at(int row, int column)
    {
        QLayoutItem* item = grid().itemAtPosition(row, column);
        return item ? item->widget() : nullptr;
    }
    QComboBox& techniques() { return dynamic_cast<QComboBox&>(*at(0, 1)); }
    QSlider& slider(int row) { return dynamic_cast<QSlider&>(*at(row, 1)); }
    QPushButton& color(int row) { return dynamic_cast<QPushButton&>(*at(row, 1)); }
    QLabel& picture(int row) { return *at(row, 1)->findChild<QLabel*>(); }
    QPushButton& fileButton(int row) { return *at(row, 1)->findChild<QPushButton*>(); }
    QString label(int row) { return dynamic_cast<QLabel&>(*at(row, 0)).text(); }

    QPushButton& button(const QString& text)
    {
        for (QPushButton* button : findChildren<QPushButton*>(QString(), Qt::FindDirectChildrenOnly))
            if (button->text() == text)
                return *button;
        qFatal("no button of that text");
    }

    /// The rows of parameters that have an editor.
    std::vector<int> rows()
    {
        std::vector<int> found;
        for (int row = 1; row < grid().rowCount(); ++row)
            if (at(row, 1))
                found.push_back(row);
        return found;
    }

    /// The message that is shown; null when there is none.
    QString error()
    {
        const auto* box = findChild<QErrorMessage*>();
        return box && box->isVisible() ? box->findChild<QTextEdit*>()->toPlainText() : QString();
    }

    /// Closes the message that is shown.
    void acceptError()
    {
        QTest::mouseClick(findChild<QErrorMessage*>()->findChild<QPushButton*>(), Qt::LeftButton);
    }

    /// Has it painted, hidden or not.
    void paint() { grab(); }

    void open()
    {
        resize(400, 500);
        show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(this));
        QCoreApplication::processEvents();
    }
};

/// Delivers events in the sender's thread, and notes in a log what is sent.
class LoggedEvents : public SynchronousEventManager
{
public:
    explicit LoggedEvents(QStringList& log) : log(log) {}

    using SynchronousEventManager::triggerEvent;

    void triggerEvent(const core::event::Event& event) override
    {
        const QString type = QString::fromStdString(event.getEventType().getName());
        if (type == "ChangeMaterialParameter")
            log += "send " + QString::fromStdString(event.getEventData().getData());
        SynchronousEventManager::triggerEvent(event);
    }

private:
    QStringList& log;
};

template <class Condition>
[[nodiscard]] bool waitFor(Condition condition)
{
    return QTest::qWaitFor(condition, 30000);
}

/// Runs an action that may open a modal window, and `use` on that window while it is open. Returns whether
/// there was one.
inline bool withDialog(const std::function<void()>& action, const std::function<void(QWidget&)>& use)
{
    bool seen = false;
    QTimer watch; // the window runs an event loop of its own
    QObject::connect(&watch, &QTimer::timeout, [&] {
        QWidget* window = QApplication::activeModalWidget();
        if (!window || !window->isVisible())
            return;
        watch.stop();
        seen = true;
        use(*window);
    });
    watch.start(1);
    action();
    return seen;
}

/// An editor with an event manager; materials and the parameters in them note their calls in the log.
class FXMaterialTest : public testing::Test
{
protected:
    using ParameterPtr = boost::shared_ptr<FakeParameter>;
    using MaterialPtr = boost::shared_ptr<FakeMaterial>;

    FXMaterialTest()
    {
        editor->setEventManager(events);
        editor->setFXManager(manager);
    }

    /// Adds a parameter to the material "m".
    ParameterPtr add(std::string name, AnyValues values, Annotations annotations = {},
                     std::string type = "float")
    {
        material->parameters.push_back(
            boost::make_shared<FakeParameter>(log, name, values, annotations, type));
        return material->parameters.back();
    }
    ParameterPtr addSlider(std::string name, AnyValues values, Annotations annotations = {})
    {
        annotations["UIWidget"] = text("slider");
        return add(name, values, annotations);
    }
    ParameterPtr addColor(std::string name, AnyValues values)
    {
        return add(name, values, {{"UIWidget", text("color")}});
    }
    ParameterPtr addTexture(std::string name, AnyValues values) { return add(name, values, {}, "texture"); }

    MaterialPtr makeMaterial(std::string id, FakeMaterial::Parameters parameters = {})
    {
        auto made = boost::make_shared<FakeMaterial>(log, id, effect, parameters);
        manager->materials[id] = made;
        return made;
    }

    void show() { editor->setFXMaterial(material); }

    void send(const char* type, const std::string& data) { events->triggerEvent(type, data); }

    /// Sends an event, and has it handled.
    void handle(const char* type, const std::string& data)
    {
        send(type, data);
        editor->paint();
    }

    /// The log since the last take.
    QStringList take() { return std::exchange(log, {}); }

    QStringList log;
    const boost::shared_ptr<LoggedEvents> events = boost::make_shared<LoggedEvents>(log);
    const boost::shared_ptr<FakeFXManager> manager = boost::make_shared<FakeFXManager>(log);
    const boost::shared_ptr<FakeEffect> effect =
        boost::make_shared<FakeEffect>("fx", std::vector<std::string>{"plain", "rich"});
    const MaterialPtr material = makeMaterial("m");
    std::unique_ptr<FXMaterialProbe> editor = std::make_unique<FXMaterialProbe>();
};

} // namespace halvern::test

/// Makes failures print texts.
inline void PrintTo(const QString& text, std::ostream* out)
{
    *out << '"' << text.toStdString() << '"';
}

#pragma once

#include "qt/PropertiesView.h"
#include "qt/QtPropertiesItemDelegate.h"
#include "tests/qt/PropertiesStage.h"

#include <QDoubleSpinBox>

#include <gtest/gtest.h>

namespace halvern::test {

/// An open window with a tree over a stage that shows the node "a".
class TypingTest : public testing::Test
{
protected:
    TypingTest()
    {
        addLight(*stage.a, "sun", 1, 0, 0);
        addCamera(*stage.a, "eye", 0.126F, 100, 45);
        moveTo(*stage.a, 1, 2, 3);
        moveTo(*stage.b, 100, 200, 300);
        addLight(*stage.b, "lamp", 0, 1, 0);
        view.setModel(stage.model.get());
        view.setItemDelegate(&delegate);
        stage.select("a");
        view.expandAll();
        view.resize(400, 600);
        view.show();
        view.activateWindow();
        EXPECT_TRUE(QTest::qWaitForWindowActive(&view));
    }
    ~TypingTest() override { view.setModel(nullptr); }

    template <class Editor = QWidget>
    Editor* open(const QModelIndex& index)
    {
        view.setCurrentIndex(index);
        view.edit(index);
        QWidget* editor = view.indexWidget(index);
        return qobject_cast<Editor*>(editor);
    }

    /// Opens a cell and types, one key at a time, while the scene runs in between.
    QDoubleSpinBox* type(const QModelIndex& index, const char* keys)
    {
        auto* spinBox = open<QDoubleSpinBox>(index);
        if (!spinBox)
            return nullptr;
        spinBox->selectAll();
        for (const char* key = keys; *key; ++key) {
            QTest::keyClick(spinBox, *key);
            stage.scene->update();
            QCoreApplication::processEvents();
        }
        return spinBox;
    }

    bool isOpen(const QModelIndex& index) { return view.indexWidget(index) != nullptr; }

    /// Runs what an editor left to the event loop.
    void settle()
    {
        QCoreApplication::processEvents();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        QCoreApplication::processEvents();
    }

    PropertiesStage stage;
    qt::QtPropertiesItemDelegate delegate;
    qt::PropertiesView view;
};

} // namespace halvern::test

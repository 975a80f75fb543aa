#pragma once

#include "qt/QtProperties.h"
#include "qt/QtPropertiesModel.h"
#include "tests/qt/PropertiesStage.h"

#include <QTabWidget>
#include <QTreeView>

namespace halvern::test {

/// A panel whose parts are at hand.
class PropertiesPanel : public qt::QtProperties
{
public:
    QTabWidget& tabs() { return *findChild<QTabWidget*>(); }
    QTreeView& view(int tab) { return *qobject_cast<QTreeView*>(tabs().widget(tab)); }
    qt::QtPropertiesModel& model() { return *qobject_cast<qt::QtPropertiesModel*>(view(0).model()); }

    /// Shows the panel with a tab in front, as the active window.
    void open(int tab)
    {
        tabs().setCurrentIndex(tab);
        resize(400, 700);
        show();
        activateWindow();
        (void)QTest::qWaitForWindowActive(this);
    }

    /// The open editor of a cell, or null.
    template <class Editor = QWidget>
    Editor* edit(int tab, const QModelIndex& index)
    {
        view(tab).setCurrentIndex(index);
        if (!view(tab).indexWidget(index))
            view(tab).edit(index);
        return qobject_cast<Editor*>(view(tab).indexWidget(index));
    }
};

} // namespace halvern::test

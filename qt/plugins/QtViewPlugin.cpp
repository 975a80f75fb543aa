#include "qt/plugins/QtViewPlugin.h"

#include "qt/QtView.h"

namespace halvern::qt {

QtViewPlugin::QtViewPlugin(QObject* parent) : WidgetPlugin(parent) {}

QWidget* QtViewPlugin::createWidget(QWidget* parent)
{
    auto* view = new QtView(parent, "QtViewPlugin");
    // Designer crashes when what it drags is not among its parent's children. A view takes no parent, so it
    // moves in as soon as Designer, the only one that initialises plugins, gives it its name.
    if (parent && isInitialized()) {
        connect(view, &QObject::objectNameChanged, parent, [view, parent] {
            if (!view->parent())
                view->setParent(parent);
        });
    }
    return view;
}

const WidgetPlugin::Texts& QtViewPlugin::texts() const
{
    static const Texts texts{
        "QtView",
        "Halvern Rendering View",
        "Halvern Rendering View as a QtWidget.",
        "Halvern Rendering View",
        "Displays a View of the current Halvern Scene.",
        false,
    };
    return texts;
}

} // namespace halvern::qt

#include "qt/plugins/QtViewPlugin.h"

#include "qt/QtView.h"

namespace halvern::qt {

QtViewPlugin::QtViewPlugin(QObject* parent) : WidgetPlugin(parent) {}

QWidget* QtViewPlugin::createWidget(QWidget* parent)
{
    return new QtView(parent, "QtViewPlugin");
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

#include "qt/plugins/QtPropertiesPlugin.h"

#include "qt/QtProperties.h"

namespace halvern::qt {

QtPropertiesPlugin::QtPropertiesPlugin(QObject* parent) : WidgetPlugin(parent) {}

QWidget* QtPropertiesPlugin::createWidget(QWidget* parent)
{
    return new QtProperties(parent);
}

const WidgetPlugin::Texts& QtPropertiesPlugin::texts() const
{
    static const Texts texts{
        "QtProperties",
        "Halvern Properties view",
        "Halvern Properties view as a QtWidget.",
        "Halvern Properties",
        "Displays information about the currently selected item.",
        false,
    };
    return texts;
}

} // namespace halvern::qt

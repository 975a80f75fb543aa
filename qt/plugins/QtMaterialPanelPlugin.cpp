#include "qt/plugins/QtMaterialPanelPlugin.h"

#include "qt/QtMaterialPanel.h"

namespace halvern::qt {

QtMaterialPanelPlugin::QtMaterialPanelPlugin(QObject* parent) : WidgetPlugin(parent) {}

QWidget* QtMaterialPanelPlugin::createWidget(QWidget* parent)
{
    return new QtMaterialPanel(parent);
}

const WidgetPlugin::Texts& QtMaterialPanelPlugin::texts() const
{
    static const Texts texts{
        "QtMaterialPanel",        "Halvern Material Panel",       "Halvern Material Panel.",
        "Halvern Material Panel", "Displays the material panel.", true,
    };
    return texts;
}

} // namespace halvern::qt

#include "qt/plugins/QtFXMaterialPlugin.h"

#include "qt/QtFXMaterial.h"

namespace halvern::qt {

QtFXMaterialPlugin::QtFXMaterialPlugin(QObject* parent) : WidgetPlugin(parent) {}

QWidget* QtFXMaterialPlugin::createWidget(QWidget* parent)
{
    return new QtFXMaterial(parent);
}

const WidgetPlugin::Texts& QtFXMaterialPlugin::texts() const
{
    static const Texts texts{
        "QtFXMaterial",
        "Halvern FXMaterial",
        "Halvern FXMaterial.",
        "Halvern FXMaterial",
        "Displays information on a FXMaterial.",
        true,
    };
    return texts;
}

} // namespace halvern::qt

#include "qt/plugins/QtRenderingPlugins.h"

#include "qt/plugins/QtFXMaterialPlugin.h"
#include "qt/plugins/QtMaterialPanelPlugin.h"
#include "qt/plugins/QtPropertiesPlugin.h"
#include "qt/plugins/QtScenePlugin.h"
#include "qt/plugins/QtViewPlugin.h"

using namespace halvern::qt;

QtRenderingPlugins::QtRenderingPlugins(QObject* parent) :
    QObject(parent),
    plugins{
        new QtViewPlugin(this),       new QtFXMaterialPlugin(this),    new QtScenePlugin(this),
        new QtPropertiesPlugin(this), new QtMaterialPanelPlugin(this),
    }
{}

QList<QDesignerCustomWidgetInterface*> QtRenderingPlugins::customWidgets() const
{
    return plugins;
}

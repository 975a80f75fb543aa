#include "qt/plugins/QtScenePlugin.h"

#include "qt/QtScene.h"

namespace halvern::qt {

QtScenePlugin::QtScenePlugin(QObject* parent) : WidgetPlugin(parent) {}

QWidget* QtScenePlugin::createWidget(QWidget* parent)
{
    return new QtScene(parent);
}

const WidgetPlugin::Texts& QtScenePlugin::texts() const
{
    static const Texts texts{
        "QtScene",
        "Halvern Scenegraph tree view",
        "Halvern Scenegraph tree view as a QtWidget.",
        "Halvern Scenegraph",
        "Displays the scenegraph for a SceneManager.",
        false,
    };
    return texts;
}

} // namespace halvern::qt

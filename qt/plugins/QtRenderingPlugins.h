#pragma once

#include "engine/Export.h"

#include <QList>
#include <QObject>
#include <QtUiPlugin/QDesignerCustomWidgetCollectionInterface>

/// What Qt Designer and QUiLoader find in the library: one plugin per widget that can be put on a form. No
/// program includes this header; QPluginLoader makes the object.
class HALVERN_QT_API QtRenderingPlugins : public QObject, public QDesignerCustomWidgetCollectionInterface
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID "org.qt-project.Qt.QDesignerCustomWidgetCollectionInterface")
    Q_INTERFACES(QDesignerCustomWidgetCollectionInterface)

public:
    /// Makes the plugins, which it owns.
    explicit QtRenderingPlugins(QObject* parent = nullptr);

    /// Those of QtView, QtFXMaterial, QtScene, QtProperties and QtMaterialPanel, in this order: the same
    /// objects each time.
    QList<QDesignerCustomWidgetInterface*> customWidgets() const override;

private:
    QList<QDesignerCustomWidgetInterface*> plugins;
};

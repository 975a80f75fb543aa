#pragma once

#include "qt/plugins/WidgetPlugin.h"

namespace halvern::qt {

/// Offers QtScene to forms.
class HALVERN_QT_API QtScenePlugin : public WidgetPlugin
{
    Q_OBJECT
    Q_INTERFACES(QDesignerCustomWidgetInterface)

public:
    explicit QtScenePlugin(QObject* parent = nullptr);

    QWidget* createWidget(QWidget* parent) override;

protected:
    const Texts& texts() const override;
};

} // namespace halvern::qt

#pragma once

#include "engine/Export.h"

#include <QObject>
#include <QtUiPlugin/QDesignerCustomWidgetInterface>

namespace halvern::qt {

/// What the plugins have in common: fixed texts, and a flag that goes up once.
///
/// It has no meta-object of its own: each plugin's is derived from QObject's.
class HALVERN_QT_API WidgetPlugin : public QObject, public QDesignerCustomWidgetInterface
{
public:
    QString name() const override;
    QString group() const override;
    QString toolTip() const override;
    QString whatsThis() const override;
    QString includeFile() const override;
    QIcon icon() const override;
    bool isContainer() const override;
    bool isInitialized() const override;

    /// The editor is not used and may be null.
    void initialize(QDesignerFormEditorInterface* formEditor) override;

    /// The widget as Designer puts it on a form. Its texts are not those of toolTip() and whatsThis(), on
    /// purpose.
    QString domXml() const override;

protected:
    /// The texts of one plugin.
    struct Texts
    {
        const char* className; // without the namespace, which is also the name of the header
        const char* toolTip;
        const char* whatsThis;
        const char* formToolTip;
        const char* formWhatsThis;
        bool isContainer;
    };

    explicit WidgetPlugin(QObject* parent);

    virtual const Texts& texts() const = 0;

private:
    bool initialized = false;
};

} // namespace halvern::qt

#include "qt/plugins/WidgetPlugin.h"

#include <QIcon>

namespace halvern::qt {

namespace {

// The object name keeps its dots; whoever compiles the form replaces them.
const char FormXml[] = R"(<widget class="halvern::qt::%1" name="halvern.qt.%1">
 <property name="geometry">
  <rect>
   <x>0</x>
   <y>0</y>
   <width>100</width>
   <height>100</height>
  </rect>
 </property>
 <property name="toolTip" >
  <string>%2</string>
 </property>
 <property name="whatsThis" >
  <string>%3</string>
 </property>
</widget>
)";

} // namespace

WidgetPlugin::WidgetPlugin(QObject* parent) : QObject(parent) {}

QString WidgetPlugin::name() const
{
    return QString("halvern::qt::%1").arg(texts().className);
}

QString WidgetPlugin::group() const
{
    return "halvern.qt";
}

QString WidgetPlugin::toolTip() const
{
    return texts().toolTip;
}

QString WidgetPlugin::whatsThis() const
{
    return texts().whatsThis;
}

QString WidgetPlugin::includeFile() const
{
    return QString("qt/%1.h").arg(texts().className);
}

QIcon WidgetPlugin::icon() const
{
    return QIcon();
}

bool WidgetPlugin::isContainer() const
{
    return texts().isContainer;
}

bool WidgetPlugin::isInitialized() const
{
    return initialized;
}

void WidgetPlugin::initialize(QDesignerFormEditorInterface* /*formEditor*/)
{
    initialized = true;
}

QString WidgetPlugin::domXml() const
{
    return QString(FormXml).arg(texts().className, texts().formToolTip, texts().formWhatsThis);
}

} // namespace halvern::qt

#include <QIcon>
#include <QPluginLoader>
#include <QPointer>
#include <QTest>
#include <QWidget>
#include <QtUiPlugin/QDesignerCustomWidgetCollectionInterface>

#include <gtest/gtest.h>

#include <memory>
#include <string>

namespace {

struct Expected
{
    const char* widget;
    const char* toolTip;
    const char* whatsThis;
    bool isContainer;
    const char* formToolTip;
    const char* formWhatsThis;
    bool takesParent;
};

const Expected expectedPlugins[] = {
    {"QtView", "Halvern Rendering View", "Halvern Rendering View as a QtWidget.", false,
     "Halvern Rendering View", "Displays a View of the current Halvern Scene.", false},
    {"QtFXMaterial", "Halvern FXMaterial", "Halvern FXMaterial.", true, "Halvern FXMaterial",
     "Displays information on a FXMaterial.", true},
    {"QtScene", "Halvern Scenegraph tree view", "Halvern Scenegraph tree view as a QtWidget.", false,
     "Halvern Scenegraph", "Displays the scenegraph for a SceneManager.", true},
    {"QtProperties", "Halvern Properties view", "Halvern Properties view as a QtWidget.", false,
     "Halvern Properties", "Displays information about the currently selected item.", true},
    {"QtMaterialPanel", "Halvern Material Panel", "Halvern Material Panel.", true, "Halvern Material Panel",
     "Displays the material panel.", true},
};

void PrintTo(const Expected& expected, std::ostream* stream)
{
    *stream << expected.widget;
}

std::string formXml(const Expected& expected)
{
    const std::string name = expected.widget;
    return "<widget class=\"halvern::qt::" + name + "\" name=\"halvern.qt." + name +
           "\">\n"
           " <property name=\"geometry\">\n"
           "  <rect>\n"
           "   <x>0</x>\n"
           "   <y>0</y>\n"
           "   <width>100</width>\n"
           "   <height>100</height>\n"
           "  </rect>\n"
           " </property>\n"
           " <property name=\"toolTip\" >\n"
           "  <string>" +
           expected.formToolTip +
           "</string>\n"
           " </property>\n"
           " <property name=\"whatsThis\" >\n"
           "  <string>" +
           expected.formWhatsThis +
           "</string>\n"
           " </property>\n"
           "</widget>\n";
}

/// One plugin as Designer gets it.
class WidgetPluginTest : public testing::TestWithParam<Expected>
{
protected:
    void SetUp() override
    {
        QPluginLoader loader(HALVERN_QT_LIBRARY);
        const auto* collection = qobject_cast<QDesignerCustomWidgetCollectionInterface*>(loader.instance());
        ASSERT_TRUE(collection) << qPrintable(loader.errorString());
        for (QDesignerCustomWidgetInterface* candidate : collection->customWidgets()) {
            if (candidate->name() == className)
                plugin = candidate;
        }
        ASSERT_TRUE(plugin);
    }

    const Expected& expected = GetParam();
    const QString className = QString("halvern::qt::") + expected.widget;
    QDesignerCustomWidgetInterface* plugin = nullptr;
};

} // namespace

TEST_P(WidgetPluginTest, TextsAreTheFixedOnes)
{
    EXPECT_EQ(plugin->group(), "halvern.qt");
    EXPECT_EQ(plugin->includeFile(), QString("qt/%1.h").arg(expected.widget));
    EXPECT_EQ(plugin->toolTip(), expected.toolTip);
    EXPECT_EQ(plugin->whatsThis(), expected.whatsThis);
    EXPECT_EQ(plugin->isContainer(), expected.isContainer);
    EXPECT_TRUE(plugin->icon().isNull());
    EXPECT_EQ(plugin->codeTemplate(), QString());
}

TEST_P(WidgetPluginTest, FormXmlIsTheFixedOneWithItsDotsBlanksAndLastNewline)
{
    EXPECT_EQ(plugin->domXml().toStdString(), formXml(expected));
}

TEST_P(WidgetPluginTest, PluginIsAnObjectThatAnswersForItsInterface)
{
    auto* object = dynamic_cast<QObject*>(plugin);
    ASSERT_TRUE(object);
    EXPECT_EQ(object->metaObject()->className(), className + "Plugin");
    EXPECT_STREQ(object->metaObject()->superClass()->className(), "QObject");
    EXPECT_EQ(qobject_cast<QDesignerCustomWidgetInterface*>(object), plugin);
}

TEST_P(WidgetPluginTest, WidgetIsShownClosedAndDestroyed)
{
    const std::unique_ptr<QWidget> widget(plugin->createWidget(nullptr));
    ASSERT_TRUE(widget);
    EXPECT_EQ(widget->metaObject()->className(), className);
    EXPECT_FALSE(widget->parent());
    widget->show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(widget.get()));
    EXPECT_TRUE(widget->close());
    EXPECT_FALSE(widget->isVisible());
}

TEST_P(WidgetPluginTest, WidgetBelongsToItsParentUnlessItIsTheView)
{
    auto parent = std::make_unique<QWidget>();
    QPointer<QWidget> widget = plugin->createWidget(parent.get());
    EXPECT_EQ(widget->parentWidget() == parent.get(), expected.takesParent);
    parent.reset();
    EXPECT_EQ(widget.isNull(), expected.takesParent);
    delete widget;
}

INSTANTIATE_TEST_SUITE_P(Each, WidgetPluginTest, testing::ValuesIn(expectedPlugins),
                         [](const auto& info) { return std::string(info.param.widget); });

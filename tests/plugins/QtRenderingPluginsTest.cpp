#include "qt/plugins/QtRenderingPlugins.h"
#include "engine/window/Window.h"
#include "qt/QtView.h"
#include "qt/plugins/QtFXMaterialPlugin.h"
#include "qt/plugins/QtMaterialPanelPlugin.h"
#include "qt/plugins/QtPropertiesPlugin.h"
#include "qt/plugins/QtScenePlugin.h"
#include "qt/plugins/QtViewPlugin.h"

#include <QJsonObject>
#include <QLibrary>
#include <QPluginLoader>
#include <QPointer>
#include <QTest>
#include <QtUiPlugin/QDesignerCustomWidgetInterface>

#include <gtest/gtest.h>

#include <memory>
#include <type_traits>

using namespace halvern::qt;

namespace {

class QtRenderingPluginsTest : public testing::Test
{
protected:
    QList<QDesignerCustomWidgetInterface*> plugins()
    {
        const auto* collection = qobject_cast<QDesignerCustomWidgetCollectionInterface*>(loader.instance());
        return collection ? collection->customWidgets() : QList<QDesignerCustomWidgetInterface*>();
    }

    QPluginLoader loader{HALVERN_QT_LIBRARY};
};

} // namespace

TEST_F(QtRenderingPluginsTest, MetadataIsThatOfACollection)
{
    const QJsonObject data = loader.metaData();
    EXPECT_EQ(data["IID"].toString(), "org.qt-project.Qt.QDesignerCustomWidgetCollectionInterface");
    EXPECT_EQ(data["className"].toString(), "QtRenderingPlugins");
    EXPECT_EQ(data["version"].toInt(), QT_VERSION & 0xffff00);
    EXPECT_TRUE(data["MetaData"].toObject().isEmpty());
#ifdef QT_NO_DEBUG
    EXPECT_FALSE(data["debug"].toBool(true));
#endif
}

TEST_F(QtRenderingPluginsTest, InstanceIsOneParentlessCollection)
{
    QObject* instance = loader.instance();
    ASSERT_TRUE(instance) << qPrintable(loader.errorString());
    EXPECT_STREQ(instance->metaObject()->className(), "QtRenderingPlugins");
    EXPECT_FALSE(instance->parent());
    EXPECT_EQ(QPluginLoader(HALVERN_QT_LIBRARY).instance(), instance);
}

TEST_F(QtRenderingPluginsTest, EntryPointsAreExportedAndMakeTheCollectionOnce)
{
    QLibrary library(HALVERN_QT_LIBRARY);
    const auto instance = reinterpret_cast<QObject* (*)()>(library.resolve("qt_plugin_instance"));
    const auto metadata = reinterpret_cast<const char* (*)()>(library.resolve("qt_plugin_query_metadata"));
    ASSERT_TRUE(instance);
    ASSERT_TRUE(metadata);
    EXPECT_EQ(QByteArray(metadata(), 12), "QTMETADATA !");

    const QPointer<QObject> collection = instance();
    EXPECT_EQ(collection, loader.instance());
    EXPECT_EQ(instance(), collection);
    delete collection;
    EXPECT_TRUE(qobject_cast<QDesignerCustomWidgetCollectionInterface*>(instance())) << "a new one";
}

TEST_F(QtRenderingPluginsTest, PluginsDieWithTheCollection)
{
    auto collection = std::make_unique<QtRenderingPlugins>();
    const QPointer<QObject> plugin = collection->children().first();
    collection.reset();
    EXPECT_FALSE(plugin);
}

TEST_F(QtRenderingPluginsTest, PluginsAreChildrenOfTheCollectionInTheirOrder)
{
    const auto plugins = this->plugins();
    const QObjectList children = loader.instance()->children();
    ASSERT_EQ(plugins.size(), 5);
    ASSERT_EQ(children.size(), 5);
    QStringList names;
    for (int i = 0; i < 5; ++i) {
        EXPECT_EQ(dynamic_cast<QObject*>(plugins[i]), children[i]) << i;
        names += plugins[i]->name();
    }
    EXPECT_EQ(names.join(' '), "halvern::qt::QtView halvern::qt::QtFXMaterial halvern::qt::QtScene "
                               "halvern::qt::QtProperties halvern::qt::QtMaterialPanel");
    EXPECT_EQ(this->plugins(), plugins);
}

TEST_F(QtRenderingPluginsTest, InitializeRaisesThePluginsFlagForGoodAndNeedsNoEditor)
{
    const QtRenderingPlugins collection;
    for (QDesignerCustomWidgetInterface* plugin : collection.customWidgets()) {
        EXPECT_FALSE(plugin->isInitialized());
        plugin->initialize(nullptr);
        EXPECT_TRUE(plugin->isInitialized());
        plugin->initialize(reinterpret_cast<QDesignerFormEditorInterface*>(1)); // which nobody looks into
        EXPECT_TRUE(plugin->isInitialized());
    }
}

template <class Plugin>
constexpr bool takesAnOptionalParent()
{
    return std::is_default_constructible_v<Plugin> && std::is_constructible_v<Plugin, QObject*>;
}

TEST_F(QtRenderingPluginsTest, ParentsAreOptional)
{
    EXPECT_TRUE(takesAnOptionalParent<QtRenderingPlugins>());
    EXPECT_TRUE(takesAnOptionalParent<QtViewPlugin>());
    EXPECT_TRUE(takesAnOptionalParent<QtFXMaterialPlugin>());
    EXPECT_TRUE(takesAnOptionalParent<QtScenePlugin>());
    EXPECT_TRUE(takesAnOptionalParent<QtPropertiesPlugin>());
    EXPECT_TRUE(takesAnOptionalParent<QtMaterialPanelPlugin>());
}

TEST_F(QtRenderingPluginsTest, ViewMovesIntoTheFormWhenDesignerNamesIt)
{
    const QtRenderingPlugins collection;
    QDesignerCustomWidgetInterface* plugin = collection.customWidgets().first();
    QWidget form;
    QWidget layout;
    const std::unique_ptr<QWidget> outside(plugin->createWidget(&form));
    outside->setObjectName("made_without_designer");
    EXPECT_FALSE(outside->parent());

    plugin->initialize(nullptr);
    QWidget* view = plugin->createWidget(&form);
    EXPECT_FALSE(view->parent());
    view->setObjectName("view");
    EXPECT_EQ(view->parent(), &form);
    view->setParent(&layout);
    view->setObjectName("renamed");
    EXPECT_EQ(view->parent(), &layout);
}

TEST_F(QtRenderingPluginsTest, ViewKeepsItsSizeHintWhateverSizeItsXmlGives)
{
    const std::unique_ptr<QWidget> view(plugins().value(0)->createWidget(nullptr));
    EXPECT_EQ(view->sizeHint(), QSize(400, 400));
}

TEST_F(QtRenderingPluginsTest, ViewIsNamedAfterItsPlugin)
{
    const std::unique_ptr<QWidget> widget(plugins().value(0)->createWidget(nullptr));
    auto* view = qobject_cast<QtView*>(widget.get());
    ASSERT_TRUE(view);
    view->show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(view));
    if (qgetenv("QT_XCB_GL_INTEGRATION") == "none") {
        EXPECT_FALSE(view->isValid());
    }
    if (!view->isValid())
        GTEST_SKIP() << "there is no OpenGL";
    ASSERT_TRUE(QTest::qWaitFor([&] { return bool(view->getWindow()); }));
    EXPECT_EQ(view->getWindow()->getName(), "QtViewPlugin::window");
}

#include "qt/plugins/QtRenderingPlugins.h"
#include "ui_widgets.h"

#include <QBuffer>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>
#include <QUiLoader>
#include <QVBoxLayout>
#include <QtUiPlugin/QDesignerCustomWidgetInterface>

#include <gtest/gtest.h>

#include <memory>

using namespace halvern::qt;

namespace {

const char* const widgetClasses[] = {"halvern::qt::QtView", "halvern::qt::QtFXMaterial",
                                     "halvern::qt::QtScene", "halvern::qt::QtProperties",
                                     "halvern::qt::QtMaterialPanel"};

/// A loader that knows the plugins of the library, and no others.
class FormTest : public testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(QFile::link(HALVERN_QT_LIBRARY, folder.filePath("libhalvern_qt.so")));
        loader.addPluginPath(folder.path());
    }

    std::unique_ptr<QWidget> load(QIODevice& form)
    {
        form.open(QIODevice::ReadOnly);
        return std::unique_ptr<QWidget>(loader.load(&form));
    }

    static void showAndClose(QWidget& widget)
    {
        widget.show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(&widget));
        QCoreApplication::processEvents();
        EXPECT_TRUE(widget.close());
    }

    QTemporaryDir folder;
    QUiLoader loader;
};

/// All widgets of the form as it was saved in Designer, each in its layout and with its texts. The names
/// begin with the given prefix.
void expectAll(QWidget& form, const QString& prefix)
{
    EXPECT_TRUE(form.findChild<QtView*>(prefix + "QtView"));
    EXPECT_TRUE(form.findChild<QtFXMaterial*>(prefix + "QtFXMaterial"));
    EXPECT_TRUE(form.findChild<QtProperties*>(prefix + "QtProperties"));
    EXPECT_TRUE(form.findChild<QtMaterialPanel*>(prefix + "QtMaterialPanel"));
    EXPECT_EQ(form.layout()->count(), 5);
    const auto* tree = form.findChild<QtScene*>(prefix + "QtScene");
    ASSERT_TRUE(tree);
    EXPECT_EQ(tree->toolTip(), "Halvern Scenegraph");
    EXPECT_EQ(tree->whatsThis(), "Displays the scenegraph for a SceneManager.");
}

} // namespace

TEST_F(FormTest, LoaderOffersTheFiveWidgets)
{
    const QStringList available = loader.availableWidgets();
    for (const char* name : widgetClasses)
        EXPECT_TRUE(available.contains(name)) << name;
}

TEST_F(FormTest, LoaderCreatesShowsAndDestroysEachWidget)
{
    for (const char* name : widgetClasses) {
        const std::unique_ptr<QWidget> widget(loader.createWidget(name, nullptr, "some_name"));
        ASSERT_TRUE(widget) << name;
        EXPECT_STREQ(widget->metaObject()->className(), name);
        EXPECT_EQ(widget->objectName(), "some_name");
        showAndClose(*widget);
    }
}

TEST_F(FormTest, LoaderMakesTheWidgetOfEachPluginsXml)
{
    const QtRenderingPlugins collection;
    for (const QDesignerCustomWidgetInterface* plugin : collection.customWidgets()) {
        QByteArray text = "<ui version=\"4.0\">" + plugin->domXml().toUtf8() + "</ui>";
        QBuffer buffer(&text);
        const auto widget = load(buffer);
        ASSERT_TRUE(widget) << qPrintable(loader.errorString());
        EXPECT_EQ(widget->metaObject()->className(), plugin->name());
        EXPECT_EQ(widget->objectName(), plugin->name().replace("::", "."));
        EXPECT_EQ(widget->geometry(), QRect(0, 0, 100, 100));
        EXPECT_TRUE(widget->toolTip().startsWith("Halvern "));
        EXPECT_TRUE(widget->whatsThis().startsWith("Displays "));
    }
}

TEST_F(FormTest, LoadedFormHoldsAllWidgetsWithTheDotsInTheirNames)
{
    QFile file(HALVERN_TEST_FORM);
    const auto form = load(file);
    ASSERT_TRUE(form) << qPrintable(loader.errorString());
    expectAll(*form, "halvern.qt.");
    showAndClose(*form);
}

TEST_F(FormTest, CompiledFormHoldsAllWidgetsWithUnderscoresInTheirNames)
{
    QWidget form;
    Ui::Widgets ui;
    ui.setupUi(&form);
    expectAll(form, "halvern_qt_");
    EXPECT_EQ(ui.halvern_qt_QtView->metaObject(), &QtView::staticMetaObject);
    showAndClose(form);
}

TEST_F(FormTest, ViewWithoutALayoutStaysOutsideTheForm)
{
    QByteArray text = "<ui version=\"4.0\"><widget class=\"QWidget\" name=\"form\">"
                      "<widget class=\"halvern::qt::QtView\" name=\"view\"/>"
                      "<widget class=\"halvern::qt::QtScene\" name=\"scene\"/></widget></ui>";
    QBuffer buffer(&text);
    const auto form = load(buffer);
    ASSERT_TRUE(form);
    EXPECT_TRUE(form->findChild<QtScene*>("scene"));
    EXPECT_FALSE(form->findChild<QtView*>("view"));
    for (QWidget* widget : QApplication::topLevelWidgets()) {
        if (widget->objectName() == "view")
            delete widget;
    }
}

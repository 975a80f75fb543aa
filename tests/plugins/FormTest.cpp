#include "ui_widgets.h"

#include <QBuffer>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>
#include <QUiLoader>
#include <QVBoxLayout>

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

/// The widgets of the form, all in its layout.
void expectAll(QWidget& form)
{
    EXPECT_TRUE(form.findChild<QtView*>("Halvern_Rendering_QtView"));
    EXPECT_TRUE(form.findChild<QtFXMaterial*>("material"));
    EXPECT_TRUE(form.findChild<QtScene*>("scene"));
    EXPECT_TRUE(form.findChild<QtProperties*>("properties"));
    EXPECT_TRUE(form.findChild<QtMaterialPanel*>("materials"));
    EXPECT_EQ(form.layout()->count(), 5);
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

TEST_F(FormTest, LoadedFormHoldsAllWidgets)
{
    QFile file(HALVERN_TEST_FORM);
    const auto form = load(file);
    ASSERT_TRUE(form) << qPrintable(loader.errorString());
    expectAll(*form);
    showAndClose(*form);
}

TEST_F(FormTest, CompiledFormHoldsAllWidgets)
{
    QWidget form;
    Ui::Widgets ui;
    ui.setupUi(&form);
    expectAll(form);
    EXPECT_EQ(ui.Halvern_Rendering_QtView->metaObject(), &QtView::staticMetaObject);
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

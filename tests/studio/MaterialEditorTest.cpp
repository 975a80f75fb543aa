#include "ShownStudio.h"

#include "engine/scene/Material.h"

#include <QApplication>
#include <QColorDialog>
#include <QComboBox>
#include <QDateTime>
#include <QDockWidget>
#include <QFileDialog>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QScreen>
#include <QScrollArea>
#include <QSlider>
#include <QTemporaryDir>
#include <QTextEdit>
#include <QTimer>

#include <functional>

using namespace studiotest;

namespace {

class MaterialEditorTest : public ShownStudio
{
protected:
    QWidget* editor() { return window.findChild<QDockWidget*>("Halvern_Material")->widget(); }
    QString title() { return editor()->findChild<QLabel*>(QString(), Qt::FindDirectChildrenOnly)->text(); }

    /// The control of a parameter, scrolled into view.
    template <class Control>
    Control* find(const QString& parameter)
    {
        for (auto* control : editor()->findChildren<Control*>())
            if (control->property("FXParameterName") == parameter) {
                editor()->findChild<QScrollArea*>()->ensureWidgetVisible(control);
                return control;
            }
        return nullptr;
    }

    QPushButton* button(const QString& text)
    {
        for (auto* button : editor()->findChildren<QPushButton*>())
            if (button->text() == text)
                return button;
        return nullptr;
    }

    void click(QWidget* control) { ShownStudio::click(*control, control->rect().center()); }

    void edit(const QString& name)
    {
        const std::string id = node(name)->getMaterial(0, 0)->getMaterialID();
        view()->getEventManager()->triggerEvent("MaterialSelected", id);
        ASSERT_TRUE(waitFor([&] { return title().toStdString() == id; }));
        settle();
    }

    /// Gives the node a material of the effect, which is edited.
    void editEffectOf(const QString& name, const QString& file)
    {
        select(name);
        const auto before = node(name)->getMaterial(0, 0);
        window.loadEffect(file);
        ASSERT_TRUE(waitFor([&] { return node(name)->getMaterial(0, 0) != before; }));
        edit(name);
    }

    /// Clicks the button of a parameter and answers the dialog that comes.
    template <class Dialog>
    void answer(const QString& parameter, const std::function<void(Dialog&)>& use)
    {
        QTimer watch;
        QObject::connect(&watch, &QTimer::timeout, [&] {
            if (auto* dialog = qobject_cast<Dialog*>(QApplication::activeModalWidget())) {
                watch.stop();
                use(*dialog);
            }
        });
        watch.start(1);
        click(find<QPushButton>(parameter));
    }

    void chooseColor(const QString& parameter, const QColor& color)
    {
        answer<QColorDialog>(parameter, [&](QColorDialog& dialog) {
            dialog.setCurrentColor(color);
            dialog.accept();
        });
    }

    void chooseFile(const QString& parameter, const QString& file)
    {
        answer<QFileDialog>(parameter, [&](QFileDialog& dialog) {
            dialog.findChild<QLineEdit*>("fileNameEdit")->setText(file);
            static_cast<QDialog&>(dialog).accept();
        });
    }

    QImage screen()
    {
        const QPoint corner = view()->mapToGlobal({0, 0});
        return window.screen()
            ->grabWindow(0, corner.x(), corner.y(), view()->width(), view()->height())
            .toImage();
    }

    /// Whether the view draws another picture by itself.
    bool changes(const std::function<void()>& act)
    {
        settle();
        const QImage still = screen();
        processEventsFor(50);
        EXPECT_EQ(countChanged(still, screen()), 0);
        act();
        const auto isChanged = [&] { return countChanged(still, screen()) > 5000; };
        if (!waitFor(isChanged))
            return false;
        processEventsFor(200); // a dialog that was before the view may have left its pixels
        return isChanged();
    }

    /// A picture whose pixels are red and clear.
    QString makePicture()
    {
        QImage image(8, 8, QImage::Format_ARGB32);
        image.fill(QColor(255, 0, 0, 0));
        EXPECT_TRUE(image.save(folder.filePath("clear.png")));
        return folder.filePath("clear.png");
    }

    static QString effect(const QString& name) { return HALVERN_STUDIO_DATA "/effects/" + name; }

    const QTemporaryDir folder;
};

/// Changes a file so that neither its size nor its time tells.
void replaceUnnoticed(const QString& name, const QByteArray& before, const QByteArray& after)
{
    QFile file(name);
    ASSERT_TRUE(file.open(QFile::ReadWrite));
    const QDateTime time = file.fileTime(QFile::FileModificationTime);
    const QByteArray text = file.readAll();
    ASSERT_TRUE(text.contains(before));
    ASSERT_EQ(before.size(), after.size());
    file.seek(0);
    file.write(QByteArray(text).replace(before, after));
    file.flush();
    ASSERT_TRUE(file.setFileTime(time, QFile::FileModificationTime));
}

} // namespace

TEST_F(MaterialEditorTest, AMovedSliderChangesThePicture)
{
    open(Showcase);
    edit("Lawn");
    EXPECT_TRUE(changes([&] {
        auto* slider = find<QSlider>("metalness");
        slider->setFocus();
        QTest::keyClick(slider, Qt::Key_End);
    }));
}

TEST_F(MaterialEditorTest, AChosenColourChangesThePicture)
{
    open(Showcase);
    edit("Lawn");
    EXPECT_TRUE(changes([&] { chooseColor("baseColor", Qt::red); }));
    EXPECT_TRUE(changes([&] { chooseColor("emissive", Qt::blue); }));
}

TEST_F(MaterialEditorTest, AChosenTextureAndTheTechniqueThatSeesThroughItChangeThePicture)
{
    open(Showcase);
    edit("Lawn");
    EXPECT_TRUE(changes([&] { chooseFile("baseColorMap", makePicture()); }));
    EXPECT_TRUE(changes([&] { QTest::keyClick(editor()->findChild<QComboBox*>(), Qt::Key_Down); }));
    EXPECT_EQ(editor()->findChild<QComboBox*>()->currentText(), "mask");
}

TEST_F(MaterialEditorTest, ATechniqueOfAnEffectChangesThePicture)
{
    open(Showcase);
    editEffectOf("Lawn", effect("wireframe.fx"));
    EXPECT_TRUE(changes([&] { QTest::keyClick(editor()->findChild<QComboBox*>(), Qt::Key_Down); }));
}

TEST_F(MaterialEditorTest, AReloadedEffectChangesThePicture)
{
    const QString file = folder.filePath("toon.fx");
    ASSERT_TRUE(QFile::copy(effect("toon.fx"), file));
    ASSERT_TRUE(QFile::setPermissions(file, QFile::ReadOwner | QFile::WriteOwner));
    open(Showcase);
    editEffectOf("Lawn", file);
    EXPECT_TRUE(changes([&] {
        replaceUnnoticed(file, "toDisplay(shown)", "toDisplay(n.yyy)");
        click(button("Reload Effect"));
    }));
}

TEST_F(MaterialEditorTest, TheCodeOfAnEffectIsShownInAWindow)
{
    open(Showcase);
    editEffectOf("Lawn", effect("toon.fx"));
    click(button("Edit effect..."));
    QTextEdit* code = nullptr;
    for (QWidget* widget : QApplication::topLevelWidgets())
        if (auto* dock = qobject_cast<QDockWidget*>(widget))
            code = qobject_cast<QTextEdit*>(dock->widget());
    ASSERT_TRUE(code);
    EXPECT_TRUE(code->isVisible());
    EXPECT_TRUE(code->toPlainText().contains("technique toon"));
    code->parentWidget()->close();
}

TEST_F(MaterialEditorTest, AnotherSceneHasNoMaterialInTheEditor)
{
    open(Showcase);
    edit("Lawn");
    const auto* old = scene.sceneManager.get();
    loader.load(House);
    ASSERT_TRUE(QTest::qWaitFor([&] { return scene.sceneManager.get() != old; }, 60'000));
    EXPECT_TRUE(waitFor([&] { return title() == "No Material Selected"; }));
    const auto materials = scene.sceneManager->getMaterialList();
    ASSERT_FALSE(materials.empty());
    view()->getEventManager()->triggerEvent("MaterialSelected", materials.front()->getMaterialID());
    EXPECT_TRUE(waitFor([&] { return title().toStdString() == materials.front()->getMaterialID(); }));
}

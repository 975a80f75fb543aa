#include "tests/qt/FXMaterialProbe.h"

#include <QColorDialog>
#include <QFileDialog>
#include <QLineEdit>
#include <QSignalSpy>
#include <QTemporaryDir>

#include <gmock/gmock.h>

#include <locale>

using namespace halvern::test;
using testing::ElementsAre;

namespace {

void choose(QWidget& dialog, const QColor& color)
{
    auto* chooser = qobject_cast<QColorDialog*>(&dialog);
    ASSERT_TRUE(chooser);
    chooser->setCurrentColor(color);
    chooser->accept();
}

void choose(QWidget& dialog, const QString& file)
{
    auto* chooser = qobject_cast<QFileDialog*>(&dialog);
    ASSERT_TRUE(chooser);
    chooser->setDirectory(QFileInfo(file).path());
    chooser->selectFile(file);
    chooser->findChild<QLineEdit*>("fileNameEdit")->setText(file);
    static_cast<QDialog*>(chooser)->accept();
}

void cancel(QWidget& dialog)
{
    QTest::keyClick(&dialog, Qt::Key_Escape);
}

class QtFXMaterialEditTest : public FXMaterialTest
{
protected:
    QtFXMaterialEditTest() { editor->open(); }

    bool click(QPushButton& button, const std::function<void(QWidget&)>& use)
    {
        return withDialog([&] { QTest::mouseClick(&button, Qt::LeftButton); }, use);
    }

    /// Opens the only colour of the material "m", and has it chosen.
    bool chooseColor(const QColor& color)
    {
        return click(editor->color(1), [&](QWidget& dialog) { choose(dialog, color); });
    }

    /// A file that is there.
    QString makeFile(const QString& name)
    {
        QFile file(folder.filePath(name));
        (void)file.open(QFile::WriteOnly);
        return file.fileName();
    }

    std::vector<HCE::Event> sent() const { return events->getEvents(); }

    const QTemporaryDir folder;
};

/// Writes decimal commas.
class Comma : public std::numpunct<char>
{
    char do_decimal_point() const override { return ','; }
};

} // namespace

// Sliders

TEST_F(QtFXMaterialEditTest, AStepOfAQuarterAtPositionThreeSetsThreeQuartersThenSendsThem)
{
    addSlider("size", {0.5f}, {{"UIStep", 0.25f}});
    show();
    QTest::keyClick(&editor->slider(1), Qt::Key_Right);
    EXPECT_EQ(take(), QStringList({"set size 0.75", "send m, size, 0.75"}));
    EXPECT_EQ(boost::any_cast<float>(material->parameters[0]->values.at(0)), 0.75f);
}

TEST_F(QtFXMaterialEditTest, EachKeyThatMovesASliderIsAnEdit)
{
    addSlider("size", {0.5f});
    show();
    for (const Qt::Key key : {Qt::Key_Right, Qt::Key_Left, Qt::Key_Home, Qt::Key_Left, Qt::Key_End})
        QTest::keyClick(&editor->slider(1), key);
    EXPECT_EQ(events->getData("ChangeMaterialParameter"),
              (std::vector<std::string>{"m, size, 0.6", "m, size, 0.5", "m, size, 0", "m, size, 1"}));
}

TEST_F(QtFXMaterialEditTest, DraggingASliderEditsAtEachStep)
{
    addSlider("size", {0.0f});
    show();
    QCoreApplication::processEvents();
    QSlider& slider = editor->slider(1);
    const int y = slider.height() / 2;
    QTest::mousePress(&slider, Qt::LeftButton, Qt::NoModifier, {5, y});
    for (int x = 5; x < slider.width(); x += 2) {
        QMouseEvent move(QEvent::MouseMove, QPointF(x, y), slider.mapToGlobal(QPoint(x, y)), Qt::NoButton,
                         Qt::LeftButton, Qt::NoModifier);
        QCoreApplication::sendEvent(&slider, &move);
    }
    QTest::mouseRelease(&slider, Qt::LeftButton, Qt::NoModifier, {slider.width() - 1, y});
    const auto data = events->getData("ChangeMaterialParameter");
    ASSERT_EQ(data.size(), 10u);
    EXPECT_EQ(data.front(), "m, size, 0.1");
    EXPECT_EQ(data.back(), "m, size, 1");
}

TEST_F(QtFXMaterialEditTest, AStepThatIsNoFloatIsATenth)
{
    for (const boost::any& wrong : {boost::any(1), boost::any(0.5), text("0.5")}) {
        material->parameters.clear();
        addSlider("size", {0.5f}, {{"UIStep", wrong}});
        show();
        QTest::keyClick(&editor->slider(1), Qt::Key_Right);
        EXPECT_EQ(take(), QStringList({"set size 0.6", "send m, size, 0.6"}));
    }
}

TEST_F(QtFXMaterialEditTest, NumbersAreSentWithSixDigitsInEveryLocale)
{
    addSlider("size", {0.0f}, {{"UIStep", 1.0f / 3}});
    addSlider("large", {0.0f}, {{"UIStep", 1234567.0f}, {"UIMax", 1e9f}});
    addSlider("small", {0.0f}, {{"UIStep", 0.00001f}});
    show();
    const std::locale old = std::locale::global(std::locale(std::locale(), new Comma));
    for (const int row : {1, 2, 3})
        QTest::keyClick(&editor->slider(row), Qt::Key_Right);
    std::locale::global(old);
    EXPECT_THAT(events->getData("ChangeMaterialParameter"),
                ElementsAre("m, size, 0.333333", "m, large, 1.23457e+06", "m, small, 1e-05"));
}

TEST_F(QtFXMaterialEditTest, TheSentEventHasAnEmptyUniqueID)
{
    addSlider("size", {0.5f});
    addColor("tint", {0.0f, 0.0f, 0.0f});
    addTexture("map", {text("a")});
    show();
    QTest::keyClick(&editor->slider(1), Qt::Key_Right);
    click(editor->color(2), [&](QWidget& dialog) { choose(dialog, QColor(Qt::red)); });
    click(editor->fileButton(3), [&](QWidget& dialog) { choose(dialog, makeFile("b.png")); });
    ASSERT_EQ(sent().size(), 3u);
    for (const HCE::Event& event : sent())
        EXPECT_EQ(event.getUniqueID(), "");
}

TEST_F(QtFXMaterialEditTest, WhatTheParameterAnswersIsIgnored)
{
    addSlider("size", {0.5f})->answer = false;
    addColor("tint", {0.0f, 0.0f, 0.0f})->answer = false;
    addTexture("map", {text("a")})->answer = false;
    show();
    QTest::keyClick(&editor->slider(1), Qt::Key_Right);
    click(editor->color(2), [&](QWidget& dialog) { choose(dialog, QColor(Qt::red)); });
    click(editor->fileButton(3), [&](QWidget& dialog) { choose(dialog, makeFile("b.png")); });
    EXPECT_EQ(events->getCount("ChangeMaterialParameter"), 3u);
    EXPECT_EQ(editor->error(), QString());
}

TEST_F(QtFXMaterialEditTest, WithoutAnEventManagerOnlyTheParameterIsSet)
{
    addSlider("size", {0.5f});
    editor->setEventManager(nullptr);
    show();
    QTest::keyClick(&editor->slider(1), Qt::Key_Right);
    EXPECT_EQ(take(), QStringList("set size 0.6"));
    EXPECT_EQ(sent().size(), 0u);
}

// Unknown parameters

TEST_F(QtFXMaterialEditTest, AnUnknownParameterIsReportedByTheObjectsNameWhichIsEmpty)
{
    addSlider("size", {0.5f});
    addColor("tint", {0.0f, 0.0f, 0.0f});
    addTexture("map", {text("a")});
    show();
    material->parameters.clear();
    QTest::keyClick(&editor->slider(1), Qt::Key_Right);
    EXPECT_EQ(editor->error(), "No Parameter found with name: ");
    editor->acceptError();
    EXPECT_FALSE(click(editor->color(2), cancel));
    EXPECT_EQ(editor->error(), "No Parameter found with name: ");
    editor->acceptError();
    EXPECT_FALSE(click(editor->fileButton(3), cancel));
    EXPECT_EQ(editor->error(), "No Parameter found with name: ");
    EXPECT_EQ(take(), QStringList());
}

TEST_F(QtFXMaterialEditTest, AnObjectsNameThatAHostSetIsReported)
{
    addSlider("size", {0.5f});
    show();
    material->parameters.clear();
    editor->slider(1).setObjectName("knob");
    QTest::keyClick(&editor->slider(1), Qt::Key_Right);
    EXPECT_EQ(editor->error(), "No Parameter found with name: knob");
}

TEST_F(QtFXMaterialEditTest, WithoutASenderTheParameterIsUnknownWhateverTheMaterialHas)
{
    addSlider("", {0.5f});
    show();
    using Slot = void (*)(FXMaterialProbe&);
    for (const Slot slot : {Slot([](FXMaterialProbe& probe) { probe.setSliderParameter(1); }),
                            Slot([](FXMaterialProbe& probe) { probe.setColorParameter(); }),
                            Slot([](FXMaterialProbe& probe) { probe.setTextureParameter(); })}) {
        slot(*editor);
        EXPECT_EQ(editor->error(), "No Parameter found with name: ");
        editor->acceptError();
    }
    EXPECT_EQ(take(), QStringList());
}

TEST_F(QtFXMaterialEditTest, WithoutAMaterialNothingHappens)
{
    editor->setSliderParameter(1);
    editor->setColorParameter();
    editor->setTextureParameter();
    EXPECT_EQ(editor->error(), QString());
    EXPECT_EQ(take(), QStringList());
}

// Colours

TEST_F(QtFXMaterialEditTest, AChosenColourIsShownSentThenSet)
{
    addColor("tint", {0.0f, 0.0f, 0.0f, 0.5f});
    show();
    EXPECT_TRUE(chooseColor(QColor(255, 128, 0)));
    EXPECT_EQ(take(), QStringList({"send m, tint, 1, 0.501961, 0, 1", "set tint 1 0.501961 0 1"}));
    EXPECT_EQ(editor->color(1).text(), "#ff8000");
    EXPECT_EQ(editor->color(1).styleSheet(), "background-color: #ff8000");
}

TEST_F(QtFXMaterialEditTest, ComponentsOfAColourAreDividedAsDoubles)
{
    addColor("tint", {0.0f, 0.0f, 0.0f, 0.5f});
    show();
    chooseColor(QColor(51, 1, 254));
    const AnyValues& values = material->parameters[0]->values;
    EXPECT_EQ(boost::any_cast<float>(values[0]), float(51 / 255.0));
    EXPECT_EQ(boost::any_cast<float>(values[1]), float(1 / 255.0));
    EXPECT_EQ(boost::any_cast<float>(values[2]), float(254 / 255.0));
    EXPECT_THAT(events->getData("ChangeMaterialParameter"),
                ElementsAre("m, tint, 0.2, 0.00392157, 0.996078, 1"));
}

TEST_F(QtFXMaterialEditTest, ThreeComponentsBecomeFourAndOpacityIsAlwaysOne)
{
    addColor("tint", {0.0f, 0.0f, 0.0f});
    addColor("glass", {0.0f, 0.0f, 0.0f, 0.2f});
    show();
    click(editor->color(1), [&](QWidget& dialog) { choose(dialog, QColor(255, 0, 0, 10)); });
    click(editor->color(2), [&](QWidget& dialog) { choose(dialog, QColor(255, 0, 0, 10)); });
    EXPECT_EQ(take(), QStringList({"send m, tint, 1, 0, 0, 1", "set tint 1 0 0 1",
                                   "send m, glass, 1, 0, 0, 1", "set glass 1 0 0 1"}));
}

TEST_F(QtFXMaterialEditTest, TheColourDialogIsAChildOfTheEditorWithQtsTitleAndTheCurrentColour)
{
    addColor("tint", {1.0f, 0.5f, 0.0f});
    show();
    EXPECT_TRUE(click(editor->color(1), [&](QWidget& dialog) {
        EXPECT_EQ(dialog.parent(), editor.get());
        EXPECT_EQ(dialog.windowTitle(), "Select Color");
        EXPECT_EQ(dynamic_cast<QColorDialog&>(dialog).currentColor().name(), "#ff8000");
        EXPECT_EQ(dynamic_cast<QColorDialog&>(dialog).options(), QColorDialog::ColorDialogOptions());
        cancel(dialog);
    }));
    EXPECT_EQ(editor->findChild<QColorDialog*>(), nullptr);
}

TEST_F(QtFXMaterialEditTest, TheColourDialogReadsTheValueThatTheParameterHasNow)
{
    const auto tint = addColor("tint", {1.0f, 0.5f, 0.0f});
    show();
    tint->values = {0.0f, 0.0f, 1.0f};
    click(editor->color(1), [&](QWidget& dialog) {
        EXPECT_EQ(dynamic_cast<QColorDialog&>(dialog).currentColor().name(), "#0000ff");
        cancel(dialog);
    });
    EXPECT_EQ(editor->color(1).text(), "#ff8000");
}

TEST_F(QtFXMaterialEditTest, AnObjectsNameThatAHostSetIsTheColourDialogsTitle)
{
    addColor("tint", {1.0f, 0.5f, 0.0f});
    show();
    editor->color(1).setObjectName("paint");
    click(editor->color(1), [&](QWidget& dialog) {
        EXPECT_EQ(dialog.windowTitle(), "paint");
        cancel(dialog);
    });
}

TEST_F(QtFXMaterialEditTest, CancellingTheColourDialogChangesNothing)
{
    addColor("tint", {1.0f, 0.5f, 0.0f});
    show();
    EXPECT_TRUE(click(editor->color(1), [](QWidget& dialog) {
        dynamic_cast<QColorDialog&>(dialog).setCurrentColor(Qt::blue);
        cancel(dialog);
    }));
    EXPECT_EQ(take(), QStringList());
    EXPECT_EQ(editor->color(1).text(), "#ff8000");
    EXPECT_EQ(editor->color(1).styleSheet(), "background-color: #ff8000");
}

TEST_F(QtFXMaterialEditTest, ABadColourIsReportedAndCanBeEditedAllTheSame)
{
    const auto tint = addColor("tint", {1.0f, 0.5f, 0.0f});
    show();
    tint->values = {1, 2, 3};
    EXPECT_TRUE(click(editor->color(1), [&](QWidget& dialog) {
        EXPECT_EQ(editor->error(), "Error reading color from parameter: tint");
        choose(dialog, QColor(Qt::red));
    }));
    EXPECT_EQ(take(), QStringList({"send m, tint, 1, 0, 0, 1", "set tint 1 0 0 1"}));
}

// Textures

TEST_F(QtFXMaterialEditTest, AChosenFileIsSentThenSetAsAText)
{
    addTexture("map", {text("a.png")});
    show();
    const QString file = makeFile(QStringLiteral("b, gr\u00FCn.png"));
    EXPECT_TRUE(click(editor->fileButton(1), [&](QWidget& dialog) { choose(dialog, file); }));
    EXPECT_EQ(take(), QStringList({"send m, map, " + file, "set map to text " + file}));
    EXPECT_EQ(editor->picture(1).pixmap(), nullptr) << "the picture follows the engine's event";
}

TEST_F(QtFXMaterialEditTest, TheFileDialogIsAChildOfTheEditorWithoutAFilter)
{
    addTexture("map", {text("a.png")});
    show();
    EXPECT_TRUE(click(editor->fileButton(1), [&](QWidget& window) {
        auto& dialog = dynamic_cast<QFileDialog&>(window);
        EXPECT_EQ(dialog.parent(), editor.get());
        EXPECT_EQ(dialog.windowTitle(), "Open Texture");
        EXPECT_EQ(dialog.fileMode(), QFileDialog::ExistingFile);
        EXPECT_EQ(dialog.acceptMode(), QFileDialog::AcceptOpen);
        EXPECT_EQ(dialog.nameFilters(), QStringList("All Files (*)"));
        cancel(dialog);
    }));
    EXPECT_EQ(editor->findChild<QFileDialog*>(), nullptr);
}

TEST_F(QtFXMaterialEditTest, TheFileDialogStartsInTheFolderData)
{
    const QString old = QDir::currentPath();
    ASSERT_TRUE(QDir(folder.path()).mkdir("Data"));
    QDir::setCurrent(folder.path());
    addTexture("map", {text("a.png")});
    show();
    click(editor->fileButton(1), [&](QWidget& dialog) {
        EXPECT_EQ(dynamic_cast<QFileDialog&>(dialog).directory().canonicalPath(),
                  QDir(folder.filePath("Data")).canonicalPath());
        cancel(dialog);
    });
    QDir::setCurrent(old);
}

TEST_F(QtFXMaterialEditTest, CancellingTheFileDialogChangesNothing)
{
    addTexture("map", {text("a.png")});
    show();
    EXPECT_TRUE(click(editor->fileButton(1), cancel));
    EXPECT_EQ(take(), QStringList());
}

TEST_F(QtFXMaterialEditTest, ABadFileNameIsReportedAndCanBeEditedAllTheSame)
{
    const auto map = addTexture("map", {text("a.png")});
    show();
    map->values = {1.0f};
    const QString file = makeFile("b.png");
    EXPECT_TRUE(click(editor->fileButton(1), [&](QWidget& dialog) {
        EXPECT_EQ(editor->error(), "Error reading fileName from parameter: map");
        choose(dialog, file);
    }));
    EXPECT_EQ(take(), QStringList({"send m, map, " + file, "set map to text " + file}));
}

// What may happen while a dialog is open

TEST_F(QtFXMaterialEditTest, AnotherMaterialShownUnderADialogDoesNotGetTheEdit)
{
    addColor("tint", {0.0f, 0.0f, 0.0f});
    show();
    const auto other =
        makeMaterial("other", {boost::make_shared<FakeParameter>(log, "tint", AnyValues{0.0f, 1.0f, 0.0f},
                                                                 Annotations{{"UIWidget", text("color")}})});
    EXPECT_TRUE(click(editor->color(1), [&](QWidget& dialog) {
        handle("MaterialSelected", "other");
        take();
        choose(dialog, QColor(Qt::red));
    }));
    EXPECT_EQ(take(), QStringList({"send m, tint, 1, 0, 0, 1", "set tint 1 0 0 1"}));
    EXPECT_EQ(editor->title().text(), "other");
    EXPECT_EQ(editor->color(1).text(), "#00ff00");
}

TEST_F(QtFXMaterialEditTest, AReloadUnderTheColourDialogSparesTheEdit)
{
    addColor("tint", {0.0f, 1.0f, 0.0f});
    show();
    const QPointer<QWidget> old = &editor->color(1);
    EXPECT_TRUE(click(editor->color(1), [&](QWidget& dialog) {
        send("EffectReloaded", "fx");
        ASSERT_TRUE(waitFor([&] { return old.isNull(); }));
        choose(dialog, QColor(Qt::red));
    }));
    EXPECT_EQ(take(), QStringList({"send m, tint, 1, 0, 0, 1", "set tint 1 0 0 1"}));
    EXPECT_EQ(editor->color(1).text(), "#00ff00") << "until the engine says that it has changed";
    handle("MaterialParameterUpdated", "m, tint");
    EXPECT_EQ(editor->color(1).text(), "#ff0000");
}

TEST_F(QtFXMaterialEditTest, AReloadUnderTheFileDialogSparesTheEdit)
{
    addTexture("map", {text("a.png")});
    show();
    const QPointer<QWidget> old = &editor->fileButton(1);
    const QString file = makeFile("b.png");
    EXPECT_TRUE(click(editor->fileButton(1), [&](QWidget& dialog) {
        send("EffectReloaded", "fx");
        ASSERT_TRUE(waitFor([&] { return old.isNull(); }));
        choose(dialog, file);
    }));
    EXPECT_EQ(take(), QStringList({"send m, map, " + file, "set map to text " + file}));
}

TEST_F(QtFXMaterialEditTest, AnEditorThatEndsUnderItsDialogEditsNothing)
{
    addColor("tint", {0.0f, 0.0f, 0.0f});
    addTexture("map", {text("a.png")});
    for (const bool isColor : {true, false}) {
        editor = std::make_unique<FXMaterialProbe>();
        editor->setEventManager(events);
        editor->open();
        show();
        QPushButton& button = isColor ? editor->color(1) : editor->fileButton(2);
        EXPECT_TRUE(click(button, [&](QWidget& /*dialog*/) { editor.reset(); }));
        EXPECT_EQ(take(), QStringList());
    }
}

TEST_F(QtFXMaterialEditTest, AMaterialThatIsReleasedUnderADialogLivesUntilItsEditIsDone)
{
    addColor("tint", {0.0f, 0.0f, 0.0f});
    auto passing = boost::make_shared<FakeMaterial>(log, "passing", effect, material->parameters);
    editor->setFXMaterial(passing);
    EXPECT_TRUE(click(editor->color(1), [&](QWidget& dialog) {
        passing.reset();
        show();
        choose(dialog, QColor(Qt::red));
    }));
    EXPECT_EQ(take(), QStringList({"send passing, tint, 1, 0, 0, 1", "set tint 1 0 0 1"}));
}

// What may happen inside an edit

TEST_F(QtFXMaterialEditTest, ASliderThatARebuildReplacesInItsOwnEditGoesLater)
{
    const auto size = addSlider("size", {0.5f});
    show();
    QSlider* slider = &editor->slider(1);
    const QPointer<QWidget> old = slider;
    QSignalSpy moved(slider, SIGNAL(valueChanged(int)));
    size->onSet = [&] {
        show();
        EXPECT_TRUE(old);
        EXPECT_FALSE(old->isVisible());
        EXPECT_EQ(old->parent(), nullptr);
        EXPECT_NE(&editor->slider(1), old);
    };
    QTest::keyClick(slider, Qt::Key_Right);
    EXPECT_EQ(take(), QStringList({"set size 0.6", "send m, size, 0.6"}));
    EXPECT_EQ(editor->findChildren<QSlider*>().size(), 1);
    slider->setValue(1); // it has no say any more
    EXPECT_EQ(moved.count(), 2);
    EXPECT_EQ(take(), QStringList());
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_FALSE(old);
}

TEST_F(QtFXMaterialEditTest, ATechniqueBoxThatARebuildReplacesInItsOwnEditGoesLater)
{
    show();
    QComboBox* box = &editor->techniques();
    const QPointer<QWidget> old = box;
    material->onSet = [&] {
        show();
        EXPECT_TRUE(old);
    };
    QTest::keyClick(box, Qt::Key_Down);
    EXPECT_EQ(take(), QStringList("technique 1"));
    EXPECT_EQ(editor->techniques().currentIndex(), 1);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_FALSE(old);
}

TEST_F(QtFXMaterialEditTest, APressThatFindsAReloadWaitingIsSurvived)
{
    addColor("tint", {0.0f, 1.0f, 0.0f});
    addTexture("map", {text("a.png")});
    show();
    QCoreApplication::processEvents();
    for (int row = 1; row <= 2; ++row) {
        QPushButton& button = row == 1 ? editor->color(1) : editor->fileButton(2);
        const QPointer<QWidget> old = &button;
        send("EffectReloaded", "fx");
        QTest::mousePress(&button, Qt::LeftButton); // paints at once, and with it the editor
        EXPECT_TRUE(waitFor([&] { return old.isNull(); }));
    }
}

#include "engine/scene/Effect.h"
#include "engine/scene/Material.h"
#include "engine/scene/SceneManager.h"
#include "tests/qt/FXMaterialProbe.h"

#include <QColorDialog>
#include <QFile>
#include <QTemporaryDir>

#include <gmock/gmock.h>

using namespace halvern;
using namespace halvern::test;
using testing::ElementsAre;

namespace {

/// An editor of a material that the engine holds, with an effect of its own copy of a file from data/.
class QtFXMaterialEngineTest : public testing::Test
{
protected:
    QtFXMaterialEngineTest() { editor.setEventManager(events); }

    void open(const QString& file)
    {
        ASSERT_TRUE(QFile::copy("data/effects/" + file, path()));
        QFile::setPermissions(path(), QFile::ReadOwner | QFile::WriteOwner);
        const auto effect = boost::make_shared<scene::Effect>("fx", path().toStdString(), "");
        sceneManager->addEffect(effect);
        ASSERT_TRUE(manager->addEffect(effect));
        const auto material = boost::make_shared<scene::Material>("m", "fx");
        sceneManager->addMaterial(material);
        ASSERT_TRUE(manager->addMaterial(material));
        editor.setFXManager(manager);
        editor.open();
        events->triggerEvent("MaterialSelected", "m");
        ASSERT_TRUE(waitFor([&] { return editor.title().text() == "m"; }));
    }

    QString path() const { return folder.filePath("effect.fx"); }

    void replaceInFile(const char* before, const char* after)
    {
        QFile file(path());
        ASSERT_TRUE(file.open(QFile::ReadWrite));
        const QByteArray text = file.readAll();
        ASSERT_TRUE(text.contains(before));
        file.resize(0);
        file.write(QByteArray(text).replace(before, after));
    }

    std::vector<float> values(const std::string& name)
    {
        std::vector<float> found;
        for (const boost::any& value :
             manager->getFXMaterial("m")->getParameterByName(name)->getParameterValues())
            found.push_back(boost::any_cast<float>(value));
        return found;
    }

    /// Has all events delivered and painted.
    void settle()
    {
        events->waitUntilIdle();
        QCoreApplication::processEvents();
        editor.paint();
    }

    void clickReload() { QTest::mouseClick(&editor.button("Reload Effect"), Qt::LeftButton); }

    const QTemporaryDir folder;
    const boost::shared_ptr<RecordingEventManager> events =
        boost::make_shared<RecordingEventManager>(RecordingEventManager::Delivery::Threaded);
    const boost::shared_ptr<scene::SceneManager> sceneManager =
        boost::make_shared<scene::SceneManager>(events);
    const boost::shared_ptr<engine::fx::FXManager> manager =
        boost::make_shared<engine::fx::FXManager>(sceneManager, events);
    FXMaterialProbe editor;
};

} // namespace

TEST_F(QtFXMaterialEngineTest, AnEffectFilesAnnotationsMakeTheRows)
{
    open("checker.fx");
    EXPECT_THAT(editor.rows(), ElementsAre(1, 2, 3));
    EXPECT_EQ(editor.label(1), "First colour");
    EXPECT_EQ(editor.color(1).text(), "#ebe5db");
    EXPECT_EQ(editor.label(3), "Squares");
    EXPECT_EQ(editor.slider(3).minimum(), 1);
    EXPECT_EQ(editor.slider(3).maximum(), 64);
    EXPECT_EQ(editor.slider(3).value(), 12);
}

TEST_F(QtFXMaterialEngineTest, AnEditSetsTheEnginesValueAndItsEchoMovesNothing)
{
    open("checker.fx");
    QTest::keyClick(&editor.slider(3), Qt::Key_Right);
    EXPECT_THAT(values("scale"), ElementsAre(13));
    settle();
    EXPECT_THAT(events->getData("ChangeMaterialParameter"), ElementsAre("m, scale, 13"));
    EXPECT_THAT(events->getData("MaterialParameterUpdated"), ElementsAre("m, scale"));
    EXPECT_EQ(editor.slider(3).value(), 13);
}

TEST_F(QtFXMaterialEngineTest, EveryPositionOfASliderSurvivesItsEcho)
{
    open("toon.fx"); // its ink's width goes by hundredths
    ASSERT_EQ(editor.label(5), "Ink width");
    QSlider& slider = editor.slider(5);
    for (int position = slider.minimum(); position <= slider.maximum(); ++position) {
        slider.setValue(position);
        settle();
        ASSERT_EQ(slider.value(), position);
    }
}

TEST_F(QtFXMaterialEngineTest, AChangeMadeElsewhereMovesTheEditors)
{
    open("checker.fx");
    events->triggerEvent("ChangeMaterialParameter", "m, scale, 40");
    events->triggerEvent("ChangeMaterialParameter", "m, first, 1, 0, 0, 1");
    EXPECT_TRUE(
        waitFor([&] { return editor.slider(3).value() == 40 && editor.color(1).text() == "#ff0000"; }));
    EXPECT_EQ(events->getCount("ChangeMaterialParameter"), 2u) << "following is no edit";
}

TEST_F(QtFXMaterialEngineTest, AChosenColourReachesAParameterWithThreeComponentsToo)
{
    open("checker.fx");
    replaceInFile("float4 first", "float3 first");
    replaceInFile("{ 0.92, 0.90, 0.86, 1 }", "{ 0.92, 0.90, 0.86 }");
    replaceInFile("first.rgb", "first");
    clickReload();
    settle();
    EXPECT_TRUE(withDialog([&] { QTest::mouseClick(&editor.color(1), Qt::LeftButton); },
                           [](QWidget& dialog) {
                               dynamic_cast<QColorDialog&>(dialog).setCurrentColor(QColor(255, 0, 51));
                               dynamic_cast<QColorDialog&>(dialog).accept();
                           }));
    EXPECT_THAT(values("first"), ElementsAre(1, 0, 0.2f));
    settle();
    EXPECT_EQ(editor.color(1).text(), "#ff0033");
}

TEST_F(QtFXMaterialEngineTest, AReloadedFileHasItsNewRowsAndKeepsTheValues)
{
    open("checker.fx");
    QTest::keyClick(&editor.slider(3), Qt::Key_End);
    replaceInFile("UIName = \"Squares\"", "UIName = \"Fields\"");
    replaceInFile("float UIMax = 64", "float UIMax = 128");
    clickReload();
    EXPECT_TRUE(waitFor([&] { return editor.label(3) == "Fields"; }));
    EXPECT_THAT(events->getData("EffectReloaded"), ElementsAre("fx"));
    EXPECT_EQ(editor.slider(3).maximum(), 128);
    EXPECT_EQ(editor.slider(3).value(), 64);
}

TEST_F(QtFXMaterialEngineTest, AFileThatBreaksKeepsTheRowsAndIsReportedByTheViews)
{
    open("checker.fx");
    QWidget* slider = &editor.slider(3);
    replaceInFile("float scale <", "float scale <<");
    clickReload();
    settle();
    EXPECT_EQ(editor.at(3, 1), slider);
    EXPECT_EQ(events->getCount("EffectReloaded"), 0u);
    EXPECT_EQ(events->getCount("DisplayMessageAt"), 1u);
}

TEST_F(QtFXMaterialEngineTest, TechniquesOfTheFileAreChosen)
{
    open("standard.fx");
    ASSERT_EQ(editor.techniques().count(), 3);
    EXPECT_EQ(editor.techniques().itemText(2), "blend");
    QTest::keyClick(&editor.techniques(), Qt::Key_End);
    EXPECT_EQ(manager->getFXMaterial("m")->getTechnique(), 2u);
}

TEST_F(QtFXMaterialEngineTest, APictureThatIsSetShowsItsPreview)
{
    open("toon.fx");
    QImage image(8, 8, QImage::Format_RGB32);
    image.fill(Qt::blue);
    const QString file = folder.filePath("blue, dark.png");
    ASSERT_TRUE(image.save(file));
    ASSERT_EQ(editor.label(7), "Picture");
    events->triggerEvent("ChangeMaterialParameter", "m, baseColorMap, " + file.toStdString());
    EXPECT_TRUE(waitFor([&] { return editor.picture(7).pixmap() != nullptr; }));
    EXPECT_EQ(editor.picture(7).pixmap()->toImage().pixelColor(20, 15), QColor(Qt::blue));
}

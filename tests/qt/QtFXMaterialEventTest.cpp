#include "tests/qt/FXMaterialProbe.h"

#include <QSignalSpy>
#include <QTemporaryDir>

#include <gmock/gmock.h>

#include <stdexcept>
#include <thread>

using namespace halvern::test;
using testing::ElementsAre;

namespace {

/// Notes who registers and leaves.
class RegistrationLog : public RecordingEventManager
{
public:
    RegistrationLog(QStringList& log, QString name) : log(log), name(std::move(name)) {}

    void registerEventListener(HCE::EventListener* /*listener*/, HCE::EventType type) override
    {
        log += name + "+" + QString::fromStdString(type.getName());
    }
    void removeEventListener(HCE::EventListener* listener) override
    {
        log += name + (dynamic_cast<FXMaterialProbe*>(listener) ? "-editor" : "-remains");
    }
    using EventManager::removeEventListener;

private:
    QStringList& log;
    const QString name;
};

QStringList registrationsWith(const QString& name)
{
    return {name + "+MaterialSelected", name + "+MaterialParameterUpdated", name + "+EffectReloaded"};
}

/// A material that cannot be shown.
class BrokenMaterial : public FakeMaterial
{
public:
    using FakeMaterial::FakeMaterial;
    int getParameterCount() override { throw std::runtime_error("broken"); }
};

/// Knows no material, and takes its time to find that out.
class SlowManager : public FakeFXManager
{
public:
    using FakeFXManager::FakeFXManager;
    boost::shared_ptr<halvern::engine::fx::FXMaterial> getFXMaterial(std::string /*id*/) override
    {
        QTest::qSleep(1);
        onFind();
        return {};
    }

    std::function<void()> onFind;
};

class QtFXMaterialEventTest : public FXMaterialTest
{
protected:
    /// A picture of one colour in a file.
    QString makePicture(const QString& name, const QColor& color, QSize size = {8, 8})
    {
        QImage image(size, QImage::Format_RGB32);
        image.fill(color);
        QString file = folder.filePath(name);
        EXPECT_TRUE(image.save(file));
        return file;
    }

    /// The middle of a texture's preview; invalid when there is none.
    QColor previewOf(int row)
    {
        const QPixmap* pixmap = editor->picture(row).pixmap();
        return pixmap && !pixmap->isNull() ? pixmap->toImage().pixelColor(20, 15) : QColor();
    }

    const QTemporaryDir folder;
};

} // namespace

// Registration

TEST_F(QtFXMaterialEventTest, RegistersForThreeTypesInTheirOrderAfterItLeftTheOldManager)
{
    editor->setEventManager(boost::make_shared<RegistrationLog>(log, "old"));
    EXPECT_EQ(take(), registrationsWith("old"));
    const auto next = boost::make_shared<RegistrationLog>(log, "new");
    editor->setEventManager(next);
    EXPECT_EQ(take(), QStringList("old-editor") + registrationsWith("new"));
    EXPECT_EQ(editor->getEventManager(), next);
    editor->setEventManager(nullptr);
    EXPECT_EQ(take(), QStringList("new-editor"));
    EXPECT_FALSE(editor->getEventManager());
}

TEST_F(QtFXMaterialEventTest, GivenTheSameManagerAgainItStaysRegistered)
{
    editor->setEventManager(events);
    EXPECT_TRUE(events->isRegistered(editor.get()));
    show();
    addSlider("size", {0.5f});
    handle("EffectReloaded", "fx");
    EXPECT_THAT(editor->rows(), ElementsAre(1));
}

TEST_F(QtFXMaterialEventTest, ADestroyedEditorLeavesItsManagerWhileItIsWhole)
{
    const auto manager = boost::make_shared<RegistrationLog>(log, "");
    auto plain = std::make_unique<FXMaterialProbe>();
    plain->setEventManager(manager);
    take();
    plain.reset();
    EXPECT_EQ(take(), QStringList("-editor"));
}

// From the event's thread to the paint

TEST_F(QtFXMaterialEventTest, EachEventAsksForAnUpdateOnceAndDoesNothingElse)
{
    addSlider("size", {0.5f});
    QSignalSpy asked(editor.get(), SIGNAL(needsUpdate()));
    send("MaterialSelected", "m");
    EXPECT_EQ(asked.count(), 1);
    send("MaterialSelected", "m");
    send("EffectReloaded", "fx");
    EXPECT_EQ(asked.count(), 3);
    EXPECT_EQ(take(), QStringList());
    EXPECT_EQ(editor->title().text(), "No Material Selected");
    editor->paint();
    EXPECT_EQ(editor->title().text(), "m");
}

TEST_F(QtFXMaterialEventTest, AnEventOfAnotherThreadReachesAShownEditor)
{
    const auto threaded = boost::make_shared<HCE::EventManager>(true);
    editor->setEventManager(threaded);
    editor->open();
    threaded->triggerEvent("MaterialSelected", "m");
    EXPECT_TRUE(waitFor([&] { return editor->title().text() == "m"; }));
}

TEST_F(QtFXMaterialEventTest, AHiddenEditorFollowsNothingUntilItIsShown)
{
    addSlider("size", {0.5f});
    editor->open();
    show();
    editor->hide();
    material->parameters[0]->values = {0.7f};
    send("MaterialParameterUpdated", "m, size");
    QCoreApplication::processEvents();
    EXPECT_EQ(editor->slider(1).value(), 5);
    editor->show();
    EXPECT_TRUE(waitFor([&] { return editor->slider(1).value() == 7; }));
}

TEST_F(QtFXMaterialEventTest, SeveralEventsAreHandledInOnePaintInTheOrderOfTheirArrival)
{
    for (const char* id : {"a", "b", "c"})
        makeMaterial(id);
    for (const char* id : {"b", "a", "c"})
        send("MaterialSelected", id);
    editor->paint();
    EXPECT_EQ(take(), QStringList({"find b", "find a", "find c"}));
    editor->paint();
    EXPECT_EQ(take(), QStringList()) << "each is handled once";
}

TEST_F(QtFXMaterialEventTest, OfIdenticalEventsThatWaitTheLastIsHandled)
{
    for (const char* id : {"a", "b", "a", "a", "b ", "c", "a"})
        send("MaterialSelected", id);
    editor->paint();
    EXPECT_EQ(take(), QStringList({"find b", "find b ", "find c", "find a"}));
}

TEST_F(QtFXMaterialEventTest, EventsOfAnotherTypeWithTheSameDataAreNotIdentical)
{
    makeMaterial("fx");
    send("EffectReloaded", "fx");
    send("MaterialSelected", "fx");
    send("EffectReloaded", "fx");
    int asked = 0;
    dynamic_cast<FakeMaterial&>(*manager->materials["fx"]).onTechnique = [&] { ++asked; };
    editor->paint();
    EXPECT_EQ(asked, 2) << "selected, then reloaded";
}

TEST_F(QtFXMaterialEventTest, AnEventThatComesInWhileOthersAreHandledIsNotLost)
{
    addSlider("size", {0.5f});
    editor->open();
    bool isFirst = true;
    material->onTechnique = [&] {
        if (std::exchange(isFirst, false)) {
            material->parameters[0]->values = {0.7f};
            std::thread([&] { send("MaterialParameterUpdated", "m, size"); }).join();
        }
    };
    send("MaterialSelected", "m");
    EXPECT_TRUE(waitFor([&] { return editor->title().text() == "m" && editor->slider(1).value() == 7; }));
}

TEST_F(QtFXMaterialEventTest, EventsThatNeverEndDoNotHoldAPaintForEver)
{
    makeMaterial("other");
    const auto again = [&](const char* id) { return [this, id] { send("MaterialSelected", id); }; };
    material->onTechnique = again("other");
    dynamic_cast<FakeMaterial&>(*manager->materials["other"]).onTechnique = again("m");
    send("MaterialSelected", "m");
    editor->paint();
    material->onTechnique = nullptr;
    editor->paint();
    EXPECT_GE(take().count("find m"), 2);
}

TEST_F(QtFXMaterialEventTest, EventsThatTakeLongerThanOnePaintAreHandledInTheNextOnes)
{
    const auto slow = boost::make_shared<SlowManager>(log);
    int left = 200;
    slow->onFind = [&] {
        if (--left > 0)
            send("MaterialSelected", "unknown");
    };
    editor->setFXManager(slow);
    editor->open();
    send("MaterialSelected", "unknown");
    EXPECT_TRUE(waitFor([&] { return left == 0; })) << left;
}

TEST_F(QtFXMaterialEventTest, WhatAnEventThrowsIsCaughtAndTheNextOnesAreHandled)
{
    manager->materials["broken"] = boost::make_shared<BrokenMaterial>(log, "broken", effect);
    addSlider("size", {0.5f});
    editor->open();
    send("MaterialSelected", "broken");
    send("MaterialSelected", "m");
    EXPECT_NO_THROW(editor->paint());
    EXPECT_EQ(take(), QStringList({"find broken", "find m"}));
    EXPECT_TRUE(editor->slider(1).isVisible());
    handle("MaterialSelected", "broken");
    EXPECT_TRUE(editor->container().isVisible());
}

TEST_F(QtFXMaterialEventTest, EventsOfOtherTypesAreDropped)
{
    show();
    const QPointer<QWidget> box = &editor->techniques();
    take();
    for (const char* type : {"", "materialselected", "SceneUpdate", "EffectReloaded "})
        for (const char* data : {"m", "fx", "m, size"})
            editor->handleEvent({HCE::EventType(type), HCE::EventData(data), "1"});
    editor->paint();
    EXPECT_EQ(take(), QStringList());
    EXPECT_TRUE(box);
}

// MaterialSelected

TEST_F(QtFXMaterialEventTest, MaterialSelectedShowsTheMaterialOfItsFirstArgument)
{
    makeMaterial("Gr\xC3\xBCn 1");
    handle("MaterialSelected", "Gr\xC3\xBCn 1, more");
    EXPECT_EQ(take(), QStringList(QStringLiteral("find Gr\u00FCn 1")));
    EXPECT_EQ(editor->title().text(), QStringLiteral("Gr\u00FCn 1"));
}

TEST_F(QtFXMaterialEventTest, AnUnknownMaterialSelectedChangesNothing)
{
    show();
    const QPointer<QWidget> box = &editor->techniques();
    handle("MaterialSelected", "unknown");
    handle("MaterialSelected", "");
    EXPECT_TRUE(box);
    EXPECT_EQ(editor->title().text(), "m");
}

TEST_F(QtFXMaterialEventTest, WithoutManagersAndMaterialsEventsDoNothing)
{
    editor->setFXManager(nullptr);
    handle("MaterialSelected", "m");
    handle("MaterialParameterUpdated", "m, size");
    handle("EffectReloaded", "fx");
    EXPECT_EQ(editor->title().text(), "No Material Selected");
    EXPECT_EQ(editor->grid().count(), 0);
}

// EffectReloaded

TEST_F(QtFXMaterialEventTest, EffectReloadedRebuildsEveryRowAndTheTechniques)
{
    addSlider("size", {0.5f});
    show();
    const QPointer<QWidget> slider = &editor->slider(1);
    const QPointer<QWidget> box = &editor->techniques();
    effect->techniques = {"new"};
    material->parameters.clear();
    addColor("tint", {1.0f, 0.0f, 0.0f});
    handle("EffectReloaded", "fx");
    EXPECT_EQ(editor->color(1).text(), "#ff0000");
    ASSERT_EQ(editor->techniques().count(), 1);
    EXPECT_EQ(editor->techniques().itemText(0), "new");
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_FALSE(slider);
    EXPECT_FALSE(box);
}

TEST_F(QtFXMaterialEventTest, TheReloadOfAnotherEffectIsIgnored)
{
    show();
    QComboBox* box = &editor->techniques();
    for (const char* id : {"f", "fxx", "FX", "", " fx", "fx "})
        handle("EffectReloaded", id);
    material->effect.reset();
    handle("EffectReloaded", "");
    EXPECT_EQ(&editor->techniques(), box);
}

// MaterialParameterUpdated

TEST_F(QtFXMaterialEventTest, AnUpdatedColourIsShown)
{
    const auto tint = addColor("tint", {1.0f, 0.0f, 0.0f});
    show();
    tint->values = {0.0f, 0.5f, 1.0f, 0.5f};
    handle("MaterialParameterUpdated", "m, tint");
    EXPECT_EQ(editor->color(1).text(), "#0080ff");
    EXPECT_EQ(editor->color(1).styleSheet(), "background-color: #0080ff");
    EXPECT_EQ(take(), QStringList());
}

TEST_F(QtFXMaterialEventTest, AnUpdatedSliderMovesWithoutAnEdit)
{
    const auto size = addSlider("size", {0.5f}, {{"UIStep", 0.25f}});
    const auto plain = addSlider("plain", {0.5f});
    show();
    size->values = {0.75f};
    plain->values = {0.29f};
    handle("MaterialParameterUpdated", "m, size");
    EXPECT_EQ(editor->slider(1).value(), 3);
    EXPECT_EQ(editor->slider(2).value(), 5) << "each has an event of its own";
    handle("MaterialParameterUpdated", "m, plain");
    EXPECT_EQ(editor->slider(2).value(), 2);
    EXPECT_EQ(take(), QStringList());
    QTest::keyClick(&editor->slider(2), Qt::Key_Right);
    EXPECT_EQ(take(), QStringList({"set plain 0.3", "send m, plain, 0.3"})) << "edits go on";
}

TEST_F(QtFXMaterialEventTest, TheEchoOfAnEditMovesNoSlider)
{
    // At some positions the value, divided by the step again, is just below the position.
    addSlider("size", {0.0f}, {{"UIStep", 0.01f}});
    show();
    QSlider& slider = editor->slider(1);
    for (int position = 1; position <= 100; ++position) {
        QTest::keyClick(&slider, Qt::Key_Right);
        handle("MaterialParameterUpdated", "m, size");
        ASSERT_EQ(slider.value(), position);
    }
}

TEST_F(QtFXMaterialEventTest, AnUpdateOfAnotherMaterialIsIgnored)
{
    const auto tint = addColor("tint", {1.0f, 0.0f, 0.0f});
    show();
    tint->values = {0.0f, 0.0f, 1.0f};
    for (const char* data : {"n, tint", "mm, tint", "M, tint", ", tint", "m , tint", "tint, m", "m", ""})
        handle("MaterialParameterUpdated", data);
    EXPECT_EQ(editor->color(1).text(), "#ff0000");
}

TEST_F(QtFXMaterialEventTest, AnUpdateOfAnUnknownParameterOrOneWithoutAnEditorIsIgnored)
{
    add("plain", {0.5f});
    show();
    for (const char* data : {"m, unknown", "m, plain", "m, "})
        handle("MaterialParameterUpdated", data);
    addSlider("late", {0.5f});
    handle("MaterialParameterUpdated", "m, late");
    editor->updateParameterWidget(nullptr);
    EXPECT_EQ(editor->error(), QString());
}

TEST_F(QtFXMaterialEventTest, AParameterOfTheLastMaterialIsForgotten)
{
    const auto size = addSlider("size", {0.5f});
    show();
    editor->setFXMaterial(makeMaterial("other"));
    size->values = {0.7f};
    editor->updateParameterWidget(size);
    EXPECT_THAT(editor->rows(), ElementsAre());
}

TEST_F(QtFXMaterialEventTest, AnUnreadableColourIsReportedAndBlack)
{
    const auto tint = addColor("tint", {1.0f, 0.0f, 0.0f});
    show();
    tint->values = {1};
    editor->updateParameterWidget(tint);
    EXPECT_EQ(editor->color(1).text(), "#000000");
    EXPECT_EQ(editor->error(), "Error reading color from parameter: tint");
}

TEST_F(QtFXMaterialEventTest, AnUnreadableSliderIsLeftAloneSilently)
{
    const auto size = addSlider("size", {0.5f});
    show();
    for (const AnyValues& values : {AnyValues{}, AnyValues{1}, AnyValues{text("1")}}) {
        size->values = values;
        editor->updateParameterWidget(size);
        EXPECT_EQ(editor->slider(1).value(), 5);
    }
    EXPECT_EQ(editor->error(), QString());
}

TEST_F(QtFXMaterialEventTest, AMessageOfAPaintIsShownAfterIt)
{
    const auto tint = addColor("tint", {1.0f, 0.0f, 0.0f});
    show();
    tint->values = {1};
    handle("MaterialParameterUpdated", "m, tint");
    EXPECT_EQ(editor->error(), QString());
    QCoreApplication::processEvents();
    EXPECT_EQ(editor->error(), "Error reading color from parameter: tint");
}

TEST_F(QtFXMaterialEventTest, APictureAppearsWithTheFirstUpdateAndIsGoneAfterEachRebuild)
{
    const QString file = makePicture("a.png", Qt::red);
    addTexture("map", {file.toStdString()});
    show();
    EXPECT_FALSE(previewOf(1).isValid());
    handle("MaterialParameterUpdated", "m, map");
    EXPECT_EQ(previewOf(1), QColor(Qt::red));
    show();
    EXPECT_FALSE(previewOf(1).isValid());
}

TEST_F(QtFXMaterialEventTest, APictureIsFortyByThirtyWhateverItsShape)
{
    const auto map = addTexture("map", {text("")});
    show();
    for (const QSize size : {QSize(8, 8), QSize(300, 20), QSize(1, 500)}) {
        map->values = {makePicture("a.png", Qt::green, size).toStdString()};
        handle("MaterialParameterUpdated", "m, map");
        ASSERT_TRUE(editor->picture(1).pixmap());
        EXPECT_EQ(editor->picture(1).pixmap()->size(), QSize(40, 30));
        EXPECT_EQ(previewOf(1), QColor(Qt::green));
    }
}

TEST_F(QtFXMaterialEventTest, APictureIsScaledSmoothly)
{
    QImage stripes(80, 30, QImage::Format_RGB32);
    for (int x = 0; x < 80; ++x)
        for (int y = 0; y < 30; ++y)
            stripes.setPixelColor(x, y, x % 2 ? Qt::white : Qt::black);
    const QString file = folder.filePath("stripes.png");
    ASSERT_TRUE(stripes.save(file));
    addTexture("map", {file.toStdString()});
    show();
    handle("MaterialParameterUpdated", "m, map");
    EXPECT_NEAR(previewOf(1).red(), 127, 10);
}

TEST_F(QtFXMaterialEventTest, AFileWithoutAPictureLeavesThePreviewEmpty)
{
    const auto map = addTexture("map", {makePicture("a.png", Qt::red).toStdString()});
    show();
    handle("MaterialParameterUpdated", "m, map");
    map->values = {text("nothing.png")};
    handle("MaterialParameterUpdated", "m, map");
    EXPECT_FALSE(previewOf(1).isValid());
    EXPECT_EQ(editor->error(), QString());
}

TEST_F(QtFXMaterialEventTest, AnUnreadableFileNameIsReportedInWordsOfItsOwn)
{
    const auto map = addTexture("map", {text("a.png")});
    show();
    map->values = {1.0f};
    editor->updateParameterWidget(map);
    EXPECT_EQ(editor->error(), "Error reading texture filename from parameter: map");
    EXPECT_FALSE(previewOf(1).isValid());
}

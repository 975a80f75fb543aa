#include "ShownStudio.h"

#include <QApplication>
#include <QDragEnterEvent>
#include <QFileDialog>
#include <QMimeData>
#include <QUrl>

using namespace studiotest;

namespace {

QString effect(const QString& name)
{
    return HALVERN_STUDIO_DATA "/effects/" + name;
}

class EffectFilesTest : public ShownStudio
{
protected:
    /// Whether the window took the drag; what it took is dropped.
    bool drop(const QMimeData& data)
    {
        QDragEnterEvent enter({5, 5}, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
        enter.ignore();
        QApplication::sendEvent(&window, &enter);
        if (!enter.isAccepted())
            return false;
        QDropEvent dropped({5, 5}, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(&window, &dropped);
        return true;
    }

    bool drop(const QString& file)
    {
        QMimeData data;
        data.setUrls({QUrl::fromLocalFile(file)});
        return drop(data);
    }
};

} // namespace

TEST_F(EffectFilesTest, AnObjectEffectGoesToTheSelectedNode)
{
    open(Showcase);
    select("Lawn");
    const auto material = [&] { return node("Lawn")->getMaterial(0, 0); };
    const auto before = material();
    const QImage still = picture();
    window.loadEffect(effect("checker.fx"));
    EXPECT_TRUE(waitFor([&] { return material() != before; }));
    EXPECT_GT(countChanged(still, picture()), 5000);
}

TEST_F(EffectFilesTest, ASceneEffectNeedsNoSelection)
{
    open(Showcase);
    const QImage still = picture();
    window.loadEffect(effect("ink.fx"));
    EXPECT_TRUE(waitFor([&] { return countChanged(still, picture()) > 5000; }));
}

TEST_F(EffectFilesTest, AnObjectEffectWithoutASelectionChangesNothing)
{
    open(Showcase);
    const QImage still = picture();
    window.loadEffect(effect("checker.fx"));
    EXPECT_EQ(countChanged(still, picture()), 0);
}

TEST_F(EffectFilesTest, ADroppedEffectIsLoaded)
{
    open(Showcase);
    const QImage still = picture();
    EXPECT_TRUE(drop(effect("ink.fx")));
    EXPECT_TRUE(waitFor([&] { return countChanged(still, picture()) > 5000; }));
}

TEST_F(EffectFilesTest, ADroppedModelIsOpened)
{
    open(Showcase);
    const auto* old = scene.sceneManager.get();
    EXPECT_TRUE(drop(House));
    EXPECT_TRUE(QTest::qWaitFor([&] { return scene.sceneManager.get() != old; }, 60'000));
}

TEST_F(EffectFilesTest, WhatIsNoFileIsRefused)
{
    open(Showcase);
    QMimeData text;
    text.setText("checker.fx");
    EXPECT_FALSE(drop(text));
    QMimeData remote;
    remote.setUrls({QUrl("http://localhost/checker.fx")});
    EXPECT_FALSE(drop(remote));
}

TEST_F(EffectFilesTest, TheDialogStartsWhereTheEffectsAre)
{
    open(Showcase);
    findAction("Load &Effect...")->trigger();
    auto* dialog = window.findChild<QFileDialog*>();
    ASSERT_TRUE(dialog);
    EXPECT_TRUE(dialog->directory().exists("toon.fx"));
    dialog->reject();
}

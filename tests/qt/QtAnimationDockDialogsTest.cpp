#include "tests/qt/DockProbe.h"

#include <QDialogButtonBox>
#include <QLineEdit>
#include <QPointer>
#include <QSignalSpy>

#include <gmock/gmock.h>

#include <memory>

using namespace halvern::test;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

class QtAnimationDockDialogsTest : public DockTest
{
protected:
    bool deleteAnimation(QMessageBox::StandardButton answer)
    {
        calls.take();
        return withAnswer(answer, [&] { dock.deleteAction().trigger(); });
    }

    /// Sets the scene anew and answers what it asks.
    bool setScene(QMessageBox::StandardButton answer)
    {
        calls.take();
        return withAnswer(answer, [&] { dock.setSceneManager(scene); });
    }

    /// Returns whether there was a dialog.
    bool createAnimation(const QString& name, int length)
    {
        calls.take();
        return withModal([&] { dock.newAction().trigger(); },
                         [&](QWidget& dialog) {
                             QTest::keyClicks(
                                 dialog.findChild<QLineEdit*>(QString(), Qt::FindDirectChildrenOnly), name);
                             dialog.findChild<QSpinBox*>()->setValue(length);
                             press(dialog, QDialogButtonBox::Ok);
                         });
    }

    static void press(QWidget& dialog, QDialogButtonBox::StandardButton button)
    {
        QTest::mouseClick(dialog.findChild<QDialogButtonBox*>()->button(button), Qt::LeftButton);
    }
};

/// What was seen of a message box while it was open.
struct SeenBox
{
    explicit SeenBox(QWidget& window)
    {
        auto& box = dynamic_cast<QMessageBox&>(window);
        text = box.text();
        details = box.informativeText();
        buttons = box.standardButtons();
        hasDefault = box.defaultButton() != nullptr;
        hasParent = box.parent() != nullptr;
        box.close();
    }

    QString text;
    QString details;
    QMessageBox::StandardButtons buttons;
    bool hasDefault;
    bool hasParent;
};

} // namespace

// Invalid animations

TEST_F(QtAnimationDockDialogsTest, ValidAnimationsAreTakenWithoutAQuestion)
{
    EXPECT_FALSE(setScene(QMessageBox::Yes));
    scene->library.clear();
    EXPECT_FALSE(setScene(QMessageBox::Yes));
}

TEST_F(QtAnimationDockDialogsTest, AnInvalidAnimationIsAskedAboutOnce)
{
    walk->valid = false;
    run->valid = false;
    std::unique_ptr<SeenBox> box;
    ASSERT_TRUE(withModal([&] { dock.setSceneManager(scene); },
                          [&](QWidget& window) { box = std::make_unique<SeenBox>(window); }));
    EXPECT_EQ(box->text, "There are invalid animations and they can not be edited in Halvern.");
    EXPECT_EQ(box->details, "Do you want to delete these animations?");
    EXPECT_EQ(box->buttons, QMessageBox::Yes | QMessageBox::No);
    EXPECT_FALSE(box->hasDefault);
    EXPECT_FALSE(box->hasParent);
}

TEST_F(QtAnimationDockDialogsTest, YesRemovesAllAnimationsTheValidOnesToo)
{
    run->valid = false;
    ASSERT_TRUE(setScene(QMessageBox::Yes));
    EXPECT_THAT(calls.take(),
                ElementsAre("pause", "setAnimation walk", "removeAllAnimations", "setAnimation none"));
    EXPECT_TRUE(scene->library.empty());
    EXPECT_EQ(dock.combo().count(), 0);
    EXPECT_EQ(dock.length().value(), 0);
}

TEST_F(QtAnimationDockDialogsTest, NoKeepsAllAndFillsTheListAgain)
{
    run->valid = false;
    ASSERT_TRUE(setScene(QMessageBox::No));
    EXPECT_THAT(calls.take(), ElementsAre("pause", "setAnimation walk", "pause", "setAnimation walk"));
    EXPECT_EQ(dock.listed(), QStringList({"walk", "run"}));
}

TEST_F(QtAnimationDockDialogsTest, AnEmptyEntryIsInvalid)
{
    scene->library.push_back(nullptr);
    EXPECT_TRUE(setScene(QMessageBox::Yes));
    EXPECT_TRUE(scene->library.empty());
}

TEST_F(QtAnimationDockDialogsTest, EditModeIsLeftAfterTheQuestion)
{
    dock.editAction().trigger();
    run->valid = false;
    EXPECT_TRUE(setScene(QMessageBox::No));
    EXPECT_FALSE(dock.editAction().isChecked());
    EXPECT_EQ(dock.enabled(), none);
}

TEST_F(QtAnimationDockDialogsTest, ADockThatGoesWhileItAsksDoesNothingMore)
{
    run->valid = false;
    auto* gone = new halvern::qt::QtAnimationDock;
    ASSERT_TRUE(withModal([&] { gone->setSceneManager(scene); },
                          [&](QWidget& window) {
                              delete gone;
                              calls.take();
                              QTest::mouseClick(dynamic_cast<QMessageBox&>(window).button(QMessageBox::Yes),
                                                Qt::LeftButton);
                          }));
    EXPECT_THAT(calls.take(), IsEmpty());
    EXPECT_EQ(scene->library.size(), 2u);
}

TEST_F(QtAnimationDockDialogsTest, ASceneThatComesWhileItAsksIsTheOneThatIsShown)
{
    run->valid = false;
    const auto other = boost::make_shared<FakeAnimationScene>(calls);
    other->put("other", 500);
    ASSERT_TRUE(withModal([&] { dock.setSceneManager(scene); },
                          [&](QWidget& window) {
                              dock.setSceneManager(other);
                              QTest::mouseClick(dynamic_cast<QMessageBox&>(window).button(QMessageBox::No),
                                                Qt::LeftButton);
                          }));
    EXPECT_EQ(dock.listed(), QStringList("other"));
    EXPECT_EQ(dock.slider().maximum(), 500);
}

TEST_F(QtAnimationDockDialogsTest, ASceneThatComesWhileItAsksIsTheOneThatIsEmptied)
{
    run->valid = false;
    const auto other = boost::make_shared<FakeAnimationScene>(calls);
    other->put("other");
    ASSERT_TRUE(withModal([&] { dock.setSceneManager(scene); },
                          [&](QWidget& window) {
                              dock.setSceneManager(other);
                              QTest::mouseClick(dynamic_cast<QMessageBox&>(window).button(QMessageBox::Yes),
                                                Qt::LeftButton);
                          }));
    EXPECT_EQ(scene->library.size(), 2u);
    EXPECT_TRUE(other->library.empty());
    EXPECT_EQ(dock.combo().count(), 0);
}

// Deleting

TEST_F(QtAnimationDockDialogsTest, DeletingAsksFirst)
{
    std::unique_ptr<SeenBox> box;
    ASSERT_TRUE(withModal([&] { dock.deleteAction().trigger(); },
                          [&](QWidget& window) { box = std::make_unique<SeenBox>(window); }));
    EXPECT_EQ(box->text, "Do you want to delete the current Animation?");
    EXPECT_EQ(box->details, "");
    EXPECT_EQ(box->buttons, QMessageBox::Yes | QMessageBox::No);
    EXPECT_FALSE(box->hasDefault);
    EXPECT_FALSE(box->hasParent);
    EXPECT_THAT(calls.take(), IsEmpty());
}

TEST_F(QtAnimationDockDialogsTest, YesDeletesTheChosenAnimationAndShowsTheFirst)
{
    dock.combo().setCurrentIndex(1);
    ASSERT_TRUE(deleteAnimation(QMessageBox::Yes));
    EXPECT_THAT(calls.take(),
                ElementsAre("removeAnimation 1", "setAnimation none", "pause", "setAnimation walk"));
    EXPECT_EQ(dock.listed(), QStringList("walk"));
    EXPECT_EQ(dock.slider().maximum(), 10000);
    ASSERT_TRUE(deleteAnimation(QMessageBox::Yes));
    EXPECT_EQ(calls.take().front(), "removeAnimation 0");
}

TEST_F(QtAnimationDockDialogsTest, NoDeletesNothing)
{
    ASSERT_TRUE(deleteAnimation(QMessageBox::No));
    EXPECT_THAT(calls.take(), IsEmpty());
    EXPECT_EQ(dock.listed(), QStringList({"walk", "run"}));
}

TEST_F(QtAnimationDockDialogsTest, DeletingTheOnlyAnimationEmptiesListBoxesAndSlider)
{
    scene->library.pop_back();
    dock.setSceneManager(scene);
    dock.editAction().trigger();
    dock.slider().setValue(500);
    ASSERT_TRUE(deleteAnimation(QMessageBox::Yes));
    EXPECT_THAT(calls.take(), ElementsAre("removeAnimation 0", "setAnimation none", "setTimeTarget 0"));
    EXPECT_EQ(dock.combo().count(), 0);
    EXPECT_EQ(dock.currentTime().value(), 0);
    EXPECT_EQ(dock.length().value(), 0);
    EXPECT_EQ(dock.slider().value(), 0);
    EXPECT_FALSE(dock.currentTime().isEnabled());
    EXPECT_FALSE(dock.length().isEnabled());
    EXPECT_FALSE(deleteAnimation(QMessageBox::Yes));
}

TEST_F(QtAnimationDockDialogsTest, InEditModeTheBoxesComeBackWithTheNextAnimation)
{
    scene->library.pop_back();
    dock.setSceneManager(scene);
    dock.editAction().trigger();
    ASSERT_TRUE(deleteAnimation(QMessageBox::Yes));
    EXPECT_FALSE(dock.length().isEnabled());
    ASSERT_TRUE(createAnimation("ab", 1000));
    EXPECT_EQ(dock.enabled(), all);
}

TEST_F(QtAnimationDockDialogsTest, AfterDeletingTheFirstIsTheCurrentOneEvenIfThereIsNone)
{
    dock.combo().setCurrentIndex(1);
    ASSERT_TRUE(withModal([&] { dock.deleteAction().trigger(); },
                          [&](QWidget& window) {
                              scene->library.clear();
                              QTest::mouseClick(dynamic_cast<QMessageBox&>(window).button(QMessageBox::Yes),
                                                Qt::LeftButton);
                          }));
    scene->put("late");
    dock.editAction().trigger();
    EXPECT_TRUE(dock.editAction().isChecked());
}

TEST_F(QtAnimationDockDialogsTest, ADockThatGoesWhileItAsksDeletesNothing)
{
    auto* gone = new DockProbe;
    gone->setSceneManager(scene);
    calls.take();
    ASSERT_TRUE(withModal([&] { gone->deleteAction().trigger(); },
                          [&](QWidget& window) {
                              delete gone;
                              QTest::mouseClick(dynamic_cast<QMessageBox&>(window).button(QMessageBox::Yes),
                                                Qt::LeftButton);
                          }));
    EXPECT_THAT(calls.take(), IsEmpty());
}

TEST_F(QtAnimationDockDialogsTest, ASceneThatComesMeanwhileLosesItsAnimation)
{
    const auto other = boost::make_shared<FakeAnimationScene>(calls);
    other->put("other");
    dock.combo().setCurrentIndex(1);
    ASSERT_TRUE(withModal([&] { dock.deleteAction().trigger(); },
                          [&](QWidget& window) {
                              dock.setSceneManager(other);
                              calls.take();
                              QTest::mouseClick(dynamic_cast<QMessageBox&>(window).button(QMessageBox::Yes),
                                                Qt::LeftButton);
                          }));
    EXPECT_THAT(calls.take(), ElementsAre("removeAnimation 0", "setAnimation none"));
    EXPECT_EQ(scene->library.size(), 2u);
}

// A new animation

TEST_F(QtAnimationDockDialogsTest, ANewAnimationIsAddedChosenAndBeginsWithAKeyframe)
{
    ASSERT_TRUE(createAnimation("jump", 2500));
    EXPECT_THAT(calls.take(), ElementsAre("addAnimation jump 2500", "pause", "setAnimation walk", "pause",
                                          "setAnimation jump", "insertKeyframe 0"));
    EXPECT_EQ(dock.listed(), QStringList({"walk", "run", "jump"}));
    EXPECT_EQ(dock.combo().currentIndex(), 2);
    EXPECT_EQ(dock.slider().minimum(), 0);
    EXPECT_EQ(dock.slider().maximum(), 2500);
    EXPECT_EQ(dock.currentTime().maximum(), 2500);
    EXPECT_EQ(dock.length().value(), 2500);
}

TEST_F(QtAnimationDockDialogsTest, TheFirstAnimationOfASceneIsChosenOnce)
{
    scene->library.clear();
    dock.setSceneManager(scene);
    ASSERT_TRUE(createAnimation("jump", 2500));
    EXPECT_THAT(calls.take(),
                ElementsAre("addAnimation jump 2500", "pause", "setAnimation jump", "insertKeyframe 0"));
}

TEST_F(QtAnimationDockDialogsTest, ANewAnimationMayHaveNoNameAndNoLength)
{
    ASSERT_TRUE(createAnimation("", 0));
    EXPECT_THAT(calls.take(), testing::Contains("addAnimation  0"));
    EXPECT_EQ(dock.listed(), QStringList({"walk", "run", ""}));
    EXPECT_EQ(dock.slider().maximum(), 0);
    EXPECT_EQ(dock.length().value(), 0);
    dock.grab();
}

TEST_F(QtAnimationDockDialogsTest, ALengthAbove120SecondsCountsButIsShownAs120)
{
    ASSERT_TRUE(createAnimation("jump", 150000));
    EXPECT_EQ(dock.slider().maximum(), 150000);
    EXPECT_EQ(dock.length().value(), 120000);
}

TEST_F(QtAnimationDockDialogsTest, CancelEscapeAndCloseCreateNothing)
{
    const std::vector<std::function<void(QWidget&)>> ways = {
        [](QWidget& dialog) { press(dialog, QDialogButtonBox::Cancel); },
        [](QWidget& dialog) { QTest::keyClick(&dialog, Qt::Key_Escape); },
        [](QWidget& dialog) { dialog.close(); },
    };
    for (const auto& leave : ways)
        EXPECT_TRUE(withModal([&] { dock.newAction().trigger(); }, leave));
    EXPECT_THAT(calls.take(), IsEmpty());
    EXPECT_EQ(scene->library.size(), 2u);
}

TEST_F(QtAnimationDockDialogsTest, ASceneWithoutNodesOpensNoDialog)
{
    scene->nodes.clear();
    EXPECT_FALSE(createAnimation("jump", 2500));
    EXPECT_THAT(calls.take(), IsEmpty());
}

TEST_F(QtAnimationDockDialogsTest, ASceneWithoutAnAnimationManagerOpensNoDialog)
{
    scene->animations.reset();
    dock.setSceneManager(scene);
    EXPECT_FALSE(createAnimation("jump", 2500));
}

TEST_F(QtAnimationDockDialogsTest, TheDialogIsModalBelongsToTheDockAndGoesAfterIt)
{
    QPointer<QWidget> seen;
    ASSERT_TRUE(withModal([&] { dock.newAction().trigger(); },
                          [&](QWidget& dialog) {
                              seen = &dialog;
                              EXPECT_TRUE(dialog.isModal());
                              EXPECT_TRUE(dialog.isVisible());
                              EXPECT_EQ(dialog.parent(), &dock);
                              press(dialog, QDialogButtonBox::Cancel);
                          }));
    EXPECT_TRUE(seen.isNull());
}

TEST_F(QtAnimationDockDialogsTest, TheDialogIsModalFromItsFirstMomentOn)
{
    struct Watch : QObject
    {
        bool eventFilter(QObject* watched, QEvent* event) override
        {
            const auto* dialog = qobject_cast<QDialog*>(watched);
            if (event->type() == QEvent::Show && dialog)
                modal.push_back(dialog->isModal());
            return false;
        }
        std::vector<bool> modal;
    } watch;
    QApplication::instance()->installEventFilter(&watch);
    withModal([&] { dock.newAction().trigger(); }, [](QWidget& dialog) { dialog.close(); });
    EXPECT_EQ(watch.modal, std::vector<bool>{true});
}

TEST_F(QtAnimationDockDialogsTest, ADockThatGoesWithItsDialogCreatesNothing)
{
    auto* gone = new DockProbe;
    gone->setSceneManager(scene);
    calls.take();
    ASSERT_TRUE(withModal([&] { gone->newAction().trigger(); }, [&](QWidget& /*dialog*/) { delete gone; }));
    EXPECT_THAT(calls.take(), IsEmpty());
    EXPECT_EQ(scene->library.size(), 2u);
}

TEST_F(QtAnimationDockDialogsTest, ASceneThatComesMeanwhileGetsTheAnimation)
{
    const auto other = boost::make_shared<FakeAnimationScene>(calls);
    ASSERT_TRUE(withModal([&] { dock.newAction().trigger(); },
                          [&](QWidget& dialog) {
                              dock.setSceneManager(other);
                              press(dialog, QDialogButtonBox::Ok);
                          }));
    EXPECT_EQ(scene->library.size(), 2u);
    EXPECT_EQ(other->library.size(), 1u);
    EXPECT_EQ(dock.combo().count(), 1);
}

TEST_F(QtAnimationDockDialogsTest, TheNextNewAnimationStartsWithAFreshDialog)
{
    ASSERT_TRUE(createAnimation("jump", 2500));
    withModal([&] { dock.newAction().trigger(); },
              [&](QWidget& dialog) {
                  EXPECT_EQ(dialog.findChild<QLineEdit*>()->text(), "");
                  EXPECT_EQ(dialog.findChild<QSpinBox*>()->value(), 10000);
                  press(dialog, QDialogButtonBox::Cancel);
              });
}

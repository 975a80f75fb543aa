#include "tests/qt/FXMaterialProbe.h"
#include "tests/support/Heap.h"

#include <QAbstractItemView>

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <thread>

using namespace halvern::test;

namespace {

using QtFXMaterialEnduranceTest = FXMaterialTest;

} // namespace

TEST_F(QtFXMaterialEnduranceTest,
       AHundredThousandEventsAtAHiddenEditorKeepMemoryBoundedAndItStandsRightAfterwards)
{
    for (int i = 0; i < 10; ++i)
        addSlider("p" + std::to_string(i), {0.5f});
    editor->open();
    show();
    editor->hide();
    const auto sendRound = [&](int i) {
        const std::string name = "p" + std::to_string(i % 10);
        send("MaterialParameterUpdated", "m, " + name);
        if (i % 100 == 0)
            send("EffectReloaded", "fx");
    };
    for (int i = 0; i < 1000; ++i)
        sendRound(i);
    events->clear();
    const std::size_t before = getHeapInUse();
    for (int i = 0; i < 100000; ++i) {
        sendRound(i);
        if (i % 1000 == 0)
            events->clear(); // what it records itself
    }
    events->clear();
    EXPECT_LT(getHeapInUse(), before + 200000);
    for (int i = 0; i < 10; ++i)
        material->parameters[std::size_t(i)]->values = {0.1f * float(i)};
    take();
    editor->show();
    EXPECT_TRUE(waitFor([&] { return editor->slider(10).value() == 9; }));
    for (int i = 0; i < 10; ++i)
        EXPECT_EQ(editor->slider(i + 1).value(), int(0.1f * float(i) / 0.1f));
    EXPECT_EQ(take(), QStringList());
}

TEST_F(QtFXMaterialEnduranceTest, StandsTwoThousandRebuildsWithThePopupOpenASliderHeldAndUpdatesWaiting)
{
    for (int i = 0; i < 2; ++i) {
        addSlider("s" + std::to_string(i), {0.5f});
        addColor("c" + std::to_string(i), {1.0f, 0.0f, 0.0f});
        addTexture("t" + std::to_string(i), {text("a.png")});
    }
    editor->open();
    show();
    std::srand(7);
    int builds = 0;
    int opened = 0;
    int held = 0;
    material->onTechnique = [&] { ++builds; };
    for (int i = 0; i < 2000; ++i) {
        if (i % 3 == 0) {
            editor->techniques().showPopup();
            opened += editor->techniques().view()->isVisible();
        }
        if (i % 3 == 1) {
            QSlider& slider = editor->slider(1 + 3 * (std::rand() % 2));
            QTest::mousePress(&slider, Qt::LeftButton);
            held += slider.isSliderDown();
        }
        if (i % 3 == 2)
            QTest::mousePress(&editor->color(2 + 3 * (std::rand() % 2)), Qt::LeftButton);
        for (int j = std::rand() % 4; j > 0; --j)
            send("MaterialParameterUpdated",
                 std::string("m, ") + "sct"[std::rand() % 3] + std::to_string(std::rand() % 2));
        send("EffectReloaded", "fx");
        if (i % 5 == 0)
            show();
        editor->repaint();
        QTest::mouseMove(editor.get(), {std::rand() % 400, std::rand() % 500});
        if (i % 7 == 0)
            QCoreApplication::processEvents();
        if (i % 50 == 0)
            QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_GE(builds, 2000);
    EXPECT_GT(opened, 600);
    EXPECT_GT(held, 600);
    EXPECT_EQ(editor->findChildren<QComboBox*>().size(), 1);
    EXPECT_EQ(editor->rows().size(), 6u);
}

TEST_F(QtFXMaterialEnduranceTest, RowsThatAreDueForPaintingMayBeReplacedByTheEditorsOwnPaint)
{
    addSlider("size", {0.5f});
    addColor("tint", {1.0f, 0.0f, 0.0f});
    QWidget window;
    editor->setParent(&window);
    editor->setAutoFillBackground(true); // Qt then paints it, and opaque rows, one after the other
    editor->setGeometry(0, 0, 400, 500);
    show();
    window.resize(400, 500);
    window.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&window));
    for (int i = 0; i < 50; ++i) {
        QCoreApplication::processEvents();
        const QPointer<QWidget> old = &editor->slider(1);
        send("EffectReloaded", "fx");
        for (QWidget* widget : editor->container().findChildren<QWidget*>()) {
            widget->setAttribute(Qt::WA_OpaquePaintEvent);
            widget->update();
        }
        editor->repaint();
        EXPECT_NE(&editor->slider(1), old);
    }
    editor->setParent(nullptr);
}

TEST_F(QtFXMaterialEnduranceTest, WhatAPaintReplacesIsOutOfTheGridAtOnceAndGoneSoon)
{
    addSlider("size", {0.5f});
    editor->open();
    show();
    const QPointer<QWidget> old = &editor->slider(1);
    handle("EffectReloaded", "fx");
    EXPECT_EQ(editor->container().findChildren<QSlider*>().size(), 1);
    EXPECT_EQ(editor->findChild<QSlider*>(), &editor->slider(1));
    ASSERT_TRUE(old) << "Qt may be about to paint it";
    EXPECT_FALSE(old->isVisible());
    QCoreApplication::processEvents();
    EXPECT_FALSE(old);
    EXPECT_EQ(editor->findChildren<QSlider*>().size(), 1);
}

TEST_F(QtFXMaterialEnduranceTest, AHundredThousandEventsOfAnotherThreadLeaveNothingBehindInAHiddenEditor)
{
    addSlider("size", {0.5f});
    const auto threaded = boost::make_shared<HCE::EventManager>(true);
    editor->setEventManager(threaded);
    show();
    std::atomic<bool> isDone{false};
    const std::size_t before = getHeapInUse();
    std::thread sender([&] {
        for (int i = 0; i < 100000; ++i) {
            threaded->triggerEvent("MaterialParameterUpdated", "m, size");
            if (i % 100 == 0)
                threaded->waitUntilIdle();
        }
        threaded->waitUntilIdle();
        isDone = true;
    });
    EXPECT_TRUE(QTest::qWaitFor([&] { return isDone.load(); }, 200000));
    sender.join();
    QCoreApplication::processEvents();
    EXPECT_LT(getHeapInUse(), before + 2000000); // Qt keeps room for the calls that it queued
    material->parameters[0]->values = {0.8f};
    editor->open();
    EXPECT_TRUE(waitFor([&] { return editor->slider(1).value() == 8; }));
}

TEST_F(QtFXMaterialEnduranceTest, EditorsMayEndWhileThreeThreadsSendTheirEvents)
{
    addSlider("size", {0.5f});
    const auto threaded = boost::make_shared<HCE::EventManager>(true);
    std::atomic<bool> sending{true};
    std::thread senders[3];
    for (std::thread& sender : senders)
        sender = std::thread([&] {
            while (sending) {
                threaded->triggerEvent("MaterialSelected", "m");
                threaded->triggerEvent("MaterialParameterUpdated", "m, size");
                threaded->triggerEvent("EffectReloaded", "fx");
                std::this_thread::sleep_for(std::chrono::microseconds(200));
            }
        });
    for (int i = 0; i < 50; ++i) {
        FXMaterialProbe fleeting;
        fleeting.setEventManager(threaded);
        fleeting.setFXManager(manager);
        fleeting.show();
        EXPECT_TRUE(waitFor([&] { return fleeting.title().text() == "m"; }));
    }
    sending = false;
    for (std::thread& sender : senders)
        sender.join();
}

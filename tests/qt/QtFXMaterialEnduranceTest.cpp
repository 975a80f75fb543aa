#include "tests/qt/FXMaterialProbe.h"
#include "tests/support/Heap.h"

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
    for (int i = 0; i < 2000; ++i) {
        if (i % 3 == 0)
            editor->techniques().showPopup();
        if (i % 3 == 1)
            QTest::mousePress(&editor->slider(1 + 3 * (std::rand() % 2)), Qt::LeftButton);
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
    EXPECT_EQ(editor->findChildren<QComboBox*>().size(), 1);
    EXPECT_EQ(editor->rows().size(), 6u);
}

TEST_F(QtFXMaterialEnduranceTest, EditorsMayEndWhileThreeThreadsSendTheirEvents)
{
    addSlider("size", {0.5f});
    const auto threaded = boost::make_shared<HCE::EventManager>(true);
    std::atomic<bool> sending{true};
    std::vector<std::thread> senders;
    for (int i = 0; i < 3; ++i)
        senders.emplace_back([&] {
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

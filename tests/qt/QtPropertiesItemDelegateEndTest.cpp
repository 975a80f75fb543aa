#include "tests/qt/TypingTest.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

using namespace halvern::test;
using testing::ElementsAre;

namespace {

/// A way to end an edit, by its name.
struct Ending
{
    const char* name;
    Qt::Key key; // 0 takes the focus away
};

class QtPropertiesItemDelegateEndTest : public TypingTest, public testing::WithParamInterface<Ending>
{
protected:
    void end(QWidget* editor)
    {
        if (GetParam().key)
            QTest::keyClick(editor, GetParam().key);
        else
            view.setFocus();
        settle();
    }
};

INSTANTIATE_TEST_SUITE_P(Ends, QtPropertiesItemDelegateEndTest,
                         testing::Values(Ending{"Return", Qt::Key_Return}, Ending{"Enter", Qt::Key_Enter},
                                         Ending{"Tab", Qt::Key_Tab}, Ending{"Backtab", Qt::Key_Backtab},
                                         Ending{"Escape", Qt::Key_Escape}, Ending{"FocusOut", Qt::Key(0)}),
                         [](const auto& info) { return std::string(info.param.name); });

} // namespace

TEST_P(QtPropertiesItemDelegateEndTest, SendsExactlyOneActionWithTheWholeChange)
{
    auto* spinBox = type(stage.cell(TranslationGroup, 1), "12.5");
    ASSERT_TRUE(spinBox);
    EXPECT_EQ(stage.actionCount(), 0U);
    end(spinBox);
    EXPECT_THAT(stage.translations(), ElementsAre("a,   0\n10.5\n   0"));
    EXPECT_FALSE(isOpen(stage.cell(TranslationGroup, 1)));
    stage.change(TranslationGroup, 0, 2);
    EXPECT_EQ(stage.actionCount(), 2U) << "the bracket was closed";
}

TEST_P(QtPropertiesItemDelegateEndTest, SendsNothingWithoutAChange)
{
    auto* spinBox = open<QDoubleSpinBox>(stage.cell(TranslationGroup, 1));
    ASSERT_TRUE(spinBox);
    end(spinBox);
    EXPECT_EQ(stage.actionCount(), 0U);
}

TEST_P(QtPropertiesItemDelegateEndTest, KeepsWhatWasWrittenLive)
{
    auto* spinBox = type(stage.cell(TranslationGroup, 1), "12.5");
    ASSERT_TRUE(spinBox);
    end(spinBox);
    stage.scene->update();
    EXPECT_EQ(positionOf(*stage.a), Eigen::Vector3f(1, 12.5F, 3));
}

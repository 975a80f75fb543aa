#include "studio/TreeFilter.h"

#include "StudioHelpers.h"

#include <QLabel>
#include <QLineEdit>
#include <QTest>
#include <QTreeWidget>

#include <gtest/gtest.h>

using namespace halvern::studio;
using namespace studiotest;

namespace {

QTreeWidgetItem* makeItem(const QString& text, std::initializer_list<QTreeWidgetItem*> children = {})
{
    auto* item = new QTreeWidgetItem(QStringList(text));
    for (QTreeWidgetItem* child : children)
        item->addChild(child);
    return item;
}

void append(QStringList& texts, const QTreeWidgetItem& item)
{
    if (item.isHidden())
        return;
    texts += item.text(0);
    for (int i = 0; item.isExpanded() && i < item.childCount(); ++i)
        append(texts, *item.child(i));
}

/// A tree that notes which rows it shows whenever it is painted.
class Tree : public QTreeWidget
{
public:
    /// The texts of the rows that are neither hidden nor in a folded branch.
    QStringList rows()
    {
        QStringList texts;
        for (int i = 0; i < topLevelItemCount(); ++i)
            append(texts, *topLevelItem(i));
        return texts;
    }

    QList<QStringList> painted;

protected:
    void paintEvent(QPaintEvent* event) override
    {
        painted += rows();
        QTreeWidget::paintEvent(event);
    }
};

/// A garden whose shed is folded.
class TreeFilterTest : public testing::Test
{
protected:
    TreeFilterTest() { fill(); }

    void fill()
    {
        tree.clear();
        shed = makeItem("Shed", {makeItem("Red Spade"), makeItem("Pot")});
        tree.addTopLevelItem(
            makeItem("Garden", {makeItem("Roses", {makeItem("Red Rose"), makeItem("White Rose")}), shed}));
        tree.expandAll();
        shed->setExpanded(false);
    }

    void type(const QString& text)
    {
        QTest::keyClicks(&line, text);
        QCoreApplication::processEvents();
    }

    QTreeWidgetItem* find(const QString& text)
    {
        return tree.findItems(text, Qt::MatchExactly | Qt::MatchRecursive).value(0);
    }

    Tree tree;
    TreeFilter filter{&tree};
    QLineEdit& line = *filter.findChild<QLineEdit*>();
    QLabel& count = *filter.findChild<QLabel*>();
    QTreeWidgetItem* shed = nullptr;
};

const QStringList everything{"Garden", "Roses", "Red Rose", "White Rose", "Shed"};

} // namespace

TEST_F(TreeFilterTest, ShowsEverythingAndNoCountAtFirst)
{
    EXPECT_EQ(tree.rows(), everything);
    EXPECT_TRUE(count.isHidden());
}

TEST_F(TreeFilterTest, LeavesTheRowsWithTheTextInEitherCaseAndThoseAboveThem)
{
    type("wHITE");
    EXPECT_EQ(tree.rows(), QStringList({"Garden", "Roses", "White Rose"}));
}

TEST_F(TreeFilterTest, CountsTheRowsThatMatchThemselves)
{
    type("rose");
    EXPECT_EQ(count.text(), "3 of 7");
    EXPECT_FALSE(count.isHidden());
    type("x");
    EXPECT_EQ(count.text(), "0 of 7");
    EXPECT_TRUE(tree.rows().isEmpty());
}

TEST_F(TreeFilterTest, AllWordsMustOccurInAnyOrder)
{
    type(" rose   re ");
    EXPECT_EQ(tree.rows(), QStringList({"Garden", "Roses", "Red Rose"}));
    EXPECT_EQ(count.text(), "1 of 7");
}

TEST_F(TreeFilterTest, WordsAreNoPatterns)
{
    find("Red Rose")->setText(0, "Red (Rose).*");
    type("(rose).*");
    EXPECT_EQ(count.text(), "1 of 7");
}

TEST_F(TreeFilterTest, BlanksAloneFilterNothing)
{
    type("  ");
    EXPECT_EQ(tree.rows(), everything);
    EXPECT_TRUE(count.isHidden());
}

TEST_F(TreeFilterTest, FewerLettersBringRowsBack)
{
    type("white");
    line.setText("e");
    QCoreApplication::processEvents();
    EXPECT_EQ(tree.rows(), QStringList({"Garden", "Roses", "Red Rose", "White Rose", "Shed", "Red Spade"}));
}

TEST_F(TreeFilterTest, UnfoldsWhatHidesAMatchUntilTheLineIsCleared)
{
    type("spade");
    EXPECT_EQ(tree.rows(), QStringList({"Garden", "Shed", "Red Spade"}));
    line.clear();
    QCoreApplication::processEvents();
    EXPECT_EQ(tree.rows(), everything);
    EXPECT_TRUE(count.isHidden());
}

TEST_F(TreeFilterTest, FoldsNothingThatItDidNotUnfold)
{
    find("Roses")->setExpanded(false);
    shed->setExpanded(true);
    type("spade");
    line.clear();
    QCoreApplication::processEvents();
    EXPECT_EQ(tree.rows(), QStringList({"Garden", "Roses", "Shed", "Red Spade", "Pot"}));
}

TEST_F(TreeFilterTest, EscapeClearsTheLine)
{
    type("white");
    QTest::keyClick(&line, Qt::Key_Escape);
    QCoreApplication::processEvents();
    EXPECT_EQ(line.text(), "");
    EXPECT_EQ(tree.rows(), everything);
}

TEST_F(TreeFilterTest, LineHasAButtonThatClearsIt)
{
    EXPECT_TRUE(line.isClearButtonEnabled());
}

TEST_F(TreeFilterTest, BeginSelectsTheTextInTheLine)
{
    filter.show();
    line.setText("old");
    filter.begin();
    EXPECT_EQ(line.selectedText(), "old");
    EXPECT_EQ(filter.focusWidget(), &line);
}

TEST_F(TreeFilterTest, RebuiltTreeIsFilteredBeforeItIsPainted)
{
    tree.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&tree));
    type("spade");
    tree.painted.clear();
    fill();
    tree.viewport()->update();
    ASSERT_TRUE(waitFor([&] { return !tree.painted.isEmpty(); }));
    EXPECT_EQ(tree.painted.first(), QStringList({"Garden", "Shed", "Red Spade"}));
    line.clear();
    QCoreApplication::processEvents();
    EXPECT_EQ(tree.rows(), everything) << "the branches of the old tree are forgotten";
}

TEST_F(TreeFilterTest, AllThatHappensAtOnceIsFilteredOnce)
{
    for (int i = 0; i < 5; ++i) {
        QTest::keyClicks(&line, "rose");
        fill();
        line.clear();
    }
    QTest::keyClicks(&line, "spade");
    EXPECT_EQ(tree.rows(), everything);
    QCoreApplication::processEvents();
    EXPECT_EQ(tree.rows(), QStringList({"Garden", "Shed", "Red Spade"}));
}

TEST_F(TreeFilterTest, SelectionByTheProgramShowsItsRowThoughItDoesNotMatch)
{
    tree.show();
    type("white");
    tree.blockSignals(true);
    tree.setCurrentItem(find("Pot"));
    tree.blockSignals(false);
    QCoreApplication::processEvents();
    EXPECT_EQ(tree.rows(), QStringList({"Garden", "Roses", "White Rose", "Shed", "Pot"}));
    EXPECT_EQ(count.text(), "1 of 7");
    type(" rose");
    EXPECT_EQ(tree.rows(), QStringList({"Garden", "Roses", "White Rose"})) << "that was for once";
}

TEST_F(TreeFilterTest, SelectedRowThatDoesNotMatchIsHiddenLikeAnyOther)
{
    tree.setCurrentItem(find("Red Rose"));
    type("white");
    EXPECT_EQ(tree.rows(), QStringList({"Garden", "Roses", "White Rose"}));
    EXPECT_TRUE(find("Red Rose")->isSelected());
}

TEST_F(TreeFilterTest, TreeMayBeEmpty)
{
    tree.clear();
    type("a");
    EXPECT_EQ(count.text(), "0 of 0");
}

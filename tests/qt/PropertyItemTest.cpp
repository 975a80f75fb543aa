#include "qt/PropertyItem.h"

#include <gtest/gtest.h>

using halvern::qt::PropertyItem;

TEST(PropertyItemTest, NewItemHasInvalidValuesThatAreNotEditable)
{
    const PropertyItem item(2);
    EXPECT_EQ(item.columnCount(), 2);
    EXPECT_EQ(item.childCount(), 0);
    EXPECT_EQ(item.parent(), nullptr);
    EXPECT_EQ(item.childNumber(), 0);
    for (int column = 0; column < 2; ++column) {
        EXPECT_FALSE(item.data(column).isValid());
        EXPECT_FALSE(item.isEditable(column));
    }
}

TEST(PropertyItemTest, NegativeNumberOfColumnsIsNone)
{
    EXPECT_EQ(PropertyItem(-1).columnCount(), 0);
}

TEST(PropertyItemTest, ItemKnowsTheParentThatItWasGivenWithoutBeingItsChild)
{
    PropertyItem parent(2);
    const PropertyItem item(2, &parent);
    EXPECT_EQ(item.parent(), &parent);
    EXPECT_EQ(parent.childCount(), 0);
}

TEST(PropertyItemTest, ValuesAreKeptPerColumn)
{
    PropertyItem item(2);
    EXPECT_TRUE(item.setData(0, "X"));
    EXPECT_TRUE(item.setData(1, 1.5));
    EXPECT_EQ(item.data(0), QVariant("X"));
    EXPECT_EQ(item.data(1), QVariant(1.5));
}

TEST(PropertyItemTest, ColumnsThatDoNotExistAreRefusedAndReadAsInvalid)
{
    PropertyItem item(2);
    for (const int column : {-1, 2}) {
        EXPECT_FALSE(item.setData(column, 1));
        EXPECT_FALSE(item.data(column).isValid());
        EXPECT_FALSE(item.setEditable(column, true));
        EXPECT_FALSE(item.isEditable(column));
    }
}

TEST(PropertyItemTest, EditableIsAFlagOfEachColumn)
{
    PropertyItem item(2);
    EXPECT_TRUE(item.setEditable(1, true));
    EXPECT_FALSE(item.isEditable(0));
    EXPECT_TRUE(item.isEditable(1));
    EXPECT_TRUE(item.setEditable(1, false));
    EXPECT_FALSE(item.isEditable(1));
}

TEST(PropertyItemTest, ChildrenAreInsertedInFrontOfThePosition)
{
    PropertyItem item(2);
    EXPECT_TRUE(item.insertChildren(0, 2, 3));
    PropertyItem* first = item.child(0);
    PropertyItem* second = item.child(1);
    EXPECT_TRUE(item.insertChildren(1, 2, 2));
    EXPECT_EQ(item.childCount(), 4);
    EXPECT_EQ(item.child(0), first);
    EXPECT_EQ(item.child(3), second);
    EXPECT_EQ(first->columnCount(), 3);
    EXPECT_EQ(item.child(1)->columnCount(), 2);
    EXPECT_TRUE(item.insertChildren(4, 1, 2));
    EXPECT_EQ(item.child(3), second);
}

TEST(PropertyItemTest, ChildrenKnowTheirParentAndTheirRow)
{
    PropertyItem item(2);
    item.insertChildren(0, 3, 2);
    for (int row = 0; row < 3; ++row) {
        EXPECT_EQ(item.child(row)->parent(), &item);
        EXPECT_EQ(item.child(row)->childNumber(), row);
    }
    PropertyItem* last = item.child(2);
    item.removeChildren(0, 1);
    EXPECT_EQ(last->childNumber(), 1);
}

TEST(PropertyItemTest, ChildrenAreRemovedFromThePositionOn)
{
    PropertyItem item(2);
    item.insertChildren(0, 4, 2);
    PropertyItem* first = item.child(0);
    PropertyItem* last = item.child(3);
    EXPECT_TRUE(item.removeChildren(1, 2));
    EXPECT_EQ(item.childCount(), 2);
    EXPECT_EQ(item.child(0), first);
    EXPECT_EQ(item.child(1), last);
}

TEST(PropertyItemTest, RowsThatDoNotExistAreRefused)
{
    PropertyItem item(2);
    item.insertChildren(0, 2, 2);
    EXPECT_EQ(item.child(-1), nullptr);
    EXPECT_EQ(item.child(2), nullptr);
    EXPECT_FALSE(item.insertChildren(-1, 1, 2));
    EXPECT_FALSE(item.insertChildren(3, 1, 2));
    EXPECT_FALSE(item.insertChildren(0, 0, 2));
    EXPECT_FALSE(item.insertChildren(0, -1, 2));
    EXPECT_FALSE(item.removeChildren(-1, 1));
    EXPECT_FALSE(item.removeChildren(1, 2));
    EXPECT_FALSE(item.removeChildren(2, 1));
    EXPECT_FALSE(item.removeChildren(0, 0));
    EXPECT_FALSE(item.removeChildren(0, -1));
    EXPECT_FALSE(item.removeChildren(1, 2147483647));
    EXPECT_EQ(item.childCount(), 2);
}

TEST(PropertyItemTest, ColumnsAreInsertedInTheWholeTree)
{
    PropertyItem item(2);
    item.setData(0, "name");
    item.setData(1, "value");
    item.setEditable(1, true);
    item.insertChildren(0, 1, 2);
    item.child(0)->setData(1, "deep");
    EXPECT_TRUE(item.insertColumns(1, 2));
    EXPECT_EQ(item.columnCount(), 4);
    EXPECT_EQ(item.data(0), QVariant("name"));
    EXPECT_FALSE(item.data(1).isValid());
    EXPECT_EQ(item.data(3), QVariant("value"));
    EXPECT_FALSE(item.isEditable(1));
    EXPECT_TRUE(item.isEditable(3));
    EXPECT_EQ(item.child(0)->data(3), QVariant("deep"));
}

TEST(PropertyItemTest, ColumnsAreRemovedFromTheWholeTree)
{
    PropertyItem item(3);
    item.setData(2, "last");
    item.insertChildren(0, 1, 3);
    item.child(0)->setData(2, "deep");
    EXPECT_TRUE(item.removeColumns(0, 2));
    EXPECT_EQ(item.columnCount(), 1);
    EXPECT_EQ(item.data(0), QVariant("last"));
    EXPECT_EQ(item.child(0)->data(0), QVariant("deep"));
}

TEST(PropertyItemTest, ColumnsOutOfRangeAreNeitherInsertedNorRemoved)
{
    PropertyItem item(2);
    EXPECT_FALSE(item.insertColumns(-1, 1));
    EXPECT_FALSE(item.insertColumns(3, 1));
    EXPECT_FALSE(item.insertColumns(0, 0));
    EXPECT_FALSE(item.removeColumns(-1, 1));
    EXPECT_FALSE(item.removeColumns(1, 2));
    EXPECT_FALSE(item.removeColumns(0, 0));
    EXPECT_EQ(item.columnCount(), 2);
}

TEST(PropertyItemTest, ChildrenOfAnotherWidthKeepTheColumnsThatTheyHave)
{
    PropertyItem item(3);
    item.insertChildren(0, 1, 1);
    EXPECT_TRUE(item.removeColumns(2, 1));
    EXPECT_EQ(item.child(0)->columnCount(), 1);
}

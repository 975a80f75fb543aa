#include "engine/core/event/EventData.h"

#include <gtest/gtest.h>

#include <climits>
#include <random>
#include <string>
#include <utility>
#include <vector>

namespace {

using halvern::core::event::EventData;

std::vector<std::string> piecesOf(const std::string& text)
{
    const EventData data(text);
    std::vector<std::string> pieces;
    for (unsigned int n = 1; n <= data.getArgCount(); ++n)
        pieces.push_back(data.getArg(static_cast<int>(n)));
    return pieces;
}

/// The rule read aloud: cut at every comma, then drop one blank from the front of all but the first.
std::vector<std::string> referencePieces(const std::string& text)
{
    std::vector<std::string> pieces(1);
    for (const char c : text) {
        if (c == ',')
            pieces.emplace_back();
        else
            pieces.back() += c;
    }
    for (std::size_t i = 1; i < pieces.size(); ++i)
        if (!pieces[i].empty() && pieces[i][0] == ' ')
            pieces[i].erase(0, 1);
    return pieces;
}

using Pieces = std::vector<std::string>;

TEST(EventDataTest, TheFirstPieceIsNumberOne)
{
    const EventData data("Node_1, QtScene");
    EXPECT_EQ(data.getArg(1), "Node_1");
    EXPECT_EQ(data.getArg(2), "QtScene");
}

TEST(EventDataTest, NumberZeroIsTheWholeText)
{
    EXPECT_EQ(EventData(" a, b,c ").getArg(0), " a, b,c ");
    EXPECT_EQ(EventData("").getArg(0), "");
    EXPECT_EQ(EventData().getArg(0), "");
}

TEST(EventDataTest, OutOfRangeIsEmpty)
{
    const EventData data("a, b");
    EXPECT_EQ(data.getArg(3), "");
    EXPECT_EQ(data.getArg(INT_MAX), "");
    EXPECT_EQ(data.getArg(-1), "");
    EXPECT_EQ(data.getArg(INT_MIN), "");
}

TEST(EventDataTest, TheEmptyTextHasOneEmptyPiece)
{
    for (const EventData& data : {EventData(), EventData("")}) {
        EXPECT_EQ(data.getArgCount(), 1U);
        EXPECT_EQ(data.getArg(1), "");
        EXPECT_EQ(data.getArg(2), "");
        EXPECT_EQ(data.getData(), "");
    }
}

TEST(EventDataTest, AcceptsCommaWithAndWithoutBlank)
{
    EXPECT_EQ(piecesOf("a, b,c"), (Pieces{"a", "b", "c"}));
    EXPECT_EQ(piecesOf("Node_1,0.5 1 2"), (Pieces{"Node_1", "0.5 1 2"}));
}

TEST(EventDataTest, OneBlankAfterACommaIsDropped)
{
    EXPECT_EQ(piecesOf("a,  b"), (Pieces{"a", " b"}));
    EXPECT_EQ(piecesOf("a,   "), (Pieces{"a", "  "}));
    EXPECT_EQ(piecesOf(", ,  x"), (Pieces{"", "", " x"}));
}

TEST(EventDataTest, NothingElseIsTrimmed)
{
    EXPECT_EQ(piecesOf(" a ,\tb\t, c \n"), (Pieces{" a ", "\tb\t", "c \n"}));
    EXPECT_EQ(piecesOf("  "), (Pieces{"  "}));
    EXPECT_EQ(piecesOf("a,\n b"), (Pieces{"a", "\n b"}));
}

TEST(EventDataTest, EmptyPiecesCount)
{
    EXPECT_EQ(piecesOf(", , , 5, 6, TAG"), (Pieces{"", "", "", "5", "6", "TAG"}));
    EXPECT_EQ(piecesOf(",,"), (Pieces{"", "", ""}));
    EXPECT_EQ(piecesOf("a,"), (Pieces{"a", ""}));
    EXPECT_EQ(piecesOf("a, "), (Pieces{"a", ""}));
    EXPECT_EQ(piecesOf(", "), (Pieces{"", ""}));
}

TEST(EventDataTest, KeepsEveryOtherByte)
{
    const std::string text("\0x\xff, \xc3\xa4\0", 8);
    EXPECT_EQ(EventData(text).getData(), text);
    EXPECT_EQ(EventData(text).getArg(1), std::string("\0x\xff", 3));
    EXPECT_EQ(EventData(text).getArg(2), std::string("\xc3\xa4\0", 3));
}

TEST(EventDataTest, AgreesWithAnObviousSplitter)
{
    std::mt19937 random(1);
    const std::string alphabet = ",,,   ab\n";
    for (int i = 0; i < 20000; ++i) {
        std::string text(random() % 12, ' ');
        for (char& c : text)
            c = alphabet[random() % alphabet.size()];
        ASSERT_EQ(piecesOf(text), referencePieces(text)) << '"' << text << '"';
    }
}

TEST(EventDataTest, CopiesShareTheText)
{
    const EventData data("a text that is too long for the short string optimisation");
    const EventData copy = data; // NOLINT(performance-unnecessary-copy-initialization)
    EXPECT_EQ(&copy.getData(), &data.getData());
}

TEST(EventDataTest, MovedFromDataIsSafeToRead)
{
    EventData data("a, b");
    const EventData moved = std::move(data);
    EXPECT_EQ(moved.getArg(2), "b");
    EXPECT_EQ(data.getData(), ""); // NOLINT(bugprone-use-after-move): this is the question
    EXPECT_EQ(data.getArg(1), "");
    EXPECT_EQ(data.getArgCount(), 1U);
}

} // namespace

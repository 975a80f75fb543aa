#include "tests/qt/PropertiesStage.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <clocale>
#include <cstdlib>
#include <locale>
#include <sstream>

using namespace halvern::test;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

/// The text of a rotation about an axis by degrees, made from doubles.
std::vector<float> turnedBy(int axis, double degrees)
{
    const Eigen::AngleAxisd turn(degrees * 3.14159265358979 / 180, Eigen::Vector3d::Unit(axis));
    const Eigen::Matrix3f matrix = turn.toRotationMatrix().cast<float>();
    return {matrix.data(), matrix.data() + 9};
}

/// The numbers of an action's text after the ID, which is one character.
std::vector<float> numbersOf(const std::string& text)
{
    std::istringstream stream(text.substr(2));
    stream.imbue(std::locale::classic());
    return {std::istream_iterator<float>(stream), std::istream_iterator<float>()};
}

/// Numbers as they are written in many countries: 1.234,5.
class CommaPunctuation : public std::numpunct<char>
{
    char do_decimal_point() const override { return ','; }
    char do_thousands_sep() const override { return '.'; }
    std::string do_grouping() const override { return "\3"; }
};

/// While it exists, the program's locale has decimal commas, in C++ always, in C if the system has it.
class CommaLocale
{
public:
    CommaLocale() :
        before(std::locale::global(std::locale(std::locale::classic(), new CommaPunctuation))),
        cBefore(std::setlocale(LC_ALL, nullptr))
    {
        std::setlocale(LC_ALL, "de_DE.UTF-8");
        QLocale::setDefault(QLocale(QLocale::German, QLocale::Germany));
    }
    ~CommaLocale()
    {
        QLocale::setDefault(QLocale::c());
        std::locale::global(before);
        std::setlocale(LC_ALL, cBefore.c_str());
    }

private:
    std::locale before;
    std::string cBefore;
};

} // namespace

// Translations

TEST(QtPropertiesModelActionTest, MoveAlongYIsWrittenAsAPaddedColumn)
{
    PropertiesStage stage;
    stage.select("a");
    stage.change(TranslationGroup, 1, 1.5);
    EXPECT_THAT(stage.translations(), ElementsAre("a,  0\n1.5\n  0"));
}

TEST(QtPropertiesModelActionTest, MoveAlongXHasItsNumberFirst)
{
    PropertiesStage stage;
    stage.select("a");
    stage.change(TranslationGroup, 0, 1.5);
    stage.change(TranslationGroup, 0, 3.5);
    EXPECT_THAT(stage.translations(), ElementsAre("a,1.5\n  0\n  0", "a,2\n0\n0"));
}

TEST(QtPropertiesModelActionTest, MoveAlongZHasItsNumberLastAndNoNegativeZeros)
{
    PropertiesStage stage;
    stage.select("a");
    stage.change(TranslationGroup, 2, -12.34);
    EXPECT_THAT(stage.translations(), ElementsAre("a,     0\n     0\n-12.34"));
}

TEST(QtPropertiesModelActionTest, NumbersHaveTheDefaultSixDigits)
{
    PropertiesStage stage;
    stage.select("a");
    stage.change(TranslationGroup, 0, 123456.78);
    stage.change(TranslationGroup, 0, 123456.78 + 1000000);
    EXPECT_THAT(stage.translations(), ElementsAre("a,123457\n     0\n     0", "a,1e+06\n    0\n    0"));
}

TEST(QtPropertiesModelActionTest, ActionCarriesTheChangeAndNotTheNewValue)
{
    PropertiesStage stage;
    moveTo(*stage.a, 10, 20, 30);
    stage.select("a");
    stage.change(TranslationGroup, 1, 22);
    EXPECT_THAT(stage.translations(), ElementsAre("a,0\n2\n0"));
}

TEST(QtPropertiesModelActionTest, DifferenceIsTakenInSinglePrecision)
{
    PropertiesStage stage;
    moveTo(*stage.a, 2.35F, 0, 0);
    stage.select("a");
    stage.change(TranslationGroup, 0, 2.35000001);
    EXPECT_THAT(stage.translations(), IsEmpty()) << "the same number as a float";
    stage.change(TranslationGroup, 0, 2.45);
    EXPECT_THAT(stage.translations(), ElementsAre("a,0.1\n  0\n  0"));
}

TEST(QtPropertiesModelActionTest, OnlyTheEditedAxisIsAnnounced)
{
    PropertiesStage stage;
    stage.select("a");
    stage.model->beginValueEdit(stage.cell(TranslationGroup, 0));
    for (int row = 0; row < 3; ++row)
        stage.edit(TranslationGroup, row, row + 1);
    stage.model->commitValueEdit();
    EXPECT_THAT(stage.translations(), ElementsAre("a,1\n0\n0"));
}

TEST(QtPropertiesModelActionTest, SeparatorIsABareCommaAndTheVectorIsTheSecondArgument)
{
    PropertiesStage stage;
    stage.select("a");
    stage.change(TranslationGroup, 1, 1.5);
    const HCE::EventData data(stage.translations().front());
    EXPECT_EQ(data.getArgCount(), 2U);
    EXPECT_EQ(data.getArg(1), "a");
    EXPECT_EQ(data.getArg(2), " 0\n1.5\n  0") << "one blank belongs to the separator for whoever reads it";
}

TEST(QtPropertiesModelActionTest, ActionIsAnnouncedOnlyAndMovesNothing)
{
    PropertiesStage stage;
    stage.select("a");
    stage.change(TranslationGroup, 0, 5);
    EXPECT_EQ(positionOf(*stage.a), Eigen::Vector3f(0, 0, 0)) << "the pass moves the node";
    stage.scene->update();
    EXPECT_EQ(positionOf(*stage.a), Eigen::Vector3f(5, 0, 0));
}

TEST(QtPropertiesModelActionTest, ActionGoesThroughTheSceneManagerAndNotTheModelsOwnManager)
{
    PropertiesStage stage;
    stage.select("a");
    const auto other = boost::make_shared<RecordingEventManager>();
    stage.model->setEventManager(other);
    stage.change(TranslationGroup, 0, 5);
    EXPECT_EQ(other->getCount(), 0U);
    EXPECT_EQ(stage.actionCount(), 1U);
}

// Rotations

TEST(QtPropertiesModelActionTest, TurnIsNineNumbersColumnByColumnEachWithABlankBehind)
{
    PropertiesStage stage;
    stage.select("a");
    stage.change(RotationGroup, 0, 90);
    stage.change(RotationGroup, 1, 90);
    stage.change(RotationGroup, 2, 90);
    EXPECT_THAT(stage.rotations(), ElementsAre("a,0.99999994 0 0 0 -4.37113883e-08 1 0 -1 -4.37113883e-08 ",
                                               "a,-4.37113883e-08 0 -1 0 0.99999994 0 1 0 -4.37113883e-08 ",
                                               "a,-4.37113883e-08 1 0 -1 -4.37113883e-08 0 0 0 0.99999994 "));
}

TEST(QtPropertiesModelActionTest, TurnIsWrittenWithNineDigits)
{
    PropertiesStage stage;
    stage.select("a");
    stage.change(RotationGroup, 2, 30);
    EXPECT_THAT(stage.rotations(), ElementsAre("a,0.866025388 0.5 0 -0.5 0.866025388 0 0 0 1 "));
}

TEST(QtPropertiesModelActionTest, TurnIsTheDifferenceAboutTheEditedAxis)
{
    const double differences[]{0.1, -0.1, 1, -30, 45, 60.5, 120, -179, 359};
    for (int axis = 0; axis < 3; ++axis)
        for (const double difference : differences) {
            PropertiesStage stage;
            stage.select("a");
            stage.edit(RotationGroup, axis, 12.5);
            stage.change(RotationGroup, axis, 12.5 + difference);
            ASSERT_EQ(stage.rotations().size(), 1U);
            EXPECT_THAT(numbersOf(stage.rotations().front()),
                        testing::Pointwise(testing::FloatNear(2e-6F), turnedBy(axis, difference)));
        }
}

TEST(QtPropertiesModelActionTest, TurnIsRightHanded)
{
    PropertiesStage stage;
    stage.select("a");
    stage.change(RotationGroup, 2, 90);
    const auto numbers = numbersOf(stage.rotations().front());
    const Eigen::Map<const Eigen::Matrix3f> turn(numbers.data());
    EXPECT_TRUE((turn * Eigen::Vector3f::UnitX()).isApprox(Eigen::Vector3f::UnitY(), 1e-6F));
}

// The bracket

TEST(QtPropertiesModelActionTest, SameNumberSendsNothing)
{
    PropertiesStage stage;
    moveTo(*stage.a, 1, 2, 3);
    stage.select("a");
    for (const int group : {TranslationGroup, RotationGroup})
        stage.change(group, 0, stage.value(group, 0));
    EXPECT_EQ(stage.actionCount(), 0U);
    EXPECT_TRUE(stage.model->update()) << "but the groups were queued";
}

TEST(QtPropertiesModelActionTest, ThereAndBackSendsNothing)
{
    PropertiesStage stage;
    stage.select("a");
    stage.model->beginValueEdit(stage.cell(TranslationGroup, 0));
    stage.edit(TranslationGroup, 0, 5);
    stage.edit(TranslationGroup, 0, 0);
    stage.model->commitValueEdit();
    EXPECT_EQ(stage.actionCount(), 0U);
}

TEST(QtPropertiesModelActionTest, OtherGroupsSendNothing)
{
    PropertiesStage stage;
    addLight(*stage.a, "sun", 1, 1, 1);
    addCamera(*stage.a, "eye", 1, 2, 3);
    stage.select("a");
    const std::pair<QModelIndex, QVariant> edits[]{
        {stage.cell(IDGroup, -1), "x"},          {stage.cell(TranslationGroup, -1), 3},
        {stage.cell(ScaleGroup, 0), 3},          {stage.cell(LayersGroup, 0), true},
        {stage.cell(LightsGroup, 0), 3},         {stage.instance(LightsGroup, 0, 0), QColor(Qt::red)},
        {stage.instance(CamerasGroup, 0, 0), 3},
    };
    for (const auto& [cell, value] : edits) {
        stage.model->beginValueEdit(cell);
        EXPECT_TRUE(stage.model->setData(cell, value));
        stage.model->commitValueEdit();
    }
    EXPECT_EQ(stage.actionCount(), 0U);
}

TEST(QtPropertiesModelActionTest, ManyChangesWithinOneBracketAreOneAction)
{
    PropertiesStage stage;
    stage.select("a");
    stage.model->beginValueEdit(stage.cell(TranslationGroup, 0));
    for (int x = 1; x <= 10; ++x) {
        stage.edit(TranslationGroup, 0, x);
        stage.scene->update();
    }
    EXPECT_EQ(stage.actionCount(), 0U);
    stage.model->commitValueEdit();
    EXPECT_THAT(stage.translations(), ElementsAre("a,10\n 0\n 0"));
}

TEST(QtPropertiesModelActionTest, CommitWithoutABracketDoesNothing)
{
    PropertiesStage stage;
    stage.select("a");
    stage.model->commitValueEdit();
    stage.change(TranslationGroup, 0, 1);
    stage.edit(TranslationGroup, 0, 9);
    stage.model->commitValueEdit();
    EXPECT_EQ(stage.actionCount(), 1U);
}

TEST(QtPropertiesModelActionTest, BeginWhileABracketIsOpenDoesNothingEvenForAnotherCell)
{
    PropertiesStage stage;
    stage.select("a");
    stage.model->beginValueEdit(stage.cell(TranslationGroup, 0));
    stage.edit(TranslationGroup, 0, 1);
    stage.model->beginValueEdit(stage.cell(TranslationGroup, 0));
    stage.model->beginValueEdit(stage.cell(RotationGroup, 2));
    stage.edit(RotationGroup, 2, 30);
    stage.model->commitValueEdit();
    EXPECT_THAT(stage.translations(), ElementsAre("a,1\n0\n0"));
    EXPECT_THAT(stage.rotations(), IsEmpty());
}

TEST(QtPropertiesModelActionTest, BracketOnTheInvalidIndexSendsNothing)
{
    PropertiesStage stage;
    stage.select("a");
    stage.model->beginValueEdit(QModelIndex());
    stage.edit(TranslationGroup, 0, 1);
    stage.model->commitValueEdit();
    EXPECT_EQ(stage.actionCount(), 0U);
}

TEST(QtPropertiesModelActionTest, CellThatDiedSendsNothing)
{
    PropertiesStage stage;
    stage.select("a");
    stage.model->beginValueEdit(stage.cell(TranslationGroup, 0));
    stage.edit(TranslationGroup, 0, 1);
    stage.model->removeRows(TranslationGroup, 1);
    stage.model->commitValueEdit();
    EXPECT_EQ(stage.actionCount(), 0U);
    stage.change(RotationGroup - 1, 2, 30);
    EXPECT_EQ(stage.rotations().size(), 1U) << "the bracket was over";
}

TEST(QtPropertiesModelActionTest, FurtherRowsThatSomebodyInsertedSendNothing)
{
    PropertiesStage stage;
    stage.select("a");
    stage.model->insertRows(3, 1, stage.cell(TranslationGroup, -1, 0));
    stage.change(TranslationGroup, 3, 5);
    EXPECT_EQ(stage.actionCount(), 0U);
}

TEST(QtPropertiesModelActionTest, WithoutANodeNothingIsSent)
{
    PropertiesStage stage;
    stage.change(TranslationGroup, 0, 5);
    stage.change(RotationGroup, 0, 5);
    EXPECT_EQ(stage.actionCount(), 0U);
}

TEST(QtPropertiesModelActionTest, WithoutASceneManagerNothingIsSent)
{
    halvern::qt::QtPropertiesModel model({"Property", "Value"});
    model.beginValueEdit(cellOf(model, TranslationGroup, 0));
    model.setData(cellOf(model, TranslationGroup, 0), 5);
    model.commitValueEdit();
    EXPECT_TRUE(model.update());
}

TEST(QtPropertiesModelActionTest, AnotherSelectionEndsTheBracketForTheOldNodeBeforeTheRowsChange)
{
    PropertiesStage stage;
    moveTo(*stage.b, 100, 0, 0);
    stage.select("a");
    stage.model->beginValueEdit(stage.cell(TranslationGroup, 0));
    stage.edit(TranslationGroup, 0, 5);
    stage.select("b");
    EXPECT_THAT(stage.translations(), ElementsAre("a,5\n0\n0"));
    stage.change(TranslationGroup, 0, 101);
    EXPECT_THAT(stage.translations(), ElementsAre("a,5\n0\n0", "b,1\n0\n0"));
}

TEST(QtPropertiesModelActionTest, LossOfTheSelectionEndsTheBracketForTheOldNode)
{
    PropertiesStage stage;
    stage.select("a");
    stage.model->beginValueEdit(stage.cell(RotationGroup, 2));
    stage.edit(RotationGroup, 2, 30);
    stage.select("");
    ASSERT_EQ(stage.rotations().size(), 1U);
    EXPECT_EQ(stage.rotations().front().substr(0, 2), "a,");
}

TEST(QtPropertiesModelActionTest, SelectionOfTheSameNodeLeavesTheBracketOpen)
{
    PropertiesStage stage;
    stage.select("a");
    stage.model->beginValueEdit(stage.cell(TranslationGroup, 0));
    stage.edit(TranslationGroup, 0, 5);
    stage.select("a");
    EXPECT_EQ(stage.actionCount(), 0U);
    stage.edit(TranslationGroup, 0, 7);
    stage.model->commitValueEdit();
    EXPECT_THAT(stage.translations(), ElementsAre("a,7\n0\n0"));
}

TEST(QtPropertiesModelActionTest, WhoeverHearsOfAnActionMaySelectYetAnotherNode)
{
    PropertiesStage stage;
    stage.a->addChildNode(makeNode("c"));
    struct Selector : HCE::EventBase
    {
        explicit Selector(PropertiesStage& stage) : EventBase(stage.events)
        {
            registerHandler(HCE::EventType("TranslationAction"),
                            [&stage](const HCE::Event& /*event*/) { stage.select("c"); });
        }
        ~Selector() override { EventBase::setEventManager(nullptr); }
    } const selector(stage);
    stage.select("a");
    stage.model->beginValueEdit(stage.cell(TranslationGroup, 0));
    stage.edit(TranslationGroup, 0, 5);
    stage.select("b");
    EXPECT_EQ(stage.cell(IDGroup, -1).data(), QVariant("c"));
    EXPECT_THAT(stage.translations(), ElementsAre("a,5\n0\n0"));
}

// Locales

TEST(QtPropertiesModelActionTest, DecimalCommasOfTheLocaleChangeNoText)
{
    const CommaLocale locale;
    std::ostringstream check;
    check << 1234.5;
    ASSERT_EQ(check.str(), "1.234,5");
    PropertiesStage stage;
    stage.select("a");
    stage.change(TranslationGroup, 1, 1.5);
    stage.change(TranslationGroup, 1, 12346);
    stage.change(RotationGroup, 2, 30);
    EXPECT_THAT(stage.translations(), ElementsAre("a,  0\n1.5\n  0", "a,      0\n12344.5\n      0"));
    EXPECT_THAT(stage.rotations(), ElementsAre("a,0.866025388 0.5 0 -0.5 0.866025388 0 0 0 1 "));
    EXPECT_EQ(HCE::EventData(stage.rotations().front()).getArgCount(), 2U);
}

TEST(QtPropertiesModelActionTest, DecimalCommasOfTheLocaleChangeNoValue)
{
    const CommaLocale locale;
    PropertiesStage stage;
    moveTo(*stage.a, 2.346F, 0, 0);
    stage.select("a");
    EXPECT_EQ(stage.value(TranslationGroup, 0), QVariant(2.35));
    stage.edit(TranslationGroup, 1, "1.5");
    stage.model->update();
    EXPECT_EQ(positionOf(*stage.a), Eigen::Vector3f(2.35F, 1.5F, 0));
}

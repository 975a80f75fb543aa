#include "tests/qt/PropertiesStage.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using namespace halvern::test;
using testing::ElementsAre;

namespace {

constexpr double Degree = 3.14159265358979323846 / 180;

/// The rotation of the three rows: heading about Y, then attitude about Z, then bank about X.
Eigen::Matrix3d rotationOf(double x, double y, double z)
{
    return (Eigen::AngleAxisd(y * Degree, Eigen::Vector3d::UnitY()) *
            Eigen::AngleAxisd(z * Degree, Eigen::Vector3d::UnitZ()) *
            Eigen::AngleAxisd(x * Degree, Eigen::Vector3d::UnitX()))
        .toRotationMatrix();
}

/// What the rows show for a node with that rotation.
std::vector<double> readAngles(const Eigen::Matrix3d& rotation)
{
    PropertiesStage stage;
    Eigen::Affine3f transform = Eigen::Affine3f::Identity();
    transform.linear() = rotation.cast<float>();
    stage.a->setRotation(transform);
    stage.select("a");
    return stage.values(RotationGroup);
}

/// The node's rotation after the rows were set to these angles.
Eigen::Matrix3d writeAngles(double x, double y, double z)
{
    PropertiesStage stage;
    stage.select("a");
    stage.edit(RotationGroup, 0, x);
    stage.edit(RotationGroup, 1, y);
    stage.edit(RotationGroup, 2, z);
    stage.model->update();
    return stage.a->getRotation().topLeftCorner<3, 3>().cast<double>();
}

/// What the rows show after they were set to these angles and the node was read back.
std::vector<double> readBack(double x, double y, double z)
{
    PropertiesStage stage;
    stage.select("a");
    stage.edit(RotationGroup, 0, x);
    stage.edit(RotationGroup, 1, y);
    stage.edit(RotationGroup, 2, z);
    stage.scene->update();
    return stage.values(RotationGroup);
}

/// Angles that come back as they are.
const std::vector<std::vector<double>> plainAngles{
    {0, 0, 0},      {30, 0, 0},     {0, 30, 0},      {0, 0, 30},    {-30, 0, 0},   {0, -30, 0},
    {0, 0, -30},    {90, 0, 0},     {0, 90, 0},      {-90, 0, 0},   {0, -90, 0},   {10, 20, 30},
    {-10, 20, -30}, {45, -60, 75},  {120, 0, 0},     {0, 120, 0},   {170, 0, 0},   {0, -170, 0},
    {100, 50, 20},  {-135, 45, 60}, {150, -150, 85}, {12.34, 0, 0}, {0, 56.78, 0}, {0, 0, -43.21},
    {1, 2, 3},      {0.5, 0, 0},    {0, 0.5, 0},     {0, 0, 0.5},   {0, 0, 89},    {0, 0, -89},
    {179, 0, 0},    {0, 179, 0},    {5, 175, -40},   {90, 90, 45},  {-90, 45, 80}, {0, 0, 89.5},
};

} // namespace

TEST(QtPropertiesModelAngleTest, RowsShowBankHeadingAndAttitudeOfANode)
{
    for (const auto& angles : plainAngles)
        EXPECT_THAT(readAngles(rotationOf(angles[0], angles[1], angles[2])),
                    testing::Pointwise(testing::DoubleNear(0.0100001), angles))
            << angles[0] << ' ' << angles[1] << ' ' << angles[2];
}

TEST(QtPropertiesModelAngleTest, RowsAreWrittenAsBankHeadingAndAttitude)
{
    for (const auto& angles : plainAngles) {
        const Eigen::Matrix3d expected = rotationOf(angles[0], angles[1], angles[2]);
        const Eigen::Matrix3d written = writeAngles(angles[0], angles[1], angles[2]);
        EXPECT_LT((written - expected).cwiseAbs().maxCoeff(), 1e-5)
            << angles[0] << ' ' << angles[1] << ' ' << angles[2];
    }
}

TEST(QtPropertiesModelAngleTest, AnglesComeBackAsTheyWereWritten)
{
    for (const auto& angles : plainAngles)
        EXPECT_THAT(readBack(angles[0], angles[1], angles[2]),
                    testing::Pointwise(testing::DoubleNear(0.0200001), angles));
}

TEST(QtPropertiesModelAngleTest, XIsTheBankYTheHeadingAndZTheAttitude)
{
    EXPECT_THAT(readAngles(Eigen::AngleAxisd(40 * Degree, Eigen::Vector3d::UnitX()).toRotationMatrix()),
                ElementsAre(40, 0, 0));
    EXPECT_THAT(readAngles(Eigen::AngleAxisd(40 * Degree, Eigen::Vector3d::UnitY()).toRotationMatrix()),
                ElementsAre(0, 40, 0));
    EXPECT_THAT(readAngles(Eigen::AngleAxisd(40 * Degree, Eigen::Vector3d::UnitZ()).toRotationMatrix()),
                ElementsAre(0, 0, 40));
}

TEST(QtPropertiesModelAngleTest, AnglesAreRoundedToTwoDecimals)
{
    EXPECT_THAT(readAngles(rotationOf(12.344, 0, 0)), ElementsAre(12.34, 0, 0));
    EXPECT_THAT(readAngles(rotationOf(0, 12.346, 0)), ElementsAre(0, 12.35, 0));
}

TEST(QtPropertiesModelAngleTest, IdentityIsZeroBothWays)
{
    EXPECT_THAT(readAngles(Eigen::Matrix3d::Identity()), ElementsAre(0, 0, 0));
    EXPECT_TRUE(writeAngles(0, 0, 0).isIdentity(0));
}

TEST(QtPropertiesModelAngleTest, AtTheUpperPoleZIsNinetyXZeroAndYHeadingLessBank)
{
    EXPECT_THAT(readBack(0, 0, 90), ElementsAre(0, 0, 90));
    EXPECT_THAT(readBack(20, 30, 90), ElementsAre(0, 50, 90));
}

TEST(QtPropertiesModelAngleTest, AtTheLowerPoleZIsMinusNinetyXZeroAndYHeadingMinusBank)
{
    EXPECT_THAT(readBack(0, 0, -90), ElementsAre(0, 0, -90));
    EXPECT_THAT(readBack(20, 30, -90), ElementsAre(0, 10, -90));
}

TEST(QtPropertiesModelAngleTest, ZIsTakenForNinetyFromAbout89_89DegreesOn)
{
    EXPECT_EQ(readAngles(rotationOf(0, 0, 89.88))[2], 89.88);
    EXPECT_EQ(readAngles(rotationOf(0, 0, 89.9))[2], 90);
    EXPECT_EQ(readAngles(rotationOf(0, 0, -89.88))[2], -89.88);
    EXPECT_EQ(readAngles(rotationOf(0, 0, -89.9))[2], -90);
}

TEST(QtPropertiesModelAngleTest, SmallRotationsAreWrittenAboutXWhateverTheirRow)
{
    EXPECT_THAT(readBack(0.1, 0, 0), ElementsAre(0.1, 0, 0));
    EXPECT_THAT(readBack(0, 0.1, 0), ElementsAre(0.1, 0, 0));
    EXPECT_THAT(readBack(0, 0, 0.1), ElementsAre(0.1, 0, 0));
    EXPECT_THAT(readBack(0, 0.12, 0), ElementsAre(0, 0.12, 0)) << "beyond 0.1146 degrees the axis is known";
    EXPECT_THAT(readBack(0, 0, 0.12), ElementsAre(0, 0, 0.12));
}

TEST(QtPropertiesModelAngleTest, RotationOfTwoHundredthsOfADegreeIsLost)
{
    EXPECT_THAT(readBack(0.02, 0, 0), ElementsAre(0, 0, 0));
    EXPECT_THAT(readBack(0, 0.02, 0), ElementsAre(0, 0, 0));
}

TEST(QtPropertiesModelAngleTest, HalfTurnAboutXOrYReadsMinus180)
{
    EXPECT_THAT(readBack(180, 0, 0), ElementsAre(-180, 0, 0));
    EXPECT_THAT(readBack(0, 180, 0), ElementsAre(0, -180, 0));
}

TEST(QtPropertiesModelAngleTest, HalfTurnAboutZReadsAsHalfTurnsAboutXAndY)
{
    EXPECT_THAT(readBack(0, 0, 180), ElementsAre(-180, -180, 0));
}

TEST(QtPropertiesModelAngleTest, AttitudeBeyondNinetyReadsAsItsSupplement)
{
    EXPECT_THAT(readBack(0, 0, 100), ElementsAre(180, 180, 80));
}

TEST(QtPropertiesModelAngleTest, AnglesBeyondATurnAreTakenModuloATurn)
{
    EXPECT_THAT(readBack(370, 0, 0), ElementsAre(10, 0, 0));
    EXPECT_THAT(readBack(0, -400, 0), ElementsAre(0, -40, 0));
}

TEST(QtPropertiesModelAngleTest, FullTurnsMakeNoNumberThatIsNone)
{
    for (const double x : {0.0, 360.0, 720.0, 1000000.0})
        for (const double y : {0.0, 360.0, -1000000.0}) {
            EXPECT_TRUE(writeAngles(x, y, 0).allFinite());
            for (const double angle : readBack(x, y, 0))
                EXPECT_EQ(angle, angle);
        }
}

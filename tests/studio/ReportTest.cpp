#include "studio/Report.h"

#include <QJsonDocument>
#include <QJsonObject>

#include <gtest/gtest.h>

using namespace halvern::studio;

namespace {

QJsonObject parsed(const Report& report)
{
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(toJson(report), &error);
    EXPECT_EQ(error.error, QJsonParseError::NoError) << error.errorString().toStdString();
    return document.object();
}

} // namespace

TEST(ReportTest, TheLineIsAsDocumented)
{
    Report report;
    report.file = "duck.dae";
    report.counts = {4, 1, 2, 3, 5, 6, 7000000000, 8};
    report.loadMilliseconds = 12.25;
    report.firstFrameMilliseconds = 200;
    report.frameMilliseconds = {3.5};
    EXPECT_EQ(toJson(report).toStdString(),
              "{\"file\":\"duck.dae\",\"nodes\":4,\"meshes\":1,\"materials\":2,\"cameras\":3,\"lights\":5,"
              "\"animations\":6,\"triangles\":7000000000,\"vertices\":8,\"load_ms\":12.25,"
              "\"first_frame_ms\":200,\"frame_ms_median\":3.5}");
}

TEST(ReportTest, AnyFileNameSurvives)
{
    Report report;
    report.file = QString::fromUtf8("a \"b\"\\c\n\t[1],{2} \xc3\xa4\xe2\x82\xac.obj");
    EXPECT_FALSE(toJson(report).contains('\n'));
    EXPECT_EQ(parsed(report)["file"].toString(), report.file);
}

TEST(ReportTest, TheMedianOfAnOddNumberIsTheMiddle)
{
    Report report;
    report.frameMilliseconds = {9, 1, 2};
    EXPECT_EQ(parsed(report)["frame_ms_median"].toDouble(), 2);
}

TEST(ReportTest, TheMedianOfAnEvenNumberIsBetweenTheMiddleTwo)
{
    Report report;
    report.frameMilliseconds = {100, 1, 2, 4};
    EXPECT_EQ(parsed(report)["frame_ms_median"].toDouble(), 3);
}

TEST(ReportTest, TimesAreRoundedToMicroseconds)
{
    Report report;
    report.loadMilliseconds = 1.23456;
    EXPECT_EQ(parsed(report)["load_ms"].toDouble(), 1.235);
}

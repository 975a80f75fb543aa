#include "StudioHelpers.h"

#include <QElapsedTimer>
#include <QFile>
#include <QImage>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QSet>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <fstream>

#include <sys/stat.h>
#include <unistd.h>

using namespace studiotest;

// Runs the real program.

namespace {

const QString Models = HALVERN_TEST_MODELS;

struct Result
{
    int code = -1;
    QByteArray output;
    QByteArray errors;
};

void PrintTo(const Result& result, std::ostream* stream)
{
    *stream << "exit code " << result.code << "\n"
            << result.output.toStdString() << result.errors.toStdString();
}

/// An environment in which the program touches no settings but the test's.
QProcessEnvironment environment(const QString& home)
{
    QProcessEnvironment result = QProcessEnvironment::systemEnvironment();
    result.insert("HOME", home);
    result.insert("XDG_CONFIG_HOME", home);
    return result;
}

class ProgramTest : public testing::Test
{
protected:
    /// The result holds the output unless that goes to a file.
    Result run(const QStringList& arguments, const QStringList& unset = {}, const QString& outputFile = {})
    {
        QProcess process;
        QProcessEnvironment variables = environment(folder.path());
        for (const QString& name : unset)
            variables.remove(name);
        process.setProcessEnvironment(variables);
        process.setStandardOutputFile(outputFile);
        process.start(HALVERN_STUDIO_PROGRAM, arguments);
        if (!process.waitForFinished(60'000)) {
            process.kill();
            process.waitForFinished();
            ADD_FAILURE() << "still running: " << arguments.join(' ').toStdString();
            return {};
        }
        const int code = process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1;
        return {code, process.readAllStandardOutput(), process.readAllStandardError()};
    }

    /// The report of two frames of the model.
    QJsonObject report(const QString& model)
    {
        const Result result = run({model, "--size", "320x240", "--frames", "2", "--json"});
        EXPECT_EQ(result.code, 0) << testing::PrintToString(result);
        EXPECT_EQ(result.output.count('\n'), 1) << "one line and nothing else";
        return QJsonDocument::fromJson(result.output).object();
    }

    QString path(const QString& name) const { return folder.filePath(name); }

    QTemporaryDir folder;
};

void expectCounts(const QJsonObject& report, const QMap<QString, int>& counts)
{
    for (auto count = counts.begin(); count != counts.end(); ++count)
        EXPECT_EQ(report[count.key()].toInt(-1), count.value()) << count.key().toStdString();
}

/// A picture of something lit: many colours, hardly any red, hardly any black.
void expectPicture(const QImage& image)
{
    QSet<QRgb> colors;
    int red = 0;
    int black = 0;
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x) {
            const QRgb color = image.pixel(x, y) | 0xff000000u;
            colors.insert(color);
            red += color == 0xffff0000u;
            black += color == 0xff000000u;
        }
    const int pixels = image.width() * image.height();
    EXPECT_GT(colors.size(), 200);
    EXPECT_EQ(red, 0);
    EXPECT_LT(black, pixels / 20);
}

long processorTicks(qint64 process)
{
    std::ifstream file("/proc/" + std::to_string(process) + "/stat");
    std::string text;
    std::getline(file, text);
    std::istringstream fields(text.substr(text.rfind(')') + 1));
    std::string skipped;
    for (int i = 0; i < 11; ++i)
        fields >> skipped;
    long user = 0;
    long system = 0;
    fields >> user >> system;
    return user + system;
}

} // namespace

TEST_F(ProgramTest, HelpAndVersionNeedNoDisplay)
{
    const Result help = run({"--help"}, {"DISPLAY", "WAYLAND_DISPLAY"});
    EXPECT_EQ(help.code, 0);
    EXPECT_TRUE(help.output.contains("--frames"));
    const Result version = run({"--version"}, {"DISPLAY", "WAYLAND_DISPLAY"});
    EXPECT_EQ(version.code, 0);
    EXPECT_TRUE(version.output.startsWith("halvern-studio "));
}

TEST_F(ProgramTest, BadOptionsEndWith64AndAMessage)
{
    const QStringList lines[] = {{"--colour"}, {"--frames", "0"},      {"--frames", "-1"},  {"--size", "big"},
                                 {"--json"},   {"one.obj", "two.obj"}, {"--language", "fr"}};
    for (const QStringList& line : lines) {
        const Result result = run(line);
        EXPECT_EQ(result.code, 64) << line.join(' ').toStdString();
        EXPECT_TRUE(result.errors.startsWith("halvern-studio: ")) << testing::PrintToString(result);
        EXPECT_TRUE(result.output.isEmpty());
    }
}

TEST_F(ProgramTest, AFileThatCannotBeOpenedEndsWith2AndItsName)
{
    const QString files[] = {
        "/nowhere/model.obj",
        folder.path(),
        Models + "/invalid/empty.obj",
        Models + "/glTF2/wrongTypes/badArray.gltf",
        Models + "/glTF2/MissingBin/BoxTextured.gltf",
        Models + "/glTF2/RecursiveNodes/RecursiveNodes.gltf",
    };
    for (const QString& file : files) {
        const Result result = run({file, "--size", "320x240", "--frames", "1", "--json"});
        EXPECT_EQ(result.code, 2) << file.toStdString() << testing::PrintToString(result);
        EXPECT_TRUE(result.errors.contains(file.toUtf8())) << testing::PrintToString(result);
        EXPECT_TRUE(result.output.isEmpty());
    }
}

TEST_F(ProgramTest, AFileThatIsNoneEndsWith2AtOnce)
{
    const QString pipe = path("pipe.obj");
    ASSERT_EQ(mkfifo(qPrintable(pipe), 0600), 0);
    for (const QString& file : {pipe, QString("/dev/zero"), folder.path()}) {
        const Result result = run({file, "--size", "320x240", "--frames", "1"});
        EXPECT_EQ(result.code, 2) << file.toStdString() << testing::PrintToString(result);
        EXPECT_TRUE(result.errors.contains("halvern-studio: " + file.toUtf8() + ": is a "))
            << testing::PrintToString(result);
    }
}

TEST_F(ProgramTest, AFullDiskEndsWith2AndAMessage)
{
    const QStringList line{Models + "/OBJ/spider.obj", "--size", "320x240", "--frames", "1"};
    for (const char* option : {"--screenshot", "--view-screenshot"}) {
        const Result result = run(line + QStringList{option, "/dev/full"});
        EXPECT_EQ(result.code, 2) << option << testing::PrintToString(result);
        EXPECT_TRUE(result.errors.contains("cannot write /dev/full: No space left on device"))
            << testing::PrintToString(result);
    }
    const Result result = run(line + QStringList{"--json"}, {}, "/dev/full");
    EXPECT_EQ(result.code, 2) << testing::PrintToString(result);
    EXPECT_TRUE(result.errors.contains("cannot write the report: No space left on device"))
        << testing::PrintToString(result);
}

TEST_F(ProgramTest, NoFrameIsPaintedBeyondThoseWanted)
{
    qputenv("QT_LOGGING_RULES", "halvern.studio.debug=true");
    for (const int frames : {1, 3}) {
        const Result result =
            run({Models + "/OBJ/spider.obj", "--frames", QString::number(frames), "--json"});
        EXPECT_EQ(result.code, 0) << testing::PrintToString(result);
        // One more where the window was there before the model.
        const int shown = result.errors.count("frame shown");
        EXPECT_GE(shown, frames);
        EXPECT_LE(shown, frames + 1);
        EXPECT_GT(QJsonDocument::fromJson(result.output).object()["frame_ms_median"].toDouble(), 0);
    }
    qunsetenv("QT_LOGGING_RULES");
}

TEST_F(ProgramTest, WithoutFramesTooAFileThatCannotBeOpenedEndsWith2)
{
    const Result result = run({"/nowhere/model.obj"});
    EXPECT_EQ(result.code, 2);
    EXPECT_TRUE(result.errors.contains("/nowhere/model.obj"));
}

TEST_F(ProgramTest, TheReportHasItsKeysInOrder)
{
    const Result result = run({Models + "/OBJ/spider.obj", "--size", "320x240", "--frames", "2", "--json"});
    int last = 0;
    for (const char* key : {"file", "nodes", "meshes", "materials", "cameras", "lights", "animations",
                            "triangles", "vertices", "load_ms", "first_frame_ms", "frame_ms_median"}) {
        const int position = result.output.indexOf(QByteArray("\"") + key + "\":");
        EXPECT_GT(position, last) << key;
        last = position - 1;
    }
    const QJsonObject report = QJsonDocument::fromJson(result.output).object();
    EXPECT_EQ(report.size(), 12);
    EXPECT_EQ(report["file"].toString(), Models + "/OBJ/spider.obj");
    for (const char* key : {"load_ms", "first_frame_ms", "frame_ms_median"})
        EXPECT_GT(report[key].toDouble(), 0) << key;
    EXPECT_GT(report["first_frame_ms"].toDouble(), report["load_ms"].toDouble());
}

TEST_F(ProgramTest, AnObjFileIsCounted)
{
    expectCounts(report(Models + "/OBJ/spider.obj"), {{"nodes", 20},
                                                      {"materials", 4},
                                                      {"cameras", 0},
                                                      {"lights", 0},
                                                      {"animations", 0},
                                                      {"triangles", 1368}});
}

TEST_F(ProgramTest, AColladaFileIsCounted)
{
    expectCounts(
        report(Models + "/Collada/duck.dae"),
        {{"nodes", 4}, {"materials", 1}, {"cameras", 1}, {"lights", 1}, {"animations", 0}, {"meshes", 1}});
}

TEST_F(ProgramTest, AnFbxFileIsCounted)
{
    expectCounts(report(Models + "/FBX/huesitos.fbx"),
                 {{"nodes", 16}, {"materials", 1}, {"cameras", 1}, {"lights", 1}, {"animations", 1}});
}

TEST_F(ProgramTest, ABinaryGltfFileIsCountedWithItsRedundantMaterialsMerged)
{
    expectCounts(report(Models + "/glTF2/2CylinderEngine-glTF-Binary/2CylinderEngine.glb"),
                 {{"nodes", 83}, {"materials", 7}, {"cameras", 1}, {"lights", 0}, {"animations", 0}});
}

TEST_F(ProgramTest, BadIndicesAreShownWithoutHarm)
{
    const QString file = Models + "/glTF2/IndexOutOfRange/IndexOutOfRange.gltf";
    ASSERT_TRUE(QFile::exists(file));
    EXPECT_EQ(run({file, "--size", "320x240", "--frames", "1"}).code, 0);
}

TEST_F(ProgramTest, WithoutAFileTheShowcaseIsShown)
{
    const Result result = run({"--size", "640x480", "--frames", "3", "--json", "--stats", "--screenshot",
                               path("window.png"), "--view-screenshot", path("view.png")});
    ASSERT_EQ(result.code, 0) << testing::PrintToString(result);
    EXPECT_TRUE(QJsonDocument::fromJson(result.output).object()["file"].toString().endsWith("showcase.glb"));

    const QImage window(path("window.png"));
    EXPECT_EQ(window.size(), QSize(640, 480));
    expectPicture(window);
    const QImage view(path("view.png"));
    EXPECT_LE(view.width(), window.width());
    EXPECT_LT(view.height(), window.height());
    expectPicture(view);
}

TEST_F(ProgramTest, TheStatisticsAreOnTheScreenshot)
{
    QImage pictures[2];
    for (const bool stats : {false, true}) {
        QStringList arguments{Models + "/OBJ/spider.obj", "--size",        "640x480", "--frames", "2",
                              "--view-screenshot",        path("view.png")};
        if (stats)
            arguments.append("--stats");
        ASSERT_EQ(run(arguments).code, 0);
        pictures[stats] = QImage(path("view.png"));
    }
    EXPECT_NE(pictures[0], pictures[1]);
}

TEST_F(ProgramTest, TheScreenshotIsInTheLanguageThatIsAskedFor)
{
    const auto picture = [this](const QStringList& language) {
        const Result result = run(QStringList{Models + "/OBJ/spider.obj", "--size", "640x480", "--frames",
                                              "2", "--screenshot", path("window.png")} +
                                  language);
        EXPECT_EQ(result.code, 0) << testing::PrintToString(result);
        return QImage(path("window.png")).copy(0, 0, 640, 20); // the menu bar
    };
    const QImage english = picture({"--language", "en"});
    EXPECT_NE(picture({"--language", "de"}), english);
    // A script is not told what the system speaks.
    qputenv("LANGUAGE", "de");
    qputenv("LC_ALL", "de_DE.UTF-8");
    EXPECT_EQ(picture({}), english);
    qunsetenv("LANGUAGE");
    qunsetenv("LC_ALL");
}

TEST_F(ProgramTest, AScreenshotThatCannotBeWrittenEndsWith2AndItsName)
{
    const QString file = "/nowhere/picture.png";
    const Result result = run(
        {Models + "/OBJ/spider.obj", "--size", "320x240", "--frames", "1", "--json", "--screenshot", file});
    EXPECT_EQ(result.code, 2);
    EXPECT_TRUE(result.errors.contains(file.toUtf8()));
    EXPECT_TRUE(result.output.isEmpty());
}

TEST_F(ProgramTest, BatchUseWritesNoSettings)
{
    run({Models + "/OBJ/spider.obj", "--size", "320x240", "--frames", "1"});
    EXPECT_FALSE(QFile::exists(path("halvern")));
}

TEST_F(ProgramTest, AnIdleStudioPaintsNothingAndRests)
{
    QProcess studio;
    QProcessEnvironment variables = environment(folder.path());
    variables.insert("QT_LOGGING_RULES", "halvern.studio.debug=true");
    studio.setProcessEnvironment(variables);
    studio.start(HALVERN_STUDIO_PROGRAM, {"--size", "640x480", "--screenshot", path("window.png")});
    // Without --frames it goes on running after the screenshot.
    ASSERT_TRUE(waitFor([&] { return QFile::exists(path("window.png")); }));
    processEventsFor(500);
    ASSERT_EQ(studio.state(), QProcess::Running);
    EXPECT_TRUE(studio.readAllStandardError().contains("frame shown"));

    const long before = processorTicks(studio.processId());
    QElapsedTimer timer;
    timer.start();
    processEventsFor(1500);
    const double seconds = timer.elapsed() / 1e3;
    const double busy = double(processorTicks(studio.processId()) - before) / sysconf(_SC_CLK_TCK);
    EXPECT_FALSE(studio.readAllStandardError().contains("frame shown"));
#if !defined(__SANITIZE_THREAD__) && !defined(__SANITIZE_ADDRESS__)
    EXPECT_LT(busy / seconds, 0.03);
#endif
    RecordProperty("busy_percent", int(busy / seconds * 100));
    studio.kill();
    studio.waitForFinished();
}

#include "studio/Options.h"

#include <QFile>
#include <QRegularExpression>
#include <QSet>

#include <gtest/gtest.h>

using namespace halvern::studio;

namespace {

Options parse(const QStringList& arguments)
{
    return parseOptions(QStringList("halvern-studio") + arguments);
}

std::string errorOf(const QStringList& arguments)
{
    try {
        parse(arguments);
    } catch (const OptionError& error) {
        return error.what();
    }
    return {};
}

bool isRefused(const QStringList& arguments)
{
    return !errorOf(arguments).empty();
}

/// A file of the sources.
QString read(const QString& name)
{
    QFile file(HALVERN_STUDIO_SOURCE "/" + name);
    EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << name.toStdString();
    return QString::fromUtf8(file.readAll());
}

/// Such as "--frames".
QSet<QString> optionsIn(const QString& text)
{
    QSet<QString> options;
    auto matches = QRegularExpression("--[a-z][a-z-]*").globalMatch(text);
    while (matches.hasNext())
        options.insert(matches.next().captured());
    return options;
}

} // namespace

TEST(OptionsTest, NothingAsksForTheShowcaseUntilClosed)
{
    const Options options = parse({});
    EXPECT_EQ(options.action, Options::Action::Run);
    EXPECT_TRUE(options.file.isEmpty());
    EXPECT_TRUE(options.language.isEmpty());
    EXPECT_FALSE(options.size.isValid());
    EXPECT_EQ(options.frames, 0);
    EXPECT_FALSE(options.stats);
    EXPECT_FALSE(options.json);
    EXPECT_FALSE(options.isBatch());
}

TEST(OptionsTest, EveryOptionIsTaken)
{
    const Options options = parse({"--size", "640x480", "--frames=30", "--stats", "--json", "--screenshot",
                                   "a.png", "--view-screenshot", "b.png", "--language", "de", "duck.dae"});
    EXPECT_EQ(options.file, "duck.dae");
    EXPECT_EQ(options.size, QSize(640, 480));
    EXPECT_EQ(options.frames, 30);
    EXPECT_TRUE(options.stats);
    EXPECT_TRUE(options.json);
    EXPECT_EQ(options.screenshot, "a.png");
    EXPECT_EQ(options.viewScreenshot, "b.png");
    EXPECT_EQ(options.language, "de");
    EXPECT_TRUE(options.isBatch());
}

TEST(OptionsTest, FramesAndScreenshotsAreBatch)
{
    EXPECT_TRUE(parse({"--frames", "1"}).isBatch());
    EXPECT_TRUE(parse({"--screenshot", "a.png"}).isBatch());
    EXPECT_TRUE(parse({"--view-screenshot", "a.png"}).isBatch());
    EXPECT_FALSE(parse({"--stats", "--size", "10x10", "duck.dae"}).isBatch());
}

TEST(OptionsTest, HelpAndVersionWinOverTheRest)
{
    EXPECT_EQ(parse({"--help"}).action, Options::Action::Help);
    EXPECT_EQ(parse({"-h", "--frames", "0"}).action, Options::Action::Help);
    EXPECT_EQ(parse({"--version"}).action, Options::Action::Version);
    EXPECT_EQ(parse({"-v", "one", "two"}).action, Options::Action::Version);
}

TEST(OptionsTest, AnUnknownOptionIsNamed)
{
    EXPECT_NE(errorOf({"--colour"}).find("colour"), std::string::npos);
}

TEST(OptionsTest, ASizeIsTwoPositiveNumbersWithAnX)
{
    for (const char* bad : {"", "x", "640", "640x", "x480", "640x480x3", "0x480", "640x0", "-640x480",
                            "640X480", "640 x 480", "6e2x480", "640.5x480", "16385x10", "99999999999x10"})
        EXPECT_TRUE(isRefused({"--size", bad})) << bad;
    EXPECT_EQ(parse({"--size", "1x16384"}).size, QSize(1, 16384));
}

TEST(OptionsTest, FramesIsAPositiveNumber)
{
    for (const char* bad : {"", "0", "-1", "+1", " 1", "1 ", "1.5", "many", "0x10", "1000001", "99999999999"})
        EXPECT_TRUE(isRefused({"--frames", bad})) << bad;
    EXPECT_EQ(parse({"--frames", "1000000"}).frames, 1000000);
}

TEST(OptionsTest, AnOptionWithoutItsValueIsRefused)
{
    for (const char* option : {"--size", "--frames", "--language", "--screenshot", "--view-screenshot"})
        EXPECT_TRUE(isRefused({option})) << option;
}

TEST(OptionsTest, AFlagTakesNoValue)
{
    EXPECT_TRUE(isRefused({"--stats=yes"}));
    EXPECT_TRUE(isRefused({"--json=yes", "--frames", "1"}));
}

TEST(OptionsTest, EmptyFileNamesAreRefused)
{
    EXPECT_TRUE(isRefused({""}));
    EXPECT_TRUE(isRefused({"--screenshot", ""}));
    EXPECT_TRUE(isRefused({"--view-screenshot", ""}));
}

TEST(OptionsTest, OneFileAtATime)
{
    EXPECT_TRUE(isRefused({"one.obj", "two.obj"}));
}

TEST(OptionsTest, JsonWantsFrames)
{
    EXPECT_TRUE(isRefused({"--json"}));
    EXPECT_TRUE(isRefused({"--json", "--screenshot", "a.png"}));
}

TEST(OptionsTest, ALanguageIsOneThatIsSpoken)
{
    EXPECT_EQ(parse({"--language", "en"}).language, "en");
    for (const char* bad : {"", "fr", "DE", "de_DE", "../de", "german"})
        EXPECT_EQ(errorOf({"--language", bad}),
                  "--language wants de or en, not \"" + std::string(bad) + "\"");
}

TEST(OptionsTest, AFileAfterTwoDashesMayLookLikeAnOption)
{
    EXPECT_EQ(parse({"--", "--odd.obj"}).file, "--odd.obj");
}

TEST(OptionsTest, TheHelpNamesEveryOption)
{
    const QString help = helpText();
    for (const char* option : {"FILE", "--size", "--frames", "--language", "--stats", "--screenshot",
                               "--view-screenshot", "--json"})
        EXPECT_TRUE(help.contains(option)) << option;
}

TEST(OptionsTest, TheManPageDescribesTheOptionsOfTheHelp)
{
    const QString page = read("packaging/halvern-studio.1").replace("\\-", "-");
    const QString options = page.section(".SH OPTIONS", 1).section(".SH ", 0, 0);
    EXPECT_GE(optionsIn(helpText()).size(), 9);
    EXPECT_EQ(optionsIn(options), optionsIn(helpText()));
}

TEST(OptionsTest, TheReadmeNamesTheOptionsOfTheHelp)
{
    const QSet<QString> missing = optionsIn(helpText()) - optionsIn(read("README.md"));
    EXPECT_EQ(missing, QSet<QString>({"--help", "--version"}));
}

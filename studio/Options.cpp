#include "studio/Options.h"

#include "studio/Language.h"

#include <QCommandLineParser>

#include <algorithm>

namespace halvern::studio {

namespace {

void describe(QCommandLineParser& parser)
{
    parser.setApplicationDescription("Shows a 3D model; without FILE, the showcase scene.");
    parser.addOption({{"h", "help"}, "Show this help."});
    parser.addOption({{"v", "version"}, "Show the version."});
    parser.addOptions({
        {"size", "Size of the window in pixels, such as 1280x800.", "WxH"},
        {"frames", "Quit after N frames of the model.", "N"},
        {"language", "Language of menus and panels, such as de; else the one of the system.", "CODE"},
        {"stats", "Show the statistics of the view."},
        {"screenshot", "Save the window as it is on screen.", "PNG"},
        {"view-screenshot", "Save the view as it is on screen.", "PNG"},
        {"json", "With --frames: print one line about the model and the times."},
    });
    parser.addPositionalArgument("FILE", "The model to show.", "[FILE]");
}

[[noreturn]] void fail(const QString& message)
{
    throw OptionError(message.toStdString());
}

/// Digits only, 1 to `largest`; 0 for anything else.
int toPositive(const QString& text, int largest)
{
    const auto isDigit = [](QChar c) { return c >= '0' && c <= '9'; };
    if (!std::all_of(text.begin(), text.end(), isDigit))
        return 0;
    const int value = text.toInt();
    return value <= largest ? value : 0;
}

int toFrames(const QString& text)
{
    const int frames = toPositive(text, 1'000'000);
    if (frames == 0)
        fail(QString("--frames wants a number from 1 to 1000000, not \"%1\"").arg(text));
    return frames;
}

QSize toSize(const QString& text)
{
    const QStringList sides = text.split('x');
    const int largest = 16384;
    const QSize size =
        sides.size() == 2 ? QSize(toPositive(sides[0], largest), toPositive(sides[1], largest)) : QSize();
    if (size.isEmpty())
        fail(QString("--size wants WIDTHxHEIGHT in pixels, such as 1280x800, not \"%1\"").arg(text));
    return size;
}

QString toFileName(const QString& text, const char* what)
{
    if (text.isEmpty())
        fail(QString("%1 wants a file name").arg(what));
    return text;
}

QString toLanguage(const QString& text)
{
    const QStringList available = availableLanguages();
    if (!available.contains(text))
        fail(QString("--language wants %1, not \"%2\"").arg(available.join(" or "), text));
    return text;
}

QString toFile(const QStringList& files)
{
    if (files.size() > 1)
        fail(QString("one FILE at a time, not %1").arg(files.size()));
    return files.isEmpty() ? QString() : toFileName(files.first(), "FILE");
}

} // namespace

Options parseOptions(const QStringList& arguments)
{
    QCommandLineParser parser;
    describe(parser);
    if (!parser.parse(arguments))
        fail(parser.errorText());
    Options options;
    if (parser.isSet("help"))
        options.action = Options::Action::Help;
    else if (parser.isSet("version"))
        options.action = Options::Action::Version;
    if (options.action != Options::Action::Run)
        return options;

    options.file = toFile(parser.positionalArguments());
    if (parser.isSet("size"))
        options.size = toSize(parser.value("size"));
    if (parser.isSet("frames"))
        options.frames = toFrames(parser.value("frames"));
    if (parser.isSet("screenshot"))
        options.screenshot = toFileName(parser.value("screenshot"), "--screenshot");
    if (parser.isSet("view-screenshot"))
        options.viewScreenshot = toFileName(parser.value("view-screenshot"), "--view-screenshot");
    if (parser.isSet("language"))
        options.language = toLanguage(parser.value("language"));
    options.stats = parser.isSet("stats");
    options.json = parser.isSet("json");
    if (options.json && options.frames == 0)
        fail("--json wants --frames as well");
    return options;
}

QString helpText()
{
    QCommandLineParser parser;
    describe(parser);
    return parser.helpText();
}

} // namespace halvern::studio

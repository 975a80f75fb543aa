#include "qt/QtView.h"
#include "studio/BatchRun.h"
#include "studio/Console.h"
#include "studio/Language.h"
#include "studio/MainWindow.h"
#include "studio/Options.h"
#include "studio/ProcessClock.h"
#include "studio/SceneLoader.h"

#include <QApplication>
#include <QFileInfo>
#include <QLocale>

using namespace halvern::studio;

namespace {

const char Version[] = HALVERN_VERSION;

/// Works before there is an application object, which wants a display.
QStringList toStrings(int argc, char** argv)
{
    QStringList arguments;
    for (int i = 0; i < argc; ++i)
        arguments.append(QString::fromUtf8(argv[i]));
    return arguments;
}

int showText(const Options& options, int argc, char** argv)
{
    QCoreApplication application(argc, argv);
    if (options.action == Options::Action::Help)
        std::fputs(qPrintable(helpText()), stdout);
    else
        printLine(stdout, QByteArray("halvern-studio ") + Version);
    return ExitDone;
}

/// Where the program is installed, or where it was built.
QString showcaseFile()
{
    const QString installed = dataPath("scenes/showcase.glb");
    return QFileInfo::exists(installed) ? installed : HALVERN_SOURCE_DATA "/scenes/showcase.glb";
}

/// A script gets the same texts wherever it runs.
QString languageOf(const Options& options)
{
    if (!options.language.isEmpty())
        return options.language;
    return chooseLanguage(options.isBatch() ? QStringList() : QLocale::system().uiLanguages(),
                          availableLanguages());
}

int fail(const QString& message, ExitCode code)
{
    printLine(stderr, "halvern-studio: " + message.toUtf8());
    return code;
}

/// Ends the process without tearing down what its end frees as well.
[[noreturn]] void leave(int code)
{
    std::fflush(nullptr);
    std::_Exit(code);
}

int run(const Options& options, SceneLoader& loader, std::FILE* output)
{
    MainWindow window(&loader, !options.isBatch());
    if (options.size.isValid())
        window.resize(options.size);
    window.showStatistics(options.stats);
    if (options.isBatch())
        new BatchRun(options, &window, output);
    QObject::connect(&window, &MainWindow::nothingToShow,
                     [](const QString& message) { QCoreApplication::exit(fail(message, ExitFile)); });

    window.show();
    if (!window.getView()->isValid())
        return fail("this display has no OpenGL", ExitNoOpenGL);
    const int code = QApplication::exec();
    if (options.isBatch())
        leave(code); // the user of a script waits for the end, not for the window to be gone
    return code;
}

} // namespace

int main(int argc, char** argv)
{
    millisecondsSinceProcessStart();
    Options options;
    try {
        options = parseOptions(toStrings(argc, argv));
    } catch (const OptionError& error) {
        return fail(QString("%1\nTry --help.").arg(error.what()), ExitUsage);
    }
    if (options.action != Options::Action::Run)
        return showText(options, argc, argv);

    std::FILE* output = claimOutput();
    // A script has no use for the desktop's menu bar and screen reader, and where there is no session bus
    // the search for it starts a program.
    if (options.isBatch())
        qputenv("DBUS_SESSION_BUS_ADDRESS", "disabled:");
    // Before the application, so that the model is read while the window comes up.
    SceneLoader loader;
    loader.load(options.file.isEmpty() ? showcaseFile() : options.file);

    QCoreApplication::setAttribute(Qt::AA_ShareOpenGLContexts);
    QCoreApplication::setOrganizationName("halvern");
    QCoreApplication::setApplicationName("studio");
    QCoreApplication::setApplicationVersion(Version);
    QApplication application(argc, argv);
    speak(languageOf(options));
    const int code = run(options, loader, output);
    // An importer that does not notice the end must not hold it up, nor run into torn down statics.
    if (!loader.stop(std::chrono::milliseconds(100)))
        leave(code);
    return code;
}

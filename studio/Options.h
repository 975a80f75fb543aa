#pragma once

#include <QSize>
#include <QString>
#include <QStringList>

#include <stdexcept>

namespace halvern::studio {

/// A command line that cannot be followed; what() says why.
class OptionError : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

/// What the command line asks for.
struct Options
{
    enum class Action { Run, Help, Version };

    Action action = Action::Run;
    QString file;           ///< empty: the showcase scene
    QSize size;             ///< of the window; invalid: not given
    int frames = 0;         ///< quit after so many frames; 0: run until closed
    QString language;       ///< empty: not given
    bool stats = false;     ///< show the statistics of the view
    bool json = false;      ///< print the report when the frames are done
    QString screenshot;     ///< PNG of the window
    QString viewScreenshot; ///< PNG of the view

    bool wantsScreenshot() const { return !screenshot.isEmpty() || !viewScreenshot.isEmpty(); }

    /// Run by a script: the user's settings are neither read nor written.
    bool isBatch() const { return frames > 0 || wantsScreenshot(); }
};

/// The first argument is the program's name. Needs no application object. Throws OptionError.
Options parseOptions(const QStringList& arguments);

/// The text of --help. Needs an application object.
QString helpText();

} // namespace halvern::studio

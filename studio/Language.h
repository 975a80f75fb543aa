#pragma once

#include <QStringList>

namespace halvern::studio {

/// The file or folder below the data of the installed program, or of the build where it is not installed.
/// Needs no application object.
QString dataPath(const QString& name);

/// Codes of the languages that the studio speaks: those of the sources and of the translations, sorted. Needs
/// no application object.
QStringList availableLanguages();

/// The first of the wanted languages, such as "de-AT" or "de", that is spoken; English where none is.
QString chooseLanguage(const QStringList& wanted, const QStringList& available);

/// From now on texts that are made come in this language; Qt's own too, where its translations are installed.
void speak(const QString& language);

} // namespace halvern::studio

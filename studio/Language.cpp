#include "studio/Language.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QLibraryInfo>
#include <QTranslator>

namespace halvern::studio {

namespace {

const char SourceLanguage[] = "en";
const char Prefix[] = "halvern_qt_";
const char Suffix[] = ".qm";

void install(const QString& name, const QString& folder)
{
    auto* translator = new QTranslator(QCoreApplication::instance());
    if (translator->load(name, folder))
        QCoreApplication::installTranslator(translator);
    else
        delete translator;
}

} // namespace

QString dataPath(const QString& name)
{
    const QDir folder = QFileInfo("/proc/self/exe").canonicalPath();
    return QDir::cleanPath(folder.absoluteFilePath(HALVERN_DATA_FROM_BIN "/" + name));
}

QStringList availableLanguages()
{
    QStringList languages(SourceLanguage);
    const QString pattern = QString(Prefix) + "*" + Suffix;
    for (const QString& file : QDir(dataPath("translations")).entryList({pattern}, QDir::Files))
        languages.append(file.mid(int(qstrlen(Prefix))).chopped(int(qstrlen(Suffix))));
    languages.sort();
    return languages;
}

QString chooseLanguage(const QStringList& wanted, const QStringList& available)
{
    for (QString language : wanted) {
        language.replace('-', '_');
        for (const QString& code : {language, language.section('_', 0, 0)})
            if (available.contains(code))
                return code;
    }
    return SourceLanguage;
}

void speak(const QString& language)
{
    if (language == SourceLanguage)
        return;
    install("qtbase_" + language, QLibraryInfo::location(QLibraryInfo::TranslationsPath));
    install(Prefix + language, dataPath("translations"));
}

} // namespace halvern::studio

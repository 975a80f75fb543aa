#include "StudioHelpers.h"

#include "qt/QtView.h"
#include "studio/Language.h"
#include "studio/MainWindow.h"

#include <QAction>
#include <QApplication>
#include <QDir>
#include <QDockWidget>
#include <QLabel>
#include <QLibraryInfo>
#include <QMenu>
#include <QMenuBar>
#include <QTranslator>

#include <gtest/gtest.h>

using namespace halvern;
using namespace halvern::studio;
using namespace studiotest;

namespace {

void forgetLanguages()
{
    qDeleteAll(QApplication::instance()->findChildren<QTranslator*>());
}

class LanguageTest : public testing::Test
{
protected:
    ~LanguageTest() override { forgetLanguages(); }
};

QStringList textsOf(const QList<QAction*>& actions)
{
    QStringList texts;
    for (const QAction* action : actions)
        texts += action->text();
    return texts;
}

QStringList keysOf(const QMenu& menu)
{
    QStringList keys;
    for (const QString& text : textsOf(menu.actions())) {
        const int mark = text.indexOf('&');
        if (mark >= 0)
            keys += text.mid(mark + 1, 1).toLower();
    }
    return keys;
}

} // namespace

TEST_F(LanguageTest, EnglishAndGermanAreSpoken)
{
    EXPECT_EQ(availableLanguages(), QStringList({"de", "en"}));
}

TEST_F(LanguageTest, TheFirstWantedLanguageThatIsSpokenIsChosen)
{
    const QStringList spoken{"de", "en", "pt", "pt_BR"};
    EXPECT_EQ(chooseLanguage({"de"}, spoken), "de");
    EXPECT_EQ(chooseLanguage({"de-AT", "de"}, spoken), "de");
    EXPECT_EQ(chooseLanguage({"fr-FR", "fr", "de-DE"}, spoken), "de");
    EXPECT_EQ(chooseLanguage({"en-US", "de-DE"}, spoken), "en");
    EXPECT_EQ(chooseLanguage({"pt-BR"}, spoken), "pt_BR");
    EXPECT_EQ(chooseLanguage({"pt-PT"}, spoken), "pt");
}

TEST_F(LanguageTest, EnglishIsSpokenWhereNoneThatIsWantedIs)
{
    EXPECT_EQ(chooseLanguage({}, {"de", "en"}), "en");
    EXPECT_EQ(chooseLanguage({"C"}, {"de", "en"}), "en");
    EXPECT_EQ(chooseLanguage({"fr-FR", "fr"}, {"de", "en"}), "en");
    EXPECT_EQ(chooseLanguage({""}, {"de", "en"}), "en");
}

TEST_F(LanguageTest, EnglishNeedsNoTranslation)
{
    speak("en");
    EXPECT_TRUE(QApplication::instance()->findChildren<QTranslator*>().isEmpty());
}

TEST_F(LanguageTest, MenusAndPanelsAreGerman)
{
    speak("de");
    SceneLoader loader([](const std::string&, const scene::ImportOptions&) {
        scene::ImportedScene scene = oneNodeScene();
        scene.counts.nodes = 1'234;
        scene.counts.triangles = 7'654'321;
        scene.warnings = {"one", "two"};
        return scene;
    });
    MainWindow window(&loader, false);
    EXPECT_EQ(textsOf(window.menuBar()->actions()),
              QStringList({"&Datei", "&Bearbeiten", "&Ansicht", "&Hilfe"}));

    window.show();
    loader.load("good.obj");
    const auto shows = [&window](const QString& text) {
        for (const QLabel* label : window.findChildren<QLabel*>())
            if (label->text() == text)
                return true;
        return false;
    };
    EXPECT_TRUE(waitFor([&] { return shows("1.234 Knoten, 7.654.321 Dreiecke"); }));
    EXPECT_TRUE(shows("2 Warnungen"));
    // Filled after the first frame.
    EXPECT_TRUE(waitFor([&] { return window.findChild<QDockWidget*>("Halvern_Animation") != nullptr; }));
    EXPECT_EQ(window.findChild<QDockWidget*>("Halvern_Scene_Tree")->windowTitle(), "Szenenbaum");
    EXPECT_TRUE(textsOf(window.findChildren<QAction*>()).contains("Wirft Schatten"));
    EXPECT_TRUE(textsOf(window.findChildren<QAction*>()).contains("Keyframe &einfügen"));
}

TEST_F(LanguageTest, QtSpeaksGermanToo)
{
    const QDir folder(QLibraryInfo::location(QLibraryInfo::TranslationsPath));
    if (!folder.exists("qtbase_de.qm"))
        GTEST_SKIP() << "the package qttranslations5-l10n is not installed";
    speak("de");
    EXPECT_EQ(QKeySequence("Ctrl+O").toString(QKeySequence::NativeText), "Strg+O");
}

TEST_F(LanguageTest, NoTwoEntriesOfAMenuHaveTheSameKey)
{
    for (const QString& language : availableLanguages()) {
        speak(language);
        SceneLoader loader;
        const MainWindow window(&loader, false);
        QStringList bar;
        for (QAction* action : window.menuBar()->actions()) {
            bar += action->text().mid(action->text().indexOf('&') + 1, 1);
            QStringList keys = keysOf(*action->menu());
            EXPECT_EQ(keys.removeDuplicates(), 0)
                << language.toStdString() << ' ' << action->text().toStdString();
        }
        EXPECT_EQ(bar.removeDuplicates(), 0) << language.toStdString();
        forgetLanguages();
    }
}

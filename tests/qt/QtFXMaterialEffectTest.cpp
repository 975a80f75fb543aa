#include "qt/QtView.h"
#include "tests/qt/FXMaterialProbe.h"

#include <QAbstractItemView>
#include <QDockWidget>
#include <QMainWindow>
#include <QVBoxLayout>

#include <gmock/gmock.h>

using halvern::qt::QtView;
using namespace halvern::test;

namespace {

class QtFXMaterialEffectTest : public FXMaterialTest
{
protected:
    ~QtFXMaterialEffectTest() override
    {
        for (QDockWidget* dock : docks())
            delete dock;
    }

    /// The docks that belong to no other widget.
    static QList<QDockWidget*> docks()
    {
        QList<QDockWidget*> found;
        for (QWidget* window : QApplication::topLevelWidgets())
            if (auto* dock = qobject_cast<QDockWidget*>(window))
                found += dock;
        return found;
    }

    void clickEdit() { QTest::mouseClick(&editor->button("Edit effect..."), Qt::LeftButton); }
    void clickReload() { QTest::mouseClick(&editor->button("Reload Effect"), Qt::LeftButton); }

    /// Opens the source text in a dock, the only one.
    QDockWidget& openCode()
    {
        show();
        clickEdit();
        const auto found = docks();
        if (found.size() != 1)
            qFatal("not one dock");
        return *found.first();
    }
};

/// A chain of widgets, each the only child of the one before, with the editor as the last.
struct Chain
{
    explicit Chain(int ancestors)
    {
        QWidget* parent = nullptr;
        for (int i = 0; i < ancestors; ++i)
            widgets.push_back(parent = new QWidget(parent));
        editor = new FXMaterialProbe(parent);
    }
    ~Chain() { delete (widgets.empty() ? editor : widgets.front()); }
    Chain(const Chain&) = delete;
    Chain& operator=(const Chain&) = delete;

    /// Adds a view of that name below one of the ancestors.
    QtView* addView(QWidget* parent, const char* name = "Halvern_Rendering_QtView")
    {
        auto* view = new QtView;
        view->setParent(parent); // it ignores its constructor's
        view->setObjectName(name);
        return view;
    }

    std::vector<QWidget*> widgets; // the top level first
    FXMaterialProbe* editor;
};

} // namespace

// Techniques

TEST_F(QtFXMaterialEffectTest, ChoosingATechniqueSetsIt)
{
    show();
    editor->open();
    QTest::keyClick(&editor->techniques(), Qt::Key_Down);
    EXPECT_EQ(take(), QStringList("technique 1"));
    EXPECT_EQ(editor->techniques().currentText(), "rich");
}

TEST_F(QtFXMaterialEffectTest, ChoosingTheSameTechniqueSetsItAgain)
{
    show();
    editor->open();
    QComboBox& box = editor->techniques();
    for (int i = 0; i < 2; ++i) {
        box.showPopup();
        QTest::keyClick(box.view(), Qt::Key_Return);
        EXPECT_EQ(take(), QStringList("technique 0"));
    }
}

TEST_F(QtFXMaterialEffectTest, AChosenTechniqueIsUnsignedAndTakenAsItComes)
{
    show();
    editor->changeTechnique(7);
    editor->changeTechnique(-1);
    EXPECT_EQ(take(), QStringList({"technique 7", "technique 4294967295"}));
}

TEST_F(QtFXMaterialEffectTest, SettingABoxInCodeChoosesNothing)
{
    show();
    editor->techniques().setCurrentIndex(1);
    EXPECT_EQ(take(), QStringList());
}

TEST_F(QtFXMaterialEffectTest, ATechniqueIsNeitherSentNorRebuilt)
{
    show();
    QComboBox* box = &editor->techniques();
    editor->changeTechnique(1);
    editor->paint();
    EXPECT_EQ(&editor->techniques(), box);
    EXPECT_EQ(events->getCount(), 0u);
}

TEST_F(QtFXMaterialEffectTest, WithoutAMaterialAllThreeSlotsDoNothing)
{
    editor->changeTechnique(1);
    clickReload();
    clickEdit();
    EXPECT_EQ(take(), QStringList());
    EXPECT_EQ(docks().size(), 0);
    EXPECT_EQ(editor->findChild<QTextEdit*>(), nullptr);
}

// Reloading

TEST_F(QtFXMaterialEffectTest, ReloadingAsksTheManagerForTheMaterialsEffect)
{
    show();
    clickReload();
    EXPECT_EQ(take(), QStringList("reload fx"));
}

TEST_F(QtFXMaterialEffectTest, ReloadingRebuildsNothingUntilTheEventComes)
{
    show();
    const QPointer<QWidget> box = &editor->techniques();
    clickReload();
    editor->paint();
    EXPECT_EQ(&editor->techniques(), box);
    handle("EffectReloaded", "fx");
    EXPECT_NE(&editor->techniques(), box);
}

TEST_F(QtFXMaterialEffectTest, WithoutAManagerOrAnEffectNothingIsReloaded)
{
    show();
    editor->setFXManager(nullptr);
    clickReload();
    editor->setFXManager(manager);
    material->effect.reset();
    clickReload();
    EXPECT_EQ(take(), QStringList());
}

// The effect's source text

TEST_F(QtFXMaterialEffectTest, TheCodeIsShownInAFloatingWindow)
{
    effect->code = "float a; // Gr\xC3\xBC\xC3\x9F"
                   "e\n\tfloat b < string UIName = \"<b>\"; >;\n";
    QDockWidget& dock = openCode();
    auto* shown = qobject_cast<QTextEdit*>(dock.widget());
    ASSERT_TRUE(shown);
    EXPECT_EQ(shown->toPlainText(), QString::fromStdString(effect->code));
    EXPECT_TRUE(dock.isVisible());
    EXPECT_TRUE(dock.isFloating());
    EXPECT_NEAR(dock.windowOpacity(), 0.95, 0.01);
    EXPECT_EQ(dock.geometry(), QRect(100, 100, 800, 900));
}

TEST_F(QtFXMaterialEffectTest, TheCodeIsInATypewritersLettersWithoutWrapping)
{
    effect->code = "float a;";
    auto& shown = dynamic_cast<QTextEdit&>(*openCode().widget());
    EXPECT_EQ(shown.tabStopDistance(), 30);
    EXPECT_EQ(shown.wordWrapMode(), QTextOption::NoWrap);
    QTextCursor cursor(shown.document());
    cursor.movePosition(QTextCursor::End);
    for (const QFont& font : {shown.currentFont(), cursor.charFormat().font()}) {
        EXPECT_EQ(font.family(), "Monospace");
        EXPECT_EQ(font.pointSize(), 10);
        EXPECT_EQ(font.styleHint(), QFont::TypeWriter);
        EXPECT_EQ(font.styleStrategy(), QFont::PreferDefault);
    }
}

TEST_F(QtFXMaterialEffectTest, WhatIsTypedIntoTheCodeIsWrittenNowhere)
{
    effect->code = "float a;";
    QDockWidget& dock = openCode();
    take();
    QTest::keyClicks(dock.widget(), "more ");
    EXPECT_EQ(dynamic_cast<QTextEdit&>(*dock.widget()).toPlainText(), "more float a;");
    dock.close();
    editor->paint();
    EXPECT_EQ(effect->code, "float a;");
    EXPECT_EQ(take(), QStringList());
    EXPECT_EQ(events->getCount(), 0u);
}

TEST_F(QtFXMaterialEffectTest, EachClickOpensAnotherWindow)
{
    show();
    for (int i = 1; i <= 3; ++i) {
        clickEdit();
        EXPECT_EQ(docks().size(), i);
    }
}

TEST_F(QtFXMaterialEffectTest, AClosedWindowIsDeleted)
{
    const QPointer<QDockWidget> dock = &openCode();
    dock->close();
    EXPECT_TRUE(waitFor([&] { return dock.isNull(); }));
    EXPECT_EQ(docks().size(), 0);
}

TEST_F(QtFXMaterialEffectTest, TheWindowBelongsToTheWidgetThreeLevelsUpOrToNone)
{
    for (int ancestors = 0; ancestors <= 5; ++ancestors) {
        Chain chain(ancestors);
        chain.editor->setFXMaterial(material);
        const QList<QDockWidget*> before = docks();
        chain.editor->editEffect();
        QWidget* parent = ancestors >= 3 ? chain.widgets[std::size_t(ancestors) - 3] : nullptr;
        const QList<QDockWidget*> after = docks();
        ASSERT_EQ(after.size(), before.size() + 1);
        for (QDockWidget* dock : after) {
            if (before.contains(dock))
                continue;
            EXPECT_EQ(dock->parentWidget(), parent) << ancestors;
        }
    }
}

TEST_F(QtFXMaterialEffectTest, TheWindowOpensFromADockOfAMainWindowToo)
{
    QMainWindow window;
    auto* dock = new QDockWidget(&window);
    auto* docked = new FXMaterialProbe;
    dock->setWidget(docked);
    window.addDockWidget(Qt::LeftDockWidgetArea, dock);
    docked->setFXMaterial(material);
    window.show();
    QTest::mouseClick(&docked->button("Edit effect..."), Qt::LeftButton);
    ASSERT_EQ(docks().size(), 1);
    EXPECT_EQ(docks().first()->parentWidget(), nullptr);
    EXPECT_TRUE(docks().first()->isVisible());
}

TEST_F(QtFXMaterialEffectTest, AMaterialWithoutAnEffectHasNoCodeToShow)
{
    material->effect.reset();
    show();
    clickEdit();
    EXPECT_EQ(docks().size(), 0);
}

// The view of the same window

TEST_F(QtFXMaterialEffectTest, TheViewIsFoundBelowTheNearestAncestorThatHasIt)
{
    Chain chain(4);
    QtView* far = chain.addView(chain.widgets[1]);
    EXPECT_EQ(chain.editor->getHalvernQtView(), far);
    QtView* near = chain.addView(new QWidget(chain.widgets[2]));
    EXPECT_EQ(chain.editor->getHalvernQtView(), near);
    QtView* nearest = chain.addView(chain.widgets[3]);
    EXPECT_EQ(chain.editor->getHalvernQtView(), nearest);
}

TEST_F(QtFXMaterialEffectTest, TheTopLevelItselfIsNeverSearchedForTheView)
{
    Chain chain(3);
    chain.addView(chain.widgets[0]);
    EXPECT_EQ(chain.editor->getHalvernQtView(), nullptr);
    chain.addView(new QWidget(chain.widgets[0]));
    EXPECT_EQ(chain.editor->getHalvernQtView(), nullptr);
}

TEST_F(QtFXMaterialEffectTest, AnEditorDirectlyInATopLevelFindsNoView)
{
    Chain chain(1);
    chain.addView(chain.widgets[0]);
    EXPECT_EQ(chain.editor->getHalvernQtView(), nullptr);
}

TEST_F(QtFXMaterialEffectTest, AnEditorWithoutAParentFindsNoView)
{
    Chain chain(0);
    chain.addView(chain.editor);
    EXPECT_EQ(chain.editor->getHalvernQtView(), nullptr);
}

TEST_F(QtFXMaterialEffectTest, OnlyAViewOfThatNameIsFound)
{
    Chain chain(3);
    chain.addView(chain.widgets[1], "Other");
    auto* other = new QWidget(chain.widgets[1]);
    other->setObjectName("Halvern_Rendering_QtView");
    EXPECT_EQ(chain.editor->getHalvernQtView(), nullptr);
}

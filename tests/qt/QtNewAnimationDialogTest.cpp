#include "tests/qt/DockProbe.h"

#include <QDialogButtonBox>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QRegExpValidator>
#include <QTranslator>
#include <QVBoxLayout>

using namespace halvern::test;

namespace {

/// The dialog that a dock opens, and its parts.
struct Parts
{
    explicit Parts(QWidget& window) : dialog(dynamic_cast<QDialog&>(window)) {}

    /// What the edit shows after these keys.
    std::string typed(const char* keys)
    {
        nameEdit.clear();
        QTest::keyClicks(&nameEdit, keys);
        return nameEdit.text().toStdString();
    }

    void press(QDialogButtonBox::StandardButton button)
    {
        QTest::mouseClick(buttons.button(button), Qt::LeftButton);
    }

    QWidget* label(const QString& text)
    {
        for (QLabel* label : dialog.findChildren<QLabel*>())
            if (label->text() == text)
                return label;
        return nullptr;
    }

    QDialog& dialog;
    QLineEdit& nameEdit = *dialog.findChild<QLineEdit*>(QString(), Qt::FindDirectChildrenOnly);
    QSpinBox& lengthBox = *dialog.findChild<QSpinBox*>();
    QGroupBox& group = *dialog.findChild<QGroupBox*>();
    QDialogButtonBox& buttons = *dialog.findChild<QDialogButtonBox*>();
};

void expectDistances(const QLayout* layout)
{
    EXPECT_EQ(layout->spacing(), 6);
    EXPECT_EQ(layout->contentsMargins(), QMargins(11, 11, 11, 11));
}

class QtNewAnimationDialogTest : public DockTest
{
protected:
    /// Opens the dialog, uses it, and rejects it if it is still open. Returns the animation that was made.
    boost::shared_ptr<halvern::scene::Animation> open(const std::function<void(Parts&)>& use)
    {
        const auto before = scene->library.size();
        EXPECT_TRUE(withModal([&] { dock.newAction().trigger(); },
                              [&](QWidget& window) {
                                  Parts parts(window);
                                  use(parts);
                                  if (parts.dialog.isVisible())
                                      parts.dialog.reject();
                              }));
        return scene->library.size() > before ? scene->library.back() : nullptr;
    }
};

} // namespace

TEST_F(QtNewAnimationDialogTest, MetaObjectHasTheNameAndNothingOfItsOwn)
{
    open([](Parts& parts) {
        const QMetaObject& meta = *parts.dialog.metaObject();
        EXPECT_STREQ(meta.className(), "halvern::qt::QtNewAnimationDialog");
        EXPECT_STREQ(meta.superClass()->className(), "QDialog");
        EXPECT_EQ(meta.methodCount(), meta.methodOffset());
        EXPECT_EQ(meta.propertyCount(), meta.propertyOffset());
    });
}

TEST_F(QtNewAnimationDialogTest, ItIs242By211WithoutATitle)
{
    open([](Parts& parts) {
        const QSize least = parts.dialog.minimumSizeHint(); // texts may need more
        EXPECT_EQ(parts.dialog.size(), QSize(242, 211).expandedTo(least));
        EXPECT_EQ(parts.dialog.windowTitle(), "");
    });
}

TEST_F(QtNewAnimationDialogTest, NameLengthAndButtonsStandBelowOneAnother)
{
    open([](Parts& parts) {
        const auto* layout = qobject_cast<QVBoxLayout*>(parts.dialog.layout());
        ASSERT_TRUE(layout);
        expectDistances(layout);
        ASSERT_EQ(layout->count(), 3);
        const QLayout* row = layout->itemAt(0)->layout();
        ASSERT_TRUE(qobject_cast<const QHBoxLayout*>(row));
        EXPECT_EQ(row->spacing(), 6);
        ASSERT_EQ(row->count(), 2);
        EXPECT_EQ(row->itemAt(0)->widget(), parts.label("Animation Name:"));
        EXPECT_EQ(row->itemAt(1)->widget(), &parts.nameEdit);
        EXPECT_EQ(layout->itemAt(1)->widget(), &parts.group);
        EXPECT_EQ(layout->itemAt(2)->widget(), &parts.buttons);
    });
}

TEST_F(QtNewAnimationDialogTest, TheLengthStandsInAGroupWithoutATitle)
{
    open([](Parts& parts) {
        EXPECT_EQ(parts.group.title(), "");
        const auto* layout = qobject_cast<QVBoxLayout*>(parts.group.layout());
        ASSERT_TRUE(layout);
        expectDistances(layout);
        ASSERT_EQ(layout->count(), 1);
        const QLayout* row = layout->itemAt(0)->layout();
        ASSERT_TRUE(qobject_cast<const QHBoxLayout*>(row));
        EXPECT_EQ(row->spacing(), 6);
        ASSERT_EQ(row->count(), 2);
        EXPECT_EQ(row->itemAt(0)->widget(), parts.label("Animation Length(ms):"));
        EXPECT_EQ(row->itemAt(1)->widget(), &parts.lengthBox);
    });
}

TEST_F(QtNewAnimationDialogTest, LabelsAreNotTranslated)
{
    struct Shouting : QTranslator
    {
        QString translate(const char* /*context*/, const char* text, const char* /*comment*/,
                          int /*n*/) const override
        {
            return QString(text).toUpper();
        }
        bool isEmpty() const override { return false; }
    } translator;
    QCoreApplication::installTranslator(&translator);
    open([](Parts& parts) {
        EXPECT_TRUE(parts.label("Animation Name:"));
        EXPECT_TRUE(parts.label("Animation Length(ms):"));
    });
    QCoreApplication::removeTranslator(&translator);
}

TEST_F(QtNewAnimationDialogTest, TheButtonsAreOkAndCancel)
{
    open([](Parts& parts) {
        EXPECT_EQ(parts.buttons.standardButtons(), QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
    });
}

TEST_F(QtNewAnimationDialogTest, ANameIsLettersDigitsAndUnderscoresWithoutADigitInFront)
{
    open([](Parts& parts) {
        EXPECT_EQ(parts.nameEdit.text(), "");
        EXPECT_EQ(parts.typed("1abc"), "abc");
        EXPECT_EQ(parts.typed("_a1B_2"), "_a1B_2");
        EXPECT_EQ(parts.typed("a b-c.d,e"), "abcde");
        EXPECT_EQ(parts.typed("12_"), "_");
    });
}

TEST_F(QtNewAnimationDialogTest, ANameOfOneCharacterIsOnlyTheBeginOfOne)
{
    open([](Parts& parts) {
        parts.typed("a");
        EXPECT_FALSE(parts.nameEdit.hasAcceptableInput());
        parts.typed("ab");
        EXPECT_TRUE(parts.nameEdit.hasAcceptableInput());
        const auto* validator = qobject_cast<const QRegExpValidator*>(parts.nameEdit.validator());
        ASSERT_TRUE(validator);
        EXPECT_EQ(validator->regExp(), QRegExp("[_a-zA-Z][_a-zA-Z0-9]+"));
    });
}

TEST_F(QtNewAnimationDialogTest, TheLengthIsFrom0To150000AndStartsAt10000)
{
    open([](Parts& parts) {
        EXPECT_EQ(parts.lengthBox.value(), 10000);
        EXPECT_EQ(parts.lengthBox.minimum(), 0);
        EXPECT_EQ(parts.lengthBox.maximum(), 150000);
    });
}

TEST_F(QtNewAnimationDialogTest, OkReturnsNameAndLength)
{
    const auto made = open([](Parts& parts) {
        parts.typed("jump");
        parts.lengthBox.setValue(150001);
        parts.press(QDialogButtonBox::Ok);
    });
    ASSERT_TRUE(made);
    EXPECT_EQ(made->getID(), "jump");
    EXPECT_EQ(made->getTimeRange(), 150000);
}

TEST_F(QtNewAnimationDialogTest, OkAcceptsANameOfOneCharacter)
{
    const auto made = open([](Parts& parts) {
        parts.typed("a");
        parts.press(QDialogButtonBox::Ok);
    });
    ASSERT_TRUE(made);
    EXPECT_EQ(made->getID(), "a");
}

TEST_F(QtNewAnimationDialogTest, OkAcceptsAnEmptyNameAndALengthOfZero)
{
    const auto made = open([](Parts& parts) {
        parts.lengthBox.setValue(0);
        parts.press(QDialogButtonBox::Ok);
    });
    ASSERT_TRUE(made);
    EXPECT_EQ(made->getID(), "");
    EXPECT_EQ(made->getTimeRange(), 0);
}

TEST_F(QtNewAnimationDialogTest, TheNameIsNeitherTrimmedNorChecked)
{
    const auto made = open([](Parts& parts) {
        parts.nameEdit.setText("  1, 2 ");
        parts.press(QDialogButtonBox::Ok);
    });
    ASSERT_TRUE(made);
    EXPECT_EQ(made->getID(), "  1, 2 ");
}

TEST_F(QtNewAnimationDialogTest, CancelEscapeAndCloseReject)
{
    EXPECT_FALSE(open([](Parts& parts) { parts.press(QDialogButtonBox::Cancel); }));
    EXPECT_FALSE(open([](Parts& parts) { QTest::keyClick(&parts.dialog, Qt::Key_Escape); }));
    EXPECT_FALSE(open([](Parts& parts) { parts.dialog.close(); }));
}

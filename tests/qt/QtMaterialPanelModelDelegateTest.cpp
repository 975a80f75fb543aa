#include "qt/QtMaterialPanelModelDelegate.h"
#include "tests/qt/MaterialScene.h"
#include "tests/qt/PaintRecorder.h"
#include "tests/support/MetaObjects.h"

#include <QIcon>
#include <QImage>
#include <QPainter>
#include <QStandardItemModel>
#include <QStyleOptionViewItem>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

using halvern::qt::QtMaterialPanelModelDelegate;
using namespace halvern::test;
using testing::IsEmpty;

namespace {

const QColor Ground(1, 2, 3);
const QColor Pen(250, 130, 10);
const QColor BaseColor(200, 210, 220);
const QColor HighlightColor(20, 160, 60);
const QColor HighlightedTextColor(70, 0, 90);

QPalette makePalette()
{
    QPalette palette;
    palette.setColor(QPalette::Base, BaseColor);
    palette.setColor(QPalette::Highlight, HighlightColor);
    palette.setColor(QPalette::HighlightedText, HighlightedTextColor);
    return palette;
}

QPixmap ball()
{
    return QIcon(":/material_sphere.jpg").pixmap(98, 98);
}

int brightness(const QImage& image, int x, int y)
{
    return qGray(image.pixel(x, y));
}

class QtMaterialPanelModelDelegateTest : public testing::Test
{
protected:
    QtMaterialPanelModelDelegateTest() : model(1, 1)
    {
        option.rect = QRect(10, 20, 100, 120);
        option.palette = makePalette();
        option.state = QStyle::State_Enabled;
        setText("Brass");
    }

    void setText(const QString& text) { model.setData(model.index(0, 0), text); }

    void select() { option.state |= QStyle::State_Selected; }

    void paint(QPainter& painter) const { delegate.paint(&painter, option, model.index(0, 0)); }

    /// The tile on a ground of one colour, painted with a pen of its own.
    template <class Paint>
    QImage picture(Paint paintOn) const
    {
        QImage image(200, 200, QImage::Format_RGB32);
        image.fill(Ground);
        QPainter painter(&image);
        painter.setPen(Pen);
        paintOn(painter);
        return image;
    }

    QImage picture() const
    {
        return picture([this](QPainter& painter) { paint(painter); });
    }

    QStandardItemModel model;
    QStyleOptionViewItem option;
    QtMaterialPanelModelDelegate delegate;
};

} // namespace

// The class

TEST_F(QtMaterialPanelModelDelegateTest, MetaObjectCarriesTheQualifiedNameAndNothingOfItsOwn)
{
    const QMetaObject& meta = *delegate.metaObject();
    EXPECT_STREQ(meta.className(), "halvern::qt::QtMaterialPanelModelDelegate");
    EXPECT_EQ(meta.superClass(), &QStyledItemDelegate::staticMetaObject);
    EXPECT_THAT(ownMethods(meta), IsEmpty());
}

TEST_F(QtMaterialPanelModelDelegateTest, BelongsToTheParentItIsGiven)
{
    QObject parent;
    EXPECT_EQ((new QtMaterialPanelModelDelegate(&parent))->parent(), &parent);
}

TEST_F(QtMaterialPanelModelDelegateTest, SizeHintIsATileWhateverIsAsked)
{
    EXPECT_EQ(delegate.sizeHint(option, model.index(0, 0)), QSize(100, 120));
    setText(QString(500, 'x'));
    option.rect = QRect(0, 0, 7, 9);
    option.font.setPointSize(60);
    EXPECT_EQ(delegate.sizeHint(option, model.index(0, 0)), QSize(100, 120));
    EXPECT_EQ(delegate.sizeHint(option, QModelIndex()), QSize(100, 120));
}

// The picture of the ball

TEST_F(QtMaterialPanelModelDelegateTest, TheLibraryCarriesALargeSquarePictureOfABall)
{
    const QImage image(":/material_sphere.jpg");
    EXPECT_GE(image.width(), 256);
    EXPECT_EQ(image.width(), image.height());
}

TEST_F(QtMaterialPanelModelDelegateTest, TheBallIsLitFromTheUpperLeftWithAHighlightAndAShadowUnderIt)
{
    const QImage image = QImage(":/material_sphere.jpg").scaled(256, 256);
    EXPECT_GT(brightness(image, 88, 86), 220);                               // the highlight
    EXPECT_GT(brightness(image, 95, 110), brightness(image, 175, 165) + 50); // lit side, far side
    EXPECT_LT(brightness(image, 125, 216), 40);                              // where it stands
    EXPECT_GT(brightness(image, 60, 60), brightness(image, 10, 60) + 40);    // stands out from what is behind
}

// An empty cell

TEST_F(QtMaterialPanelModelDelegateTest, AnEmptyCellIsATileOfTheBaseColorAndNothingElse)
{
    setText("");
    const QImage expected =
        picture([](QPainter& painter) { painter.fillRect(QRect(10, 20, 100, 120), BaseColor); });
    EXPECT_EQ(picture(), expected);
}

TEST_F(QtMaterialPanelModelDelegateTest, AnEmptyCellLooksTheSameWhenItIsSelected)
{
    setText("");
    const QImage plain = picture();
    select();
    EXPECT_EQ(picture(), plain);
}

TEST_F(QtMaterialPanelModelDelegateTest, ACellWithoutAnyDataIsEmpty)
{
    setText("");
    const QImage empty = picture();
    EXPECT_EQ(picture([this](QPainter& painter) { delegate.paint(&painter, option, QModelIndex()); }), empty);
}

// A tile

TEST_F(QtMaterialPanelModelDelegateTest, ATileIsTheBallOverTheTextAndLeavesItsGroundAlone)
{
    const QImage expected = picture([](QPainter& painter) {
        painter.setRenderHint(QPainter::Antialiasing);
        painter.drawPixmap(11, 21, ball());
        painter.drawText(QRect(10, 120, 100, 20), Qt::AlignHCenter | Qt::AlignVCenter, "Brass");
    });
    EXPECT_EQ(picture(), expected);
    EXPECT_EQ(picture().pixelColor(10, 20), Ground);
}

TEST_F(QtMaterialPanelModelDelegateTest, ASelectedTileHasAGroundOfTheHighlightColor)
{
    select();
    const QImage expected = picture([](QPainter& painter) {
        painter.fillRect(QRect(10, 20, 100, 120), HighlightColor);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.drawPixmap(11, 21, ball());
        painter.drawText(QRect(10, 120, 100, 20), Qt::AlignHCenter | Qt::AlignVCenter, "Brass");
    });
    EXPECT_EQ(picture(), expected);
    EXPECT_EQ(picture().pixelColor(10, 20), HighlightColor);
    EXPECT_EQ(picture().pixelColor(109, 139), HighlightColor);
    EXPECT_EQ(picture().pixelColor(110, 139), Ground);
}

TEST_F(QtMaterialPanelModelDelegateTest, TheSizeOfTheOptionDoesNotCount)
{
    for (const bool selected : {false, true}) {
        if (selected)
            select();
        for (const char* text : {"", "Brass"}) {
            setText(text);
            option.rect = QRect(10, 20, 100, 120);
            const QImage expected = picture();
            option.rect.setSize(QSize(30, 500));
            EXPECT_EQ(picture(), expected);
            option.rect.setSize(QSize(0, 0));
            EXPECT_EQ(picture(), expected);
        }
    }
}

TEST_F(QtMaterialPanelModelDelegateTest, TheTileFollowsTheCornerOfTheOption)
{
    option.rect = QRect(10, 20, 100, 120);
    const QImage here = picture();
    option.rect = QRect(60, 50, 100, 120);
    EXPECT_EQ(picture().copy(60, 50, 100, 120), here.copy(10, 20, 100, 120));
}

TEST_F(QtMaterialPanelModelDelegateTest, ColorsAreThoseOfThePalettesCurrentGroup)
{
    option.palette.setColor(QPalette::Inactive, QPalette::Highlight, Qt::red);
    option.palette.setColor(QPalette::Inactive, QPalette::Base, Qt::blue);
    option.palette.setCurrentColorGroup(QPalette::Inactive);
    select();
    EXPECT_EQ(picture().pixelColor(10, 20), QColor(Qt::red));
    setText("");
    EXPECT_EQ(picture().pixelColor(10, 20), QColor(Qt::blue));
}

TEST_F(QtMaterialPanelModelDelegateTest, BrushesOfThePaletteCountNotOnlyTheirColors)
{
    setText("");
    option.palette.setBrush(QPalette::Base, QBrush(Qt::red, Qt::Dense4Pattern));
    const QImage expected = picture([](QPainter& painter) {
        painter.fillRect(QRect(10, 20, 100, 120), QBrush(Qt::red, Qt::Dense4Pattern));
    });
    EXPECT_EQ(picture(), expected);
}

// The text

TEST_F(QtMaterialPanelModelDelegateTest, TheTextIsDrawnWithThePaintersPenAlsoWhenSelected)
{
    for (const bool selected : {false, true}) {
        if (selected)
            select();
        PaintRecorder recorder;
        QPainter painter(&recorder);
        painter.setPen(Pen);
        paint(painter);
        ASSERT_EQ(recorder.painted.texts.size(), 1u);
        EXPECT_EQ(recorder.painted.texts[0].text, "Brass");
        EXPECT_EQ(recorder.painted.texts[0].pen, Pen);
    }
}

TEST_F(QtMaterialPanelModelDelegateTest, TheBrushBehindTheTextIsBlackOrTheHighlightedTextOne)
{
    for (const bool selected : {false, true}) {
        if (selected)
            select();
        PaintRecorder recorder;
        QPainter painter(&recorder);
        paint(painter);
        ASSERT_EQ(recorder.painted.texts.size(), 1u);
        EXPECT_EQ(recorder.painted.texts[0].brush,
                  selected ? option.palette.highlightedText() : QBrush(Qt::black, Qt::SolidPattern));
    }
}

TEST_F(QtMaterialPanelModelDelegateTest, ALongTextDoesNotLeaveItsTile)
{
    setText(QString(80, 'W'));
    const QImage image = picture();
    const QRegion beside = QRegion(image.rect()) - QRect(10, 20, 100, 120);
    for (const QRect& part : beside)
        for (int y = part.top(); y <= part.bottom(); ++y)
            for (int x = part.left(); x <= part.right(); ++x)
                ASSERT_EQ(image.pixelColor(x, y), Ground) << x << ' ' << y;
}

// The painter

TEST_F(QtMaterialPanelModelDelegateTest, TheBallIsDrawnWithSmoothEdges)
{
    const auto turned = [this](bool smooth) {
        return picture([this, smooth](QPainter& painter) {
            painter.translate(80, -20);
            painter.rotate(20);
            painter.setRenderHint(QPainter::Antialiasing, smooth);
            painter.drawPixmap(11, 21, ball());
        });
    };
    setText(" ");
    const QImage painted = picture([this](QPainter& painter) {
        painter.translate(80, -20);
        painter.rotate(20);
        paint(painter);
    });
    EXPECT_EQ(painted, turned(true));
    EXPECT_NE(painted, turned(false));
}

TEST_F(QtMaterialPanelModelDelegateTest, ThePainterIsLeftAsItWas)
{
    for (const char* text : {"", "Brass"}) {
        setText(text);
        select();
        QImage image(200, 200, QImage::Format_RGB32);
        QPainter painter(&image);
        painter.setPen(Pen);
        painter.setBrush(QBrush(Qt::cyan, Qt::Dense2Pattern));
        painter.setRenderHints(QPainter::RenderHints(), true);
        const auto hints = painter.renderHints();
        paint(painter);
        EXPECT_EQ(painter.pen(), QPen(Pen));
        EXPECT_EQ(painter.brush(), QBrush(Qt::cyan, Qt::Dense2Pattern));
        EXPECT_EQ(painter.renderHints(), hints);
    }
}

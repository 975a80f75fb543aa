#include "tests/qt/FXMaterialProbe.h"
#include "tests/support/MetaObjects.h"

#include <QCheckBox>
#include <QTranslator>
#include <QVBoxLayout>

#include <gmock/gmock.h>

#include <boost/weak_ptr.hpp>

#include <limits>

using halvern::qt::QtFXMaterial;
using namespace halvern::test;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

constexpr float Infinity = std::numeric_limits<float>::infinity();
constexpr float NoNumber = std::numeric_limits<float>::quiet_NaN();
constexpr int Lowest = std::numeric_limits<int>::min();
constexpr int Highest = std::numeric_limits<int>::max();

QString kindOf(const QWidget& editor)
{
    return editor.property("FXWidgetType").toString();
}

QString nameOf(const QWidget& editor)
{
    return editor.property("FXParameterName").toString();
}

class QtFXMaterialTest : public FXMaterialTest
{
protected:
    /// The kind of the editor of a parameter; null when there is no row.
    QString kindFor(Annotations annotations, const std::string& type = "float",
                    AnyValues values = {std::string("x")})
    {
        material->parameters = {boost::make_shared<FakeParameter>(log, "p", values, annotations, type)};
        show();
        const QWidget* made = editor->at(1, 1);
        return made ? kindOf(*made) : QString();
    }

    /// The slider of a parameter with these annotations.
    QSlider& sliderFor(Annotations annotations, AnyValues values = {0.0f})
    {
        material->parameters.clear();
        addSlider("size", values, annotations);
        show();
        return editor->slider(1);
    }

    QPushButton& colorFor(AnyValues values)
    {
        material->parameters.clear();
        addColor("tint", values);
        show();
        return editor->color(1);
    }
};

/// Translates every text of the editor by setting it in marks.
class Marking : public QTranslator
{
public:
    bool isEmpty() const override { return false; }
    QString translate(const char* context, const char* source, const char* /*comment*/,
                      int /*count*/) const override
    {
        return QString(context) == "halvern::qt::QtFXMaterial" ? '[' + QString(source) + ']' : QString();
    }
};

} // namespace

// The class

TEST_F(QtFXMaterialTest, MetaObjectCarriesTheQualifiedNameAndBothEventBases)
{
    EXPECT_STREQ(QtFXMaterial::staticMetaObject.className(), "halvern::qt::QtFXMaterial");
    EXPECT_EQ(QtFXMaterial::staticMetaObject.superClass(), &QWidget::staticMetaObject);
    EXPECT_EQ(editor->qt_metacast("HCE::EventBase"), static_cast<HCE::EventBase*>(editor.get()));
    EXPECT_EQ(editor->qt_metacast("HCE::EventListener"), static_cast<HCE::EventListener*>(editor.get()));
    EXPECT_EQ(qobject_cast<HCE::EventListener*>(editor.get()), editor.get());
}

TEST_F(QtFXMaterialTest, MetaObjectListsTheSignalThenTheSixSlots)
{
    EXPECT_THAT(ownMethods(QtFXMaterial::staticMetaObject),
                ElementsAre("needsUpdate()", "reloadEffect()", "editEffect()", "changeTechnique(int)",
                            "setSliderParameter(int)", "setColorParameter()", "setTextureParameter()"));
}

TEST_F(QtFXMaterialTest, HasNoEventManagerAtFirst)
{
    EXPECT_FALSE(QtFXMaterial().getEventManager());
}

// Construction

TEST_F(QtFXMaterialTest, ShowsTitleTwoButtonsAndAnEmptyGridFromTopToBottom)
{
    auto* layout = dynamic_cast<QVBoxLayout*>(editor->layout());
    ASSERT_TRUE(layout);
    ASSERT_EQ(layout->count(), 4);
    EXPECT_EQ(layout->itemAt(0)->widget(), &editor->title());
    EXPECT_EQ(layout->itemAt(1)->widget(), &editor->button("Reload Effect"));
    EXPECT_EQ(layout->itemAt(2)->widget(), &editor->button("Edit effect..."));
    EXPECT_EQ(layout->itemAt(3)->widget(), &editor->area());
    EXPECT_EQ(editor->title().text(), "No Material Selected");
    EXPECT_EQ(editor->title().alignment(), Qt::AlignHCenter | Qt::AlignVCenter);
    EXPECT_EQ(editor->grid().count(), 0);
    EXPECT_EQ(editor->grid().sizeConstraint(), QLayout::SetMinimumSize);
    EXPECT_EQ(editor->findChild<QComboBox*>(), nullptr);
}

TEST_F(QtFXMaterialTest, TheScrollAreaExpandsAndIsResizableFromTheFirstMaterialOn)
{
    const QScrollArea& area = editor->area();
    EXPECT_EQ(area.sizePolicy(), QSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding));
    EXPECT_EQ(area.alignment(), Qt::AlignLeft | Qt::AlignVCenter);
    EXPECT_EQ(editor->container().metaObject(), &QWidget::staticMetaObject);
    EXPECT_FALSE(area.widgetResizable());
    show();
    EXPECT_TRUE(area.widgetResizable());
}

TEST_F(QtFXMaterialTest, EachButtonAndTheSignalAreConnectedOnce)
{
    EXPECT_TRUE(isConnectedOnce(&editor->button("Reload Effect"), SIGNAL(clicked()), editor.get(),
                                SLOT(reloadEffect())));
    EXPECT_TRUE(isConnectedOnce(&editor->button("Edit effect..."), SIGNAL(clicked()), editor.get(),
                                SLOT(editEffect())));
    EXPECT_TRUE(isConnectedOnce(editor.get(), SIGNAL(needsUpdate()), editor.get(), SLOT(update())));
}

TEST_F(QtFXMaterialTest, TheFirstTitleAndTheReloadButtonAreNotTranslatedButTheOtherTextsAre)
{
    Marking marking;
    QCoreApplication::installTranslator(&marking);
    FXMaterialProbe translated;
    EXPECT_EQ(translated.title().text(), "No Material Selected");
    EXPECT_TRUE(translated.button("Reload Effect").isEnabled());
    EXPECT_TRUE(translated.button("[Edit effect...]").isEnabled());
    addSlider("size", {0.1f});
    addColor("tint", {0.0f, 0.0f, 0.0f});
    addTexture("map", {text("a.png")});
    translated.setFXMaterial(material);
    EXPECT_EQ(translated.label(0), "[Technique]");
    EXPECT_EQ(kindOf(translated.slider(1)), "[SliderWidget]");
    EXPECT_EQ(kindOf(translated.color(2)), "[ColorWidget]");
    EXPECT_EQ(kindOf(*translated.at(3, 1)), "[TextureWidget]");
    EXPECT_EQ(translated.picture(3).objectName(), "[ImageLabel]");
    EXPECT_EQ(translated.fileButton(3).text(), "[...]");
    material->parameters[0]->values = {0.7f};
    translated.updateParameterWidget(material->parameters[0]);
    EXPECT_EQ(translated.slider(1).value(), 7) << "kinds are compared as they were translated";
    QCoreApplication::removeTranslator(&marking);
}

// Managers and materials

TEST_F(QtFXMaterialTest, AManagerIsOnlyStored)
{
    addSlider("size", {0.5f});
    show();
    const QPointer<QWidget> slider = &editor->slider(1);
    editor->setFXManager(boost::make_shared<FakeFXManager>(log));
    editor->setFXManager(nullptr);
    EXPECT_TRUE(slider);
    EXPECT_EQ(take(), QStringList());
}

TEST_F(QtFXMaterialTest, AnEmptyMaterialKeepsTheOldOne)
{
    addSlider("size", {0.5f});
    show();
    const QPointer<QWidget> slider = &editor->slider(1);
    editor->setFXMaterial(nullptr);
    EXPECT_TRUE(slider);
    EXPECT_EQ(editor->title().text(), "m");
    editor->changeTechnique(1);
    EXPECT_EQ(take(), QStringList("technique 1"));
}

TEST_F(QtFXMaterialTest, AnEmptyMaterialAtFirstShowsNothing)
{
    editor->setFXMaterial(nullptr);
    EXPECT_EQ(editor->title().text(), "No Material Selected");
    EXPECT_EQ(editor->grid().count(), 0);
}

TEST_F(QtFXMaterialTest, TheTitleIsTheMaterialsIDLetterByLetter)
{
    editor->setFXMaterial(makeMaterial("<b>Gr\xC3\xBCn</b> & co"));
    EXPECT_EQ(editor->title().text(), QStringLiteral("<b>Gr\u00FCn</b> & co"));
    EXPECT_EQ(editor->title().textFormat(), Qt::PlainText);
}

TEST_F(QtFXMaterialTest, TheFirstRowChoosesTheTechnique)
{
    effect->techniques = {"plain", "rich", "plain"};
    material->technique = 2;
    show();
    EXPECT_EQ(editor->label(0), "Technique");
    QComboBox& box = editor->techniques();
    ASSERT_EQ(box.count(), 3);
    EXPECT_EQ(box.itemText(0) + box.itemText(1) + box.itemText(2), "plainrichplain");
    EXPECT_EQ(box.currentIndex(), 2);
    EXPECT_TRUE(isConnectedOnce(&box, SIGNAL(activated(int)), editor.get(), SLOT(changeTechnique(int))));
    EXPECT_EQ(take(), QStringList()) << "filling the box chooses nothing";
}

TEST_F(QtFXMaterialTest, ATechniqueOutOfRangeIsShownAsNone)
{
    material->technique = 7;
    show();
    EXPECT_EQ(editor->techniques().currentIndex(), -1);
}

TEST_F(QtFXMaterialTest, AMaterialWithoutAnEffectHasRowsButNoTechniques)
{
    material->effect.reset();
    addSlider("size", {0.5f});
    show();
    EXPECT_EQ(editor->techniques().count(), 0);
    EXPECT_THAT(editor->rows(), ElementsAre(1));
}

TEST_F(QtFXMaterialTest, EveryBuildReplacesTheGridAtOnce)
{
    addSlider("size", {0.5f});
    show();
    std::vector<QPointer<QWidget>> old;
    for (QWidget* child : editor->container().findChildren<QWidget*>())
        old.emplace_back(child);
    ASSERT_GE(old.size(), 4u);
    show();
    for (const auto& widget : old)
        EXPECT_FALSE(widget);
    EXPECT_EQ(editor->grid().count(), 4);
    EXPECT_EQ(editor->findChildren<QComboBox*>().size(), 1);
    EXPECT_EQ(editor->findChildren<QSlider*>().size(), 1);
}

TEST_F(QtFXMaterialTest, AllWidgetsOfTheGridBelongToItsContainer)
{
    addSlider("size", {0.5f});
    addTexture("map", {text("a.png")});
    show();
    for (int i = 0; i < editor->grid().count(); ++i)
        EXPECT_EQ(editor->grid().itemAt(i)->widget()->parentWidget(), &editor->container());
}

TEST_F(QtFXMaterialTest, TheStretchIsInTheRowNumberedAsThereAreItems)
{
    addSlider("a", {0.5f});
    add("none", {0.5f});
    addSlider("b", {0.5f});
    show();
    ASSERT_EQ(editor->grid().count(), 6);
    for (int row = 0; row < editor->grid().rowCount(); ++row)
        EXPECT_EQ(editor->grid().rowStretch(row), row == 6 ? 1 : 0) << row;
}

TEST_F(QtFXMaterialTest, TheStretchOfTheLastMaterialDoesNotPullTheRowsOfTheNextApart)
{
    show(); // two items
    for (const char* name : {"a", "b", "c"})
        addSlider(name, {0.5f});
    show();
    for (int row = 0; row < editor->grid().rowCount(); ++row)
        EXPECT_EQ(editor->grid().rowStretch(row), row == 8 ? 1 : 0) << row;
}

TEST_F(QtFXMaterialTest, RowsAreVisibleInAnEditorThatIsShown)
{
    addSlider("size", {0.5f});
    editor->open();
    show();
    EXPECT_TRUE(editor->slider(1).isVisible());
    QCoreApplication::processEvents();
    EXPECT_GT(editor->slider(1).width(), 20);
    EXPECT_LT(editor->slider(1).y(), editor->container().height() / 2) << "the stretch is below";
}

// Which editor a parameter gets

TEST_F(QtFXMaterialTest, TheAnnotationChoosesTheEditor)
{
    EXPECT_EQ(kindFor({{"UIWidget", text("slider")}}), "SliderWidget");
    EXPECT_EQ(kindFor({{"UIWidget", text("color")}}), "ColorWidget");
    EXPECT_EQ(kindFor({{"UIWidget", text("none")}}), QString());
}

TEST_F(QtFXMaterialTest, TheAnnotationIsComparedInLowerCase)
{
    EXPECT_EQ(kindFor({{"UIWidget", text("Slider")}}), "SliderWidget");
    EXPECT_EQ(kindFor({{"UIWidget", text("COLOR")}}), "ColorWidget");
    EXPECT_EQ(kindFor({{"UIWidget", text("None")}}, "texture"), QString());
}

TEST_F(QtFXMaterialTest, OnlyWholeWordsCount)
{
    for (const char* word : {"sliders", " slider", "slider ", "colour", "colors", "spinbox", "texture"})
        EXPECT_EQ(kindFor({{"UIWidget", text(word)}}), QString()) << word;
}

TEST_F(QtFXMaterialTest, WithoutAnAnnotationOnlyATextureGetsAnEditor)
{
    EXPECT_EQ(kindFor({}, "texture"), "TextureWidget");
    for (const char* type : {"float", "float4", "Texture", "texture2D", ""})
        EXPECT_EQ(kindFor({}, type), QString()) << type;
}

TEST_F(QtFXMaterialTest, AnEmptyAnnotationIsAsNone)
{
    EXPECT_EQ(kindFor({{"UIWidget", text("")}}, "texture"), "TextureWidget");
    EXPECT_EQ(kindFor({{"UIWidget", text("")}}, "float"), QString());
}

TEST_F(QtFXMaterialTest, AnAnnotationThatIsNoTextIsAsNone)
{
    EXPECT_EQ(kindFor({{"UIWidget", 1.0f}}, "texture"), "TextureWidget");
    EXPECT_EQ(kindFor({{"UIWidget", boost::any()}}, "texture"), "TextureWidget");
    EXPECT_EQ(kindFor({{"UIWidget", 1.0f}}, "float"), QString());
    EXPECT_EQ(editor->error(), QString());
}

TEST_F(QtFXMaterialTest, ATextureThatIsAnnotatedAsTextureGetsNoRow)
{
    EXPECT_EQ(kindFor({{"UIWidget", text("texture")}}, "texture"), QString());
    EXPECT_EQ(kindFor({{"UIWidget", text("none")}}, "texture"), QString());
}

TEST_F(QtFXMaterialTest, ATextureThatIsAnnotatedAsSliderGetsOne)
{
    EXPECT_EQ(kindFor({{"UIWidget", text("slider")}}, "texture"), "SliderWidget");
}

TEST_F(QtFXMaterialTest, NoParameterGetsADefaultEditor)
{
    for (const char* word : {"", "none", "default", "slider", "color"}) {
        kindFor({{"UIWidget", text(word)}});
        for (const QWidget* widget :
             editor->container().findChildren<QWidget*>(QString(), Qt::FindDirectChildrenOnly))
            EXPECT_NE(widget->metaObject(), &QWidget::staticMetaObject) << word;
    }
}

TEST_F(QtFXMaterialTest, RowsAreNumberedByTheParametersSoThatGapsStay)
{
    add("a", {0.5f});
    add("b", {0.5f});
    addSlider("c", {0.5f});
    add("d", {0.5f});
    addSlider("e", {0.5f});
    show();
    EXPECT_THAT(editor->rows(), ElementsAre(3, 5));
    for (const int row : {1, 2, 4})
        EXPECT_EQ(editor->at(row, 0), nullptr) << row;
    EXPECT_EQ(editor->label(3), "c");
    EXPECT_EQ(editor->label(5), "e");
}

TEST_F(QtFXMaterialTest, AParameterThatIsNotThereIsPassedOver)
{
    addSlider("a", {0.5f});
    material->parameters.push_back(nullptr);
    addSlider("c", {0.5f});
    show();
    EXPECT_THAT(editor->rows(), ElementsAre(1, 3));
}

// Labels

TEST_F(QtFXMaterialTest, TheLabelIsTheNameUnlessThereIsAnAnnotation)
{
    addSlider("a", {0.5f});
    addSlider("b", {0.5f}, {{"UIName", text("Size & <i>weight</i>")}});
    addSlider("c", {0.5f}, {{"UIName", text("")}});
    addSlider("d", {0.5f}, {{"UIName", 1.0f}});
    show();
    EXPECT_EQ(editor->label(1), "a");
    EXPECT_EQ(editor->label(2), "Size & <i>weight</i>");
    EXPECT_EQ(editor->label(3), "");
    EXPECT_EQ(editor->label(4), "d");
    EXPECT_EQ(dynamic_cast<QLabel&>(*editor->at(2, 0)).textFormat(), Qt::PlainText);
}

// Sliders

TEST_F(QtFXMaterialTest, ASliderIsHorizontalMarkedAndConnectedOnce)
{
    QSlider& slider = sliderFor({}, {0.5f});
    EXPECT_EQ(slider.orientation(), Qt::Horizontal);
    EXPECT_EQ(slider.tickInterval(), 1);
    EXPECT_EQ(nameOf(slider), "size");
    EXPECT_EQ(kindOf(slider), "SliderWidget");
    EXPECT_EQ(slider.objectName(), "");
    EXPECT_EQ(slider.value(), 5);
    EXPECT_EQ(take(), QStringList()) << "building edits nothing";
    EXPECT_TRUE(
        isConnectedOnce(&slider, SIGNAL(valueChanged(int)), editor.get(), SLOT(setSliderParameter(int))));
}

TEST_F(QtFXMaterialTest, ASliderGoesFromZeroToOneByTenthsUnlessAnnotationsSayOtherwise)
{
    struct Case
    {
        Annotations annotations;
        int minimum, maximum;
    };
    const Case cases[] = {{{}, 0, 10},
                          {{{"UIMin", 0.0f}, {"UIMax", 2.0f}, {"UIStep", 0.5f}}, 0, 4},
                          {{{"UIMax", 5.0f}}, 0, 50},
                          {{{"UIMin", -1.0f}}, -10, 10},
                          {{{"UIStep", 0.25f}}, 0, 4},
                          {{{"UIStep", 0.3f}}, 0, 3},
                          {{{"UIMin", -0.35f}, {"UIMax", 0.35f}}, -3, 3}};
    for (const Case& each : cases) {
        const QSlider& slider = sliderFor(each.annotations);
        EXPECT_EQ(slider.minimum(), each.minimum) << &each - cases;
        EXPECT_EQ(slider.maximum(), each.maximum) << &each - cases;
    }
}

TEST_F(QtFXMaterialTest, AnnotationsOfASliderThatAreNoFloatsAreIgnoredSilently)
{
    for (const boost::any& wrong :
         {boost::any(2), boost::any(2.0), text("2"), boost::any(true), boost::any()}) {
        const QSlider& slider = sliderFor({{"UIMin", wrong}, {"UIMax", wrong}, {"UIStep", wrong}}, {0.5f});
        EXPECT_EQ(slider.minimum(), 0);
        EXPECT_EQ(slider.maximum(), 10);
        EXPECT_EQ(slider.value(), 5);
    }
    EXPECT_EQ(editor->error(), QString());
}

TEST_F(QtFXMaterialTest, SliderNumbersAreCutOffInSinglePrecision)
{
    EXPECT_EQ(sliderFor({{"UIMax", 1.3f}}).maximum(), 12);
    EXPECT_EQ(sliderFor({{"UIMax", 0.3f}}).maximum(), 3);
    EXPECT_EQ(sliderFor({{"UIMax", 9.0f}}, {1.3f}).value(), 12);
    EXPECT_EQ(sliderFor({}, {0.3f}).value(), 3);
    EXPECT_EQ(sliderFor({}, {0.59f}).value(), 5);
    EXPECT_EQ(sliderFor({{"UIMin", -9.0f}}, {-0.59f}).value(), -5);
}

TEST_F(QtFXMaterialTest, ASlidersValueStaysInItsRange)
{
    EXPECT_EQ(sliderFor({}, {7.0f}).value(), 10);
    EXPECT_EQ(sliderFor({}, {-7.0f}).value(), 0);
}

TEST_F(QtFXMaterialTest, SliderNumbersBeyondAnIntAreTheNearestAndNoNumberIsZero)
{
    const QSlider& wide = sliderFor({{"UIMin", -Infinity}, {"UIMax", Infinity}}, {NoNumber});
    EXPECT_EQ(wide.minimum(), Lowest);
    EXPECT_EQ(wide.maximum(), Highest);
    EXPECT_EQ(wide.value(), 0);
    EXPECT_EQ(sliderFor({{"UIMax", 3e8f}}, {2.5e8f}).maximum(), Highest);
    EXPECT_EQ(sliderFor({{"UIMin", -3e8f}}).minimum(), Lowest);
    EXPECT_EQ(sliderFor({{"UIMax", 2147483648.0f}, {"UIStep", 1.0f}}).maximum(), Highest);
    const QSlider& none = sliderFor({{"UIMin", NoNumber}, {"UIMax", NoNumber}});
    EXPECT_EQ(none.minimum(), 0);
    EXPECT_EQ(none.maximum(), 0);
}

TEST_F(QtFXMaterialTest, AStepOfZeroOrLessIsSurvived)
{
    editor->open();
    for (const float step : {0.0f, -0.0f, -0.1f, -Infinity, Infinity, NoNumber}) {
        QSlider& slider = sliderFor({{"UIStep", step}}, {0.5f});
        EXPECT_LE(slider.minimum(), slider.maximum());
        editor->paint();
        QTest::keyClick(&slider, Qt::Key_Right);
        QTest::keyClick(&slider, Qt::Key_Left);
        material->parameters[0]->values = {0.7f};
        editor->updateParameterWidget(material->parameters[0]);
    }
    EXPECT_EQ(sliderFor({{"UIStep", 0.0f}}).maximum(), Highest);
}

TEST_F(QtFXMaterialTest, AValueThatIsNoFloatLeavesTheSliderAloneSilently)
{
    for (const AnyValues& values :
         {AnyValues{}, AnyValues{1}, AnyValues{text("1")}, AnyValues{boost::any()}}) {
        EXPECT_EQ(sliderFor({{"UIMin", 0.2f}}, values).value(), 2);
        EXPECT_EQ(editor->error(), QString());
    }
}

// Colours

TEST_F(QtFXMaterialTest, AColourIsAMarkedButtonWithItsNameOnItsColour)
{
    QPushButton& button = colorFor({1.0f, 0.5f, 0.0f});
    EXPECT_EQ(button.text(), "#ff8000");
    EXPECT_EQ(button.styleSheet(), "background-color: #ff8000");
    EXPECT_EQ(nameOf(button), "tint");
    EXPECT_EQ(kindOf(button), "ColorWidget");
    EXPECT_EQ(button.objectName(), "");
    EXPECT_TRUE(isConnectedOnce(&button, SIGNAL(clicked()), editor.get(), SLOT(setColorParameter())));
}

TEST_F(QtFXMaterialTest, AColoursButtonHasThatColourOnTheScreen)
{
    editor->open();
    QPushButton& button = colorFor({1.0f, 0.0f, 0.0f});
    QCoreApplication::processEvents();
    const QColor seen = button.grab().toImage().pixelColor(button.width() / 8, button.height() / 2);
    EXPECT_EQ(seen.hsvHue(), 0); // styles add a gradient
    EXPECT_GT(seen.hsvSaturation(), 100);
}

TEST_F(QtFXMaterialTest, TheFourthOfFourIsTheOpacityWhichTheNameLeavesOut)
{
    EXPECT_EQ(colorFor({1.0f, 0.5f, 0.0f, 0.25f}).text(), "#ff8000");
    EXPECT_EQ(editor->error(), QString());
}

TEST_F(QtFXMaterialTest, OpacityIsReadFromExactlyFour)
{
    colorFor({1.0f, 0.5f, 0.0f, text("x"), 1.0f});
    EXPECT_EQ(editor->error(), QString());
    EXPECT_EQ(colorFor({1.0f, 0.5f, 0.0f, text("x")}).text(), "#ff8000") << "as far as it was read";
    EXPECT_EQ(editor->error(), "Error reading color from parameter: tint");
}

TEST_F(QtFXMaterialTest, AColourThatIsUnreadableIsReportedAndBlackAndStillHasARow)
{
    for (const AnyValues& values : {AnyValues{1, 0, 0}, AnyValues{}, AnyValues{1.0f, 1.0f},
                                    AnyValues{1.0f, 1.0f, 1}, AnyValues{1.0, 1.0, 1.0}}) {
        const QPushButton& button = colorFor(values);
        EXPECT_EQ(button.text(), "#000000");
        EXPECT_EQ(button.styleSheet(), "background-color: #000000");
        EXPECT_EQ(editor->label(1), "tint");
        EXPECT_EQ(editor->error(), "Error reading color from parameter: tint");
        editor->acceptError();
    }
}

TEST_F(QtFXMaterialTest, ColoursBeyondTheRangeAreSurvived)
{
    for (const float component : {-1.0f, 2.0f, Infinity, NoNumber})
        EXPECT_EQ(colorFor({component, component, component, component}).text().size(), 7);
}

// Textures

TEST_F(QtFXMaterialTest, ATextureIsAnEmptyPictureAndAButton)
{
    addTexture("map", {text("a.png")});
    show();
    QWidget& container = *editor->at(1, 1);
    auto* layout = dynamic_cast<QHBoxLayout*>(container.layout());
    ASSERT_TRUE(layout);
    ASSERT_EQ(layout->count(), 2);
    QLabel& picture = editor->picture(1);
    QPushButton& button = editor->fileButton(1);
    EXPECT_EQ(layout->itemAt(0)->widget(), &picture);
    EXPECT_EQ(layout->itemAt(1)->widget(), &button);
    EXPECT_EQ(picture.objectName(), "ImageLabel");
    EXPECT_EQ(picture.text(), "");
    EXPECT_EQ(picture.pixmap(), nullptr);
    EXPECT_EQ(button.text(), "...");
    EXPECT_TRUE(isConnectedOnce(&button, SIGNAL(clicked()), editor.get(), SLOT(setTextureParameter())));
    EXPECT_EQ(editor->error(), QString());
}

TEST_F(QtFXMaterialTest, OnlyATexturesContainerAndButtonCarryTheNameAndOnlyTheContainerTheKind)
{
    addTexture("map", {text("a.png")});
    show();
    const QWidget& container = *editor->at(1, 1);
    EXPECT_EQ(nameOf(container), "map");
    EXPECT_EQ(kindOf(container), "TextureWidget");
    EXPECT_EQ(nameOf(editor->fileButton(1)), "map");
    EXPECT_FALSE(editor->fileButton(1).property("FXWidgetType").isValid());
    EXPECT_THAT(editor->picture(1).dynamicPropertyNames(), IsEmpty());
}

TEST_F(QtFXMaterialTest, ATextureThatIsUnreadableIsReportedAndStillHasARow)
{
    for (const AnyValues& values : {AnyValues{}, AnyValues{1.0f}, AnyValues{QString("a.png")}}) {
        material->parameters.clear();
        addTexture("map", values);
        show();
        EXPECT_EQ(editor->fileButton(1).text(), "...");
        EXPECT_EQ(editor->error(), "Error reading fileName from parameter: map");
        editor->acceptError();
    }
}

// Messages

TEST_F(QtFXMaterialTest, MessagesAreShownOneAfterTheOtherByOneBox)
{
    addColor("a", {});
    addTexture("b", {});
    show();
    EXPECT_EQ(editor->findChildren<QErrorMessage*>().size(), 1);
    EXPECT_FALSE(editor->findChild<QErrorMessage*>()->isModal());
    EXPECT_EQ(editor->error(), "Error reading color from parameter: a");
    editor->acceptError();
    EXPECT_EQ(editor->error(), "Error reading fileName from parameter: b");
    editor->acceptError();
    EXPECT_EQ(editor->error(), QString());
}

TEST_F(QtFXMaterialTest, AMessageThatWaitsIsNotQueuedTwice)
{
    addColor("a", {});
    addColor("b", {});
    for (int i = 0; i < 5; ++i)
        show();
    editor->acceptError();
    EXPECT_EQ(editor->error(), "Error reading color from parameter: b");
    editor->acceptError();
    EXPECT_EQ(editor->error(), QString());
    show();
    EXPECT_EQ(editor->error(), "Error reading color from parameter: a");
}

TEST_F(QtFXMaterialTest, AMessageThatTheUserSwitchedOffStaysAwayInThisEditorOnly)
{
    addColor("a", {});
    addColor("b", {});
    show();
    auto& again = *editor->findChild<QErrorMessage*>()->findChild<QCheckBox*>();
    again.setChecked(false);
    editor->acceptError();
    again.setChecked(true);
    editor->acceptError();
    show();
    EXPECT_EQ(editor->error(), "Error reading color from parameter: b");
    FXMaterialProbe other;
    other.setFXMaterial(material);
    EXPECT_EQ(other.error(), "Error reading color from parameter: a");
}

TEST_F(QtFXMaterialTest, ANameInAMessageIsShownLetterByLetter)
{
    addColor("<b>a</b> & b", {});
    show();
    EXPECT_EQ(editor->error(), "Error reading color from parameter: <b>a</b> & b");
}

TEST_F(QtFXMaterialTest, WithoutAFailureThereIsNoBox)
{
    addColor("a", {1.0f, 1.0f, 1.0f});
    show();
    EXPECT_EQ(editor->findChild<QErrorMessage*>(), nullptr);
}

// Destruction

TEST_F(QtFXMaterialTest, ReleasesWhatItWasGiven)
{
    addSlider("size", {0.5f});
    show();
    handle("MaterialParameterUpdated", "m, size");
    send("MaterialParameterUpdated", "m, size");
    const boost::weak_ptr<FakeParameter> parameter = material->parameters[0];
    material->parameters.clear();
    EXPECT_FALSE(parameter.expired());
    const long materials = material.use_count();
    const long managers = manager.use_count();
    EXPECT_TRUE(events->isRegistered(editor.get()));
    HCE::EventListener* listener = editor.get();
    editor.reset();
    EXPECT_TRUE(parameter.expired());
    EXPECT_EQ(material.use_count(), materials - 1);
    EXPECT_EQ(manager.use_count(), managers - 1);
    EXPECT_FALSE(events->isRegistered(listener));
}

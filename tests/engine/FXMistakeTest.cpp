#include "tests/engine/FXStage.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using namespace halvern;
using namespace halvern::test;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

namespace {

/// What is said about an effect with this text, behind the file's name.
std::vector<std::string> mistakesOf(const std::string& text)
{
    const EffectFile file(text);
    FXStage stage;
    stage.makeMaterial(file.path());
    std::vector<std::string> found;
    for (const std::string& message : stage.messages()) {
        EXPECT_EQ(message.substr(0, 7), "test.fx");
        found.push_back(message.substr(7));
    }
    return found;
}

/// GLSL whose third line begins with this.
std::string onThirdLine(const std::string& line)
{
    return "technique t { fragment {\n void main() {\n" + line + "\n fragment = vec4(1.0); } } }";
}

} // namespace

TEST(FXMistakeTest, TheLineOfAMistakeInTheCodeIsThatOfTheFile)
{
    EXPECT_THAT(mistakesOf(onThirdLine("\tint i = nothing;")), ElementsAre(":3:10: `nothing' undeclared"));
    EXPECT_THAT(mistakesOf(onThirdLine("\t\t  int\t \ti =   nothing;")),
                ElementsAre(":3:17: `nothing' undeclared"));
    EXPECT_THAT(mistakesOf("technique t {       fragment { void main() { fragment =   vec4(nothing); } } }"),
                ElementsAre(":1:64: `nothing' undeclared"));
    EXPECT_THAT(mistakesOf(onThirdLine("#error stop")), ElementsAre(":3:1: #error stop"));
    EXPECT_THAT(mistakesOf(onThirdLine("int i = 1.5;")), ElementsAre(HasSubstr(":3:1: initializer")));
    EXPECT_THAT(mistakesOf(onThirdLine("/* two\n lines */ int i = nothing;")),
                ElementsAre(":4:19: `nothing' undeclared"));
}

TEST(FXMistakeTest, TheLineIsRightWithLineEndsOfWindowsAndAByteOrderMark)
{
    EXPECT_THAT(mistakesOf("\xEF\xBB\xBF"
                           "float a = 1;\r\ntechnique t {\r\n fragment {\r\n void main() {\r\n"
                           " fragment = vec4(nothing);\r\n } } }\r\n"),
                ElementsAre(":5:18: `nothing' undeclared"));
}

TEST(FXMistakeTest, TheLineIsRightInVertexCodeAndInCodeThatIsShared)
{
    EXPECT_THAT(
        mistakesOf("vertex {\n void main() {\n  gl_Position = nothing; } }\n" + objectEffect("vec4(1.0)")),
        ElementsAre(":3:17: `nothing' undeclared"));
    EXPECT_THAT(
        mistakesOf(
            "fragment { float one() { return 1.0; } }\nfragment {\n float two() { return nothing; } }\n"
            "technique t { pass a { fragment { void main() { fragment = vec4(one() + two()); } } } }"),
        ElementsAre(":3:23: `nothing' undeclared"));
}

TEST(FXMistakeTest, AFunctionThatIsMissingIsNamed)
{
    EXPECT_THAT(
        mistakesOf("float a;\ntechnique t { fragment { float f(); void main() { fragment = vec4(f()); } } }"),
        ElementsAre(HasSubstr(":2:11: unresolved reference to function `f'")));
}

TEST(FXMistakeTest, AWordInACommentCallsNothing)
{
    EXPECT_THAT(mistakesOf("technique t { fragment {\n// no shineAll() here\n/* shineAll() */\n"
                           "void main() { fragment = vec4(1.0); } } }"),
                IsEmpty());
}

TEST(FXMistakeTest, ACommaIsNamedSinceItWouldEndTheMessage)
{
    EXPECT_THAT(mistakesOf("float a = 1,5;"), ElementsAre(":1:12: expected ';'; not a comma"));
}

TEST(FXMistakeTest, APictureThatCannotBeReadIsNamedAndTheEffectIsUsedWithoutIt)
{
    const EffectFile file(
        objectEffect("vec4(1.0)", "texture a = \"no.png\";\ntexture b;\n texture c = \"\";"));
    FXStage stage;
    stage.makeMaterial(file.path());
    EXPECT_TRUE(stage.lastAdded);
    EXPECT_THAT(stage.messages(),
                ElementsAre("test.fx:1:9: expected a picture that can be read; not 'no.png'"));
}

TEST(FXMistakeTest, AFileThatIsTooLargeIsToldSo)
{
    EXPECT_THAT(mistakesOf(objectEffect("vec4(1.0)") + std::string(256 * 1024, '\n')),
                ElementsAre(":1:1: expected an effect file of at most 256 KiB"));
}

TEST(FXMistakeTest, ACombinationThatDoesNotCompileIsPlainAndHurtsNoOther)
{
    // Fine with both bools off and with both on.
    const EffectFile file("bool one;\nbool two;\ntechnique t { fragment { void main() {\n"
                          "#if defined(ONE) && !defined(TWO)\nfragment = nothing;\n#endif\n"
                          "fragment = vec4(0.0, 1.0, 0.0, 1.0); } } }");
    const EffectFile red(objectEffect("vec4(1.0, 0.0, 0.0, 1.0)"));
    FXStage stage;
    const NodePtr node = stage.scene.add("cube", boxMesh());
    const QColor plain = stage.draw(0, 0);
    const MaterialPtr material = stage.makeMaterial(file.path());
    node->setMaterial(material, 0, 0);
    EXPECT_EQ(stage.draw(0, 0), QColor(Qt::green));
    EXPECT_THAT(stage.messages(), IsEmpty());
    stage.setFloats(material, "one", {1});
    EXPECT_EQ(stage.draw(0, 0), plain);
    EXPECT_THAT(stage.messages(), ElementsAre("test.fx:5:12: `nothing' undeclared"));
    stage.setFloats(material, "two", {1});
    EXPECT_EQ(stage.draw(0, 0), QColor(Qt::green));
    node->setMaterial(stage.makeMaterial(red.path()), 0, 0);
    EXPECT_EQ(stage.draw(0, 0), QColor(Qt::red));
    EXPECT_THAT(stage.messages(), SizeIs(1));
}

TEST(FXMistakeTest, AnEffectOfTheSceneOnANodeIsPlainAndSaysSo)
{
    const EffectFile file(sceneEffect("texture(sceneColor, place)"));
    FXStage stage;
    const NodePtr node = stage.scene.add("cube", boxMesh());
    const QColor plain = stage.draw(0, 0);
    node->setMaterial(stage.makeMaterial(file.path()), 0, 0);
    EXPECT_EQ(stage.draw(0, 0), plain);
    EXPECT_THAT(stage.messages(), ElementsAre(HasSubstr("an effect of the scene is no look of a node")));
    stage.draw();
    EXPECT_THAT(stage.messages(), SizeIs(1));
}

TEST(FXMistakeTest, ManyTermsAreTooManyBeforeTheDriversStackIsFull)
{
    std::string sum = "x";
    for (int i = 0; i < 8190; ++i)
        sum += "+x";
    EXPECT_THAT(mistakesOf(objectEffect("vec4(" + sum + ")", "float x;")),
                ElementsAre(HasSubstr(":2:26: a statement")));
    sum.resize(sum.size() - 40);
    EXPECT_THAT(mistakesOf(objectEffect("vec4(" + sum + ")", "float x;")), IsEmpty());
}

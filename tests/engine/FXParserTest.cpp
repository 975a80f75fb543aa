#include "reference/engine/fx/EffectSyntax.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

using namespace halvern::engine::fx;
using testing::ElementsAre;

namespace {

const std::string body = "fragment { void main() {} } technique plain { }";

std::shared_ptr<const EffectSyntax> parse(const std::string& text)
{
    return parseEffect(text, "test.fx");
}

std::string errorOf(const std::string& text)
{
    try {
        parse(text);
        return "";
    } catch (const EffectError& error) {
        return error.what();
    }
}

ParameterSyntax parameterOf(const std::string& declaration)
{
    return parse(declaration + body)->parameters.at(0);
}

struct Mistake
{
    const char* text;
    const char* message;
};

} // namespace

TEST(FXParserTest, ParametersHaveTypesNamesAndDefaults)
{
    const auto effect = parse("float a = 1.5; float2 b = {1, -2}; float3 c = float3(.5, 1e-1, 2.f);\n"
                              "float4 d; int e = 3; bool f = true; texture g = \"a/b.png\"; texture h;" +
                              body);
    ASSERT_EQ(effect->parameters.size(), 8u);
    EXPECT_EQ(effect->parameters[0].name, "a");
    EXPECT_EQ(effect->parameters[0].type, ParameterType::Float);
    EXPECT_THAT(effect->parameters[0].numbers, ElementsAre(1.5f));
    EXPECT_THAT(effect->parameters[1].numbers, ElementsAre(1, -2));
    EXPECT_THAT(effect->parameters[2].numbers, ElementsAre(0.5f, 0.1f, 2));
    EXPECT_THAT(effect->parameters[3].numbers, ElementsAre(0, 0, 0, 0));
    EXPECT_THAT(effect->parameters[4].numbers, ElementsAre(3));
    EXPECT_EQ(effect->parameters[4].type, ParameterType::Int);
    EXPECT_THAT(effect->parameters[5].numbers, ElementsAre(1));
    EXPECT_EQ(effect->parameters[6].file, "a/b.png");
    EXPECT_EQ(effect->parameters[7].file, "");
    EXPECT_EQ(effect->parameters[3].place.line, 2);
    EXPECT_EQ(effect->parameters[3].place.column, 8);
}

TEST(FXParserTest, AnIntIsTakenWhereAFloatIsExpected)
{
    EXPECT_THAT(parameterOf("float a = 2;").numbers, ElementsAre(2));
    const auto annotations = parameterOf("float a < int UIMin = 3; float UIMax = 4; > = 2;").annotations;
    ASSERT_EQ(annotations.size(), 2u);
    EXPECT_EQ(std::get<float>(annotations[0].value), 3);
    EXPECT_EQ(std::get<float>(annotations[1].value), 4);
}

TEST(FXParserTest, AnnotationsHoldTextsAndNumbers)
{
    const auto annotations =
        parameterOf("float a < string UIName = \"A, b; c\"; float UIMin = -1; bool on = true; >;")
            .annotations;
    ASSERT_EQ(annotations.size(), 3u);
    EXPECT_EQ(annotations[0].name, "UIName");
    EXPECT_EQ(std::get<std::string>(annotations[0].value), "A, b; c");
    EXPECT_EQ(std::get<float>(annotations[1].value), -1);
    EXPECT_EQ(std::get<float>(annotations[2].value), 1);
}

TEST(FXParserTest, TheScriptClassIsComparedWithoutCase)
{
    EXPECT_EQ(parse("string ScriptClass = \"Scene\";" + body)->scriptClass, "Scene");
    EXPECT_TRUE(parse("string ScriptClass = \"Scene\";" + body)->isScene());
    EXPECT_FALSE(parse("string ScriptClass = \"object\";" + body)->isScene());
    EXPECT_FALSE(parse(body)->isScene());
    EXPECT_EQ(parse("string Author = \"scene\";" + body)->scriptClass, "");
}

TEST(FXParserTest, CodeKeepsItsTextAndItsPlace)
{
    const auto effect = parse("fragment\n{ int a; { /* } */ } // }\n}\ntechnique t { vertex {b} }");
    ASSERT_EQ(effect->fragment.size(), 1u);
    EXPECT_EQ(effect->fragment[0].text, " int a; { /* } */ } // }\n");
    EXPECT_EQ(effect->fragment[0].place.line, 2);
    EXPECT_EQ(effect->fragment[0].place.column, 2);
    EXPECT_EQ(effect->techniques[0].passes[0].vertex[0].text, "b");
}

TEST(FXParserTest, ATechniqueHasPassesOrIsOne)
{
    const auto effect =
        parse("technique one { depth = off; fragment { } }\n"
              "technique two { pass { fragment { } blend = add; } pass last { fragment { } } }");
    ASSERT_EQ(effect->techniques.size(), 2u);
    EXPECT_EQ(effect->techniques[0].name, "one");
    ASSERT_EQ(effect->techniques[0].passes.size(), 1u);
    EXPECT_EQ(effect->techniques[0].passes[0].state.depth, PassState::Depth::Off);
    ASSERT_EQ(effect->techniques[1].passes.size(), 2u);
    EXPECT_EQ(effect->techniques[1].passes[0].state.blend, PassState::Blend::Add);
    EXPECT_EQ(effect->techniques[1].passes[1].name, "last");
}

TEST(FXParserTest, EveryStateIsRead)
{
    const auto stateOf = [](const std::string& states) {
        return parse("technique t { " + states + " fragment { } }")->techniques[0].passes[0].state;
    };
    EXPECT_EQ(stateOf("blend = alpha;").blend, PassState::Blend::Alpha);
    EXPECT_EQ(stateOf("blend = multiply;").blend, PassState::Blend::Multiply);
    EXPECT_EQ(stateOf("blend = none;").blend, PassState::Blend::None);
    EXPECT_EQ(stateOf("depth = test;").depth, PassState::Depth::Test);
    EXPECT_EQ(stateOf("depth = behind;").depth, PassState::Depth::Behind);
    EXPECT_EQ(stateOf("cull = back;").cull, PassState::Cull::Back);
    EXPECT_EQ(stateOf("cull = front;").cull, PassState::Cull::Front);
    EXPECT_TRUE(stateOf("wireframe = on;").wireframe);
    EXPECT_FALSE(stateOf("wireframe = off;").wireframe);
    const auto scene = parse("string ScriptClass = \"scene\"; technique t { size = 0.25; fragment { } }");
    EXPECT_EQ(scene->techniques[0].passes[0].state.size, 0.25f);
}

TEST(FXParserTest, LineEndsOfWindowsAndAByteOrderMarkAreTaken)
{
    EXPECT_EQ(parse("\xEF\xBB\xBF"
                    "float a = 1; // one\r\nfloat b;\r\n" +
                    body)
                  ->parameters.size(),
              2u);
}

TEST(FXParserTest, DeepBracesDoNotExhaustTheStack)
{
    const std::string open(100000, '{');
    const std::string close(100000, '}');
    EXPECT_NO_THROW(parse("fragment {" + open + close + "} technique t { }"));
    EXPECT_THROW(parse("fragment {" + open), EffectError);
}

const Mistake mistakes[] = {
    {"", "test.fx:1:1: expected a technique"},
    {"float a;\n", "test.fx:2:1: expected a technique"},
    {"float x", "test.fx:1:8: expected ';', not the end of the file"},
    {"float x = ;", "test.fx:1:11: expected a value, not ';'"},
    {"float x =\n  2 3;", "test.fx:2:5: expected ';', not '3'"},
    {"float 2x = 1;", "test.fx:1:7: expected a name, not '2'"},
    {"flaot x = 1;", "test.fx:1:1: unknown type 'flaot'; expected float, float2, float3, float4, int, bool, "
                     "texture or string"},
    {"float2 x = {1};", "test.fx:1:13: float2 has 2 numbers, not 1"},
    {"float x = {1, 2};", "test.fx:1:12: float has 1 number, not 2"},
    {"float3 x = float4(1, 1, 1, 1);", "test.fx:1:12: expected float3, not 'float4'"},
    {"float4 x = foo(1);", "test.fx:1:12: 'foo' is no type of numbers"},
    {"float x = 1e99;", "test.fx:1:11: the number '1e99' is out of range"},
    {"float x = 1,5;", "test.fx:1:12: expected ';', not ','"},
    {"int x = 3000000000;", "test.fx:1:9: the number '3000000000' is out of range"},
    {"float gr\xC3\xBCn;", "test.fx:1:9: expected ';', not '\xC3\xBC'"},
    {"int x = 1.5;", "test.fx:1:9: expected a whole number, not '1.5'"},
    {"float x = \"a\";", "test.fx:1:12: expected a number, not 'a'"},
    {"float x = yes;", "test.fx:1:11: expected a number, not 'yes'"},
    {"texture x = 1;", "test.fx:1:13: expected a text in double quotes, not '1'"},
    {"texture x = \"abc\n\";", "test.fx:1:17: expected the text to end with '\"' in its line"},
    {"float x; float x;", "test.fx:1:16: a second parameter 'x'"},
    {"float x < float UIMin = \"a\"; >;", "test.fx:1:26: expected a number, not 'a'"},
    {"float x < string UIName = 3; >;", "test.fx:1:27: expected a text in double quotes, not '3'"},
    {"float x < vec UIName = 3; >;",
     "test.fx:1:11: an annotation is a string, a float, an int or a bool, not 'vec'"},
    {"float x < string UIName = \"a\" >;", "test.fx:1:31: expected ';', not '>'"},
    {"float x < string UIName = \"a\";  = 1;", "test.fx:1:33: expected '>', not '='"},
    {"float x < int a = 1; int a = 2; >;", "test.fx:1:26: a second annotation 'a'"},
    {"string ScriptClass;", "test.fx:1:8: ScriptClass has no value"},
    {"string ScriptClass = 1;", "test.fx:1:22: expected a text in double quotes, not '1'"},
    {"string ScriptClass = \"a\"; string ScriptClass = \"b\";", "test.fx:1:34: a second ScriptClass"},
    {"technique { }", "test.fx:1:11: expected a name, not '{'"},
    {"technique t { }", "test.fx:1:11: expected fragment code"},
    {"technique t { pass { } }", "test.fx:1:15: expected fragment code"},
    {"technique t {\n fragment { void f() {\n}", "test.fx:2:12: expected as many '}' as '{'"},
    {"technique t { fragment }", "test.fx:1:24: expected '{', not '}'"},
    {"technique t { blend = mix; }", "test.fx:1:23: expected one of none, alpha, add, multiply, not 'mix'"},
    {"technique t { depth = 1; }", "test.fx:1:23: expected one of on, test, off, behind, not '1'"},
    {"technique t { cull = all; }", "test.fx:1:22: expected one of none, back, front, not 'all'"},
    {"technique t { wireframe = yes; }", "test.fx:1:27: expected one of on, off, not 'yes'"},
    {"technique t { colour = red; }",
     "test.fx:1:15: unknown state 'colour'; expected blend, depth, cull, wireframe or size"},
    {"technique t { size = 2; }", "test.fx:1:22: expected a number from 0.01 to 1, not '2'"},
    {"technique t { size = 0.5; fragment { } }", "test.fx:1:11: only passes of scene effects have a size"},
    {"technique t { fragment { } pass { } }",
     "test.fx:1:28: a technique has either passes or states and code of its own"},
    {"technique t { pass { fragment { } } cull = back; }",
     "test.fx:1:37: a technique has either passes or states and code of its own"},
    {"technique t { pass a { fragment {} } pass a { } }", "test.fx:1:43: a second pass 'a'"},
    {"fragment { } technique t { } technique t { }", "test.fx:1:40: a second technique 't'"},
    {"string ScriptClass = \"scene\"; vertex { } fragment { } technique t { }",
     "test.fx:1:65: an effect of the scene has no vertex code"},
    {"fragment { }\n/* no end", "test.fx:2:1: a comment without an end"},
    {"@", "test.fx:1:1: expected a parameter, a technique or code, not '@'"},
};

TEST(FXParserTest, EachMistakeIsReportedWithLineAndColumn)
{
    for (const Mistake& mistake : mistakes)
        EXPECT_EQ(errorOf(mistake.text), mistake.message) << mistake.text;
}

TEST(FXParserTest, ThereAreLimits)
{
    std::string textures;
    for (int i = 0; i < 9; ++i)
        textures += "texture t" + std::to_string(i) + ";\n";
    EXPECT_EQ(errorOf(textures + body), "test.fx:9:9: more than 8 textures");
    std::string bools;
    for (int i = 0; i < 25; ++i)
        bools += "bool b" + std::to_string(i) + ";\n";
    EXPECT_EQ(errorOf(bools + body), "test.fx:25:6: more than 24 textures and bools");
    std::string numbers;
    for (int i = 0; i < 257; ++i)
        numbers += "float x" + std::to_string(i) + ";\n";
    EXPECT_EQ(errorOf(numbers + body), "test.fx:257:7: more than 256 parameters");
}

TEST(FXParserTest, AMessageQuotesTheBeginningOfALongText)
{
    const std::string text(1000, 'a');
    EXPECT_EQ(errorOf(text + " x;").substr(0, 93),
              "test.fx:1:1: unknown type '" + text.substr(0, 60) + "...'; ");
    std::string letters;
    for (int i = 0; i < 100; ++i)
        letters += "\xC3\xBC";
    EXPECT_EQ(errorOf("float x = \"" + letters + "\";"),
              "test.fx:1:12: expected a number, not '" + letters.substr(0, 60) + "...'");
}

TEST(FXParserTest, AStatementIsOfALimitedLength)
{
    const std::string most = "x" + std::string(16 * 1024 - 1, '+');
    const auto effectOf = [](const std::string& code) {
        return "fragment {\n " + code + "}\ntechnique t { }";
    };
    const std::string message = "test.fx:2:2: a statement of more than 16384 characters";
    EXPECT_EQ(errorOf(effectOf(most)), "");
    EXPECT_EQ(errorOf(effectOf(most + "+")), message);
    EXPECT_EQ(errorOf(effectOf(most + ";" + most + "{" + most + "}" + most)), "");
    EXPECT_EQ(errorOf(effectOf(most.substr(1) + "\n#define A\n" + most.substr(12))), "");
    EXPECT_EQ(errorOf(effectOf("/* " + most + "\n*/" + most + "//" + most + "\n+")),
              "test.fx:3:3: a statement of more than 16384 characters");
    EXPECT_EQ(errorOf(effectOf("/*" + most + most + "*/ //" + most + "\n" + most)), "");
}

TEST(FXParserTest, EveryBrokenFileOfTheCorpusIsRefusedWithAPlace)
{
    int files = 0;
    for (const auto& entry : std::filesystem::directory_iterator("tests/corpus/effects")) {
        std::ifstream stream(entry.path(), std::ios::binary);
        const std::string text(std::istreambuf_iterator<char>(stream), {});
        ++files;
        // What is wrong with these is the GLSL, which the parser does not read.
        const bool isGLSL = entry.path().filename().string().rfind("glsl-", 0) == 0;
        if (isGLSL)
            EXPECT_NO_THROW(parse(text)) << entry.path();
        else
            EXPECT_THROW(parse(text), EffectError) << entry.path();
    }
    EXPECT_GE(files, 20);
}

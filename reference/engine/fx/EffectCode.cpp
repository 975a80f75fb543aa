#include "reference/engine/fx/EffectCode.h"

#include "reference/engine/fx/Comments.h"

#include <GL/gl.h>
#include <GL/glext.h>

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <functional>
#include <sstream>

namespace halvern::engine::fx {

namespace {

const char* const versionLine = "#version 130\n";

// Everything is in eye coordinates.
const char* const surfaceUniforms = R"(
uniform mat4 worldToEye;
uniform mat4 eyeToWorld;
uniform vec3 up;
uniform vec2 viewSize;
uniform float time;
)";

const char* const vertexHead = R"(
out vec3 position;
out vec3 normal;
out vec2 texCoord;
out vec4 color;
void findShadows();
void placeVertex(vec4 vertex, vec3 vertexNormal)
{
    vec4 eyePosition = gl_ModelViewMatrix * vertex;
    position = eyePosition.xyz;
#ifndef UNLIT
#ifdef FLAT_NORMALS
    normal = vec3(0.0);
#else
    normal = normalize(gl_NormalMatrix * vertexNormal);
#endif
    findShadows();
#endif
#ifdef TEX_COORDS
    texCoord = gl_MultiTexCoord0.xy;
#else
    texCoord = vec2(0.0);
#endif
#ifdef VERTEX_COLORS
    color = gl_Color;
#else
    color = vec4(1.0);
#endif
    gl_Position = gl_ProjectionMatrix * eyePosition;
}
)";

const char* const vertexMain = R"(
void main()
{
    placeVertex(gl_Vertex, gl_Normal);
}
)";

// Squares and roots instead of the sRGB curve: a colour that nothing changes comes out as it went in, for a
// tenth of the cost. Normals that point away from the eye are turned round, by the facet and not by the
// winding: models with the wrong winding, open surfaces and mirrored nodes all come out lit.
const char* const fragmentHead = R"(
in vec3 position;
in vec3 normal;
in vec2 texCoord;
in vec4 color;
out vec4 fragment;
uniform vec2 opacity; // factor and least value of the alpha
vec3 toLinear(vec3 c)
{
    return c * c;
}
vec3 toDisplay(vec3 c)
{
    return sqrt(c);
}
float toOpacity(float alpha)
{
    return max(alpha * opacity.x, opacity.y);
}
vec3 findNormal()
{
    vec3 facet = cross(dFdx(position), dFdy(position));
#ifdef FLAT_NORMALS
    return normalize(facet);
#else
    vec3 m = normalize(normal);
    return dot(m, facet) < 0.0 ? -m : m;
#endif
}
)";

// The lookup takes what lies behind the far plane to be on it. What lies behind the light is far outside of
// the map, where there is light.
const char* const lightHead = R"(
uniform vec3 lightPosition[MAX_LIGHTS]; // of far lights the direction towards them
uniform vec3 lightColor[MAX_LIGHTS];
uniform vec3 lightFalloff[MAX_LIGHTS]; // constant, linear, quadratic
uniform vec3 lightAxis[MAX_LIGHTS];    // of the cone of a spot light
uniform vec2 lightCone[MAX_LIGHTS];    // scale and offset of the cosine
void shine(vec3 towards, vec3 lightColor, float lit, float distanceLoss);
void shineFar(int i, float lit)
{
    shine(lightPosition[i], lightColor[i], lit, 1.0);
}
void shineNear(int i, float lit, bool spot)
{
    vec3 l = lightPosition[i] - position;
    float d2 = dot(l, l) + 1e-12;
    float inverse = inversesqrt(d2);
    float d = d2 * inverse;
    l *= inverse;
    if (spot) {
        float cone = clamp(lightCone[i].y - lightCone[i].x * dot(l, lightAxis[i]), 0.0, 1.0);
        lit *= cone * cone;
    }
    shine(l, lightColor[i], lit, lightFalloff[i].x + (lightFalloff[i].y + lightFalloff[i].z * d) * d);
}
float texel(sampler2DShadow map, vec3 s)
{
    return texture(map, s);
}
float texel(sampler2DShadow map, vec4 c)
{
    return texture(map, c.xyz / max(c.w, 1e-6));
}
)";

const char* const pictureVertex = R"(
out vec2 place;
void main()
{
    place = gl_Vertex.xy;
    gl_Position = vec4(gl_Vertex.xy * 2.0 - 1.0, 0.0, 1.0);
}
)";

const char* const pictureHead = R"(
in vec2 place;
out vec4 fragment;
uniform sampler2D sceneColor;
uniform sampler2D sceneDepth;
uniform mat4 eyeToClip;
uniform mat4 clipToEye;
uniform vec2 viewSize;
uniform float time;
vec3 positionAt(vec2 where)
{
    vec4 clip = vec4(vec3(where, texture(sceneDepth, where).r) * 2.0 - 1.0, 1.0);
    vec4 eye = clipToEye * clip;
    return eye.xyz / eye.w;
}
float depthAt(vec2 where)
{
    return -positionAt(where).z;
}
bool isBackground(vec2 where)
{
    return texture(sceneDepth, where).r == 1.0;
}
)";

const std::pair<unsigned int, const char*> meshMacros[] = {{ShaderFeature::Unlit, "UNLIT"},
                                                           {ShaderFeature::FlatNormals, "FLAT_NORMALS"},
                                                           {ShaderFeature::VertexColors, "VERTEX_COLORS"},
                                                           {ShaderFeature::TexCoords, "TEX_COORDS"}};

/// baseColorMap -> BASE_COLOR_MAP
std::string macroName(const std::string& name)
{
    std::string macro;
    for (size_t i = 0; i < name.size(); ++i) {
        const auto c = static_cast<unsigned char>(name[i]);
        if (i > 0 && std::isupper(c) && !std::isupper(static_cast<unsigned char>(name[i - 1])))
            macro += '_';
        macro += char(std::toupper(c));
    }
    return macro;
}

bool isSwitch(const ParameterSyntax& parameter)
{
    return parameter.type == ParameterType::Texture || parameter.type == ParameterType::Bool;
}

/// Calls a function with each switch parameter and its bit.
template <class Function>
void forSwitches(const EffectSyntax& effect, Function function)
{
    unsigned int bit = ShaderFeature::FirstSwitch;
    for (const ParameterSyntax& parameter : effect.parameters)
        if (isSwitch(parameter)) {
            function(parameter, bit);
            bit <<= 1;
        }
}

bool isOfWord(char c)
{
    return std::isalnum(static_cast<unsigned char>(c)) || c == '_';
}

/// The code with blanks in place of its comments. Drivers miscount the lines behind long ones, and some read
/// no letters of other alphabets.
std::string blankComments(std::string code)
{
    char* const begin = code.data();
    const char* const last = begin + code.size();
    for (char* i = begin; i != last;) {
        char* const end = begin + (skipComments(i, last) - begin);
        std::replace_if(
            i, end, [](char c) { return c != '\n'; }, ' ');
        i = end == last ? end : end + 1;
    }
    return code;
}

/// Whether the word stands in the code, where its comments do not count.
bool mentions(const std::string& code, const std::string& word)
{
    const char* const last = code.data() + code.size();
    for (const char* i = skipComments(code.data(), last); i != last; i = skipComments(i, last)) {
        const char* const end = std::find_if_not(i, last, isOfWord);
        if (std::equal(i, end, word.begin(), word.end()))
            return true;
        i = std::max(end, i + 1);
    }
    return false;
}

bool mentions(const std::vector<CodeSyntax>& codes, const std::string& word)
{
    return std::any_of(codes.begin(), codes.end(),
                       [&](const CodeSyntax& code) { return mentions(code.text, word); });
}

bool mentions(const EffectPass& pass, const std::string& word)
{
    return mentions(pass.effect->fragment, word) || mentions(pass.syntax().fragment, word);
}

void addMacros(ShaderText& text, const EffectPass& pass, unsigned int features)
{
    std::string lines = "#define MAX_LIGHTS " + std::to_string(maxLights) + "\n";
    for (const auto& [bit, name] : meshMacros)
        if (features & bit)
            lines += std::string("#define ") + name + "\n";
    forSwitches(*pass.effect, [&](const ParameterSyntax& parameter, unsigned int bit) {
        if (features & bit)
            lines += "#define " + macroName(parameter.name) + "\n";
    });
    // Only where it matters: techniques with one and the same code share their programs.
    const std::string technique = "TECHNIQUE_" + macroName(pass.effect->techniques[pass.technique].name);
    if (mentions(pass, technique))
        lines += "#define " + technique + "\n";
    text.add(lines);
}

void addParameters(ShaderText& text, const EffectSyntax& effect)
{
    static const char* const types[] = {"float", "vec2", "vec3", "vec4", "int", "bool", "sampler2D"};
    for (const ParameterSyntax& parameter : effect.parameters)
        text.add(std::string("uniform ") + types[int(parameter.type)] + " " + parameter.name + ";\n",
                 parameter.place);
}

/// Type and name of the varying with the place of a point in a shadow map: a far light's needs no division.
std::string shadowCoord(const LightSlot& light)
{
    return (light.kind == LightSlot::Far ? "vec3 shadowCoord" : "vec4 shadowCoord") +
           std::to_string(light.shadow) + ";\n";
}

/// Each point is looked up a step off its surface, which keeps surfaces from shadowing themselves.
std::string findShadows(const std::vector<LightSlot>& lights)
{
    std::string declarations = "uniform mat4 shadowMatrix[" + std::to_string(maxShadows) +
                               "];\nuniform float shadowOffset[" + std::to_string(maxShadows) + "];\n";
    std::string body;
    for (const LightSlot& light : lights) {
        if (light.shadow < 0)
            continue;
        const std::string number = std::to_string(light.shadow);
        declarations += "out " + shadowCoord(light);
        body += "    shadowCoord" + number + " = (shadowMatrix[" + number +
                "] * vec4(position + normal * shadowOffset[" + number + "], 1.0))" +
                (light.kind == LightSlot::Far ? ".xyz;\n" : ";\n");
    }
    return declarations + "void findShadows()\n{\n" + body + "}\n";
}

/// Unrolled, since samplers may only be indexed by constants.
std::string shineAll(const std::vector<LightSlot>& lights)
{
    std::string declarations;
    std::string body;
    for (size_t i = 0; i < lights.size(); ++i) {
        const LightSlot& light = lights[i];
        std::string lit = "1.0";
        if (light.shadow >= 0) {
            const std::string number = std::to_string(light.shadow);
            declarations += "uniform sampler2DShadow shadowMap" + number + ";\nin " + shadowCoord(light);
            lit = "texel(shadowMap" + number + ", shadowCoord" + number + ")";
        }
        static const char* const calls[] = {"shineFar(", "shineNear(", "shineNear("};
        static const char* const ends[] = {");\n", ", false);\n", ", true);\n"};
        body += "    " + (calls[light.kind] + std::to_string(i)) + ", " + lit + ends[light.kind];
    }
    return declarations + "void shineAll()\n{\n" + body + "}\n";
}

/// A shader or program of OpenGL that goes when it is no longer needed.
struct GLObject
{
    unsigned int name;
    std::function<void(unsigned int)> destroy;

    ~GLObject() { destroy(name); }
};

/// The first line of a log that tells of an error.
std::string firstError(const std::string& log)
{
    std::istringstream lines(log);
    std::string line;
    while (std::getline(lines, line))
        if (line.find("rror") != std::string::npos)
            return line;
    return log.substr(0, log.find('\n'));
}

std::string messageOf(const std::string& line)
{
    const size_t found = line.find("error: ");
    return found == line.npos ? line : line.substr(found + 7);
}

bool isBlank(char c)
{
    return c == ' ' || c == '\t';
}

/// The column of a place in which each run of blanks counts as one, as it does for Mesa.
int spreadBlanks(const std::string& text, Place place)
{
    auto begin = text.begin();
    for (int line = 1; line < place.line && begin != text.end(); ++line)
        begin = std::find(begin, text.end(), '\n') + 1;
    int left = place.column;
    for (auto i = begin; i < text.end() && *i != '\n'; ++i) {
        left -= !(i != begin && isBlank(*i) && isBlank(i[-1]));
        if (left == 0)
            return int(i - begin) + 1;
    }
    return place.column;
}

/// "0:12(5): error: message", "0(12) : error C1: message" or "ERROR: 0:12: message", as the driver has it.
EffectError makeError(const EffectPass& pass, const ShaderText& text, const std::string& log)
{
    const std::string line = firstError(log);
    Place inText{0, 1};
    if (std::sscanf(line.c_str(), "%*d:%d(%d)", &inText.line, &inText.column) == 2)
        inText.column = spreadBlanks(text.get(), inText);
    else if (std::sscanf(line.c_str(), "%*d(%d)", &inText.line) != 1)
        std::sscanf(line.c_str(), "ERROR: %*d:%d", &inText.line);
    Place found = pass.syntax().place;
    text.find(inText, found);
    return EffectError(pass.effect->fileName, found, messageOf(line));
}

template <class GetParameter, class GetLog>
std::string getLog(unsigned int name, GetParameter getParameter, GetLog getText)
{
    int length = 0;
    getParameter(name, GL_INFO_LOG_LENGTH, &length);
    std::string log(std::max(length, 1), '\0');
    getText(name, length, nullptr, log.data());
    return log.c_str();
}

void compile(unsigned int shader, const EffectPass& pass, const ShaderText& text)
{
    const char* source = text.get().c_str();
    glShaderSource(shader, 1, &source, nullptr);
    glCompileShader(shader);
    int compiled = 0;
    glGetShaderiv(shader, GL_COMPILE_STATUS, &compiled);
    if (!compiled)
        throw makeError(pass, text, getLog(shader, glGetShaderiv, glGetShaderInfoLog));
}

} // namespace

void ShaderText::add(const std::string& lines)
{
    text += lines;
    origins.resize(std::count(text.begin(), text.end(), '\n'));
}

void ShaderText::add(const std::string& line, Place place)
{
    text += line;
    origins.push_back({place.line, place.column});
}

void ShaderText::add(const std::vector<CodeSyntax>& codes)
{
    for (const CodeSyntax& code : codes) {
        // In the columns that it has in the file.
        text += std::string(code.place.column - 1, ' ') + blankComments(code.text) + "\n";
        const auto lines = std::count(code.text.begin(), code.text.end(), '\n') + 1;
        for (int i = 0; i < lines; ++i)
            origins.push_back({code.place.line + i, 0});
    }
}

bool ShaderText::find(Place place, Place& found) const
{
    if (place.line < 1 || place.line > int(origins.size()) || origins[place.line - 1].line == 0)
        return false;
    const Origin& origin = origins[place.line - 1];
    found = {origin.line, origin.column > 0 ? origin.column : place.column};
    return true;
}

unsigned int getSwitch(const EffectSyntax& effect, const std::string& parameter)
{
    unsigned int found = 0;
    forSwitches(effect, [&](const ParameterSyntax& each, unsigned int bit) {
        if (each.name == parameter)
            found = bit;
    });
    return found;
}

unsigned int getTextureSwitches(const EffectSyntax& effect)
{
    unsigned int found = 0;
    forSwitches(effect, [&](const ParameterSyntax& each, unsigned int bit) {
        if (each.type == ParameterType::Texture)
            found |= bit;
    });
    return found;
}

unsigned int getSwitches(const EffectSyntax& effect)
{
    unsigned int found = 0;
    forSwitches(effect, [&](const ParameterSyntax&, unsigned int bit) { found |= bit; });
    return found;
}

ProgramText makeProgramText(const EffectPass& pass, unsigned int features,
                            const std::vector<LightSlot>& lights)
{
    const EffectSyntax& effect = *pass.effect;
    const bool isLit = !(features & ShaderFeature::Unlit) && mentions(pass, "shineAll");
    ProgramText program;
    ShaderText& vertex = program.vertex;
    vertex.add(versionLine);
    addMacros(vertex, pass, features);
    vertex.add(std::string(surfaceUniforms) + vertexHead +
               findShadows(isLit ? lights : std::vector<LightSlot>()));
    if (effect.vertex.empty() && pass.syntax().vertex.empty()) {
        vertex.add(vertexMain);
    } else {
        addParameters(vertex, effect);
        vertex.add(effect.vertex);
        vertex.add(pass.syntax().vertex);
    }

    ShaderText& fragment = program.fragment;
    fragment.add(versionLine);
    addMacros(fragment, pass, features);
    fragment.add(std::string(surfaceUniforms) + fragmentHead);
    if (isLit)
        fragment.add("#ifndef UNLIT\n" + (lightHead + shineAll(lights)) + "#endif\n");
    addParameters(fragment, effect);
    fragment.add(effect.fragment);
    fragment.add(pass.syntax().fragment);
    return program;
}

ProgramText makePictureText(const EffectPass& pass, unsigned int features)
{
    ProgramText program;
    program.vertex.add(std::string(versionLine) + pictureVertex);
    ShaderText& fragment = program.fragment;
    fragment.add(versionLine);
    addMacros(fragment, pass, features);
    fragment.add(pictureHead);
    const TechniqueSyntax& technique = pass.effect->techniques[pass.technique];
    for (unsigned int i = 0; i < pass.pass; ++i)
        if (!technique.passes[i].name.empty())
            fragment.add("uniform sampler2D " + technique.passes[i].name + ";\n", technique.passes[i].place);
    addParameters(fragment, *pass.effect);
    fragment.add(pass.effect->fragment);
    fragment.add(pass.syntax().fragment);
    return program;
}

bool tryProgram(const EffectPass& pass, const ProgramText& text)
{
    const auto destroyShader = [](unsigned int name) { glDeleteShader(name); };
    const GLObject vertex{glCreateShader(GL_VERTEX_SHADER), destroyShader};
    const GLObject fragment{glCreateShader(GL_FRAGMENT_SHADER), destroyShader};
    compile(vertex.name, pass, text.vertex);
    compile(fragment.name, pass, text.fragment);
    const GLObject program{glCreateProgram(), [](unsigned int name) { glDeleteProgram(name); }};
    glAttachShader(program.name, vertex.name);
    glAttachShader(program.name, fragment.name);
    glLinkProgram(program.name);
    int linked = 0;
    glGetProgramiv(program.name, GL_LINK_STATUS, &linked);
    if (!linked)
        throw EffectError(pass.effect->fileName, pass.syntax().place,
                          messageOf(firstError(getLog(program.name, glGetProgramiv, glGetProgramInfoLog))));
    return glGetUniformLocation(program.name, "time") >= 0;
}

void tryPrograms(const std::shared_ptr<const EffectSyntax>& effect)
{
    const unsigned int everything =
        ShaderFeature::TexCoords | ShaderFeature::VertexColors | getSwitches(*effect);
    for (unsigned int technique = 0; technique < effect->techniques.size(); ++technique)
        for (unsigned int i = 0; i < effect->techniques[technique].passes.size(); ++i)
            for (unsigned int features : {0u, everything}) {
                const EffectPass pass{effect, technique, i};
                tryProgram(pass, effect->isScene() ? makePictureText(pass, features)
                                                   : makeProgramText(pass, features, {{LightSlot::Far, 0}}));
            }
}

} // namespace halvern::engine::fx

#include "reference/engine/fx/EffectBuilder.h"

#include "reference/engine/fx/Comments.h"

#include <boost/algorithm/string/predicate.hpp>

#include <algorithm>
#include <cctype>
#include <charconv>
#include <cmath>
#include <cstring>
#include <optional>
#include <utility>

namespace halvern::engine::fx {

namespace {

const std::pair<const char*, ParameterType> typeNames[] = {
    {"float", ParameterType::Float},    {"float2", ParameterType::Float2}, {"float3", ParameterType::Float3},
    {"float4", ParameterType::Float4},  {"int", ParameterType::Int},       {"bool", ParameterType::Bool},
    {"texture", ParameterType::Texture}};

template <class Value>
struct StateWord
{
    const char* name;
    Value value;
};

const StateWord<PassState::Blend> blendWords[] = {{"none", PassState::Blend::None},
                                                  {"alpha", PassState::Blend::Alpha},
                                                  {"add", PassState::Blend::Add},
                                                  {"multiply", PassState::Blend::Multiply}};
const StateWord<PassState::Depth> depthWords[] = {{"on", PassState::Depth::On},
                                                  {"test", PassState::Depth::Test},
                                                  {"off", PassState::Depth::Off},
                                                  {"behind", PassState::Depth::Behind}};
const StateWord<PassState::Cull> cullWords[] = {
    {"none", PassState::Cull::None}, {"back", PassState::Cull::Back}, {"front", PassState::Cull::Front}};
const StateWord<bool> switchWords[] = {{"on", true}, {"off", false}};

// Far more than anybody needs; they keep a file of garbage from taking long.
constexpr size_t mostParameters = 256;
constexpr size_t mostOthers = 64;

// The compilers of drivers call themselves for each part of an expression, and have a stack of 8 MiB.
constexpr size_t longestStatement = 16 * 1024;
constexpr size_t longestQuote = 60;

std::optional<ParameterType> findType(std::string_view name)
{
    for (const auto& [known, type] : typeNames)
        if (name == known)
            return type;
    return {};
}

/// The value of a state's word; otherwise the words that there are, as a message.
template <class Value, size_t count>
std::string readState(const StateWord<Value> (&words)[count], std::string_view text, Value& value)
{
    std::string known;
    for (const auto& word : words) {
        if (text == word.name) {
            value = word.value;
            return "";
        }
        known += (known.empty() ? "" : ", ") + std::string(word.name);
    }
    return "expected one of " + known + ", not " + inQuotes(text);
}

std::optional<float> parseNumber(std::string_view text)
{
    if (!text.empty() && (text.back() == 'f' || text.back() == 'F'))
        text.remove_suffix(1);
    if (!text.empty() && text.front() == '+')
        text.remove_prefix(1);
    float value = 0;
    const auto result = std::from_chars(text.data(), text.data() + text.size(), value);
    if (result.ec != std::errc() || result.ptr != text.data() + text.size() || !std::isfinite(value))
        return {};
    return value;
}

template <class Element>
bool hasName(const std::vector<Element>& elements, std::string_view name)
{
    return std::any_of(elements.begin(), elements.end(),
                       [name](const Element& element) { return element.name == name; });
}

} // namespace

std::string inQuotes(std::string_view text)
{
    const char* i = text.data();
    const char* const last = i + text.size();
    while (i != last && size_t(i - text.data()) < longestQuote)
        i = afterLetter(i, last);
    return "'" + std::string(text.data(), i) + (i == last ? "'" : "...'");
}

const char* afterLetter(const char* i, const char* last)
{
    ++i;
    while (i != last && (*i & 0xC0) == 0x80)
        ++i;
    return i;
}

EffectError::EffectError(const std::string& fileName, Place newPlace, const std::string& message) :
    std::runtime_error(fileName + ":" + std::to_string(newPlace.line) + ":" +
                       std::to_string(newPlace.column) + ": " + message),
    place(newPlace)
{}

unsigned int componentsOf(ParameterType type)
{
    switch (type) {
    case ParameterType::Float2:
        return 2;
    case ParameterType::Float3:
        return 3;
    case ParameterType::Float4:
        return 4;
    case ParameterType::Texture:
        return 0;
    default:
        return 1;
    }
}

bool EffectSyntax::isScene() const
{
    return boost::iequals(scriptClass, "scene", std::locale::classic());
}

const ParameterSyntax* EffectSyntax::findParameter(const std::string& name) const
{
    for (const ParameterSyntax& parameter : parameters)
        if (parameter.name == name)
            return &parameter;
    return nullptr;
}

EffectBuilder::EffectBuilder(const std::string& text, const std::string& fileName) :
    effect(std::make_shared<EffectSyntax>()), begin(text.data()), placed(begin)
{
    effect->fileName = fileName;
    effect->code = text;
}

void EffectBuilder::beginVariable(Piece newType)
{
    type = newType;
    literals.clear();
    calledWord = {};
    parameter = {};
    if (type == "string")
        return;
    const auto known = findType(type);
    if (!known)
        fail(type, "unknown type " + inQuotes(type) +
                       "; expected float, float2, float3, float4, int, bool, texture or string");
    parameter.type = *known;
}

void EffectBuilder::setName(Piece newName)
{
    name = newName;
    parameter.name = name;
    parameter.place = placeOf(name);
}

void EffectBuilder::beginAnnotation(Piece newType)
{
    annotationType = newType;
    literals.clear();
    calledWord = {};
    if (newType != "string" && newType != "float" && newType != "int" && newType != "bool")
        fail(newType, "an annotation is a string, a float, an int or a bool, not " + inQuotes(newType));
}

void EffectBuilder::setAnnotationName(Piece newName)
{
    annotation = {};
    annotation.name = newName;
    if (hasName(parameter.annotations, newName))
        fail(newName, "a second annotation " + inQuotes(newName));
    limit(parameter.annotations.size() + 1, mostOthers, newName, "annotations");
}

void EffectBuilder::endAnnotation()
{
    if (annotationType == "string")
        annotation.value = toText();
    else
        annotation.value = toNumbers(1, std::string(annotationType)).front();
    parameter.annotations.push_back(std::move(annotation));
    literals.clear();
    calledWord = {};
}

void EffectBuilder::endVariable()
{
    if (type == "string")
        return endScriptClass();
    if (effect->findParameter(parameter.name))
        fail(name, "a second parameter " + inQuotes(name));
    if (parameter.type == ParameterType::Texture)
        parameter.file = literals.empty() ? "" : toText();
    else if (literals.empty())
        parameter.numbers.assign(componentsOf(parameter.type), 0.0f);
    else
        parameter.numbers = toNumbers(componentsOf(parameter.type), std::string(type));
    checkParameter();
    effect->parameters.push_back(std::move(parameter));
}

void EffectBuilder::endScriptClass()
{
    // Other texts are notes for other readers.
    if (name != "ScriptClass")
        return;
    if (literals.empty())
        fail(name, "ScriptClass has no value");
    if (!effect->scriptClass.empty())
        fail(name, "a second ScriptClass");
    effect->scriptClass = toText();
}

void EffectBuilder::checkParameter() const
{
    const auto count = [this](auto matches) {
        return std::count_if(effect->parameters.begin(), effect->parameters.end(), matches) +
               matches(parameter);
    };
    const auto isTexture = [](const ParameterSyntax& p) { return p.type == ParameterType::Texture; };
    const auto isSwitch = [&](const ParameterSyntax& p) {
        return isTexture(p) || p.type == ParameterType::Bool;
    };
    limit(count(isTexture), mostTextures, name, "textures");
    limit(count(isSwitch), mostSwitches, name, "textures and bools");
    limit(effect->parameters.size() + 1, mostParameters, name, "parameters");
}

void EffectBuilder::addNumber(Piece number)
{
    literals.push_back({Literal::Kind::Number, number});
}

void EffectBuilder::addString(Piece string)
{
    literals.push_back({Literal::Kind::String, string});
}

void EffectBuilder::addWord(Piece word)
{
    literals.push_back({Literal::Kind::Word, word});
}

void EffectBuilder::callWord()
{
    const Piece word = literals.back().text;
    literals.clear();
    if (!findType(word) || word == "texture")
        fail(word, inQuotes(word) + " is no type of numbers");
    calledWord = word;
}

float EffectBuilder::toNumber(const Literal& literal) const
{
    if (literal.kind == Literal::Kind::Word && (literal.text == "true" || literal.text == "false"))
        return literal.text == "true" ? 1 : 0;
    if (literal.kind != Literal::Kind::Number)
        fail(literal.text, "expected a number, not " + inQuotes(literal.text));
    const auto value = parseNumber(literal.text);
    if (!value)
        fail(literal.text, "the number " + inQuotes(literal.text) + " is out of range");
    return *value;
}

std::vector<float> EffectBuilder::toNumbers(unsigned int wanted, const std::string& wantedType) const
{
    if (!calledWord.empty() && calledWord != wantedType)
        fail(calledWord, "expected " + wantedType + ", not " + inQuotes(calledWord));
    std::vector<float> numbers;
    for (const Literal& literal : literals)
        numbers.push_back(toNumber(literal));
    if (numbers.size() != wanted)
        fail(literals.front().text, wantedType + " has " + std::to_string(wanted) +
                                        (wanted == 1 ? " number" : " numbers") + ", not " +
                                        std::to_string(numbers.size()));
    if (wantedType == "int" && std::abs(numbers.front()) > mostInt)
        fail(literals.front().text, "the number " + inQuotes(literals.front().text) + " is out of range");
    if (wantedType == "int" && std::trunc(numbers.front()) != numbers.front())
        fail(literals.front().text, "expected a whole number, not " + inQuotes(literals.front().text));
    if (wantedType == "bool")
        numbers.front() = numbers.front() != 0;
    return numbers;
}

std::string EffectBuilder::toText() const
{
    if (literals.size() != 1 || literals.front().kind != Literal::Kind::String)
        fail(literals.front().text,
             "expected a text in double quotes, not " + inQuotes(literals.front().text));
    return std::string(literals.front().text);
}

void EffectBuilder::beginTechnique(Piece newName)
{
    if (hasName(effect->techniques, newName))
        fail(newName, "a second technique " + inQuotes(newName));
    limit(effect->techniques.size() + 1, mostOthers, newName, "techniques");
    technique = &effect->techniques.emplace_back();
    technique->place = placeOf(newName);
    technique->name = newName;
    pass = nullptr;
}

void EffectBuilder::beginPass(Piece keyword)
{
    if (pass)
        fail(keyword, "a technique has either passes or states and code of its own");
    limit(technique->passes.size() + 1, mostPasses, keyword, "passes");
    PassSyntax& added = technique->passes.emplace_back();
    added.place = placeOf(keyword);
    pass = &added;
}

void EffectBuilder::setPassName(Piece newName)
{
    if (hasName(technique->passes, newName))
        fail(newName, "a second pass " + inQuotes(newName));
    pass->name = newName;
}

void EffectBuilder::beginState(Piece newName)
{
    stateName = newName;
    currentPass(newName);
}

void EffectBuilder::setState(Piece value)
{
    PassState& state = pass->state;
    std::string message;
    if (stateName == "blend")
        message = readState(blendWords, value, state.blend);
    else if (stateName == "depth")
        message = readState(depthWords, value, state.depth);
    else if (stateName == "cull")
        message = readState(cullWords, value, state.cull);
    else if (stateName == "wireframe")
        message = readState(switchWords, value, state.wireframe);
    else if (stateName == "size") {
        state.size = parseNumber(value).value_or(0);
        if (state.size < 0.01f || state.size > 1)
            message = "expected a number from 0.01 to 1, not " + inQuotes(value);
    } else {
        fail(stateName,
             "unknown state " + inQuotes(stateName) + "; expected blend, depth, cull, wireframe or size");
    }
    if (!message.empty())
        fail(value, message);
}

void EffectBuilder::endPass()
{
    pass = nullptr;
}

void EffectBuilder::endTechnique()
{
    if (technique->passes.empty())
        technique->passes.emplace_back().place = technique->place;
    pass = nullptr;
    technique = nullptr;
}

void EffectBuilder::addVertexCode(Piece code)
{
    addCode(code, &EffectSyntax::vertex, &PassSyntax::vertex);
}

void EffectBuilder::addFragmentCode(Piece code)
{
    addCode(code, &EffectSyntax::fragment, &PassSyntax::fragment);
}

void EffectBuilder::addCode(Piece code, std::vector<CodeSyntax> EffectSyntax::*shared,
                            std::vector<CodeSyntax> PassSyntax::*own)
{
    std::vector<CodeSyntax>& codes = technique ? currentPass(code).*own : (*effect).*shared;
    codes.push_back({placeOf(code), std::string(code)});
    checkStatements(code);
}

void EffectBuilder::checkStatements(Piece code) const
{
    const char* const last = code.data() + code.size();
    const char* begin = last; // of the statement
    size_t length = 0;
    for (const char* i = skipComments(code.data(), last); i != last; i = skipComments(i + 1, last)) {
        if (std::strchr(";{}#", *i)) {
            length = 0;
        } else if (length > 0 || !std::isspace(static_cast<unsigned char>(*i))) {
            begin = length == 0 ? i : begin;
            ++length;
        }
        if (length > longestStatement)
            fail({begin, 0}, "a statement of more than " + std::to_string(longestStatement) + " characters");
    }
}

PassSyntax& EffectBuilder::currentPass(Piece where)
{
    if (pass)
        return *pass;
    if (!technique->passes.empty())
        fail(where, "a technique has either passes or states and code of its own");
    PassSyntax& added = technique->passes.emplace_back();
    added.place = technique->place;
    pass = &added;
    return added;
}

std::shared_ptr<const EffectSyntax> EffectBuilder::finish()
{
    if (effect->techniques.empty())
        fail({begin + effect->code.size(), 0}, "expected a technique");
    checkTechniques();
    return effect;
}

void EffectBuilder::checkTechniques() const
{
    for (const TechniqueSyntax& each : effect->techniques)
        for (const PassSyntax& eachPass : each.passes)
            checkPass(eachPass);
}

void EffectBuilder::checkPass(const PassSyntax& checked) const
{
    if (effect->fragment.empty() && checked.fragment.empty())
        throw EffectError(effect->fileName, checked.place, "expected fragment code");
    if (effect->isScene() && !(effect->vertex.empty() && checked.vertex.empty()))
        throw EffectError(effect->fileName, checked.place, "an effect of the scene has no vertex code");
    if (!effect->isScene() && checked.state.size != 1)
        throw EffectError(effect->fileName, checked.place, "only passes of scene effects have a size");
}

void EffectBuilder::fail(Piece where, const std::string& message) const
{
    throw EffectError(effect->fileName, placeOf(where), message);
}

Place EffectBuilder::placeOf(Piece where) const
{
    if (where.data() < placed) {
        placed = begin;
        place = {};
    }
    for (; placed != where.data(); ++placed) {
        ++place.column;
        if (*placed == '\n') {
            ++place.line;
            place.column = 1;
        }
    }
    return place;
}

void EffectBuilder::limit(size_t count, size_t most, Piece where, const char* what) const
{
    if (count > most)
        fail(where, "more than " + std::to_string(most) + " " + what);
}

} // namespace halvern::engine::fx

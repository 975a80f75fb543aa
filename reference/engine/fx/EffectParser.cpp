// The grammar of effect files, and nothing else: Spirit takes long to compile.
#include "reference/engine/fx/Comments.h"
#include "reference/engine/fx/EffectBuilder.h"

#include <boost/spirit/home/x3.hpp>

namespace halvern::engine::fx {

namespace {

namespace x3 = boost::spirit::x3;

using Iterator = const char*;
using Range = boost::iterator_range<Iterator>;
using Builder = EffectBuilder;
using Piece = Builder::Piece;

// Classes of characters are ASCII's: the standard ones are undefined for the bytes of other alphabets.

struct BuilderTag
{};

/// Code up to the closing brace that belongs to the opening one, which was read. Braces in comments do not
/// count. By hand, since a rule that calls itself would overflow the stack on a file full of braces.
struct CodeParser : x3::parser<CodeParser>
{
    using attribute_type = Range;
    template <class Context, class RuleContext, class Attribute>
    bool parse(Iterator& first, const Iterator& last, const Context&, RuleContext&, Attribute& code) const
    {
        int depth = 1;
        for (Iterator i = skipComments(first, last); i != last; i = skipComments(i + 1, last)) {
            depth += *i == '{' ? 1 : *i == '}' ? -1 : 0;
            if (depth > 0)
                continue;
            code = Range(first, i);
            first = i;
            return true;
        }
        return false;
    }
};

/// Hands what a parser reads to the builder.
template <class Parser>
auto to(void (Builder::*take)(Piece), const Parser& parser)
{
    return parser[([take](auto& context) {
        const Range& range = x3::_attr(context);
        (x3::get<BuilderTag>(context).*take)({range.begin(), size_t(range.size())});
    })];
}

/// Tells the builder that a part of the text ended.
auto tell(void (Builder::*what)())
{
    return x3::eps[([what](auto& context) { (x3::get<BuilderTag>(context).*what)(); })];
}

/// Gives a parser the name that messages call it by.
template <class Parser>
auto named(const char* name, const Parser& parser)
{
    return x3::rule<Parser>{name} = parser;
}

const auto wordEnd = !(x3::ascii::alnum | '_');
const auto word = x3::raw[x3::lexeme[(x3::ascii::alpha | '_') >> *(x3::ascii::alnum | '_')]];
const auto keyword = [](const char* text) { return x3::raw[x3::lexeme[x3::lit(text) >> wordEnd]]; };
const auto name = [](void (Builder::*take)(Piece)) { return named("a name", to(take, word)); };

const auto comment = "//" >> *(x3::char_ - x3::eol) | "/*" >> *(x3::char_ - "*/") >> "*/";
const auto blank = x3::ascii::space | comment;

const auto fraction = +x3::ascii::digit >> -('.' >> *x3::ascii::digit) | '.' >> +x3::ascii::digit;
const auto exponent = x3::char_("eE") >> -x3::char_("+-") >> +x3::ascii::digit;
const auto number =
    x3::raw[x3::lexeme[-x3::char_("+-") >> fraction >> -exponent >> -x3::char_("fF") >> wordEnd]];
const auto textEnd = named("the text to end with '\"' in its line", x3::lit('"'));
const auto string =
    x3::lexeme[('"' >> to(&Builder::addString, x3::raw[*(x3::char_ - '"' - x3::eol)])) > textEnd];

const auto simpleLiteral = to(&Builder::addNumber, number) | string | to(&Builder::addWord, word);
const auto literal = named("a value", simpleLiteral);
const auto list = literal % ',';
const auto value =
    named("a value", ('{' > list > '}') | to(&Builder::addNumber, number) | string |
                         (to(&Builder::addWord, word) >> -(('(' >> tell(&Builder::callWord)) > list > ')')));

const char* const codeEndName = "as many '}' as '{'";
const auto code = [](void (Builder::*take)(Piece)) {
    return named("'{'", '{' > named(codeEndName, to(take, CodeParser())) > '}');
};
const auto stage = (keyword("vertex") > code(&Builder::addVertexCode)) |
                   (keyword("fragment") > code(&Builder::addFragmentCode));

const auto annotation = to(&Builder::beginAnnotation, word) > name(&Builder::setAnnotationName) > '=' > value
                        > ';' > tell(&Builder::endAnnotation);
const auto annotations = '<' > *annotation > '>';
const auto variable = to(&Builder::beginVariable, word) > name(&Builder::setName) > -annotations >
                      -('=' > value) > ';' > tell(&Builder::endVariable);

const auto stateValue = named("a word or a number", to(&Builder::setState, x3::raw[word | number]));
const auto state = to(&Builder::beginState, word) > '=' > stateValue > ';';
const auto pass = to(&Builder::beginPass, keyword("pass")) > -to(&Builder::setPassName, word) > '{' >
                  *(stage | state) > '}' > tell(&Builder::endPass);
const auto technique = keyword("technique") > name(&Builder::beginTechnique) > '{' > *(pass | stage | state) >
                       '}' > tell(&Builder::endTechnique);

const auto end = named("a parameter, a technique or code", x3::eoi);
const auto effect = *(technique | stage | variable) > end;

/// What stands where something else was expected.
std::string found(Iterator i, Iterator last)
{
    if (i == last)
        return "the end of the file";
    Iterator tokenEnd = i;
    if (!x3::parse(tokenEnd, last, word | number))
        tokenEnd = afterLetter(i, last);
    return inQuotes({i, size_t(tokenEnd - i)});
}

[[noreturn]] void report(const Builder& builder, Iterator where, Iterator last, const std::string& expected)
{
    const std::string message = "expected " + expected;
    if (expected == textEnd.name || expected == codeEndName)
        builder.fail({where, 0}, message);
    x3::parse(where, last, *blank);
    if (last - where > 1 && where[0] == '/' && where[1] == '*')
        builder.fail({where, 0}, "a comment without an end");
    builder.fail({where, 0}, message + ", not " + found(where, last));
}

} // namespace

std::shared_ptr<const EffectSyntax> parseEffect(const std::string& text, const std::string& fileName)
{
    Builder builder(text, fileName);
    Iterator i = text.data();
    const Iterator last = i + text.size();
    x3::parse(i, last, "\xEF\xBB\xBF"); // a byte order mark
    try {
        x3::phrase_parse(i, last, x3::with<BuilderTag>(builder)[effect], blank);
    } catch (const x3::expectation_failure<Iterator>& failure) {
        report(builder, failure.where(), last, failure.which());
    }
    return builder.finish();
}

} // namespace halvern::engine::fx

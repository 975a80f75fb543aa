#pragma once

#include "reference/engine/fx/EffectSyntax.h"

#include <string>
#include <string_view>

namespace halvern::engine::fx {

/// A piece of a file for a message: in quotes, and no longer than a message may be.
std::string inQuotes(std::string_view text);

/// Behind the letter that begins here, which is of several bytes in other alphabets.
const char* afterLetter(const char* i, const char* last);

/// Makes an effect of the pieces that the parser finds, in the order in which they stand in the text, and
/// checks what the grammar does not. Throws EffectError.
class EffectBuilder
{
public:
    /// A piece of the text that the builder was made with.
    using Piece = std::string_view;

    EffectBuilder(const std::string& text, const std::string& fileName);

    // A variable: its type and name, annotations, its value, its end.
    void beginVariable(Piece type);
    void setName(Piece name);
    void beginAnnotation(Piece type);
    void setAnnotationName(Piece name);
    void endAnnotation();
    void endVariable();

    // The value of what was begun last.
    void addNumber(Piece number);
    void addString(Piece string);
    void addWord(Piece word);
    void callWord(); ///< the word that was added last

    void beginTechnique(Piece name);
    void beginPass(Piece keyword);
    void setPassName(Piece name);
    void beginState(Piece name);
    void setState(Piece value);
    void endPass();
    void endTechnique();

    // The code of a pass, or outside of techniques, of all passes.
    void addVertexCode(Piece code);
    void addFragmentCode(Piece code);

    std::shared_ptr<const EffectSyntax> finish();

    [[noreturn]] void fail(Piece where, const std::string& message) const;

private:
    struct Literal
    {
        enum class Kind { Number, String, Word };
        Kind kind;
        Piece text;
    };

    Place placeOf(Piece where) const;
    void limit(size_t count, size_t most, Piece where, const char* what) const;
    float toNumber(const Literal& literal) const;
    std::vector<float> toNumbers(unsigned int wanted, const std::string& type) const;
    std::string toText() const;
    void checkParameter() const;
    void endScriptClass();
    void addCode(Piece code, std::vector<CodeSyntax> EffectSyntax::*shared,
                 std::vector<CodeSyntax> PassSyntax::*own);
    void checkStatements(Piece code) const;
    PassSyntax& currentPass(Piece where);
    void checkTechniques() const;
    void checkPass(const PassSyntax& pass) const;

    const std::shared_ptr<EffectSyntax> effect;
    const char* const begin;

    // The place that was asked for last, since the next one is mostly not far behind.
    mutable const char* placed;
    mutable Place place;

    // What is being read.
    Piece type, name, stateName, calledWord;
    Piece annotationType;
    std::vector<Literal> literals;
    ParameterSyntax parameter;
    AnnotationSyntax annotation;
    TechniqueSyntax* technique = nullptr;
    PassSyntax* pass = nullptr;
};

} // namespace halvern::engine::fx

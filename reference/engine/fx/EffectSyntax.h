#pragma once

#include "engine/Export.h"

#include <memory>
#include <stdexcept>
#include <string>
#include <variant>
#include <vector>

namespace halvern::engine::fx {

/// A place in an effect file. Both numbers count from 1, columns in bytes.
struct Place
{
    int line = 1;
    int column = 1;
};

/// An effect that cannot be used. what() is "file:line:column: message".
class HALVERN_ENGINE_API EffectError : public std::runtime_error
{
public:
    EffectError(const std::string& fileName, Place newPlace, const std::string& message);

    const Place place;
};

enum class ParameterType { Float, Float2, Float3, Float4, Int, Bool, Texture };

/// Numbers of a value of the type: 1 to 4, 0 for a texture.
HALVERN_ENGINE_API unsigned int componentsOf(ParameterType type);

struct AnnotationSyntax
{
    std::string name;
    std::variant<float, std::string> value;
};

struct ParameterSyntax
{
    Place place;
    ParameterType type = ParameterType::Float;
    std::string name;
    std::vector<AnnotationSyntax> annotations;
    std::vector<float> numbers; ///< the default, as many as the type has
    std::string file;           ///< the default of a texture, as it stands in the effect file
};

/// GLSL as it stands between braces.
struct CodeSyntax
{
    Place place; ///< of the first character
    std::string text;
};

/// How a pass draws.
struct PassState
{
    enum class Blend { None, Alpha, Add, Multiply };
    enum class Depth { On, Test, Off, Behind };
    enum class Cull { None, Back, Front };

    Blend blend = Blend::None;
    Depth depth = Depth::On;
    Cull cull = Cull::None;
    bool wireframe = false;
    float size = 1; ///< of a full-screen pass, as a share of the window's
};

struct PassSyntax
{
    Place place;
    std::string name; ///< may be empty
    PassState state;
    std::vector<CodeSyntax> vertex;
    std::vector<CodeSyntax> fragment;
};

struct TechniqueSyntax
{
    Place place;
    std::string name;
    std::vector<PassSyntax> passes; ///< at least one
};

/// What an effect file says. Immutable once it is parsed.
struct HALVERN_ENGINE_API EffectSyntax
{
    std::string fileName;
    std::string code;        ///< the whole text
    std::string scriptClass; ///< as it stands in the file; empty where it says none
    std::vector<ParameterSyntax> parameters;
    std::vector<CodeSyntax> vertex;          ///< comes before that of each pass
    std::vector<CodeSyntax> fragment;        ///< comes before that of each pass
    std::vector<TechniqueSyntax> techniques; ///< at least one

    /// Whether the effect is one of the whole picture and not of an object.
    bool isScene() const;

    /// Null for an unknown name.
    const ParameterSyntax* findParameter(const std::string& name) const;
};

constexpr float mostInt = 2147483648.0f; ///< of an int's distance from 0
constexpr unsigned int mostTextures = 8;
constexpr unsigned int mostSwitches = 24; ///< textures and bools
constexpr unsigned int mostPasses = 6;    ///< of a technique

/// Parses the text of an effect file. The file's name is for messages only. Throws EffectError. Any thread.
HALVERN_ENGINE_API std::shared_ptr<const EffectSyntax> parseEffect(const std::string& text,
                                                                   const std::string& fileName);

} // namespace halvern::engine::fx

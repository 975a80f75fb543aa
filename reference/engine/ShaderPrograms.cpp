#include "reference/engine/ShaderPrograms.h"

#include <osg/Program>

#include <utility>

namespace halvern::engine {

namespace {

// Everything is in eye coordinates.
const char* const varyings = R"(
out vec3 position;
out vec3 normal;
out vec2 texCoord;
out vec4 color;
)";

const char* const vertexMain = R"(
void main()
{
    vec4 eyePosition = gl_ModelViewMatrix * gl_Vertex;
    position = eyePosition.xyz;
#ifndef UNLIT
#ifdef FLAT_NORMALS
    normal = vec3(0.0);
#else
    normal = normalize(gl_NormalMatrix * gl_Normal);
#endif
    findShadows();
#endif
#ifdef TEX_COORDS
    texCoord = gl_MultiTexCoord0.xy;
#endif
#ifdef VERTEX_COLORS
    color = gl_Color;
#endif
    gl_Position = gl_ProjectionMatrix * eyePosition;
}
)";

const char* const commonSource = R"(
in vec3 position;
in vec3 normal;
in vec2 texCoord;
in vec4 color;
out vec4 fragment;

uniform vec4 baseColor; // linear
uniform vec4 surface;   // metalness, roughness, normal scale, alpha cutoff
uniform vec3 emissive;  // linear
uniform vec2 opacity;   // factor and least value of the alpha
uniform sampler2D baseColorMap;
uniform sampler2D metalRoughMap;
uniform sampler2D normalMap;
uniform sampler2D emissiveMap;
uniform sampler2D occlusionMap;

// Squares and roots instead of the sRGB curve: a colour that nothing changes comes out as it went in, for a
// tenth of the cost.
vec3 toLinear(vec3 c)
{
    return c * c;
}
vec3 toDisplay(vec3 c)
{
    return sqrt(c);
}

vec4 readBaseColor()
{
    vec4 base = baseColor;
#ifdef VERTEX_COLORS
    base *= vec4(toLinear(color.rgb), color.a);
#endif
#ifdef BASE_COLOR_MAP
    vec4 texel = texture(baseColorMap, texCoord);
    base *= vec4(toLinear(texel.rgb), texel.a);
#endif
#ifdef ALPHA_MASK
    if (base.a < surface.w)
        discard;
#endif
    return base;
}
)";

const char* const unlitMain = R"(
void main()
{
    vec4 base = readBaseColor();
    fragment = vec4(toDisplay(clamp(base.rgb, 0.0, 1.0)), max(base.a * opacity.x, opacity.y));
}
)";

// Normals that point away from the eye are turned round, by the facet and not by the winding: models with
// the wrong winding, open surfaces and mirrored nodes all come out lit.
const char* const shadingSource = R"(
uniform vec3 lightPosition[MAX_LIGHTS]; // of far lights the direction towards them
uniform vec3 lightColor[MAX_LIGHTS];
uniform vec3 lightFalloff[MAX_LIGHTS]; // constant, linear, quadratic
uniform vec3 lightAxis[MAX_LIGHTS];    // of the cone of a spot light
uniform vec2 lightCone[MAX_LIGHTS];    // scale and offset of the cosine
uniform vec3 up;

vec3 n;         // normal
vec3 v;         // towards the eye
float nv;
vec3 diffuse;   // reflectances
vec3 specular;
float alpha2;   // fourth power of the roughness
float widening; // the visibility term's share of the roughness
vec3 radiance = vec3(0.0);

vec3 readNormal()
{
    vec3 dpx = dFdx(position);
    vec3 dpy = dFdy(position);
    vec3 facet = cross(dpx, dpy);
#ifdef FLAT_NORMALS
    vec3 m = normalize(facet);
#else
    vec3 m = normalize(normal);
    m = dot(m, facet) < 0.0 ? -m : m;
#endif
#ifdef NORMAL_MAP
    // The tangent frame follows from how position and texture coordinates change over the screen.
    vec2 dtx = dFdx(texCoord);
    vec2 dty = dFdy(texCoord);
    vec3 across = cross(dpy, m);
    vec3 along = cross(m, dpx);
    vec3 t = across * dtx.x + along * dty.x;
    vec3 b = across * dtx.y + along * dty.y;
    float scale = inversesqrt(max(max(dot(t, t), dot(b, b)), 1e-30));
    vec3 detail = texture(normalMap, texCoord).xyz * 2.0 - 1.0;
    detail.xy *= surface.z;
    // Texture rows run downwards, the map's y axis upwards.
    m = normalize((t * detail.x - b * detail.y) * scale + m * detail.z);
#endif
    return m;
}

// The light from direction l: a Lambert term and a GGX lobe, with the half vector's angles taken from the
// sum l + v so that it needs no square root, and one division for all.
void shine(vec3 l, vec3 color, float lit, float distanceLoss)
{
    float nl = dot(n, l);
    float hh = 2.0 + 2.0 * dot(l, v);
    float nh = nl + nv;
    float q = nh * nh * (alpha2 - 1.0) + hh * 1.00001;
    float fall = q * q * max(0.1, 0.25 * hh) * widening;
    float inverse = max(nl, 0.0) * lit / (fall * distanceLoss + 1e-20);
    float lobe = alpha2 * hh * hh;
    radiance += (diffuse * fall + specular * lobe) * color * inverse;
}

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

// What a bright room with a dark floor would add.
vec3 surroundings(float roughness, float occlusion)
{
    float height = dot(n, up) * 0.5 + 0.5;
    vec3 ambient = mix(vec3(0.145, 0.135, 0.125), vec3(0.33, 0.35, 0.38), height);
    ambient *= 0.8 + 0.2 * n.z;
    vec3 r = 2.0 * nv * n - v;
    float blur = 0.06 + 0.9 * roughness;
    float horizon = clamp(dot(r, up) / blur * 0.5 + 0.5, 0.0, 1.0);
    vec3 mirrored = mix(vec3(0.11, 0.105, 0.10), vec3(0.60, 0.63, 0.68), horizon * horizon * (3.0 - 2.0 * horizon));
    float grazing = 1.0 - clamp(nv, 0.0, 1.0);
    grazing *= grazing;
    grazing *= grazing;
    vec3 fresnel = specular + (max(vec3(1.0 - roughness), specular) - specular) * grazing;
    return (ambient * diffuse + mirrored * fresnel / (alpha2 + 1.0)) * occlusion;
}
)";

const char* const shadowSource = R"(
// The lookup takes what lies behind the far plane to be on it. What lies behind the light is far outside of
// the map, where there is light.
float texel(sampler2DShadow map, vec3 s)
{
    return texture(map, s);
}
float texel(sampler2DShadow map, vec4 c)
{
    return texture(map, c.xyz / max(c.w, 1e-6));
}
)";

// The lights are colours on white: 1 is what a surface facing a lamp gives back. Towards that and beyond the
// picture rolls off instead of being cut.
const char* const litMain = R"(
void main()
{
    vec4 base = readBaseColor();
    float metalness = surface.x;
    float roughness = surface.y;
    float occlusion = 1.0;
#ifdef METAL_ROUGH_MAP
    vec3 mr = texture(metalRoughMap, texCoord).rgb;
    roughness *= mr.g;
    metalness *= mr.b;
#ifdef PACKED_OCCLUSION
    occlusion = mr.r;
#endif
#endif
#ifdef OCCLUSION_MAP
    occlusion = texture(occlusionMap, texCoord).r;
#endif
    roughness = clamp(roughness, 0.08, 1.0);
    n = readNormal();
    v = -normalize(position);
    nv = dot(n, v);
    diffuse = base.rgb * (1.0 - metalness);
    specular = mix(vec3(0.04), base.rgb, metalness);
    float alpha = roughness * roughness;
    alpha2 = alpha * alpha;
    widening = roughness * 4.0 + 2.0;
    shineAll();
    radiance += surroundings(roughness, occlusion);
#ifdef EMISSIVE_MAP
    radiance += emissive * toLinear(texture(emissiveMap, texCoord).rgb);
#else
    radiance += emissive;
#endif
    vec3 over = clamp(radiance - 0.6, 0.0, 0.8);
    vec3 shown = min(radiance, 1.4) - over * over * 0.625;
    fragment = vec4(toDisplay(shown), max(base.a * opacity.x, opacity.y));
}
)";

std::string defines(unsigned int features)
{
    static const std::pair<unsigned int, const char*> names[] = {
        {ShaderFeature::Unlit, "UNLIT"},
        {ShaderFeature::FlatNormals, "FLAT_NORMALS"},
        {ShaderFeature::VertexColors, "VERTEX_COLORS"},
        {ShaderFeature::TexCoords, "TEX_COORDS"},
        {ShaderFeature::BaseColorMap, "BASE_COLOR_MAP"},
        {ShaderFeature::MetalRoughMap, "METAL_ROUGH_MAP"},
        {ShaderFeature::NormalMap, "NORMAL_MAP"},
        {ShaderFeature::EmissiveMap, "EMISSIVE_MAP"},
        {ShaderFeature::OcclusionMap, "OCCLUSION_MAP"},
        {ShaderFeature::PackedOcclusion, "PACKED_OCCLUSION"},
        {ShaderFeature::AlphaMask, "ALPHA_MASK"}};
    std::string lines;
    for (const auto& [bit, name] : names)
        if (features & bit)
            lines += std::string("#define ") + name + "\n";
    return lines;
}

std::string constants()
{
    return "#define MAX_LIGHTS " + std::to_string(maxLights) + "\n#define SHADOW_MAP_SIZE " +
           std::to_string(shadowMapSize) + ".0\n";
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

} // namespace

osg::ref_ptr<osg::Program> makeProgram(const std::string& vertex, const std::string& fragment)
{
    const std::string version = "#version 130\n";
    osg::ref_ptr<osg::Program> program = new osg::Program;
    program->addShader(new osg::Shader(osg::Shader::VERTEX, version + vertex));
    program->addShader(new osg::Shader(osg::Shader::FRAGMENT, version + fragment));
    return program;
}

void ShaderPrograms::setLights(const std::vector<LightSlot>& newLights)
{
    if (newLights == lights)
        return;
    lights = newLights;
    programs.clear();
}

osg::StateSet* ShaderPrograms::get(unsigned int features)
{
    osg::ref_ptr<osg::StateSet>& state = programs[features];
    if (!state) {
        const bool lit = !(features & ShaderFeature::Unlit);
        const std::string head = constants() + defines(features);
        state = new osg::StateSet;
        state->setAttribute(
            makeProgram(head + varyings + (lit ? findShadows(lights) : "") + vertexMain,
                        head + commonSource +
                            (lit ? shadingSource + (shadowSource + shineAll(lights)) + litMain : unlitMain)));
    }
    return state.get();
}

} // namespace halvern::engine

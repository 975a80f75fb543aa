// The look of imported materials: metalness and roughness, lit by the lights of the scene and by a bright
// room with a dark floor.

string ScriptClass = "object";

float4 baseColor < string UIName = "Base colour"; string UIWidget = "color"; > = { 0.8, 0.8, 0.8, 1 };
float metalness < string UIName = "Metalness"; string UIWidget = "slider"; float UIMin = 0; float UIMax = 1; float UIStep = 0.01; > = 0;
float roughness < string UIName = "Roughness"; string UIWidget = "slider"; float UIMin = 0; float UIMax = 1; float UIStep = 0.01; > = 0.6;
float3 emissive < string UIName = "Emission"; string UIWidget = "color"; > = { 0, 0, 0 };
float normalScale < string UIName = "Normal depth"; string UIWidget = "slider"; float UIMin = 0; float UIMax = 2; float UIStep = 0.05; > = 1;
float alphaCutoff < string UIName = "Cut off below"; string UIWidget = "slider"; float UIMin = 0; float UIMax = 1; float UIStep = 0.01; > = 0.5;
texture baseColorMap < string UIName = "Base colour map"; >;
texture metalRoughMap < string UIName = "Metal-roughness map"; >; // green roughness, blue metalness
texture normalMap < string UIName = "Normal map"; >;
texture emissiveMap < string UIName = "Emission map"; >;
texture occlusionMap < string UIName = "Occlusion map"; >; // red
bool packedOcclusion; // the occlusion is the red channel of the metal and roughness map
bool unlit;           // the base colour as it is

fragment
{
vec4 readBaseColor()
{
    vec4 base = vec4(toLinear(baseColor.rgb), baseColor.a);
#ifdef VERTEX_COLORS
    base *= vec4(toLinear(color.rgb), color.a);
#endif
#ifdef BASE_COLOR_MAP
    vec4 texel = texture(baseColorMap, texCoord);
    base *= vec4(toLinear(texel.rgb), texel.a);
#endif
#ifdef TECHNIQUE_MASK
    if (base.a < alphaCutoff)
        discard;
#endif
    return base;
}

#ifdef UNLIT

void main()
{
    vec4 base = readBaseColor();
    fragment = vec4(toDisplay(clamp(base.rgb, 0.0, 1.0)), toOpacity(base.a));
}

#else

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
    vec3 m = findNormal();
#ifdef NORMAL_MAP
    // The tangent frame follows from how position and texture coordinates change over the screen.
    vec2 dtx = dFdx(texCoord);
    vec2 dty = dFdy(texCoord);
    vec3 across = cross(dFdy(position), m);
    vec3 along = cross(m, dFdx(position));
    vec3 t = across * dtx.x + along * dty.x;
    vec3 b = across * dtx.y + along * dty.y;
    float scale = inversesqrt(max(max(dot(t, t), dot(b, b)), 1e-30));
    vec3 detail = texture(normalMap, texCoord).xyz * 2.0 - 1.0;
    detail.xy *= normalScale;
    // Texture rows run downwards, the map's y axis upwards.
    m = normalize((t * detail.x - b * detail.y) * scale + m * detail.z);
#endif
    return m;
}

// The light from direction l: a Lambert term and a GGX lobe, with the half vector's angles taken from the
// sum l + v so that it needs no square root, and one division for all.
void shine(vec3 l, vec3 lightColor, float lit, float distanceLoss)
{
    float nl = dot(n, l);
    float hh = 2.0 + 2.0 * dot(l, v);
    float nh = nl + nv;
    float q = nh * nh * (alpha2 - 1.0) + hh * 1.00001;
    float fall = q * q * max(0.1, 0.25 * hh) * widening;
    float inverse = max(nl, 0.0) * lit / (fall * distanceLoss + 1e-20);
    float lobe = alpha2 * hh * hh;
    radiance += (diffuse * fall + specular * lobe) * lightColor * inverse;
}

// What a bright room with a dark floor would add.
vec3 surroundings(float rough, float occlusion)
{
    float height = dot(n, up) * 0.5 + 0.5;
    vec3 ambient = mix(vec3(0.145, 0.135, 0.125), vec3(0.33, 0.35, 0.38), height);
    ambient *= 0.8 + 0.2 * n.z;
    vec3 r = 2.0 * nv * n - v;
    float blur = 0.06 + 0.9 * rough;
    float horizon = clamp(dot(r, up) / blur * 0.5 + 0.5, 0.0, 1.0);
    vec3 mirrored = mix(vec3(0.11, 0.105, 0.10), vec3(0.60, 0.63, 0.68), horizon * horizon * (3.0 - 2.0 * horizon));
    float grazing = 1.0 - clamp(nv, 0.0, 1.0);
    grazing *= grazing;
    grazing *= grazing;
    vec3 fresnel = specular + (max(vec3(1.0 - rough), specular) - specular) * grazing;
    return (ambient * diffuse + mirrored * fresnel / (alpha2 + 1.0)) * occlusion;
}

// The lights are colours on white: 1 is what a surface facing a lamp gives back. Towards that and beyond the
// picture rolls off instead of being cut.
void main()
{
    vec4 base = readBaseColor();
    float metal = metalness;
    float rough = roughness;
    float occlusion = 1.0;
#ifdef METAL_ROUGH_MAP
    vec3 mr = texture(metalRoughMap, texCoord).rgb;
    rough *= mr.g;
    metal *= mr.b;
#ifdef PACKED_OCCLUSION
    occlusion = mr.r;
#endif
#endif
#ifdef OCCLUSION_MAP
    occlusion = texture(occlusionMap, texCoord).r;
#endif
    rough = clamp(rough, 0.08, 1.0);
    n = readNormal();
    v = -normalize(position);
    nv = dot(n, v);
    diffuse = base.rgb * (1.0 - metal);
    specular = mix(vec3(0.04), base.rgb, metal);
    float alpha = rough * rough;
    alpha2 = alpha * alpha;
    widening = rough * 4.0 + 2.0;
    shineAll();
    radiance += surroundings(rough, occlusion);
    vec3 glow = toLinear(emissive);
#ifdef EMISSIVE_MAP
    glow *= toLinear(texture(emissiveMap, texCoord).rgb);
#endif
    radiance += glow;
    vec3 over = clamp(radiance - 0.6, 0.0, 0.8);
    vec3 shown = min(radiance, 1.4) - over * over * 0.625;
    fragment = vec4(toDisplay(shown), toOpacity(base.a));
}

#endif
}

technique opaque { }
technique mask { }
technique blend { blend = alpha; depth = test; }

// A few flat tones, a hard highlight and an inked rim.

string ScriptClass = "object";

float4 baseColor < string UIName = "Colour"; string UIWidget = "color"; > = { 0.93, 0.44, 0.26, 1 };
float4 shadowColor < string UIName = "Shadow"; string UIWidget = "color"; > = { 0.25, 0.16, 0.38, 1 };
float4 inkColor < string UIName = "Ink"; string UIWidget = "color"; > = { 0.06, 0.05, 0.10, 1 };
int bands < string UIName = "Tones"; string UIWidget = "slider"; float UIMin = 2; float UIMax = 8; float UIStep = 1; > = 3;
float inkWidth < string UIName = "Ink width"; string UIWidget = "slider"; float UIMin = 0; float UIMax = 0.6; float UIStep = 0.01; > = 0.24;
float highlight < string UIName = "Highlight"; string UIWidget = "slider"; float UIMin = 0; float UIMax = 1; float UIStep = 0.01; > = 0.5;
texture baseColorMap < string UIName = "Picture"; >;

fragment
{
vec3 n;
vec3 v;
float light = 0.18;
float shiny = 0.0;

void shine(vec3 l, vec3 lightColor, float lit, float distanceLoss)
{
    float strength = dot(lightColor, vec3(0.3, 0.6, 0.1)) * lit / (distanceLoss + 1e-6);
    light += max(dot(n, l), 0.0) * strength;
    shiny = max(shiny, dot(n, normalize(l + v)) * min(strength, 1.0));
}

// A step that is one pixel wide.
float crisp(float edge, float x)
{
    float width = max(fwidth(x), 1e-4);
    return clamp((x - edge) / width + 0.5, 0.0, 1.0);
}

void main()
{
    vec3 base = toLinear(baseColor.rgb) * toLinear(color.rgb);
#ifdef BASE_COLOR_MAP
    base *= toLinear(texture(baseColorMap, texCoord).rgb);
#endif
#ifdef UNLIT
    fragment = vec4(toDisplay(base), toOpacity(baseColor.a));
#else
    n = findNormal();
    v = -normalize(position);
    shineAll();
    light = 1.0 - exp(-1.6 * light);
    float tone = 0.0;
    for (int i = 1; i < bands; ++i)
        tone += crisp(float(i) / float(bands), light);
    tone /= float(max(bands - 1, 1));
    vec3 shown = mix(base * toLinear(shadowColor.rgb), base, tone);
    shown = mix(shown, vec3(1.0), crisp(0.965, shiny) * highlight);
    // Only what is round has a rim; a flat side is not inked all over when it is seen from aside.
    float roundness = smoothstep(0.1, 0.5, length(fwidth(n)) * viewSize.y);
    shown = mix(toLinear(inkColor.rgb), shown, crisp(inkWidth * roundness, dot(n, v)));
    fragment = vec4(toDisplay(shown), toOpacity(baseColor.a));
#endif
}
}

technique toon { }

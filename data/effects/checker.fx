// Two colours in squares: along the texture coordinates, or through space where there are none.

string ScriptClass = "object";

float4 first < string UIName = "First colour"; string UIWidget = "color"; > = { 0.92, 0.90, 0.86, 1 };
float4 second < string UIName = "Second colour"; string UIWidget = "color"; > = { 0.16, 0.30, 0.42, 1 };
float scale < string UIName = "Squares"; string UIWidget = "slider"; float UIMin = 1; float UIMax = 64; float UIStep = 1; > = 12;
bool inSpace < string UIName = "Through space"; > = false;

fragment
{
vec3 n;
vec3 radiance = vec3(0.0);

void shine(vec3 l, vec3 lightColor, float lit, float distanceLoss)
{
    radiance += max(dot(n, l), 0.0) * lightColor * lit / (distanceLoss + 1e-6);
}

// The share of odd cells in a pixel's width along one axis, from -1 to 1.
float wave(float x, float width)
{
    float w = max(width, 1e-4);
    vec2 ends = (x + vec2(-0.5, 0.5) * w) * 0.5;
    vec2 area = abs(fract(ends) - 0.5);
    return (area.x - area.y) * 2.0 / w;
}

void main()
{
#if defined(TEX_COORDS) && !defined(IN_SPACE)
    vec2 p = texCoord * scale;
    vec2 w = fwidth(p);
    float squares = wave(p.x, w.x) * wave(p.y, w.y);
#else
    vec3 p = (eyeToWorld * vec4(position, 1.0)).xyz * scale * 0.25 + 0.001;
    vec3 w = fwidth(p);
    float squares = wave(p.x, w.x) * wave(p.y, w.y) * wave(p.z, w.z);
#endif
    vec3 base = toLinear(mix(first.rgb, second.rgb, squares * 0.5 + 0.5));
#ifndef UNLIT
    n = findNormal();
    shineAll();
    radiance += mix(vec3(0.12), vec3(0.34), dot(n, up) * 0.5 + 0.5);
    base *= 1.0 - exp(-1.3 * radiance);
#endif
    fragment = vec4(toDisplay(base), toOpacity(1.0));
}
}

technique checker { }

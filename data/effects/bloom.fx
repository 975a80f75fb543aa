// Light that spills over from what is bright.

string ScriptClass = "scene";

float threshold < string UIName = "Brighter than"; string UIWidget = "slider"; float UIMin = 0; float UIMax = 1; float UIStep = 0.01; > = 0.8;
float strength < string UIName = "Strength"; string UIWidget = "slider"; float UIMin = 0; float UIMax = 3; float UIStep = 0.05; > = 0.7;
float radius < string UIName = "Radius"; string UIWidget = "slider"; float UIMin = 0.2; float UIMax = 3; float UIStep = 0.05; > = 1;

fragment
{
// Nine weights of a bell, two looked up at a time between texels.
vec3 blurred(sampler2D picture, vec2 direction)
{
    vec2 texel = direction * radius / vec2(textureSize(picture, 0));
    vec3 sum = texture(picture, place).rgb * 0.227;
    for (int i = 0; i < 2; ++i) {
        vec2 offset = texel * (i == 0 ? 1.3846 : 3.2308);
        float weight = i == 0 ? 0.3162 : 0.0703;
        sum += (texture(picture, place + offset).rgb + texture(picture, place - offset).rgb) * weight;
    }
    return sum;
}
}

technique bloom
{
    pass bright
    {
        size = 0.25;
        fragment
        {
        void main()
        {
            vec2 texel = 1.0 / viewSize;
            vec3 sum = vec3(0.0);
            for (int x = 0; x < 2; ++x)
                for (int y = 0; y < 2; ++y) {
                    vec3 c = texture(sceneColor, place + (vec2(x, y) * 2.0 - 1.0) * texel).rgb;
                    float most = max(c.r, max(c.g, c.b));
                    sum += c * smoothstep(threshold, threshold + 0.25, most);
                }
            fragment = vec4(sum * 0.25, 1.0);
        }
        }
    }
    pass narrowX { size = 0.25; fragment { void main() { fragment = vec4(blurred(bright, vec2(1.0, 0.0)), 1.0); } } }
    pass narrow { size = 0.25; fragment { void main() { fragment = vec4(blurred(narrowX, vec2(0.0, 1.0)), 1.0); } } }
    pass wideX { size = 0.1; fragment { void main() { fragment = vec4(blurred(narrow, vec2(0.6, 0.0)), 1.0); } } }
    pass wide { size = 0.1; fragment { void main() { fragment = vec4(blurred(wideX, vec2(0.0, 1.6)), 1.0); } } }
    pass
    {
        fragment
        {
        void main()
        {
            vec3 shown = texture(sceneColor, place).rgb;
            vec3 glow = (texture(narrow, place).rgb * 0.6 + texture(wide, place).rgb * 0.8) * strength;
            fragment = vec4(1.0 - (1.0 - shown) * (1.0 - clamp(glow, 0.0, 1.0)), 1.0);
        }
        }
    }
}

// Darkens the corners, as old lenses do, and adds the grain of film.

string ScriptClass = "scene";

float strength < string UIName = "Darkness"; string UIWidget = "slider"; float UIMin = 0; float UIMax = 1; float UIStep = 0.01; > = 0.6;
float radius < string UIName = "Radius"; string UIWidget = "slider"; float UIMin = 0.2; float UIMax = 1.2; float UIStep = 0.01; > = 0.62;
float softness < string UIName = "Softness"; string UIWidget = "slider"; float UIMin = 0.05; float UIMax = 1; float UIStep = 0.01; > = 0.55;
float grain < string UIName = "Grain"; string UIWidget = "slider"; float UIMin = 0; float UIMax = 0.4; float UIStep = 0.01; > = 0.045;
float4 tint < string UIName = "Tint"; string UIWidget = "color"; > = { 1.0, 0.98, 0.94, 1 };

fragment
{
float noise(vec2 p)
{
    vec3 q = fract(vec3(p.xyx) * 0.1031);
    q += dot(q, q.yzx + 33.33);
    return fract((q.x + q.y) * q.z);
}

void main()
{
    vec3 shown = texture(sceneColor, place).rgb * tint.rgb;
    vec2 fromMiddle = (place - 0.5) * vec2(min(viewSize.x / viewSize.y, 1.6), 1.0);
    float corner = smoothstep(radius - softness * 0.5, radius + softness * 0.5, length(fromMiddle));
    shown *= 1.0 - corner * strength;
    vec2 pixel = floor(place * viewSize);
#ifdef TECHNIQUE_MOVING
    pixel += floor(fract(time) * 24.0) * 17.0;
#endif
    float speck = noise(pixel) + noise(pixel + 71.0) - 1.0;
    // Film grains least where it is black or white.
    float middle = 1.0 - abs(dot(shown, vec3(0.3, 0.6, 0.1)) * 2.0 - 1.0);
    shown += speck * grain * (0.35 + 0.65 * middle);
    fragment = vec4(shown, 1.0);
}
}

technique vignette { }
technique moving { } // the grain is another 24 times a second

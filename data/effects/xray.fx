// Glows where the surface turns away from the eye, through all that is before it.

string ScriptClass = "object";

float4 glowColor < string UIName = "Glow"; string UIWidget = "color"; > = { 0.30, 0.75, 1.0, 1 };
float falloff < string UIName = "Sharpness"; string UIWidget = "slider"; float UIMin = 0.5; float UIMax = 6; float UIStep = 0.1; > = 2.2;
float strength < string UIName = "Strength"; string UIWidget = "slider"; float UIMin = 0; float UIMax = 2; float UIStep = 0.05; > = 0.9;
float core < string UIName = "Core"; string UIWidget = "slider"; float UIMin = 0; float UIMax = 0.5; float UIStep = 0.01; > = 0.06;

float veil < string UIName = "Veil"; string UIWidget = "slider"; float UIMin = 0; float UIMax = 1; float UIStep = 0.01; > = 0.6; // darkens what is behind

fragment
{
vec4 glow()
{
    vec3 n = findNormal();
    vec3 v = -normalize(position);
    float rim = pow(1.0 - abs(dot(n, v)), falloff);
    return vec4(glowColor.rgb, clamp((rim + core) * strength, 0.0, 1.0));
}

vec4 shade()
{
    return vec4(mix(vec3(1.0), glowColor.rgb * 0.35, veil), 1.0);
}
}

technique through
{
    pass { blend = multiply; depth = off; cull = back; fragment { void main() { fragment = shade(); } } }
    pass { blend = add; depth = off; fragment { void main() { fragment = glow(); } } }
}

technique inFront
{
    pass { blend = multiply; depth = test; cull = back; fragment { void main() { fragment = shade(); } } }
    pass { blend = add; depth = test; fragment { void main() { fragment = glow(); } } }
}

technique behind { blend = add; depth = behind; fragment { void main() { fragment = glow(); } } }

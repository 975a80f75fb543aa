// Darkens corners and the ground below things, where the light of the surroundings does not get to.

string ScriptClass = "scene";

float strength < string UIName = "Strength"; string UIWidget = "slider"; float UIMin = 0; float UIMax = 2; float UIStep = 0.05; > = 1;
float reach < string UIName = "Reach"; string UIWidget = "slider"; float UIMin = 0.02; float UIMax = 0.4; float UIStep = 0.01; > = 0.12;
bool alone = false; // without the picture

fragment
{
// As a share of the distance, so that one setting suits scenes of any size.
float around(float depth)
{
    return reach * depth;
}

float noise(vec2 p)
{
    return fract(52.9829189 * fract(dot(p, vec2(0.06711056, 0.00583715))));
}
}

technique occlusion
{
    pass raw
    {
        size = 0.5;
        fragment
        {
        vec2 here; // the middle of a pixel of the picture

        // Of the two neighbours along an axis the one on the same surface.
        vec3 slope(vec3 p, vec2 offset)
        {
            vec3 a = positionAt(here + offset) - p;
            vec3 b = p - positionAt(here - offset);
            return abs(a.z) < abs(b.z) ? a : b;
        }

        void main()
        {
            here = (floor(place * viewSize) + 0.5) / viewSize;
            if (isBackground(here)) {
                fragment = vec4(1.0);
                return;
            }
            vec3 p = positionAt(here);
            vec3 n = normalize(cross(slope(p, vec2(1.0 / viewSize.x, 0.0)), slope(p, vec2(0.0, 1.0 / viewSize.y))));
            float radius = around(-p.z);
            // What the radius is on the picture.
            float onPicture = radius * eyeToClip[1][1] / max(p.z * eyeToClip[2][3] + eyeToClip[3][3], 1e-6) * 0.5;
            float turn = noise(floor(gl_FragCoord.xy)) * 6.2832;
            float dark = 0.0;
            for (int i = 0; i < 12; ++i) {
                float r = (float(i) + 0.5) / 12.0;
                float angle = turn + float(i) * 2.39996;
                vec2 offset = vec2(cos(angle) * viewSize.y / viewSize.x, sin(angle)) * r * onPicture;
                vec2 where = here + offset;
                if (clamp(where, 0.0, 1.0) != where)
                    continue;
                vec3 to = positionAt(where) - p;
                float d2 = dot(to, to);
                float height = dot(to, n) - 0.05 * radius;
                dark += max(height, 0.0) * inversesqrt(d2 + 1e-12) * max(1.0 - d2 / (radius * radius), 0.0);
            }
            fragment = vec4(vec3(clamp(1.0 - dark / 12.0 * 3.2, 0.0, 1.0)), 1.0);
        }
        }
    }
    pass soft
    {
        size = 0.5;
        fragment
        {
        void main()
        {
            vec2 texel = 1.0 / vec2(textureSize(raw, 0));
            float depth = depthAt(place);
            float sum = 0.0;
            float weights = 1e-4;
            for (int x = -2; x <= 1; ++x)
                for (int y = -2; y <= 1; ++y) {
                    vec2 where = place + (vec2(x, y) + 0.5) * texel;
                    float weight = max(1.0 - abs(depthAt(where) - depth) / (0.3 * around(depth)), 0.0);
                    sum += texture(raw, where).r * weight;
                    weights += weight;
                }
            fragment = vec4(vec3(sum / weights), 1.0);
        }
        }
    }
    pass
    {
        fragment
        {
        void main()
        {
            float open = pow(texture(soft, place).r, strength);
    #ifdef ALONE
            fragment = vec4(vec3(open), 1.0);
    #else
            fragment = vec4(texture(sceneColor, place).rgb * open, 1.0);
    #endif
        }
        }
    }
}

// A lens that is sharp at one distance only.

string ScriptClass = "scene";

bool focusInTheMiddle = true; // else at the distance
float focusDistance < string UIName = "Distance"; string UIWidget = "slider"; float UIMin = 0.1; float UIMax = 50; float UIStep = 0.1; > = 5;
float aperture < string UIName = "Aperture"; string UIWidget = "slider"; float UIMin = 0; float UIMax = 4; float UIStep = 0.05; > = 1.2;
float largest < string UIName = "Most blur"; string UIWidget = "slider"; float UIMin = 1; float UIMax = 24; float UIStep = 0.5; > = 9;

fragment
{
// The nearest of what is round the middle.
float focus()
{
#ifdef FOCUS_IN_THE_MIDDLE
    float nearest = 1e9;
    for (int x = -1; x <= 1; ++x)
        for (int y = -1; y <= 1; ++y)
            nearest = min(nearest, depthAt(vec2(0.5) + vec2(x, y) * 0.02));
    return nearest;
#else
    return focusDistance;
#endif
}

// Radius of the circle that a point becomes, in pixels.
float circle(float depth, float sharp)
{
    return min(aperture * 12.0 * abs(1.0 - sharp / depth), largest);
}
}

technique lens
{
    pass blurred
    {
        size = 0.5;
        fragment
        {
        void main()
        {
            float sharp = focus();
            float depth = depthAt(place);
            float own = circle(depth, sharp);
            vec3 sum = texture(sceneColor, place).rgb;
            float weights = 1.0;
            // Points of a sunflower: even, and never in lines.
            for (int i = 1; i < 24; ++i) {
                float r = sqrt(float(i) / 24.0) * largest;
                float angle = float(i) * 2.39996;
                vec2 where = place + vec2(cos(angle), sin(angle)) * r / viewSize;
                float there = depthAt(where);
                float reach = circle(there, sharp);
                // What is sharp and nearer does not run out, nor does the far run over the near.
                if (there > depth)
                    reach = min(reach, own);
                float weight = smoothstep(r - 1.5, r + 0.5, reach);
                sum += texture(sceneColor, where).rgb * weight;
                weights += weight;
            }
            fragment = vec4(sum / weights, 1.0);
        }
        }
    }
    pass
    {
        fragment
        {
        void main()
        {
            float own = circle(depthAt(place), focus());
            vec3 shown = mix(texture(sceneColor, place).rgb, texture(blurred, place).rgb, smoothstep(0.4, 2.0, own));
            fragment = vec4(shown, 1.0);
        }
        }
    }
}

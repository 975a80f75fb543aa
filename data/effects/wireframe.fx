// The triangles as lines over a quiet clay surface.

string ScriptClass = "object";

float4 surfaceColor < string UIName = "Surface"; string UIWidget = "color"; > = { 0.72, 0.72, 0.74, 1 };
float4 lineColor < string UIName = "Lines"; string UIWidget = "color"; > = { 0.05, 0.22, 0.45, 1 };
float lineOpacity < string UIName = "Opacity of the lines"; string UIWidget = "slider"; float UIMin = 0; float UIMax = 1; float UIStep = 0.01; > = 0.85;

fragment
{
vec3 n;
vec3 radiance = vec3(0.0);

void shine(vec3 l, vec3 lightColor, float lit, float distanceLoss)
{
    radiance += max(dot(n, l), 0.0) * lightColor * lit / (distanceLoss + 1e-6);
}
}

technique overlay
{
    pass surface
    {
        fragment
        {
        void main()
        {
            vec3 base = toLinear(surfaceColor.rgb);
        #ifndef UNLIT
            n = findNormal();
            shineAll();
            radiance += mix(vec3(0.12), vec3(0.34), dot(n, up) * 0.5 + 0.5);
            base *= 1.0 - exp(-1.3 * radiance);
        #endif
            fragment = vec4(toDisplay(base), toOpacity(1.0));
        }
        }
    }
    pass lines
    {
        wireframe = on;
        blend = alpha;
        depth = test;
        vertex
        {
        void main()
        {
            placeVertex(gl_Vertex, gl_Normal);
            gl_Position.z -= 0.0004 * gl_Position.w; // off the surface
        }
        }
        fragment
        {
        void main()
        {
            fragment = vec4(lineColor.rgb, toOpacity(lineOpacity));
        }
        }
    }
}

technique lines
{
    wireframe = on;
    fragment { void main() { fragment = vec4(lineColor.rgb, toOpacity(1.0)); } }
}

// Draws the edges of things with ink, on the picture or on paper.

string ScriptClass = "scene";

float4 inkColor < string UIName = "Ink"; string UIWidget = "color"; > = { 0.07, 0.06, 0.10, 1 };
float4 paperColor < string UIName = "Paper"; string UIWidget = "color"; > = { 0.96, 0.94, 0.89, 1 };
float width < string UIName = "Width"; string UIWidget = "slider"; float UIMin = 0.5; float UIMax = 4; float UIStep = 0.1; > = 1.2;
float sensitivity < string UIName = "Sensitivity"; string UIWidget = "slider"; float UIMin = 0; float UIMax = 1; float UIStep = 0.01; > = 0.5;
float paper < string UIName = "Amount of paper"; string UIWidget = "slider"; float UIMin = 0; float UIMax = 1; float UIStep = 0.01; > = 0.15;

fragment
{
// How far the depth is from a plane's, along one direction. Of a plane the inverse depth is linear.
float bend(float middle, vec2 offset)
{
    float a = 1.0 / depthAt(place - offset);
    float b = 1.0 / depthAt(place + offset);
    return abs(a + b - 2.0 * middle) / middle;
}

void main()
{
    vec2 pixel = width / viewSize;
    float middle = 1.0 / depthAt(place);
    float bent = bend(middle, vec2(pixel.x, 0.0)) + bend(middle, vec2(0.0, pixel.y)) +
                 0.7 * (bend(middle, pixel) + bend(middle, vec2(pixel.x, -pixel.y)));
    float least = 0.15 * pow(0.004, sensitivity);
    float ink = smoothstep(least, least * 3.0, bent);
    vec3 shown = texture(sceneColor, place).rgb;
    float grey = dot(shown, vec3(0.3, 0.59, 0.11));
    vec3 drawn = paperColor.rgb * mix(0.55, 1.0, smoothstep(0.02, 0.75, grey));
    shown = mix(shown, drawn, paper);
    fragment = vec4(mix(shown, inkColor.rgb, ink * inkColor.a), 1.0);
}
}

technique ink { }

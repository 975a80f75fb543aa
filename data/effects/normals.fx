// The direction of the surface as a colour: red to the right, green upwards, blue to the front.

string ScriptClass = "object";

bool ofTheWorld < string UIName = "Of the world"; > = true;
float saturation < string UIName = "Saturation"; string UIWidget = "slider"; float UIMin = 0; float UIMax = 1; float UIStep = 0.05; > = 1;

fragment
{
void main()
{
#ifdef TECHNIQUE_FACETS
    vec3 n = normalize(cross(dFdx(position), dFdy(position)));
#else
    vec3 n = findNormal();
#endif
    if (ofTheWorld)
        n = mat3(eyeToWorld) * n;
    fragment = vec4(mix(vec3(0.5), n * 0.5 + 0.5, saturation), toOpacity(1.0));
}
}

technique normals { }
technique facets { }

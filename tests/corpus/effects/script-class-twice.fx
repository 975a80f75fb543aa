string ScriptClass = "object";
string ScriptClass = "scene";
fragment { void main() { fragment = vec4(1.0); } }
technique t { }

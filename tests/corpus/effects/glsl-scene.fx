string ScriptClass = "scene";
fragment { void main() { fragment = texture(sceneColour, place); } }
technique t { }

string ScriptClass = "scene";
vertex { }
fragment { void main() { } }
technique t { }

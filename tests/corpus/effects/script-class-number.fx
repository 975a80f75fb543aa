string ScriptClass = 1;
fragment { void main() { } }
technique t { }

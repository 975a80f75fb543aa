float position = 1;
fragment { void main() { fragment = vec4(1.0); } }
technique t { }

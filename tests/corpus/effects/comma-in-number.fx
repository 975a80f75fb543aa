float a = 1,5;
fragment { void main() { fragment = vec4(a); } }
technique t { }

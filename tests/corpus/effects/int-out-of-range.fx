int count = 3000000000;
fragment { void main() { fragment = vec4(1.0); } }
technique t { }

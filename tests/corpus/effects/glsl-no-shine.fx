fragment { void main() { shineAll(); fragment = vec4(1.0); } }
technique t { }

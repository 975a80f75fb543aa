float4 a = {1, 2, 3};
fragment { void main() { } }
technique t { }

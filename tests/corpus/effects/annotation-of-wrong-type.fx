float a < float3 UIMin = {1, 2, 3}; > = 3;
fragment { void main() { } }
technique t { }

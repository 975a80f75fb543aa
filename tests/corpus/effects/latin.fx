float a < »float UIMin = 1; > = 3;
fragment { void main() { } }
technique t { }

float a = 1e400;
fragment { void main() { } }
technique t { }

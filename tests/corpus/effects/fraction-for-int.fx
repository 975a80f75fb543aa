int a = 0.5;
fragment { void main() { } }
technique t { }

float a = 1
float b = 2;
fragment { void main() { } }
technique t { }

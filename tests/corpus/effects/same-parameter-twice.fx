float a;
float a;
fragment { void main() { } }
technique t { }

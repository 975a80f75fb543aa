fragment { void main() { } }
technique t { }
technique t { }

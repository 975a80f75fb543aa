fragment { void main() { } } }
technique t { }

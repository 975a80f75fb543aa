fragment { void main() { if (true) { } }
technique t { }

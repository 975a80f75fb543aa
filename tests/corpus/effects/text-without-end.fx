texture a = "a.png;
fragment { void main() { } }
technique t { }

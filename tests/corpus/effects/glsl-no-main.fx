fragment { float f() { return 1.0; } }
technique t { }

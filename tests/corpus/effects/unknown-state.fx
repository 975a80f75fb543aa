fragment { void main() { } }
technique t { stencil = on; }

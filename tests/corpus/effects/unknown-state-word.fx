fragment { void main() { } }
technique t { blend = screen; }

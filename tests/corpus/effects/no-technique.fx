fragment { void main() { } }

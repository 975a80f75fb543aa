vertex { void main() { placeVertex(gl_Vertex); } }
fragment { void main() { fragment = vec4(1.0); } }
technique t { }

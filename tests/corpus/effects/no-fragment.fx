vertex { void main() { placeVertex(gl_Vertex, gl_Normal); } }
technique t { }

fragment
{
void main()
{
    fragment = vec4(nothing, 1.0);
}
}
technique t { }

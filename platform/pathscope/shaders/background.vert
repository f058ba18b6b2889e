out float vHeight;

void main()
{
    // One triangle over the whole picture.
    vec2 corner = vec2(gl_VertexID == 1 ? 3.0 : -1.0, gl_VertexID == 2 ? 3.0 : -1.0);
    vHeight = 0.5 + 0.5 * corner.y;
    gl_Position = vec4(corner, 1.0, 1.0);
}

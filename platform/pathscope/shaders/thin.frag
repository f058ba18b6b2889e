flat in vec4 vColour;

out vec4 fColour;

void main()
{
    if (vColour.a < 0.5)
        discard;
    fColour = vec4(vColour.rgb, 1.0);
}

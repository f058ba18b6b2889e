flat in vec4 vBead;
in vec2 vAcross;

out vec4 fColour;

void main()
{
    float across = clamp(vAcross.x, -1.0, 1.0);
    float rise = sqrt(1.0 - across * across);
    float light = across * vBead.a + rise * vAcross.y;
    fColour = vec4(lit(vBead.rgb, light, rise), 1.0);
}

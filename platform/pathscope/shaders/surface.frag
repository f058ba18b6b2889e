flat in vec3 vColour;
flat in vec2 vLight;
in float vAcross;

out vec4 fColour;

void main()
{
    float across = clamp(vAcross, -1.0, 1.0);
    float rise = sqrt(1.0 - across * across);
    fColour = vec4(lit(vColour, dot(vec2(across, rise), vLight), rise), 1.0);
}

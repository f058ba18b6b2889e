in float vHeight;

uniform vec3 uTop;
uniform vec3 uBottom;

out vec4 fColour;

void main()
{
    fColour = vec4(mix(uBottom, uTop, vHeight), 1.0);
}

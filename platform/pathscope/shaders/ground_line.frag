uniform vec4 uColour;

out vec4 fColour;

void main()
{
    fColour = uColour;
}

layout(location = 0) in vec3 aPoint;

uniform mat4 uViewProjection;

out vec3 vPoint;

void main()
{
    vPoint = aPoint;
    gl_Position = uViewProjection * vec4(aPoint, 1.0);
}

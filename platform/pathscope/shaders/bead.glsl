// A bead lies below the nozzle's height, with an elliptic section. What the vertex shaders of
// surfaces and of thin lines share.

uniform mat4 uViewProjection;
// A point with w 1, or with w 0 the direction to an eye far away.
uniform vec4 uEye;
uniform vec3 uLight;
// Bit n: moves of kind n are shown.
uniform int uKinds;
// How many times wider and higher than told beads are drawn.
uniform vec2 uFactors;
// Takes the place of the style's colour where alpha is above 0.
uniform vec4 uColour;
uniform vec3 uKindColours[5];
// One texel a style: colour, width and height.
uniform usamplerBuffer uStyles;

const uint kExtrude = 0u;

struct Bead
{
    vec3 colour;
    float halfWidth;
    float halfHeight;
    // 1 for what stands on its like, layer on layer; 0 for what lies beside it.
    float wall;
};

uint kindOf(uint kindAndStyle)
{
    return kindAndStyle >> 28;
}

bool isShown(uint kind)
{
    return (uKinds & (1 << int(kind))) != 0;
}

Bead beadOf(uint kindAndStyle)
{
    uvec4 style = texelFetch(uStyles, int(kindAndStyle & 0x0fffffffu));
    vec3 colour = vec3(style.xxx >> uvec3(0u, 8u, 16u) & 255u) / 255.0;
    if (uColour.a > 0.0)
        colour = uColour.rgb;
    uint kind = kindOf(kindAndStyle);
    if (kind != kExtrude)
        return Bead(uKindColours[kind], 0.0, 0.0, 0.0);
    vec2 halves = 0.5 * uFactors * uintBitsToFloat(style.yz);
    return Bead(colour, halves.x, halves.y, uintBitsToFloat(style.w));
}

// How a bead's side towards the eye lies, in the plane across it.
struct Section
{
    // From the middle to the edge of what is seen of it.
    vec3 edge;
    // Light that the edge gets, and the ridge that faces the eye: between -1 and 1.
    vec2 light;
    // Light that the surface gets of which the bead is a part, where beads are too fine to be told
    // apart: round shapes show by it.
    float surface;
};

Section sectionOf(Bead bead, vec3 direction, vec3 toEye)
{
    vec2 level = vec2(direction.y, -direction.x);
    float length2 = dot(level, level);
    vec3 across = length2 > 1e-12 ? vec3(level * inversesqrt(length2), 0.0) : vec3(1.0, 0.0, 0.0);
    vec3 up = cross(across, direction);
    // Where the ellipse is a circle, what is seen ends square to the eye's direction.
    vec2 axes = vec2(bead.halfWidth, bead.halfHeight);
    vec2 ridge = vec2(dot(toEye, across), dot(toEye, up)) * axes.yx;
    float ridgeLength = length(ridge);
    ridge = ridgeLength > 1e-9 ? ridge / ridgeLength : vec2(0.0, 1.0);
    vec2 edge = vec2(ridge.y, -ridge.x);
    vec2 light = vec2(dot(uLight, across), dot(uLight, up));
    float outward = clamp(8.0 * dot(toEye, across), -1.0, 1.0) * length(toEye.xy);
    vec3 side = across * (outward * bead.wall) + vec3(0.0, 0.0, mix(1.0, 0.4, bead.wall) * toEye.z);
    return Section(across * (edge.x * axes.x) + up * (edge.y * axes.y),
                   vec2(dot(normalize(edge * axes.yx), light),
                        dot(normalize(ridge * axes.yx), light)),
                   dot(side, uLight) * inversesqrt(max(dot(side, side), 1e-6)));
}

// A line for each segment, from the records as they stand: for beads thinner than a pixel.

layout(location = 0) in vec3 aFrom;
layout(location = 1) in vec3 aTo;
// Of the segment that begins here.
layout(location = 2) in uint aKindAndStyle;

// The colour with its light; nothing is drawn where alpha is 0.
flat out vec4 vColour;

void main()
{
    uint kind = kindOf(aKindAndStyle);
    Bead bead = beadOf(aKindAndStyle);
    vec3 way = aTo - aFrom;
    float length2 = dot(way, way);
    vec3 direction = length2 > 0.0 ? way * inversesqrt(length2) : vec3(1.0, 0.0, 0.0);
    const float kRise = 1.0;
    float light = 0.8;
    if (kind == kExtrude) {
        vec3 toEye = normalize(uEye.xyz - aFrom * uEye.w);
        light = sectionOf(bead, direction, toEye).surface;
    }
    vColour = vec4(lit(bead.colour, light, kRise), isShown(kind) ? 1.0 : 0.0);
    gl_Position = uViewProjection * vec4(aFrom.xy, aFrom.z - bead.halfHeight, 1.0);
}

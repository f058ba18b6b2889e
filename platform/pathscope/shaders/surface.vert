// A rectangle that faces the eye for each segment; the fragment shader makes it round.

// Points as they stand in memory; vertices 4n to 4n + 3 belong to the segment from n to n + 1.
uniform usamplerBuffer uPoints;
// Millimetres a pixel, where the depth is 1.
uniform float uPixel;
uniform vec3 uRight;
uniform vec3 uUp;

const float kTravelHalfPixels = 0.8;
const float kMarkerHalfPixels = 3.5;
// Beads overlap where a path turns; their ends are round.
const float kEndOverlap = 0.7;

// Few outputs: a software renderer sets each of them up for every triangle.
// The colour, and the light on the bead's edge.
flat out vec4 vBead;
// From -1 to 1 across the bead, and the light on its ridge.
out vec2 vAcross;

void main()
{
    int segment = gl_VertexID >> 2;
    uvec4 fromRecord = texelFetch(uPoints, segment);
    uvec4 toRecord = texelFetch(uPoints, segment + 1);
    uint kind = kindOf(toRecord.w);
    bool isEnd = (gl_VertexID & 2) != 0;
    float side = (gl_VertexID & 1) != 0 ? 1.0 : -1.0;

    Bead bead = beadOf(toRecord.w);
    vec3 from = uintBitsToFloat(fromRecord.xyz);
    vec3 to = uintBitsToFloat(toRecord.xyz);
    vec3 way = to - from;
    float length2 = dot(way, way);
    vec3 direction = length2 > 0.0 ? way * inversesqrt(length2) : vec3(1.0, 0.0, 0.0);
    vec3 point = isEnd ? to : from;
    vec3 toEye = normalize(uEye.xyz - point * uEye.w);

    float pixel = uPixel * dot(vec4(uViewProjection[0].w, uViewProjection[1].w,
                                    uViewProjection[2].w, uViewProjection[3].w),
                               vec4(point, 1.0));

    vBead = vec4(bead.colour, 0.0);
    vAcross = vec2(0.0, 0.8);
    if (kind == kExtrude) {
        Section section = sectionOf(bead, direction, toEye);
        vBead.a = section.light.x;
        point += direction * ((isEnd ? kEndOverlap : -kEndOverlap) * bead.halfWidth);
        point.z -= bead.halfHeight;
        point += section.edge * side;
        // Beads that are hardly wider than a pixel would make patterns that are not there.
        float detail = smoothstep(1.0, 4.0, length(section.edge) / pixel);
        vAcross = vec2(side * detail, mix(section.surface, section.light.y, detail));
    } else {
        if (length2 > 0.0) {
            vec3 across = cross(direction, toEye);
            point += across * (inversesqrt(max(dot(across, across), 1e-12)) * side *
                               kTravelHalfPixels * pixel);
        } else {
            point += (uRight * side + uUp * (isEnd ? 1.0 : -1.0)) * (kMarkerHalfPixels * pixel);
        }
    }
    gl_Position = isShown(kind) ? uViewProjection * vec4(point, 1.0) : vec4(2.0, 2.0, 2.0, 1.0);
}

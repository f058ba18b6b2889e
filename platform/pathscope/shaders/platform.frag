// The platform with its grid.

in vec3 vPoint;

uniform vec4 uSurface;
uniform vec4 uGrid;
// Of a round platform: the middle and the radius; 0 for a rectangular one.
uniform vec3 uRound;

out vec4 fColour;

const float kFine = 10.0;
const float kCoarse = 50.0;

// 1 on a line of the grid, 0 between.
float line(float spacing)
{
    vec2 cell = vPoint.xy / spacing;
    vec2 pixel = fwidth(cell);
    vec2 away = abs(fract(cell - 0.5) - 0.5) / max(pixel, 1e-6);
    // Lines that come closer than a few pixels fade, or they would flicker.
    vec2 fade = clamp(0.5 / max(pixel, 1e-6) / 4.0 - 0.25, 0.0, 1.0);
    vec2 strength = clamp(1.3 - away, 0.0, 1.0) * fade;
    return max(strength.x, strength.y);
}

void main()
{
    float inside = 1.0;
    if (uRound.z > 0.0) {
        float beyond = length(vPoint.xy - uRound.xy) - uRound.z;
        inside = clamp(0.5 - beyond / max(fwidth(beyond), 1e-6), 0.0, 1.0);
    }
    float grid = max(line(kCoarse), 0.5 * line(kFine)) * uGrid.a;
    vec4 colour = mix(uSurface, vec4(uGrid.rgb, 1.0), grid);
    fColour = vec4(colour.rgb, colour.a * inside);
}

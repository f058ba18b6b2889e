// The colour of a bead's surface.
//
// light: how much the surface faces the light, -1 to 1
// rise:  1 on the ridge of the bead, 0 in the crease between two
vec3 lit(vec3 colour, float light, float rise)
{
    // What faces away keeps less than half of its colour; a wall that turns away darkens all the way.
    const float kShade = 0.42;
    const float kCrease = 0.78;
    float towards = 0.5 + 0.5 * light;
    float brightness = mix(kShade, 1.1, towards * sqrt(towards)) * mix(kCrease, 1.0, rise);
    // A little gloss, as of plastic.
    float gloss = max(light - 0.8, 0.0);
    return colour * brightness + vec3(2.0 * gloss * gloss);
}

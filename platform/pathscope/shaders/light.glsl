// The colour of a bead's surface.
//
// light: how much the surface faces the light, -1 to 1
// rise:  1 on the ridge of the bead, 0 in the crease between two
vec3 lit(vec3 colour, float light, float rise)
{
    const float kAmbient = 0.56;
    const float kCrease = 0.78;
    float brightness = (kAmbient + 0.58 * light) * mix(kCrease, 1.0, rise);
    // A little gloss, as of plastic.
    float gloss = max(light - 0.72, 0.0);
    return colour * max(brightness, 0.16) + vec3(0.9 * gloss * gloss);
}

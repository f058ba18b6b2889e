#include "pathscope/toolpath_palette.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace pathscope {

namespace {

// All of medium lightness or strong hue: they stand on white as on black.
constexpr std::array<QRgb, kFeatureCount> kFeatureColours = {
    0xff8f949b, // Unknown
    0xffe8850c, // OuterWall
    0xfff2c230, // InnerWall
    0xff2f55e6, // Overhang
    0xffb0402a, // SparseInfill
    0xff9a5bd4, // SolidInfill
    0xffe8413f, // TopSurface
    0xfff58fb0, // Ironing
    0xff4aa3e0, // Bridge
    0xff1fb8a6, // GapFill
    0xff0d7d6c, // Skirt
    0xff5f8a1f, // Brim
    0xff9a7b4f, // Raft
    0xff4dc94a, // Support
    0xff1c7f35, // SupportInterface
    0xffbdb56b, // PrimeTower
    0xff5b6f8f, // Custom
};

constexpr std::array<QRgb, kToolCount> kOwnColours = {
    0xffe8850c, 0xff2f7fd6, 0xff2fa84f, 0xffc9478f, 0xff8a5bd4, 0xff1fb8a6, 0xffd8b32a, 0xffd1403a,
    0xff6f8f1f, 0xff4a4fc9, 0xffa0623a, 0xff5fc3e8, 0xffef8fb8, 0xff7a8a99, 0xff0d7d6c, 0xff8f2f4f,
};

constexpr std::array<QRgb, 9> kRange = {
    0xff5b2a8c, 0xff4b4c9c, 0xff3d6aa3, 0xff2f8296, 0xff249a8c,
    0xff2aae80, 0xff4fc36b, 0xff8ad44a, 0xfff2dd2e,
};

/** Distance in RGB, with the eye's weights; 0 to about 765. */
double difference(const QColor& a, const QColor& b)
{
    const double meanRed = (a.red() + b.red()) / 2.0;
    const double red = a.red() - b.red();
    const double green = a.green() - b.green();
    const double blue = a.blue() - b.blue();
    return std::sqrt((2 + meanRed / 256) * red * red + 4 * green * green +
                     (2 + (255 - meanRed) / 256) * blue * blue);
}

constexpr double kToldApart = 90;

bool isUsable(const QColor& colour)
{
    return colour.isValid() && colour.alpha() > 0;
}

QColor opaque(const QColor& colour)
{
    return {colour.red(), colour.green(), colour.blue()};
}

/** Of our own colours the first that is unlike the taken ones, or else the one most unlike. */
QColor freshColour(const std::vector<QColor>& taken)
{
    QColor best;
    double bestDifference = -1;
    for (const QRgb candidate : kOwnColours) {
        const QColor colour(candidate);
        double nearest = 1e9;
        for (const QColor& other : taken)
            nearest = std::min(nearest, difference(colour, other));
        if (nearest >= kToldApart)
            return colour;
        if (nearest > bestDifference) {
            best = colour;
            bestDifference = nearest;
        }
    }
    return best;
}

} // namespace

std::uint32_t packed(const QColor& colour)
{
    const auto byte = [](int value) {
        return static_cast<std::uint32_t>(value);
    };
    return byte(colour.alpha()) << 24 | byte(colour.blue()) << 16 | byte(colour.green()) << 8 |
           byte(colour.red());
}

QColor featureColour(Feature feature)
{
    const auto index = static_cast<std::size_t>(feature);
    return {kFeatureColours[index < kFeatureColours.size() ? index : 0]};
}

QColor moveColour(MoveKind kind)
{
    switch (kind) {
    case MoveKind::Travel:
        return {0x5b, 0x8c, 0xcc};
    case MoveKind::Retract:
        return {0xd6, 0x40, 0x9f};
    case MoveKind::Unretract:
        return {0x2f, 0xb5, 0xc7};
    case MoveKind::ToolChange:
        return {0xe0, 0xa0, 0x20};
    case MoveKind::Extrude:
        break;
    }
    return unknownColour();
}

QColor unknownColour()
{
    return {kFeatureColours[0]};
}

QColor rangeColour(double position)
{
    const double place =
        (position > 0 ? std::min(position, 1.0) : 0.0) * static_cast<double>(kRange.size() - 1);
    const auto below = std::min(static_cast<std::size_t>(place), kRange.size() - 2);
    const double part = place - static_cast<double>(below);
    const QColor from(kRange[below]);
    const QColor to(kRange[below + 1]);
    const auto mixed = [part](int a, int b) {
        return qRound(a + (b - a) * part);
    };
    return {mixed(from.red(), to.red()), mixed(from.green(), to.green()),
            mixed(from.blue(), to.blue())};
}

std::vector<QColor> toolColours(const std::vector<QColor>& wanted, int count)
{
    std::vector<QColor> taken;
    std::copy_if(wanted.begin(), wanted.end(), std::back_inserter(taken), isUsable);

    std::vector<QColor> colours;
    for (std::size_t tool = 0; tool < static_cast<std::size_t>(count); ++tool) {
        if (tool < wanted.size() && isUsable(wanted[tool])) {
            colours.push_back(opaque(wanted[tool]));
            continue;
        }
        colours.push_back(freshColour(taken));
        taken.push_back(colours.back());
    }
    return colours;
}

} // namespace pathscope

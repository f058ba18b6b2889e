#include "pathscope/slicer_features.h"

#include <algorithm>
#include <array>

namespace pathscope {
namespace {

struct Name
{
    std::string_view text;
    Feature feature;
};

/** In lower case and with blanks between words, as comparable() makes them. */
constexpr Name kNames[] = {
    // PrusaSlicer and SuperSlicer
    {"perimeter", Feature::InnerWall},
    {"internal perimeter", Feature::InnerWall},
    {"external perimeter", Feature::OuterWall},
    {"overhang perimeter", Feature::Overhang},
    {"thin wall", Feature::OuterWall},
    {"internal infill", Feature::SparseInfill},
    {"solid infill", Feature::SolidInfill},
    {"top solid infill", Feature::TopSurface},
    {"ironing", Feature::Ironing},
    {"bridge infill", Feature::Bridge},
    {"internal bridge infill", Feature::Bridge},
    {"gap fill", Feature::GapFill},
    {"skirt", Feature::Skirt},
    {"skirt/brim", Feature::Skirt},
    {"support material", Feature::Support},
    {"support material interface", Feature::SupportInterface},
    {"wipe tower", Feature::PrimeTower},
    {"custom", Feature::Custom},
    // BambuStudio and OrcaSlicer
    {"outer wall", Feature::OuterWall},
    {"inner wall", Feature::InnerWall},
    {"overhang wall", Feature::Overhang},
    {"sparse infill", Feature::SparseInfill},
    {"internal solid infill", Feature::SolidInfill},
    {"floating vertical shell", Feature::SolidInfill},
    {"top surface", Feature::TopSurface},
    {"bottom surface", Feature::SolidInfill},
    {"bridge", Feature::Bridge},
    {"internal bridge", Feature::Bridge},
    {"gap infill", Feature::GapFill},
    {"brim", Feature::Brim},
    {"support", Feature::Support},
    {"support interface", Feature::SupportInterface},
    {"support transition", Feature::SupportInterface},
    {"prime tower", Feature::PrimeTower},
    // Cura and ideaMaker
    {"wall outer", Feature::OuterWall},
    {"wall inner", Feature::InnerWall},
    {"skin", Feature::SolidInfill},
    {"fill", Feature::SparseInfill},
    {"solid fill", Feature::SolidInfill},
    {"raft", Feature::Raft},
    // Simplify3D
    {"outer perimeter", Feature::OuterWall},
    {"inner perimeter", Feature::InnerWall},
    {"external single extrusion", Feature::OuterWall},
    {"internal single extrusion", Feature::InnerWall},
    {"single extrusion", Feature::GapFill},
    {"infill", Feature::SparseInfill},
    {"solid layer", Feature::SolidInfill},
    {"dense support", Feature::SupportInterface},
    {"prime pillar", Feature::PrimeTower},
    {"ooze shield", Feature::PrimeTower},
};

constexpr std::size_t kLongestName = 32;

char comparable(char c)
{
    if (c == '-' || c == '_')
        return ' ';
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

} // namespace

Feature featureFromName(std::string_view name)
{
    if (name.size() > kLongestName)
        return Feature::Unknown;
    std::array<char, kLongestName> buffer{};
    std::transform(name.begin(), name.end(), buffer.begin(), comparable);
    const std::string_view text(buffer.data(), name.size());
    for (const Name& known : kNames) {
        if (known.text == text)
            return known.feature;
    }
    return Feature::Unknown;
}

} // namespace pathscope

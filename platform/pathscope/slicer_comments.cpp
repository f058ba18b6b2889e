#include "pathscope/slicer_comments.h"

#include "pathscope/slicer_features.h"
#include "pathscope/toolpath_builder.h"

#include <algorithm>
#include <charconv>
#include <optional>

namespace pathscope {
namespace {

/** No width or height that a slicer tells is larger, in millimetres. */
constexpr double kLargestSize = 100;
constexpr double kLargestCoordinate = 1e6;
constexpr std::size_t kMostTools = 64;
constexpr std::size_t kLongestGenerator = 80;

bool isBlank(char c)
{
    return c == ' ' || c == '\t';
}

std::string_view trimmed(std::string_view text)
{
    while (!text.empty() && isBlank(text.front()))
        text.remove_prefix(1);
    while (!text.empty() && isBlank(text.back()))
        text.remove_suffix(1);
    return text;
}

bool takeWord(std::string_view* text, std::string_view word)
{
    if (text->substr(0, word.size()) != word)
        return false;
    *text = trimmed(text->substr(word.size()));
    return true;
}

std::optional<double> takeNumber(std::string_view* text)
{
    // "nan" and "inf" are numbers to from_chars.
    const bool isNumber = !text->empty() && (text->front() == '-' || text->front() == '.' ||
                                             (text->front() >= '0' && text->front() <= '9'));
    double value = 0;
    const auto result =
        std::from_chars(text->data(), text->data() + text->size(), value, std::chars_format::fixed);
    if (!isNumber || result.ec != std::errc() || !(std::abs(value) <= 1e15))
        return std::nullopt;
    *text = trimmed(text->substr(static_cast<std::size_t>(result.ptr - text->data())));
    return value;
}

std::optional<double> sizeIn(std::string_view text)
{
    const std::optional<double> size = takeNumber(&text);
    return size && *size >= 0 && *size <= kLargestSize ? size : std::nullopt;
}

std::optional<double> heightIn(std::string_view text)
{
    const std::optional<double> z = takeNumber(&text);
    return z && std::abs(*z) <= kLargestCoordinate ? z : std::nullopt;
}

/** "1d 2h 3m 4s", "1 hours 23 minutes" or a number of seconds. */
std::optional<double> secondsIn(std::string_view text)
{
    double seconds = 0;
    bool any = false;
    while (const std::optional<double> value = takeNumber(&text)) {
        const char unit = text.empty() ? 's' : text.front();
        const double factor = unit == 'd' ? 86400 : unit == 'h' ? 3600 : unit == 'm' ? 60 : 1;
        if (*value < 0 || (factor == 1 && unit != 's'))
            break;
        seconds += *value * factor;
        any = true;
        while (!text.empty() && text.front() >= 'a' && text.front() <= 'z')
            text.remove_prefix(1);
        text = trimmed(text);
    }
    return any ? std::optional<double>(seconds) : std::nullopt;
}

/** "7458.27, 11857.80" or "1.23m, 0.5m", in millimetres. */
std::vector<double> lengthsIn(std::string_view text)
{
    std::vector<double> lengths;
    while (const std::optional<double> value = takeNumber(&text)) {
        if (*value < 0 || lengths.size() == kMostTools)
            break;
        const bool isMillimetres = takeWord(&text, "mm") || !takeWord(&text, "m");
        lengths.push_back(isMillimetres ? *value : *value * 1000);
        if (!takeWord(&text, ","))
            break;
    }
    return lengths;
}

} // namespace

void SlicerComments::read(std::string_view comment)
{
    const std::string_view text = trimmed(comment);
    if (text.empty() || m_thumbnails.take(text))
        return;
    const char first = text.front();
    if (first >= 'A' && first <= 'Z')
        readMark(text);
    else
        readSentence(text);
}

/** "TYPE:Perimeter", "Z_HEIGHT: 0.4" */
void SlicerComments::readMark(std::string_view text)
{
    std::string_view rest = text;
    if (takeWord(&rest, "TYPE:") || takeWord(&rest, "FEATURE:")) {
        m_builder.setFeature(featureFromName(rest));
    } else if (takeWord(&rest, "WIDTH:") || takeWord(&rest, "LINE_WIDTH:")) {
        if (const std::optional<double> width = sizeIn(rest))
            m_builder.setWidth(*width);
    } else if (takeWord(&rest, "HEIGHT:") || takeWord(&rest, "LAYER_HEIGHT:")) {
        if (const std::optional<double> height = sizeIn(rest))
            m_builder.setHeight(*height);
    } else if (takeWord(&rest, "Z:") || takeWord(&rest, "Z_HEIGHT:")) {
        if (const std::optional<double> z = heightIn(rest))
            m_builder.setLayerZ(*z);
    } else if (takeWord(&rest, "LAYER_CHANGE") || takeWord(&rest, "CHANGE_LAYER")) {
        if (rest.empty())
            beginLayer(LayerMark::Change);
    } else if (takeWord(&rest, "LAYER:")) {
        if (takeNumber(&rest))
            beginLayer(LayerMark::Number);
    } else if (takeWord(&rest, "TIME:")) {
        if (const std::optional<double> seconds = secondsIn(rest))
            m_estimates.seconds = *seconds;
    } else if (takeWord(&rest, "Filament used:") || takeWord(&rest, "Filament length:")) {
        m_estimates.filament = lengthsIn(rest);
    } else if (takeWord(&rest, "Build time:") || takeWord(&rest, "Build Time:")) {
        if (const std::optional<double> seconds = secondsIn(rest))
            m_estimates.seconds = *seconds;
    } else {
        readGenerator(text);
    }
}

/** "layer 12, Z = 2.400", "feature outer perimeter", "filament used [mm] = 1734.84" */
void SlicerComments::readSentence(std::string_view text)
{
    std::string_view rest = text;
    if (takeWord(&rest, "filament used [mm] =") ||
        takeWord(&rest, "total filament length [mm] :")) {
        m_estimates.filament = lengthsIn(rest);
    } else if (takeWord(&rest, "estimated printing time (normal mode) =") ||
               takeWord(&rest, "estimated printing time =")) {
        if (const std::optional<double> seconds = secondsIn(rest))
            m_estimates.seconds = *seconds;
    } else if (takeWord(&rest, "model printing time:")) {
        const std::size_t total = rest.find("total estimated time:");
        if (total == std::string_view::npos)
            return;
        rest.remove_prefix(total);
        takeWord(&rest, "total estimated time:");
        if (const std::optional<double> seconds = secondsIn(rest))
            m_estimates.seconds = *seconds;
    } else if (takeWord(&rest, "feature ")) {
        m_builder.setFeature(featureFromName(rest));
    } else if (takeWord(&rest, "layer ")) {
        const bool hasHeight = takeNumber(&rest) && takeWord(&rest, ",") && takeWord(&rest, "Z") &&
                               takeWord(&rest, "=");
        const std::optional<double> z = hasHeight ? heightIn(rest) : std::nullopt;
        if (z && beginLayer(LayerMark::Sentence))
            m_builder.setLayerZ(*z);
    } else if (takeWord(&rest, "tool H")) {
        const std::optional<double> height = takeNumber(&rest);
        const std::optional<double> width = takeWord(&rest, "W") ? sizeIn(rest) : std::nullopt;
        if (width && height && *height >= 0 && *height <= kLargestSize) {
            m_builder.setHeight(*height);
            m_builder.setWidth(*width);
        }
    } else {
        readGenerator(text);
    }
}

/** "generated by PrusaSlicer 2.5.0 on 2026-11-21 at 07:24:54 UTC" */
void SlicerComments::readGenerator(std::string_view text)
{
    if (!m_generator.empty())
        return;
    std::string_view rest = text;
    const bool isNamed = takeWord(&rest, "generated by ") || takeWord(&rest, "Generated by ") ||
                         takeWord(&rest, "Generated with ") || takeWord(&rest, "Sliced by ") ||
                         takeWord(&rest, "G-Code generated by ");
    if (!isNamed && text.substr(0, 12) != "BambuStudio " && text.substr(0, 11) != "OrcaSlicer ")
        return;
    rest = trimmed(rest.substr(0, rest.find(" on ")));
    m_generator.assign(rest.substr(0, kLongestGenerator));
}

bool SlicerComments::beginLayer(LayerMark mark)
{
    if (m_mark != LayerMark::None && m_mark != mark)
        return false;
    m_mark = mark;
    m_builder.beginLayer();
    return true;
}

void SlicerComments::fill(Toolpaths* paths) const
{
    paths->generator = m_generator;
    paths->estimates = m_estimates;
    paths->thumbnails = m_thumbnails.thumbnails();
}

} // namespace pathscope

#include "pathscope/gcode_interpreter.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace pathscope {
namespace {

constexpr double kLargestCelsius = 2000;
/** Special numbers, such as 255 and 1000, unload or park and are no tools. */
constexpr double kLargestTool = 99;
constexpr double kLargestPercentage = 1000;
/**
 * A line of ten bytes can ask for thousands of chords. Real files have far fewer than one for two
 * bytes; beyond that arcs get as many as keep memory in proportion to the file.
 */
constexpr std::uint64_t kFreeChords = 1000000;
constexpr std::uint32_t kChordsWhenMany = 4;

} // namespace

void GCodeInterpreter::runCommand(char letter, double code, const Parameters& words,
                                  const char* begin, const char* end)
{
    // With a tenth, as in G92.1; codes that are not known do not concern the paths.
    const int tenths = code >= 0 && code < 10000 ? static_cast<int>(std::lround(code * 10)) : -1;
    if (letter == 'G') {
        switch (tenths) {
        case 0:
        case 10:
        case 20:
        case 30:
            runMove(tenths / 10, words, begin, end);
            break;
        case 100:
            if (words.has('P') && words.has('S'))
                setTemperature(words);
            else if (!words.has('L') && !words.has('P'))
                m_builder.firmwareRetract(true);
            break;
        case 110:
            m_builder.firmwareRetract(false);
            break;
        case 170:
            m_plane = ArcPlane::XY;
            break;
        case 180:
            m_plane = ArcPlane::ZX;
            break;
        case 190:
            m_plane = ArcPlane::YZ;
            break;
        case 200:
            m_unit = kMillimetresAnInch;
            break;
        case 210:
            m_unit = 1;
            break;
        case 280:
            home(words);
            break;
        case 900:
            m_isAbsolute = true;
            break;
        case 910:
            m_isAbsolute = false;
            break;
        case 920:
            setPlace(words);
            break;
        case 921:
            m_shift = Place();
            break;
        default:
            break;
        }
        return;
    }
    switch (tenths) {
    case 820:
        m_isExtruderAbsolute = true;
        break;
    case 830:
        m_isExtruderAbsolute = false;
        break;
    case 1040:
    case 1090:
        setTemperature(words);
        break;
    case 1060:
        setFan(words);
        break;
    case 1070:
        if (!words.has('P') || words['P'] <= 1)
            m_builder.setFan(0);
        break;
    case 2000:
        if (words.has('D'))
            m_extruderUnit = words['D'] > 0 ? 1 / m_filamentArea : 1;
        break;
    case 2200:
        setSpeedFactor(words);
        break;
    default:
        break;
    }
}

void GCodeInterpreter::runMove(int code, const Parameters& words, const char* begin,
                               const char* end)
{
    MoveWords move;
    for (const auto& [letter, word] : {std::pair('X', X), std::pair('Y', Y), std::pair('Z', Z),
                                       std::pair('E', E), std::pair('F', F)}) {
        if (words.has(letter)) {
            move.present |= 1U << word;
            move.values[word] = words[letter];
        }
    }
    const bool isUnderstood = !words.isBad && words.present == words.valued;
    if (isUnderstood && (code < 2 ? this->move(move) : arc(code, words, move)))
        return;
    ++m_skipped.badNumbers;
    skip(begin, end);
}

bool GCodeInterpreter::arc(int code, const Parameters& words, const MoveWords& move)
{
    Arc arc;
    arc.from = m_builder.place();
    arc.plane = m_plane;
    arc.clockwise = code == 2;
    if (!target(move, &arc.to))
        return false;
    bool isArc = false;
    if (words.has('R')) {
        isArc = arc.setRadius(words['R'] * m_unit);
    } else {
        arc.centre = arc.from;
        for (const auto& [letter, axis] :
             {std::pair('I', &Place::x), std::pair('J', &Place::y), std::pair('K', &Place::z)}) {
            if (words.has(letter))
                arc.centre.*axis += words[letter] * m_unit;
        }
        isArc = arc.isRound();
    }
    const double reach = isArc ? arc.radius() : 0;
    if (!isIn(std::abs(arc.centre.x) + reach, kLargestCoordinate) ||
        !isIn(std::abs(arc.centre.y) + reach, kLargestCoordinate) ||
        !isIn(std::abs(arc.centre.z) + reach, kLargestCoordinate))
        isArc = false;
    if (!isArc) {
        ++m_skipped.badArcs;
        return this->move(move);
    }
    takeFeed(move);
    drawArc(arc, takeFilament(move));
    return true;
}

void GCodeInterpreter::drawArc(const Arc& arc, double filament)
{
    std::uint32_t chords = arc.chordCount();
    m_arcChords += chords;
    if (m_arcChords > kFreeChords + m_bytes / 2)
        chords = std::min(chords, kChordsWhenMany);
    ArcWalk walk(arc, chords);
    for (std::uint32_t i = 0; i < chords; ++i)
        m_builder.moveTo(walk.next(), filament / chords);
}

void GCodeInterpreter::home(const Parameters& words)
{
    Place to = m_builder.place();
    const bool all = (words.present & (bit('X') | bit('Y') | bit('Z'))) == 0;
    for (const auto& [letter, axis] :
         {std::pair('X', &Place::x), std::pair('Y', &Place::y), std::pair('Z', &Place::z)}) {
        if (all || (words.present & bit(letter)) != 0) {
            to.*axis = 0;
            m_shift.*axis = 0;
        }
    }
    m_builder.moveTo(to, 0);
}

/** The present place counts as the given values from here on. */
void GCodeInterpreter::setPlace(const Parameters& words)
{
    const bool all = (words.present & (bit('X') | bit('Y') | bit('Z') | bit('E'))) == 0;
    for (const auto& [letter, axis] :
         {std::pair('X', &Place::x), std::pair('Y', &Place::y), std::pair('Z', &Place::z)}) {
        const double value = words.has(letter) ? words[letter] * m_unit : 0;
        if ((all || (words.present & bit(letter)) != 0) && isIn(value, kLargestCoordinate))
            m_shift.*axis = m_builder.place().*axis - value;
    }
    const double value = words.has('E') ? words['E'] * m_unit : 0;
    if ((all || (words.present & bit('E')) != 0) && isIn(value, kLargestFilament))
        m_extruder = value;
}

void GCodeInterpreter::setTemperature(const Parameters& words)
{
    const char letter = words.has('S') ? 'S' : 'R';
    if (!words.has(letter) || !isIn(words[letter], kLargestCelsius))
        return;
    const double number = words.has('T')   ? words['T']
                          : words.has('P') ? words['P']
                                           : m_builder.tool();
    if (!isIn(number, kLargestTool))
        return;
    const auto tool = static_cast<unsigned>(std::min(std::max(number, 0.0), kToolCount - 1.0));
    m_celsius[tool] = std::max(words[letter], 0.0);
    if (tool == m_builder.tool())
        m_builder.setCelsius(m_celsius[tool]);
}

void GCodeInterpreter::setFan(const Parameters& words)
{
    // Fans from the third on cool something else than the print.
    if (words.has('P') && words['P'] > 1)
        return;
    const double value = words.has('S') ? words['S'] : 255;
    if (!isIn(value, 255) || value < 0)
        return;
    // Some firmwares count to 255, some to 1.
    m_builder.setFan(value > 1 ? value / 255 : value);
}

/** Of all moves, from here on; B keeps the factor that holds now, R takes the kept one again. */
void GCodeInterpreter::setSpeedFactor(const Parameters& words)
{
    if ((words.present & bit('B')) != 0)
        m_keptSpeedFactor = m_speedFactor;
    if ((words.present & bit('R')) != 0)
        m_speedFactor = m_keptSpeedFactor;
    if (words.has('S') && words['S'] > 0 && words['S'] <= kLargestPercentage)
        m_speedFactor = words['S'] / 100;
    m_builder.setSpeed(m_feed * m_speedFactor);
}

void GCodeInterpreter::selectTool(double number)
{
    if (!(number >= 0 && number <= kLargestTool))
        return;
    const auto tool = static_cast<unsigned>(std::min(number, kToolCount - 1.0));
    if (tool != m_builder.tool())
        m_builder.changeTool(tool, m_celsius[tool]);
}

} // namespace pathscope

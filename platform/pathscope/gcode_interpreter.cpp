#include "pathscope/gcode_interpreter.h"

#include <algorithm>
#include <cmath>

namespace pathscope {
namespace {

constexpr double kPi = 3.14159265358979323846;
constexpr double kMillimetresAnInch = 25.4;
/** What lies farther out is a mistake, and float has no tenths of a millimetre there. */
constexpr double kLargestCoordinate = 1e6;
constexpr double kLargestFilament = 1e9;
/** Millimetres a minute. */
constexpr double kLargestFeed = 1e7;
constexpr double kLargestCelsius = 2000;
/** Special numbers, such as 255 and 1000, unload or park and are no tools. */
constexpr double kLargestTool = 99;
constexpr std::size_t kMostExamples = 5;
constexpr std::size_t kExampleBytes = 80;
/**
 * A line of ten bytes can ask for thousands of chords. Real files have far fewer than one for two
 * bytes; beyond that arcs get as many as keep memory in proportion to the file.
 */
constexpr std::uint64_t kFreeChords = 1000000;
constexpr std::uint32_t kChordsWhenMany = 4;

bool isLineEnd(char c)
{
    return c == '\n' || c == '\r';
}

const char* findLineEnd(const char* p, const char* end)
{
    constexpr std::uint64_t kOnes = 0x0101010101010101U;
    constexpr std::uint64_t kHighs = 0x8080808080808080U;
    for (; end - p >= 8; p += 8) {
        std::uint64_t word = 0;
        std::memcpy(&word, p, sizeof word);
        const std::uint64_t lf = word ^ (kOnes * '\n');
        const std::uint64_t cr = word ^ (kOnes * '\r');
        if (((((lf - kOnes) & ~lf) | ((cr - kOnes) & ~cr)) & kHighs) != 0)
            break;
    }
    while (p < end && !isLineEnd(*p))
        ++p;
    return p;
}

bool isIn(double value, double limit)
{
    return value >= -limit && value <= limit;
}

bool isLetter(char c)
{
    const char upper = static_cast<char>(c & ~0x20);
    return upper >= 'A' && upper <= 'Z';
}

/** "START_PRINT BED=60", "PAUSE": a macro of a firmware's own. */
bool isMacro(const char* begin, const char* end)
{
    const char* p = begin;
    bool isUpper = true;
    bool hasUnderscore = false;
    for (; p < end && (isLetter(*p) || number::isDigit(*p) || *p == '_'); ++p) {
        isUpper = isUpper && (*p < 'a' || *p > 'z');
        hasUnderscore = hasUnderscore || *p == '_';
        if (p - begin < 2 && number::isDigit(*p))
            return false;
    }
    const bool ends = p == end || *p == ' ' || *p == '\t' || *p == ';';
    return ends && p - begin >= 3 && (isUpper || hasUnderscore);
}

} // namespace

GCodeInterpreter::GCodeInterpreter(double filamentDiameter)
    : m_builder(filamentDiameter)
    , m_comments(m_builder)
    , m_filamentArea(kPi / 4 * filamentDiameter * filamentDiameter)
{}

/** False, and nothing has happened, when a number makes no sense. */
PATHSCOPE_INLINE bool GCodeInterpreter::move(const MoveWords& words)
{
    Place to;
    if (!target(words, &to))
        return false;
    if (words.has(F) && words.values[F] > 0)
        m_builder.setSpeed(std::min(words.values[F] * m_unit, kLargestFeed) / 60);
    m_builder.moveTo(to, takeFilament(words));
    return true;
}

PATHSCOPE_INLINE bool GCodeInterpreter::target(const MoveWords& words, Place* to) const
{
    *to = m_builder.place();
    const Place from = m_isAbsolute ? m_shift : *to;
    if (words.has(X))
        to->x = from.x + words.values[X] * m_unit;
    if (words.has(Y))
        to->y = from.y + words.values[Y] * m_unit;
    if (words.has(Z))
        to->z = from.z + words.values[Z] * m_unit;
    return isIn(to->x, kLargestCoordinate) && isIn(to->y, kLargestCoordinate) &&
           isIn(to->z, kLargestCoordinate) &&
           (!words.has(E) || isIn(words.values[E], kLargestFilament)) &&
           (!words.has(F) || isIn(words.values[F], std::numeric_limits<double>::max()));
}

/** Moves the extruder; millimetres of filament. */
PATHSCOPE_INLINE double GCodeInterpreter::takeFilament(const MoveWords& words)
{
    if (!words.has(E))
        return 0;
    const double value = words.values[E] * m_unit;
    if (!m_isAbsolute || !m_isExtruderAbsolute) {
        m_extruder += value;
        return value * m_extruderUnit;
    }
    const double pushed = value - m_extruder;
    m_extruder = value;
    return pushed * m_extruderUnit;
}

const char* GCodeInterpreter::read(const char* begin, char* end, bool isLast)
{
    if (isLast)
        *end = '\n';
    const char* line = begin;
    while (line < end) {
        if (!m_isInLongLine) {
            if (const char* const next = readFastMove(line, end)) {
                line = next;
                ++m_lineNumber;
                continue;
            }
        }
        const char* const lineEnd = findLineEnd(line, end);
        const bool isCut = lineEnd == end || (*lineEnd == '\r' && lineEnd + 1 == end);
        if (isCut && !isLast) {
            const bool isLong = static_cast<std::size_t>(lineEnd - line) > kLongestLine;
            if (isLong && !m_isInLongLine) {
                ++m_lineNumber;
                readLine(line, lineEnd);
                m_isInLongLine = true;
            }
            if (m_isInLongLine)
                line = lineEnd;
            break;
        }
        if (!m_isInLongLine) {
            ++m_lineNumber;
            m_bytes = m_bytesBefore + static_cast<std::uint64_t>(lineEnd - begin);
            readLine(line, lineEnd);
        }
        m_isInLongLine = false;
        line = lineEnd + 1;
        if (*lineEnd == '\r' && *line == '\n' && line < end)
            ++line;
    }
    line = std::min<const char*>(line, end);
    m_bytesBefore += static_cast<std::uint64_t>(line - begin);
    return line;
}

GCodeInterpreter::MoveWord GCodeInterpreter::moveWordOf(char letter)
{
    switch (letter) {
    case 'X':
        return X;
    case 'Y':
        return Y;
    case 'Z':
        return Z;
    case 'E':
        return E;
    case 'F':
        return F;
    default:
        return NoMoveWord;
    }
}

/** Takes the word, and a blank behind it, if it is the next one; false when its number is none. */
PATHSCOPE_INLINE const char* GCodeInterpreter::take(const char* text, MoveWord word,
                                                    MoveWords* words)
{
    const char* const end = readNumber(text + 1, &words->values[word]);
    if (end == nullptr)
        return nullptr;
    words->present |= 1U << word;
    return *end == ' ' ? end + 1 : end;
}

/**
 * The commonest line by far, "G1 X179.217 Y118.916 E2.00295", in one pass over its bytes.
 *
 * @return the next line; null for anything that readLine() has to look at
 */
const char* GCodeInterpreter::readFastMove(const char* line, const char* end)
{
    if (line[0] != 'G' || (line[1] != '1' && line[1] != '0'))
        return nullptr;
    const char* p = line + 2;
    if (*p == ' ')
        ++p;
    MoveWords words;
    // In the order in which slicers write them, then in any other.
    if (*p == 'X' && (p = take(p, X, &words)) == nullptr)
        return nullptr;
    if (*p == 'Y' && (p = take(p, Y, &words)) == nullptr)
        return nullptr;
    if (*p == 'Z' && (p = take(p, Z, &words)) == nullptr)
        return nullptr;
    if (*p == 'E' && (p = take(p, E, &words)) == nullptr)
        return nullptr;
    if (*p == 'F' && (p = take(p, F, &words)) == nullptr)
        return nullptr;
    while (*p > ';') {
        const MoveWord word = moveWordOf(*p);
        if (word == NoMoveWord || words.has(word))
            return nullptr;
        p = take(p, word, &words);
        if (p == nullptr)
            return nullptr;
    }
    if (*p == ';') {
        p = findLineEnd(p, end);
        if (p == end || static_cast<std::size_t>(p - line) > kLongestLine)
            return nullptr;
    }
    if (*p == '\r')
        ++p;
    if (*p != '\n' || !move(words))
        return nullptr;
    return p + 1;
}

void GCodeInterpreter::readLine(const char* begin, const char* end)
{
    while (begin < end && (*begin == ' ' || *begin == '\t'))
        ++begin;
    if (begin == end)
        return;
    if (*begin == ';') {
        if (static_cast<std::size_t>(end - begin) <= kLongestLine)
            m_comments.read({begin + 1, static_cast<std::size_t>(end - begin - 1)});
        return;
    }
    if (static_cast<std::size_t>(end - begin) > kLongestLine) {
        skip(begin, end);
        return;
    }
    if (isMacro(begin, end))
        return;
    GCodeWords words(begin, end);
    runWords(words, begin, end);
}

void GCodeInterpreter::runWords(GCodeWords& words, const char* begin, const char* end)
{
    using Result = GCodeWords::Result;
    Result result = words.next();
    if (result == Result::Word && words.letter() == 'N' && words.hasValue())
        result = words.next();
    while (result != Result::End) {
        const char letter = words.letter();
        const bool isCommand = letter == 'G' || letter == 'M' || letter == 'T';
        if (result == Result::Bad || !isCommand) {
            skip(begin, end);
            return;
        }
        if (!words.hasValue()) {
            // "Tx", "Tc" and "T?" ask the machine for a tool.
            if (letter != 'T')
                skip(begin, end);
            return;
        }
        const double code = words.value();
        if (letter == 'T') {
            selectTool(code);
            return;
        }
        Parameters parameters;
        while ((result = words.next()) == Result::Word) {
            if (words.letter() == 'G' || words.letter() == 'M')
                break;
            const auto index = static_cast<std::size_t>(words.letter() - 'A');
            parameters.present |= 1U << index;
            parameters.valued &= ~(1U << index);
            if (words.hasValue()) {
                parameters.valued |= 1U << index;
                parameters.values[index] = words.value();
            }
        }
        parameters.isBad = result == Result::Bad;
        runCommand(letter, code, parameters, begin, end);
        if (parameters.isBad)
            return;
    }
}

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
    if (move.has(F) && move.values[F] > 0)
        m_builder.setSpeed(std::min(move.values[F] * m_unit, kLargestFeed) / 60);
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

void GCodeInterpreter::selectTool(double number)
{
    if (!(number >= 0 && number <= kLargestTool))
        return;
    const auto tool = static_cast<unsigned>(std::min(number, kToolCount - 1.0));
    if (tool != m_builder.tool())
        m_builder.changeTool(tool, m_celsius[tool]);
}

void GCodeInterpreter::skip(const char* begin, const char* end)
{
    ++m_skipped.lines;
    if (m_skipped.examples.size() == kMostExamples)
        return;
    const std::size_t bytes = std::min(static_cast<std::size_t>(end - begin), kExampleBytes);
    m_skipped.examples.emplace_back(m_lineNumber, std::string(begin, bytes));
}

std::shared_ptr<Toolpaths> GCodeInterpreter::snapshot()
{
    std::shared_ptr<Toolpaths> paths = m_builder.snapshot();
    m_comments.fill(paths.get());
    paths->skipped = m_skipped;
    return paths;
}

} // namespace pathscope

#include "pathscope/gcode_interpreter.h"

#include <algorithm>
#include <cmath>

namespace pathscope {
namespace {

constexpr double kPi = 3.14159265358979323846;
constexpr std::size_t kMostExamples = 5;
constexpr std::size_t kExampleBytes = 80;
constexpr int kLongestLineNumber = 12;

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
    const char* p = line;
    if (*p == 'N') {
        // Without a digit it is no line number.
        if (!number::isDigit(*++p))
            return nullptr;
        while (number::isDigit(*p) && p - line < kLongestLineNumber)
            ++p;
        p += static_cast<int>(*p == ' ');
    }
    if (p[0] != 'G' || (p[1] != '1' && p[1] != '0'))
        return nullptr;
    p += 2;
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
    if (*p == ';' || *p == '*') {
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

#pragma once

#include "pathscope/gcode_arc.h"
#include "pathscope/gcode_words.h"
#include "pathscope/slicer_comments.h"
#include "pathscope/toolpath_builder.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <limits>

namespace pathscope {

/**
 * Does in numbers what a machine does with lines of G-code.
 *
 * docs/formats/toolpath_comments.md says which codes mean what.
 */
class GCodeInterpreter
{
public:
    /** A longer line is skipped without a look at its words. */
    static constexpr std::size_t kLongestLine = 65536;

    explicit GCodeInterpreter(double filamentDiameter);

    /**
     * Takes all lines that are complete.
     *
     * @param end    followed by kNumberPadding bytes of zero
     * @param isLast whether the text ends here; a line end behind the last line is not needed then,
     *               but one byte of the padding is overwritten to be one
     * @return where the first line begins that is not complete
     */
    const char* read(const char* begin, char* end, bool isLast);

    std::shared_ptr<Toolpaths> snapshot();

private:
    static constexpr double kMillimetresAnInch = 25.4;
    /** What lies farther out is a mistake, and a float there hardly tells tenths. */
    static constexpr double kLargestCoordinate = 1e6;
    static constexpr double kLargestFilament = 1e9;
    /** Millimetres a minute; what is slower would take longer than can be counted. */
    static constexpr double kLargestFeed = 1e7;
    static constexpr double kSmallestFeed = 0.001;

    static bool isIn(double value, double limit) { return value >= -limit && value <= limit; }
    static constexpr unsigned bit(char letter) { return 1U << (letter - 'A'); }

    /** The words of one command; letters as bits. */
    struct Parameters
    {
        unsigned present = 0;
        unsigned valued = 0;
        bool isBad = false;
        std::array<double, 26> values{};

        bool has(char letter) const { return (valued & bit(letter)) != 0; }
        double operator[](char letter) const
        {
            return values[static_cast<std::size_t>(letter - 'A')];
        }
    };

    /** Words of a straight move, as the fast way finds them. */
    enum MoveWord : unsigned { X, Y, Z, E, F, kMoveWordCount, NoMoveWord = 255 };
    struct MoveWords
    {
        unsigned present = 0;
        std::array<double, kMoveWordCount> values{};

        bool has(MoveWord word) const { return (present & (1U << word)) != 0; }
    };

    const char* readFastMove(const char* line, const char* end);
    static MoveWord moveWordOf(char letter);
    static const char* take(const char* text, MoveWord word, MoveWords* words);

    PATHSCOPE_INLINE bool target(const MoveWords& words, Place* to) const
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
    PATHSCOPE_INLINE double takeFilament(const MoveWords& words)
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

    PATHSCOPE_INLINE void takeFeed(const MoveWords& words)
    {
        const double feed = words.has(F) ? words.values[F] * m_unit : 0;
        if (!(feed >= kSmallestFeed))
            return;
        m_feed = std::min(feed, kLargestFeed) / 60;
        m_builder.setSpeed(m_feed * m_speedFactor);
    }

    /** False, and nothing has happened, when a number makes no sense. */
    PATHSCOPE_INLINE bool move(const MoveWords& words)
    {
        Place to;
        if (!target(words, &to))
            return false;
        takeFeed(words);
        m_builder.moveTo(to, takeFilament(words));
        return true;
    }

    void readLine(const char* begin, const char* end);
    void runWords(GCodeWords& words, const char* begin, const char* end);
    void runCommand(char letter, double code, const Parameters& words, const char* begin,
                    const char* end);
    void runMove(int code, const Parameters& words, const char* begin, const char* end);
    bool arc(int code, const Parameters& words, const MoveWords& move);
    void drawArc(const Arc& arc, double filament);
    void home(const Parameters& words);
    void setPlace(const Parameters& words);
    void setTemperature(const Parameters& words);
    void setFan(const Parameters& words);
    void setSpeedFactor(const Parameters& words);
    void selectTool(double number);
    void skip(const char* begin, const char* end);

    ToolpathBuilder m_builder;
    SlicerComments m_comments;
    Skipped m_skipped;
    std::uint64_t m_lineNumber = 0;
    /** Taken by read() before, and up to the end of the present line. */
    std::uint64_t m_bytesBefore = 0;
    std::uint64_t m_bytes = 0;
    std::uint64_t m_arcChords = 0;
    bool m_isInLongLine = false;

    /** Where the program's zero lies. */
    Place m_shift;
    double m_extruder = 0;
    double m_unit = 1;
    bool m_isAbsolute = true;
    bool m_isExtruderAbsolute = true;
    const double m_filamentArea;
    /** Millimetres of filament for one of E: less than one where E counts cubic millimetres. */
    double m_extruderUnit = 1;
    ArcPlane m_plane = ArcPlane::XY;
    /** Millimetres a second, as the file tells them. */
    double m_feed = ToolpathBuilder::kDefaultSpeed;
    double m_speedFactor = 1;
    double m_keptSpeedFactor = 1;
    std::array<double, kToolCount> m_celsius{};
};

} // namespace pathscope

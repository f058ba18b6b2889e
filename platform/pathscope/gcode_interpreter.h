#pragma once

#include "pathscope/gcode_arc.h"
#include "pathscope/gcode_words.h"
#include "pathscope/slicer_comments.h"
#include "pathscope/toolpath_builder.h"

#include <array>
#include <cstdint>

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
        double values[kMoveWordCount];

        bool has(MoveWord word) const { return (present & (1U << word)) != 0; }
    };

    const char* readFastMove(const char* line, const char* end);
    static MoveWord moveWordOf(char letter);
    static const char* take(const char* text, MoveWord word, MoveWords* words);
    bool move(const MoveWords& words);
    bool target(const MoveWords& words, Place* to) const;
    double takeFilament(const MoveWords& words);

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
    std::array<double, kToolCount> m_celsius{};
};

} // namespace pathscope

#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace trovek::service {

/**
 * Where bytes come from: writes up to `size` of them to `buffer` and returns how many; 0 is the
 * end. Throws std::runtime_error when reading fails.
 */
using ByteSource = std::function<std::size_t(char* buffer, std::size_t size)>;

/** The bytes of a text; the source keeps the text. */
ByteSource byteSourceOf(std::string text);

/** One line of G-code, taken apart. */
class GCodeLine
{
public:
    enum Kind {
        /** Nothing but blanks and comments. */
        Empty,
        /** A command word and its parameters. */
        Command,
        /** Anything else. */
        Unreadable,
    };

    Kind kind() const { return m_kind; }
    /** From 1; CR, LF and CR LF each end a line. */
    std::uint64_t number() const { return m_number; }
    /** 'G', 'M' or 'T'. */
    char letter() const { return m_letter; }
    int code() const { return m_code; }
    /** The digit after the dot ("G92.1"); 0 without one. */
    int subcode() const { return m_subcode; }
    /** As a user knows it, for example "G1" or "G92.1", whatever leading zeros the file had. */
    std::string name() const;

    /** Whether a parameter is there; upper-case letters. */
    bool has(char letter) const { return (m_present & bit(letter)) != 0; }
    /** Whether it has a number; "G28 X" has none. */
    bool hasValue(char letter) const { return (m_valued & bit(letter)) != 0; }
    /** Finite and within +-1e9; 0 when there is none. */
    double value(char letter) const { return m_values[static_cast<std::size_t>(letter - 'A')]; }
    /** Whether all parameters are among these letters. */
    bool hasOnly(std::string_view letters) const;

    /** What stands behind the command up to a semicolon, blanks at its ends removed; until the next
     * line is read. */
    std::string_view text() const { return m_text; }

private:
    friend class GCodeReader;
    static std::uint32_t bit(char letter) { return 1u << (letter - 'A'); }

    Kind m_kind = Empty;
    char m_letter = 0;
    int m_code = 0;
    int m_subcode = 0;
    std::uint32_t m_present = 0;
    std::uint32_t m_valued = 0;
    std::uint64_t m_number = 0;
    std::array<double, 26> m_values{};
    std::string_view m_text;
};

/**
 * Reads G-code line by line, from a source of any length and any content, in constant memory.
 *
 * Line numbers ("N10") are skipped, checksums ("*71") checked; comments are what follows a
 * semicolon and what stands in parentheses. Letters may be lower case. A line is unreadable when a
 * word is not a letter with at most one plain decimal number (no exponent, "nan" or "inf"; within
 * +-1e9), when a letter comes twice, when it begins with another letter than G, M or T or holds two
 * commands, or when it is longer than kMaximumLineBytes outside a comment.
 */
class GCodeReader
{
public:
    static constexpr std::size_t kMaximumLineBytes = 4096;

    explicit GCodeReader(ByteSource source);

    /** @return false at the end, without touching `line` */
    bool next(GCodeLine& line);
    std::uint64_t bytesRead() const { return m_bytesRead; }

private:
    bool fill();
    bool readLine();
    void parse(GCodeLine& line) const;

    ByteSource m_source;
    std::vector<char> m_buffer;
    std::size_t m_begin = 0;
    std::size_t m_end = 0;
    std::uint64_t m_bytesRead = 0;
    std::uint64_t m_lines = 0;
    bool m_afterCarriageReturn = false;
    /** Set when the bytes of a line did not stand in the buffer in one piece. */
    std::string m_pieced;
    std::string_view m_line;
    bool m_cut = false;
};

} // namespace trovek::service

#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace trovek::geometry {

/**
 * The words of a text file, between blanks and line ends; CR, LF and CR LF each end a line.
 * What is asked of a word throws FileFormatError with the number of its line.
 */
class TextWords
{
public:
    /**
     * @param text is kept by the caller
     * @param firstLine the number of the text's first line in its file
     * @throws FileFormatError when there is a zero byte in it: that is no text
     */
    explicit TextWords(std::string_view text, std::size_t firstLine = 1);

    /** Empty at the end of the text. */
    std::string_view next();
    /** Empty at the end of the line. */
    std::string_view nextInLine();
    /** Leaves the rest of the line out. @return false at the end of the text */
    bool nextLine();

    /** From 1; that of the word that came last. */
    std::size_t line() const { return m_line; }
    std::size_t bytesRead() const { return m_position; }

    /** A number up to kFarthestCoordinate. */
    double coordinate(std::string_view word) const;
    /** Any number, as normals and colors have. */
    double number(std::string_view word) const;
    std::int64_t integer(std::string_view word) const;

    /** @throws FileFormatError "Line 12: " and what is wrong */
    [[noreturn]] void fail(const std::string& wrong) const;

private:
    void skipBlanks();
    bool endLine();

    std::string_view m_text;
    std::size_t m_position = 0;
    std::size_t m_line;
};

/** A word in quotes, cut and with what cannot be printed replaced. */
std::string quoted(std::string_view word);

/** ASCII letters only, whatever the locale. */
std::string lowerCase(std::string_view text);

} // namespace trovek::geometry

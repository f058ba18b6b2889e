#include "text_words.h"

#include "geometry_error.h"
#include "reach.h"

#include <charconv>
#include <cmath>
#include <system_error>

namespace trovek::geometry {

namespace {

constexpr std::size_t kQuotedBytes = 40;

bool isBlank(char character)
{
    return character == ' ' || character == '\t' || character == '\v' || character == '\f';
}

bool isLineEnd(char character)
{
    return character == '\n' || character == '\r';
}

template <typename Number>
std::from_chars_result parse(std::string_view word, Number& number)
{
    // Written by many programs, but not read by the library.
    if (word.size() > 1 && word.front() == '+' && word[1] != '-')
        word.remove_prefix(1);
    std::from_chars_result result = std::from_chars(word.data(), word.data() + word.size(), number);
    if (result.ptr != word.data() + word.size())
        result.ec = std::errc::invalid_argument;
    return result;
}

} // namespace

TextWords::TextWords(std::string_view text, std::size_t firstLine)
    : m_text(text)
    , m_line(firstLine)
{
    if (text.find('\0') != std::string_view::npos)
        throw FileFormatError("The file is no text");
}

std::string_view TextWords::next()
{
    for (;;) {
        const std::string_view word = nextInLine();
        if (!word.empty() || !endLine())
            return word;
    }
}

std::string_view TextWords::nextInLine()
{
    skipBlanks();
    const std::size_t begin = m_position;
    while (m_position < m_text.size() && !isBlank(m_text[m_position]) &&
           !isLineEnd(m_text[m_position]))
        ++m_position;
    return m_text.substr(begin, m_position - begin);
}

bool TextWords::nextLine()
{
    const std::size_t end = m_text.find_first_of("\r\n", m_position);
    m_position = end == std::string_view::npos ? m_text.size() : end;
    return endLine() && m_position < m_text.size();
}

void TextWords::skipBlanks()
{
    while (m_position < m_text.size() && isBlank(m_text[m_position]))
        ++m_position;
}

bool TextWords::endLine()
{
    if (m_position >= m_text.size())
        return false;
    const bool isReturn = m_text[m_position++] == '\r';
    if (isReturn && m_position < m_text.size() && m_text[m_position] == '\n')
        ++m_position;
    ++m_line;
    return true;
}

double TextWords::number(std::string_view word) const
{
    double number = 0;
    const std::from_chars_result result = parse(word, number);
    // Nearer to zero than any number is zero; farther out there is none.
    if (result.ec == std::errc::result_out_of_range &&
        lowerCase(word).find("e-") != std::string::npos)
        return 0;
    if (word.empty())
        fail("a number is missing");
    if (result.ec == std::errc::invalid_argument)
        fail(quoted(word) + " is no number");
    if (result.ec != std::errc() || !std::isfinite(number))
        fail(quoted(word) + " is no number that can be used");
    return number;
}

double TextWords::coordinate(std::string_view word) const
{
    const double value = number(word);
    if (std::abs(value) > kFarthestCoordinate)
        fail(quoted(word) + " lies too far out");
    return value;
}

std::int64_t TextWords::integer(std::string_view word) const
{
    std::int64_t integer = 0;
    if (word.empty())
        fail("a number is missing");
    if (parse(word, integer).ec != std::errc())
        fail(quoted(word) + " is no whole number");
    return integer;
}

void TextWords::fail(const std::string& wrong) const
{
    throw FileFormatError("Line " + std::to_string(m_line) + ": " + wrong);
}

std::string quoted(std::string_view word)
{
    std::string text = "\"";
    for (const char character : word.substr(0, kQuotedBytes))
        text += character >= ' ' && character <= '~' ? character : '?';
    return text + (word.size() > kQuotedBytes ? "...\"" : "\"");
}

std::string lowerCase(std::string_view text)
{
    std::string result(text);
    for (char& character : result) {
        if (character >= 'A' && character <= 'Z')
            character = char(character - 'A' + 'a');
    }
    return result;
}

} // namespace trovek::geometry

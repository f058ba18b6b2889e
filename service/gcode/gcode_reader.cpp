#include "gcode_reader.h"

#include <algorithm>
#include <charconv>
#include <cstring>

namespace trovek::service {

namespace {

constexpr std::size_t kBufferBytes = 64 * 1024;
constexpr double kLargestNumber = 1e9;
constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
constexpr int kLargestCode = 99999;

bool isBlank(char c)
{
    return c == ' ' || c == '\t';
}

bool beginsNumber(char c)
{
    return (c >= '0' && c <= '9') || c == '-' || c == '+' || c == '.';
}

char upper(char c)
{
    return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
}

std::string_view withoutComment(std::string_view text)
{
    return text.substr(0, text.find(';'));
}

std::string_view trimmed(std::string_view text)
{
    while (!text.empty() && isBlank(text.front()))
        text.remove_prefix(1);
    while (!text.empty() && isBlank(text.back()))
        text.remove_suffix(1);
    return text;
}

/** Walks over the words of a line and skips blanks and comments. */
class WordScanner
{
public:
    explicit WordScanner(std::string_view text)
        : m_at(text.data())
        , m_end(text.data() + text.size())
    {}

    /** @return whether anything is left */
    bool skipToWord()
    {
        while (m_at != m_end) {
            if (isBlank(*m_at)) {
                ++m_at;
            } else if (*m_at == '(') {
                const void* close = std::memchr(m_at, ')', static_cast<std::size_t>(m_end - m_at));
                m_at = close ? static_cast<const char*>(close) + 1 : m_end;
            } else if (*m_at == ';') {
                m_at = m_end;
                m_inComment = true;
            } else {
                return true;
            }
        }
        return false;
    }

    /** @return 0 when there is no letter */
    char letter()
    {
        const char c = upper(*m_at);
        if (c < 'A' || c > 'Z')
            return 0;
        ++m_at;
        return c;
    }

    bool atNumber()
    {
        while (m_at != m_end && isBlank(*m_at))
            ++m_at;
        return m_at != m_end && beginsNumber(*m_at);
    }

    bool number(double& value)
    {
        // from_chars knows no plus sign, and would take "+-1" after a skipped one.
        if (*m_at == '+' && (++m_at == m_end || *m_at == '-'))
            return false;
        const auto result = std::from_chars(m_at, m_end, value, std::chars_format::fixed);
        // "-inf" and "-nan" are numbers to from_chars; the comparison is false for both.
        if (result.ec != std::errc() || !(value >= -kLargestNumber && value <= kLargestNumber))
            return false;
        m_at = result.ptr;
        return true;
    }

    bool integer(int& value)
    {
        const auto result = std::from_chars(m_at, m_end, value);
        if (result.ec != std::errc() || value < 0 || value > kLargestCode)
            return false;
        m_at = result.ptr;
        return true;
    }

    bool skip(char c)
    {
        if (m_at == m_end || *m_at != c)
            return false;
        ++m_at;
        return true;
    }

    std::string_view rest() const
    {
        return std::string_view(m_at, static_cast<std::size_t>(m_end - m_at));
    }

    /** Whether the last comment reaches to the end of the line, however long that is. */
    bool inComment() const { return m_inComment; }

private:
    const char* m_at;
    const char* m_end;
    bool m_inComment = false;
};

/** Takes "*71" from the end of a line; false when the sum is wrong. */
bool takeChecksum(std::string_view& text)
{
    const std::size_t star = text.rfind('*');
    if (star == std::string_view::npos)
        return true;
    const std::string_view digits = trimmed(text.substr(star + 1));
    int expected = -1;
    const auto result = std::from_chars(digits.data(), digits.data() + digits.size(), expected);
    if (result.ec != std::errc() || result.ptr != digits.data() + digits.size())
        return false;
    int sum = 0;
    for (char c : text.substr(0, star))
        sum ^= static_cast<unsigned char>(c);
    text = text.substr(0, star);
    return sum == expected;
}

} // namespace

ByteSource byteSourceOf(std::string text)
{
    return [text = std::move(text), at = std::size_t(0)](char* buffer, std::size_t size) mutable {
        const std::size_t count = std::min(size, text.size() - at);
        std::memcpy(buffer, text.data() + at, count);
        at += count;
        return count;
    };
}

std::string GCodeLine::name() const
{
    std::string text = m_letter + std::to_string(m_code);
    if (m_subcode != 0)
        text += '.' + std::to_string(m_subcode);
    return text;
}

bool GCodeLine::hasOnly(std::string_view letters) const
{
    std::uint32_t allowed = 0;
    for (char letter : letters)
        allowed |= bit(letter);
    return (m_present & ~allowed) == 0;
}

GCodeReader::GCodeReader(ByteSource source)
    : m_source(std::move(source))
    , m_buffer(kBufferBytes)
{}

bool GCodeReader::next(GCodeLine& line)
{
    if (!readLine())
        return false;
    line.m_number = ++m_lines;
    parse(line);
    return true;
}

bool GCodeReader::fill()
{
    m_begin = 0;
    m_end = m_source(m_buffer.data(), m_buffer.size());
    m_bytesRead += m_end;
    return m_end > 0;
}

bool GCodeReader::readLine()
{
    m_pieced.clear();
    m_cut = false;
    bool begun = false;
    for (;;) {
        if (m_begin == m_end && !fill()) {
            m_line = m_pieced;
            return begun;
        }
        if (m_afterCarriageReturn) {
            m_afterCarriageReturn = false;
            if (m_buffer[m_begin] == '\n') {
                ++m_begin;
                continue;
            }
        }
        begun = true;
        const char* from = m_buffer.data() + m_begin;
        const char* to = m_buffer.data() + m_end;
        const char* stop = std::find_if(from, to, [](char c) { return c == '\n' || c == '\r'; });
        const bool ended = stop != to;
        m_afterCarriageReturn = ended && *stop == '\r';
        const auto length = static_cast<std::size_t>(stop - from);
        m_begin += length + (ended ? 1 : 0);
        const std::size_t kept = std::min(length, kMaximumLineBytes - m_pieced.size());
        m_cut = m_cut || kept < length;
        if (ended && m_pieced.empty()) {
            m_line = std::string_view(from, kept);
            return true;
        }
        m_pieced.append(from, kept);
        if (ended) {
            m_line = m_pieced;
            return true;
        }
    }
}

void GCodeReader::parse(GCodeLine& line) const
{
    line.m_kind = GCodeLine::Unreadable;
    line.m_letter = 0;
    line.m_code = 0;
    line.m_subcode = 0;
    line.m_present = 0;
    line.m_valued = 0;
    line.m_values.fill(0);
    line.m_text = {};

    std::string_view text = m_line;
    if (line.m_number == 1 && text.substr(0, kByteOrderMark.size()) == kByteOrderMark)
        text.remove_prefix(kByteOrderMark.size());
    WordScanner words(text);
    if (!words.skipToWord()) {
        if (!m_cut || words.inComment())
            line.m_kind = GCodeLine::Empty;
        return;
    }
    char letter = words.letter();
    if (letter == 'N') {
        // Only lines that were numbered for a cable carry a checksum.
        text = withoutComment(text);
        if (m_cut || !takeChecksum(text))
            return;
        words = WordScanner(text);
        words.skipToWord();
        words.letter();
        int ignored = 0;
        if (!words.atNumber() || !words.integer(ignored) || !words.skipToWord())
            return;
        letter = words.letter();
    }
    if ((letter != 'G' && letter != 'M' && letter != 'T') || !words.atNumber() ||
        !words.integer(line.m_code))
        return;
    line.m_letter = letter;
    if (words.skip('.') && (!words.atNumber() || !words.integer(line.m_subcode)))
        return;
    line.m_text = trimmed(withoutComment(words.rest()));

    // The message of M117 is free text, and no words.
    if (letter == 'M' && line.m_code == 117) {
        if (!m_cut)
            line.m_kind = GCodeLine::Command;
        return;
    }
    while (words.skipToWord()) {
        const char name = words.letter();
        // Which of two commands the parameters belong to is anybody's guess.
        if (name == 0 || name == 'G' || name == 'M' || line.has(name))
            return;
        line.m_present |= GCodeLine::bit(name);
        if (!words.atNumber())
            continue;
        double value = 0;
        if (!words.number(value))
            return;
        line.m_values[static_cast<std::size_t>(name - 'A')] = value;
        line.m_valued |= GCodeLine::bit(name);
    }
    if (!m_cut || words.inComment())
        line.m_kind = GCodeLine::Command;
}

} // namespace trovek::service

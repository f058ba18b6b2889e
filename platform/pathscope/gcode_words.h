#pragma once

#include "pathscope/gcode_number.h"

namespace pathscope {

/** Takes a line of G-code apart, in any form that firmwares read. */
class GCodeWords
{
public:
    enum class Result {
        Word,
        /** The line's end, a comment or a checksum. */
        End,
        /** What no word begins with. */
        Bad,
    };

    /** @param end of the line, followed by kNumberPadding bytes as readNumber() wants them */
    GCodeWords(const char* begin, const char* end)
        : m_next(begin)
        , m_end(end)
    {}

    Result next()
    {
        skipBlanks();
        if (m_next >= m_end || *m_next == ';' || *m_next == '*')
            return Result::End;
        const char upper = static_cast<char>(*m_next & ~0x20);
        if (upper < 'A' || upper > 'Z')
            return Result::Bad;
        m_wordBegin = m_next++;
        m_letter = upper;
        skipBlanks();
        const char* const after = m_next < m_end ? readNumber(m_next, &m_value) : nullptr;
        m_hasValue = after != nullptr && after <= m_end;
        if (m_hasValue)
            m_next = after;
        return Result::Word;
    }

    /** In upper case. */
    char letter() const { return m_letter; }
    bool hasValue() const { return m_hasValue; }
    double value() const { return m_value; }
    /** Where the word begins. */
    const char* wordBegin() const { return m_wordBegin; }
    /** Goes back, so that next() gives the same word again. */
    void back() { m_next = m_wordBegin; }

private:
    /** Comments in parentheses count as blanks. */
    void skipBlanks()
    {
        for (; m_next < m_end; ++m_next) {
            if (*m_next == '(') {
                while (m_next < m_end && *m_next != ')')
                    ++m_next;
                if (m_next == m_end)
                    return;
            } else if (*m_next != ' ' && *m_next != '\t') {
                return;
            }
        }
    }

    const char* m_next;
    const char* const m_end;
    const char* m_wordBegin = nullptr;
    char m_letter = 0;
    bool m_hasValue = false;
    double m_value = 0;
};

} // namespace pathscope

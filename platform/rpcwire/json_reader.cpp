#include "rpcwire/json_reader.h"

#include "rpcwire/json_text.h"

#include <QString>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdint>

namespace rpcwire {

namespace {

/** JsonCpp keeps the length of a member's name in 30 bits. */
constexpr std::size_t kMaxTextBytes = (std::size_t(1) << 30) - 1;

constexpr unsigned kReplacementCharacter = 0xFFFD;

bool isDigit(char character)
{
    return character >= '0' && character <= '9';
}

bool isHighSurrogate(unsigned unit)
{
    return unit >= 0xD800 && unit < 0xDC00;
}

bool isLowSurrogate(unsigned unit)
{
    return unit >= 0xDC00 && unit < 0xE000;
}

void appendUtf8(unsigned codePoint, std::string* string)
{
    const auto append = [string](unsigned byte) {
        string->push_back(static_cast<char>(byte));
    };
    if (codePoint < 0x80) {
        append(codePoint);
        return;
    }
    if (codePoint < 0x800) {
        append(0xC0 | codePoint >> 6);
    } else {
        if (codePoint < 0x10000) {
            append(0xE0 | codePoint >> 12);
        } else {
            append(0xF0 | codePoint >> 18);
            append(0x80 | (codePoint >> 12 & 0x3F));
        }
        append(0x80 | (codePoint >> 6 & 0x3F));
    }
    append(0x80 | (codePoint & 0x3F));
}

/** False when the type does not hold the number. */
template <typename Number>
bool convert(std::string_view digits, Json::Value* value)
{
    Number number = 0;
    const char* const end = digits.data() + digits.size();
    const auto result = std::from_chars(digits.data(), end, number);
    if (result.ec != std::errc() || result.ptr != end)
        return false;
    *value = number;
    return true;
}

} // namespace

std::string toValidUtf8(std::string_view bytes)
{
    const auto isAscii = [](char byte) {
        return static_cast<unsigned char>(byte) < 0x80;
    };
    if (std::all_of(bytes.begin(), bytes.end(), isAscii))
        return std::string(bytes);
    // Qt takes a byte order mark at the very start for no part of the text.
    const bool startsWithMark = bytes.substr(0, 3) == "\xEF\xBB\xBF";
    const QString text = QString::fromUtf8(bytes.data(), static_cast<int>(bytes.size()));
    return (startsWithMark ? "\xEF\xBB\xBF" : "") + text.toStdString();
}

JsonReader::JsonReader(std::string_view text)
    : m_text(text)
{}

bool JsonReader::read(Json::Value* value)
{
    if (m_text.size() > kMaxTextBytes)
        return fail("text is too long");
    if (!readValue(value, 0))
        return false;
    skipSpace();
    return atEnd() || fail("more than one value");
}

bool JsonReader::readValue(Json::Value* value, int depth)
{
    skipSpace();
    if (atEnd())
        return fail("text ends where a value is expected");
    switch (m_text[m_at]) {
    case '{':
        return readObject(value, depth + 1);
    case '[':
        return readArray(value, depth + 1);
    case '"': {
        std::string string;
        if (!readString(&string))
            return false;
        *value = string;
        return true;
    }
    case 't':
        return readWord("true", true, value);
    case 'f':
        return readWord("false", false, value);
    case 'n':
        return readWord("null", Json::Value(), value);
    default:
        return readNumber(value);
    }
}

bool JsonReader::readObject(Json::Value* value, int depth)
{
    if (depth > kMaxJsonDepth)
        return fail("nested too deeply");
    *value = Json::Value(Json::objectValue);
    take('{');
    skipSpace();
    if (take('}'))
        return true;
    for (;;) {
        skipSpace();
        std::string name;
        if (!readString(&name))
            return false;
        if (value->isMember(name))
            return fail("member stands twice");
        skipSpace();
        if (!take(':'))
            return fail("':' expected");
        if (!readValue(&(*value)[name], depth))
            return false;
        skipSpace();
        if (take('}'))
            return true;
        if (!take(','))
            return fail("',' or '}' expected");
    }
}

bool JsonReader::readArray(Json::Value* value, int depth)
{
    if (depth > kMaxJsonDepth)
        return fail("nested too deeply");
    *value = Json::Value(Json::arrayValue);
    take('[');
    skipSpace();
    if (take(']'))
        return true;
    for (;;) {
        if (!readValue(&value->append(Json::Value()), depth))
            return false;
        skipSpace();
        if (take(']'))
            return true;
        if (!take(','))
            return fail("',' or ']' expected");
    }
}

bool JsonReader::readString(std::string* string)
{
    if (!take('"'))
        return fail("string expected");
    std::size_t plainStart = m_at;
    const auto appendPlain = [&] {
        string->append(m_text.substr(plainStart, m_at - plainStart));
    };
    for (; !atEnd(); ++m_at) {
        const char character = m_text[m_at];
        if (static_cast<unsigned char>(character) < 0x20)
            return fail("control character in a string");
        if (character == '"') {
            appendPlain();
            ++m_at;
            *string = toValidUtf8(*string);
            return true;
        }
        if (character != '\\')
            continue;
        appendPlain();
        ++m_at;
        if (!readEscape(string))
            return false;
        plainStart = m_at + 1;
    }
    return fail("string does not end");
}

/** Stands behind the backslash before, and on the last character of the escape after. */
bool JsonReader::readEscape(std::string* string)
{
    constexpr std::string_view names = "\"\\/bfnrt";
    constexpr std::string_view meanings = "\"\\/\b\f\n\r\t";
    if (atEnd())
        return fail("string does not end");
    const std::size_t index = names.find(m_text[m_at]);
    if (index != std::string_view::npos) {
        string->push_back(meanings[index]);
        return true;
    }
    unsigned unit = 0;
    if (!readCodeUnit(&unit))
        return false;
    if (isHighSurrogate(unit) && m_text.substr(m_at + 1, 2) == "\\u") {
        const std::size_t endOfFirst = m_at;
        m_at += 2;
        unsigned second = 0;
        if (!readCodeUnit(&second))
            return false;
        if (isLowSurrogate(second))
            unit = 0x10000 + ((unit - 0xD800) << 10) + (second - 0xDC00);
        else
            m_at = endOfFirst; // an escape of its own
    }
    if (isHighSurrogate(unit) || isLowSurrogate(unit))
        unit = kReplacementCharacter;
    appendUtf8(unit, string);
    return true;
}

/** Stands on the "u" before, and on the last digit after. */
bool JsonReader::readCodeUnit(unsigned* unit)
{
    constexpr int digitCount = 4;
    const std::string_view digits =
        m_text[m_at] == 'u' ? m_text.substr(m_at + 1, digitCount) : std::string_view();
    const char* const end = digits.data() + digits.size();
    if (digits.size() != digitCount || std::from_chars(digits.data(), end, *unit, 16).ptr != end)
        return fail("bad escape in a string");
    m_at += digitCount;
    return true;
}

bool JsonReader::readNumber(Json::Value* value)
{
    const std::size_t start = m_at;
    take('-');
    if (!take('0') && !readDigits())
        return fail("value expected");
    const std::size_t endOfInteger = m_at;
    if (take('.') && !readDigits())
        return fail("digit expected");
    if (take('e') || take('E')) {
        if (!take('+'))
            take('-');
        if (!readDigits())
            return fail("digit expected");
    }
    const std::string_view digits = m_text.substr(start, m_at - start);
    const bool isInteger = m_at == endOfInteger;
    if (isInteger &&
        (convert<std::int64_t>(digits, value) || convert<std::uint64_t>(digits, value)))
        return true;
    return convert<double>(digits, value) || fail("number out of range");
}

bool JsonReader::readDigits()
{
    const std::size_t start = m_at;
    while (!atEnd() && isDigit(m_text[m_at]))
        ++m_at;
    return m_at > start;
}

bool JsonReader::readWord(std::string_view word, const Json::Value& meaning, Json::Value* value)
{
    if (m_text.substr(m_at, word.size()) != word)
        return fail("value expected");
    m_at += word.size();
    *value = meaning;
    return true;
}

bool JsonReader::take(char character)
{
    if (atEnd() || m_text[m_at] != character)
        return false;
    ++m_at;
    return true;
}

void JsonReader::skipSpace()
{
    m_at = std::min(m_text.find_first_not_of(" \t\r\n", m_at), m_text.size());
}

bool JsonReader::fail(const char* reason)
{
    m_error = std::string(reason) + " at byte " + std::to_string(m_at);
    return false;
}

} // namespace rpcwire

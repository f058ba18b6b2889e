#pragma once

#include <json/value.h>

#include <string>
#include <string_view>

namespace rpcwire {

/** The bytes with every sequence that is not UTF-8 replaced by U+FFFD. */
std::string toValidUtf8(std::string_view bytes);

/**
 * Reads a JSON text into a JsonCpp value, by the grammar of RFC 8259 and nothing more.
 *
 * JsonCpp's own reader is not strict enough for bytes from outside: it takes "-", "01" and "1." for
 * numbers and raw control characters in strings, makes strings that are not UTF-8, throws when the
 * nesting is deep, and reads reals by the process's locale.
 */
class JsonReader
{
public:
    explicit JsonReader(std::string_view text);

    /** False when the text is not one JSON value; error() says why. To be called once. */
    bool read(Json::Value* value);
    const std::string& error() const { return m_error; }

private:
    bool readValue(Json::Value* value, int depth);
    bool readObject(Json::Value* value, int depth);
    bool readArray(Json::Value* value, int depth);
    bool readString(std::string* string);
    bool readEscape(std::string* string);
    bool readCodeUnit(unsigned* unit);
    bool readNumber(Json::Value* value);
    bool readDigits();
    bool readWord(std::string_view word, const Json::Value& meaning, Json::Value* value);

    bool atEnd() const { return m_at == m_text.size(); }
    bool take(char character);
    void skipSpace();
    bool fail(const char* reason);

    const std::string_view m_text;
    std::size_t m_at = 0;
    std::string m_error;
};

} // namespace rpcwire

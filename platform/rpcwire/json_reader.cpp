#include "rpcwire/json_reader.h"

#include "rpcwire/json_text.h"

#include <nlohmann/json.hpp>

#include <QString>

#include <algorithm>
#include <cstdint>
#include <limits>
#include <utility>
#include <vector>

namespace rpcwire {

namespace {

/** JsonCpp keeps the length of a member's name in 30 bits. */
constexpr std::size_t kMaxTextBytes = (std::size_t(1) << 30) - 1;

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

/** Builds the value from the events of the reader, which keeps no stack on the call stack. */
class ValueBuilder : public nlohmann::json_sax<nlohmann::json>
{
public:
    Json::Value takeValue() { return std::move(m_root); }
    const std::string& error() const { return m_error; }

    bool null() override { return add(Json::Value()); }
    bool boolean(bool value) override { return add(value); }
    bool number_integer(number_integer_t value) override { return add(Json::Int64(value)); }

    bool number_unsigned(number_unsigned_t value) override
    {
        // Signed where it fits, as JsonCpp's own reader has it.
        if (value <= std::uint64_t(std::numeric_limits<std::int64_t>::max()))
            return add(Json::Int64(value));
        return add(Json::UInt64(value));
    }

    bool number_float(number_float_t value, const string_t&) override { return add(value); }

    bool string(string_t& value) override { return add(Json::Value(value)); }
    bool binary(binary_t&) override { return fail("binary data"); }

    bool start_object(std::size_t) override { return open(Json::objectValue); }
    bool start_array(std::size_t) override { return open(Json::arrayValue); }
    bool end_object() override { return close(); }
    bool end_array() override { return close(); }

    bool key(string_t& name) override
    {
        m_name = std::move(name);
        return !m_open.back()->isMember(m_name) || fail("member stands twice");
    }

    bool parse_error(std::size_t position, const std::string&,
                     const nlohmann::detail::exception& exception) override
    {
        const bool isRange = dynamic_cast<const nlohmann::detail::out_of_range*>(&exception);
        return fail((isRange ? "number out of range at byte " : "syntax error at byte ") +
                    std::to_string(position));
    }

private:
    Json::Value* place()
    {
        if (m_open.empty())
            return &m_root;
        Json::Value& parent = *m_open.back();
        return parent.isArray() ? &parent.append(Json::Value()) : &parent[m_name];
    }

    bool add(Json::Value value)
    {
        *place() = std::move(value);
        return true;
    }

    bool open(Json::ValueType type)
    {
        if (m_open.size() >= static_cast<std::size_t>(kMaxJsonDepth))
            return fail("nested too deeply");
        Json::Value* const container = place();
        *container = Json::Value(type);
        m_open.push_back(container);
        return true;
    }

    bool close()
    {
        m_open.pop_back();
        return true;
    }

    bool fail(const std::string& reason)
    {
        m_error = reason;
        return false;
    }

    Json::Value m_root;
    /** From the outermost to the innermost container that is not closed yet. */
    std::vector<Json::Value*> m_open;
    std::string m_name;
    std::string m_error;
};

} // namespace

std::string toValidUtf8(std::string_view bytes)
{
    const auto isAscii = [](char byte) {
        return static_cast<unsigned char>(byte) < 0x80;
    };
    if (std::all_of(bytes.begin(), bytes.end(), isAscii))
        return std::string(bytes);
    // Qt takes a byte order mark at the very start for no part of the text.
    const bool startsWithMark = bytes.substr(0, 3) == kByteOrderMark;
    const QString text = QString::fromUtf8(bytes.data(), static_cast<int>(bytes.size()));
    return std::string(startsWithMark ? kByteOrderMark : "") + text.toStdString();
}

bool readJson(std::string_view text, Json::Value* value, std::string* error)
{
    if (text.size() > kMaxTextBytes) {
        *error = "text is too long";
        return false;
    }
    // Where the reader would take a text for ended, and skip what is no part of one.
    if (text.find('\0') != std::string_view::npos || text.substr(0, 3) == kByteOrderMark) {
        *error = "zero byte or byte order mark";
        return false;
    }
    const std::string valid = toValidUtf8(text);
    ValueBuilder builder;
    if (!nlohmann::json::sax_parse(valid, &builder)) {
        *error = builder.error();
        return false;
    }
    *value = builder.takeValue();
    return true;
}

} // namespace rpcwire

#include "ply_header.h"

#include "geometry_error.h"
#include "text_words.h"

#include <algorithm>

namespace trovek::geometry {

namespace {

struct TypeName
{
    const char* name;
    PlyType type;
};

constexpr TypeName kTypeNames[] = {
    {"char", PlyType::Int8},     {"int8", PlyType::Int8},     {"uchar", PlyType::UInt8},
    {"uint8", PlyType::UInt8},   {"short", PlyType::Int16},   {"int16", PlyType::Int16},
    {"ushort", PlyType::UInt16}, {"uint16", PlyType::UInt16}, {"int", PlyType::Int32},
    {"int32", PlyType::Int32},   {"uint", PlyType::UInt32},   {"uint32", PlyType::UInt32},
    {"float", PlyType::Float},   {"float32", PlyType::Float}, {"double", PlyType::Double},
    {"float64", PlyType::Double}};

/** Real headers have some hundred bytes; a longer one is none. */
constexpr std::size_t kMostBytes = 65536;

PlyType typeOf(const TextWords& words, std::string_view name)
{
    for (const TypeName& known : kTypeNames) {
        if (name == known.name)
            return known.type;
    }
    words.fail(quoted(name) + " is no type of a number");
}

PlyEncoding encodingOf(const TextWords& words, std::string_view name)
{
    if (name == "ascii")
        return PlyEncoding::Text;
    if (name == "binary_little_endian")
        return PlyEncoding::LittleEndian;
    if (name == "binary_big_endian")
        return PlyEncoding::BigEndian;
    words.fail(quoted(name) + " is no format of a PLY file");
}

std::string nameOf(const TextWords& words, std::string_view word)
{
    if (word.empty())
        words.fail("a name is missing");
    return std::string(word);
}

PlyProperty readProperty(TextWords& words)
{
    PlyProperty property;
    std::string_view type = words.nextInLine();
    if (type == "list") {
        property.countType = typeOf(words, words.nextInLine());
        if (*property.countType == PlyType::Float || *property.countType == PlyType::Double)
            words.fail("a list is counted with a fraction");
        type = words.nextInLine();
    }
    property.type = typeOf(words, type);
    property.name = nameOf(words, words.nextInLine());
    return property;
}

PlyElement readElement(TextWords& words)
{
    PlyElement element;
    element.name = nameOf(words, words.nextInLine());
    const std::int64_t count = words.integer(words.nextInLine());
    if (count < 0)
        words.fail("less than none");
    element.count = std::uint64_t(count);
    return element;
}

/** Where the line with the word begins; the text behind it may be anything. */
std::size_t lineOf(std::string_view text, std::string_view word)
{
    for (std::size_t at = text.find(word); at != std::string_view::npos;
         at = text.find(word, at + 1)) {
        if (text[at - 1] == '\n' || text[at - 1] == '\r')
            return at;
    }
    throw FileFormatError("The file is cut off: its header does not end");
}

} // namespace

PlyHeader readPlyHeader(std::string_view bytes)
{
    if (bytes.substr(0, 4) != "ply\n" && bytes.substr(0, 4) != "ply\r")
        throw FileFormatError("The file is no PLY file");
    constexpr std::string_view kEnd = "end_header";
    const std::size_t end = lineOf(bytes.substr(0, kMostBytes), kEnd);
    TextWords words(bytes.substr(0, end));
    PlyHeader header;
    bool hasFormat = false;
    while (words.nextLine()) {
        const std::string_view keyword = words.nextInLine();
        if (keyword == "format") {
            header.encoding = encodingOf(words, words.nextInLine());
            hasFormat = true;
        } else if (keyword == "element") {
            header.elements.push_back(readElement(words));
        } else if (keyword == "property") {
            if (header.elements.empty())
                words.fail("a property of nothing");
            header.elements.back().properties.push_back(readProperty(words));
        } else if (keyword != "comment" && keyword != "obj_info" && !keyword.empty()) {
            words.fail(quoted(keyword) + " stands in no header of a PLY file");
        }
    }
    if (!hasFormat)
        throw FileFormatError("The header of the PLY file does not say its format");
    // One line end, as the first line has it: what follows in a binary file may look like another.
    const std::size_t lineEnd = bytes.substr(3, 2) == "\r\n" ? 2 : 1;
    header.bytes = std::min(bytes.size(), end + kEnd.size() + lineEnd);
    header.lines = words.line();
    return header;
}

} // namespace trovek::geometry

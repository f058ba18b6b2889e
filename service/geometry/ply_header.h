#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace trovek::geometry {

enum class PlyType { Int8, UInt8, Int16, UInt16, Int32, UInt32, Float, Double };

/** In a binary file. */
constexpr std::size_t bytesOf(PlyType type)
{
    switch (type) {
    case PlyType::Int8:
    case PlyType::UInt8:
        return 1;
    case PlyType::Int16:
    case PlyType::UInt16:
        return 2;
    case PlyType::Int32:
    case PlyType::UInt32:
    case PlyType::Float:
        return 4;
    case PlyType::Double:
        break;
    }
    return 8;
}

struct PlyProperty
{
    std::string name;
    PlyType type;
    /** Of a list: that of the count before its items. */
    std::optional<PlyType> countType;
};

struct PlyElement
{
    std::string name;
    std::uint64_t count = 0;
    std::vector<PlyProperty> properties;
};

enum class PlyEncoding { Text, LittleEndian, BigEndian };

struct PlyHeader
{
    PlyEncoding encoding = PlyEncoding::Text;
    std::vector<PlyElement> elements;
    std::size_t bytes = 0;
    std::size_t lines = 0;
};

/** @throws FileFormatError */
PlyHeader readPlyHeader(std::string_view bytes);

} // namespace trovek::geometry

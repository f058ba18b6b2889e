#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace trovek::geometry {

enum class PlyType { Int8, UInt8, Int16, UInt16, Int32, UInt32, Float, Double };

/** In a binary file. */
std::size_t bytesOf(PlyType type);

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

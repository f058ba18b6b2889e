#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace trovek::service {

/** Rows of pixels from the top, three bytes each: red, green, blue. */
struct Picture
{
    Picture() = default;
    Picture(int width_, int height_);

    std::uint8_t* pixel(int x, int y) { return &bytes[offset(x, y)]; }
    const std::uint8_t* pixel(int x, int y) const { return &bytes[offset(x, y)]; }

    int width = 0;
    int height = 0;
    std::vector<std::uint8_t> bytes;

private:
    std::size_t offset(int x, int y) const
    {
        return (static_cast<std::size_t>(y) * static_cast<std::size_t>(width) +
                static_cast<std::size_t>(x)) *
               3;
    }
};

/** A PNG file. @throws std::runtime_error */
std::string encodePng(const Picture& picture);

/**
 * @param width of the picture that is expected, as `height`; nothing larger is unpacked
 * @throws geometry::FileFormatError when it is no PNG file, or has another size
 */
Picture decodePng(std::string_view bytes, int width, int height);

} // namespace trovek::service

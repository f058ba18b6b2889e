#include "scanner/picture.h"

#include "geometry/geometry_error.h"

#include <png.h>

#include <stdexcept>

namespace trovek::service {

namespace {

/** libpng's description of one picture, which it may have to free. */
struct PngImage : png_image
{
    PngImage()
        : png_image()
    {
        version = PNG_IMAGE_VERSION;
    }
    PngImage(const PngImage&) = delete;
    PngImage& operator=(const PngImage&) = delete;
    ~PngImage() { png_image_free(this); }
};

[[noreturn]] void failToRead(const std::string& reason)
{
    throw geometry::FileFormatError("Not a picture of this camera: " + reason);
}

} // namespace

Picture::Picture(int width_, int height_)
    : width(width_)
    , height(height_)
    , bytes(static_cast<std::size_t>(width_) * static_cast<std::size_t>(height_) * 3)
{}

std::string encodePng(const Picture& picture)
{
    PngImage image;
    image.width = static_cast<png_uint_32>(picture.width);
    image.height = static_cast<png_uint_32>(picture.height);
    image.format = PNG_FORMAT_RGB;
    // Noise does not pack well; trying hard only takes long.
    image.flags = PNG_IMAGE_FLAG_FAST;
    png_alloc_size_t size = PNG_IMAGE_PNG_SIZE_MAX(image);
    std::string bytes(size, '\0');
    if (png_image_write_to_memory(&image, &bytes[0], &size, 0, picture.bytes.data(), 0, nullptr) ==
        0)
        throw std::runtime_error(std::string("Cannot make a picture: ") + image.message);
    bytes.resize(size);
    return bytes;
}

Picture decodePng(std::string_view bytes, int width, int height)
{
    PngImage image;
    if (png_image_begin_read_from_memory(&image, bytes.data(), bytes.size()) == 0)
        failToRead(image.message);
    if (image.width != static_cast<png_uint_32>(width) ||
        image.height != static_cast<png_uint_32>(height)) {
        failToRead("it has " + std::to_string(image.width) + " x " + std::to_string(image.height) +
                   " pixels");
    }
    image.format = PNG_FORMAT_RGB;
    Picture picture(width, height);
    const png_color black = {0, 0, 0};
    if (png_image_finish_read(&image, &black, picture.bytes.data(), 0, nullptr) == 0)
        failToRead(image.message);
    return picture;
}

} // namespace trovek::service

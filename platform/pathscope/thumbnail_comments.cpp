#include "pathscope/thumbnail_comments.h"

#include <charconv>
#include <utility>

namespace pathscope {
namespace {

/** More than any slicer writes; a file that claims more is not what it seems. */
constexpr std::size_t kMostThumbnails = 32;
constexpr std::size_t kMostBase64 = 16 * 1024 * 1024;
constexpr int kLargestSide = 8192;

bool takeWord(std::string_view* text, std::string_view word)
{
    if (text->substr(0, word.size()) != word)
        return false;
    text->remove_prefix(word.size());
    return true;
}

bool takeSide(std::string_view* text, int* side)
{
    const auto result = std::from_chars(text->data(), text->data() + text->size(), *side);
    if (result.ec != std::errc() || *side <= 0 || *side > kLargestSide)
        return false;
    text->remove_prefix(static_cast<std::size_t>(result.ptr - text->data()));
    return true;
}

int valueOf(char c)
{
    if (c >= 'A' && c <= 'Z')
        return c - 'A';
    if (c >= 'a' && c <= 'z')
        return c - 'a' + 26;
    if (c >= '0' && c <= '9')
        return c - '0' + 52;
    return c == '+' ? 62 : c == '/' ? 63 : -1;
}

} // namespace

bool ThumbnailComments::take(std::string_view text)
{
    if (!m_isOpen)
        return begin(text);
    std::string_view rest = text;
    if (takeWord(&rest, "thumbnail")) {
        if (rest.size() >= 4 && rest.substr(rest.size() - 4) == " end") {
            end();
            return true;
        }
        return begin(text);
    }
    if (m_base64.size() + text.size() > kMostBase64) {
        m_isOpen = false;
        return false;
    }
    m_base64.append(text);
    return true;
}

bool ThumbnailComments::begin(std::string_view text)
{
    m_isOpen = false;
    if (!takeWord(&text, "thumbnail"))
        return false;
    m_open = Thumbnail();
    m_open.format = "PNG";
    if (takeWord(&text, "_JPG"))
        m_open.format = "JPG";
    else if (takeWord(&text, "_QOI"))
        m_open.format = "QOI";
    else
        takeWord(&text, "_PNG");
    if (!takeWord(&text, " begin ") || !takeSide(&text, &m_open.width) ||
        !(takeWord(&text, "x") || takeWord(&text, " ")) || !takeSide(&text, &m_open.height))
        return false;
    m_base64.clear();
    m_isOpen = m_thumbnails.size() < kMostThumbnails;
    return true;
}

void ThumbnailComments::end()
{
    m_isOpen = false;
    m_open.bytes = decodeBase64(m_base64);
    if (!m_open.bytes.empty())
        m_thumbnails.push_back(std::move(m_open));
    m_base64.clear();
}

std::string decodeBase64(std::string_view text)
{
    while (!text.empty() && text.back() == '=')
        text.remove_suffix(1);
    std::string bytes;
    bytes.reserve(text.size() * 3 / 4);
    unsigned bits = 0;
    int count = 0;
    for (const char c : text) {
        const int value = valueOf(c);
        if (value < 0)
            return {};
        bits = bits << 6 | static_cast<unsigned>(value);
        count += 6;
        if (count >= 8) {
            count -= 8;
            bytes.push_back(static_cast<char>(bits >> count & 0xff));
        }
    }
    return bytes;
}

} // namespace pathscope

#pragma once

#include "pathscope/toolpaths.h"

#include <string>
#include <string_view>
#include <vector>

namespace pathscope {

/** Collects the pictures that stand in comments, from "thumbnail begin 16x16 492" to "... end". */
class ThumbnailComments
{
public:
    /** A comment's text without blanks around; true when it belongs to a picture. */
    bool take(std::string_view text);

    /** Those that are complete. */
    const std::vector<Thumbnail>& thumbnails() const { return m_thumbnails; }

private:
    bool begin(std::string_view text);
    void end();

    std::vector<Thumbnail> m_thumbnails;
    Thumbnail m_open;
    std::string m_base64;
    bool m_isOpen = false;
};

/** Empty when the text is no base64; blanks are none either. */
std::string decodeBase64(std::string_view text);

} // namespace pathscope

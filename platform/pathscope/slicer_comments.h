#pragma once

#include "pathscope/thumbnail_comments.h"
#include "pathscope/toolpaths.h"

#include <string>
#include <string_view>

namespace pathscope {

class ToolpathBuilder;

/**
 * Reads what slicers write into comments: layers, features, widths, heights, pictures, estimates.
 *
 * docs/formats/toolpath_comments.md lists them.
 */
class SlicerComments
{
public:
    /** @param builder not owned; is told of layers, features, widths and heights */
    explicit SlicerComments(ToolpathBuilder& builder)
        : m_builder(builder)
    {}

    /** A comment that is alone in its line, without the semicolon. */
    void read(std::string_view text);

    /** Puts what was found beside the paths. */
    void fill(Toolpaths* paths) const;

private:
    /** The ways in which layers are marked; a file that uses two is read by the first one. */
    enum class LayerMark { None, Change, Number, Sentence };

    void readMark(std::string_view text);
    void readSetting(std::string_view text);
    void readGenerator(std::string_view text);
    void readSentence(std::string_view text);
    bool beginLayer(LayerMark mark);

    ToolpathBuilder& m_builder;
    LayerMark m_mark = LayerMark::None;
    ThumbnailComments m_thumbnails;
    std::string m_generator;
    SlicerEstimates m_estimates;
};

} // namespace pathscope

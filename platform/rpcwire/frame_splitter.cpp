#include "rpcwire/frame_splitter.h"

namespace rpcwire {

namespace {

/** Above this an emptied buffer gives its memory back. */
constexpr std::size_t kKeptBytes = 1024 * 1024;

std::string_view withoutCarriageReturn(std::string_view line)
{
    if (!line.empty() && line.back() == '\r')
        line.remove_suffix(1);
    return line;
}

} // namespace

FrameSplitter::FrameSplitter(std::size_t limit)
    : m_limit(limit)
{}

void FrameSplitter::append(std::string_view bytes)
{
    m_buffer.erase(0, m_lineStart);
    m_scanned -= m_lineStart;
    m_lineStart = 0;
    if (m_buffer.empty() && m_buffer.capacity() > kKeptBytes)
        m_buffer.shrink_to_fit();
    m_buffer.append(bytes);
}

FrameSplitter::Result FrameSplitter::next(std::string_view* frame)
{
    const std::string_view buffer = m_buffer;
    for (;;) {
        const std::size_t lineEnd = buffer.find('\n', m_scanned);
        const bool hasEnded = lineEnd != std::string_view::npos;
        m_scanned = hasEnded ? lineEnd : buffer.size();
        const std::string_view line =
            withoutCarriageReturn(buffer.substr(m_lineStart, m_scanned - m_lineStart));
        if (line.size() > m_limit)
            return Result::TooLong;
        if (!hasEnded)
            return Result::Incomplete;
        m_lineStart = m_scanned = lineEnd + 1;
        if (line.empty())
            continue;
        *frame = line;
        return Result::Frame;
    }
}

} // namespace rpcwire

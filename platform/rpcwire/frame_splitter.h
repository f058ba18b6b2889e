#pragma once

#include <string>
#include <string_view>

namespace rpcwire {

/** Cuts a stream of bytes into lines, however the bytes come in. */
class FrameSplitter
{
public:
    enum class Result {
        Frame,
        /** No further line has ended yet. */
        Incomplete,
        /** The next line, ended or not, is longer than allowed; nothing more comes out. */
        TooLong,
    };

    /** @param limit bytes of a line without its line break */
    explicit FrameSplitter(std::size_t limit);

    void append(std::string_view bytes);
    /**
     * Takes out the next line that is not empty, without LF or CR LF.
     * @param frame valid until append()
     */
    Result next(std::string_view* frame);
    /** Bytes that wait for the end of their line. */
    std::size_t unfinishedBytes() const { return m_buffer.size() - m_lineStart; }

private:
    const std::size_t m_limit;
    std::string m_buffer;
    std::size_t m_lineStart = 0;
    /** No line break stands between the start of the line and here. */
    std::size_t m_scanned = 0;
};

} // namespace rpcwire

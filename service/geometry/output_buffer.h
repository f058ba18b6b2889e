#pragma once

#include "byte_sink.h"
#include "progress_part.h"
#include "raw_numbers.h"

#include <charconv>
#include <string>
#include <string_view>

namespace trovek::geometry {

/** Collects what is written, so that a sink gets it in large pieces. */
class OutputBuffer
{
public:
    /** @param items how many add up to the whole, for the progress */
    OutputBuffer(const ByteSink& sink, const Progress& progress, std::size_t items)
        : m_sink(sink)
        , m_progress(progress)
        , m_items(items)
    {
        m_progress.report(0);
    }

    OutputBuffer& text(std::string_view text)
    {
        m_bytes += text;
        return *this;
    }

    /** The shortest text that reads back as the same number. */
    template <typename Number>
    OutputBuffer& number(Number number)
    {
        char digits[64];
        const std::to_chars_result result = std::to_chars(digits, digits + sizeof digits, number);
        m_bytes.append(digits, result.ptr);
        return *this;
    }

    /** Little-endian. */
    template <typename Number>
    OutputBuffer& raw(Number number)
    {
        char bytes[sizeof(Number)];
        writeRaw(bytes, number);
        m_bytes.append(bytes, sizeof bytes);
        return *this;
    }

    void endItem()
    {
        ++m_written;
        if (m_bytes.size() >= kPiece)
            flush();
    }

    void end()
    {
        flush();
        m_progress.report(1);
    }

private:
    static constexpr std::size_t kPiece = 256 * 1024;

    void flush()
    {
        m_sink(m_bytes.data(), m_bytes.size());
        m_bytes.clear();
        m_progress.report(double(m_written) / double(m_items));
    }

    const ByteSink& m_sink;
    const ProgressPart m_progress;
    const std::size_t m_items;
    std::size_t m_written = 0;
    std::string m_bytes;
};

} // namespace trovek::geometry

#include "pathscope/gcode_parser.h"

#include "pathscope/gcode_interpreter.h"

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <system_error>

namespace pathscope {
namespace {

/** Pieces come after so many bytes, and then each time the file is three times as far. */
constexpr std::uint64_t kFirstPiece = 4 * 1024 * 1024;
constexpr std::uint64_t kPieceFactor = 3;
constexpr double kProgressStep = 1.0 / 256;

/** Fills the buffer as far as it can; gives 0 at the end. */
using Read = std::function<std::size_t(char* buffer, std::size_t size)>;

class Parsing
{
public:
    Parsing(Read read, std::uint64_t bytesExpected, const ParseOptions& options)
        : m_read(std::move(read))
        , m_bytesExpected(bytesExpected)
        , m_options(options)
        , m_block(std::max<std::size_t>(1, options.blockBytes))
        , m_buffer(new char[m_block + GCodeInterpreter::kLongestLine + 2 + kNumberPadding])
        , m_interpreter(options.filamentDiameter)
    {}

    std::shared_ptr<const Toolpaths> run()
    {
        std::size_t kept = 0;
        while (!isCanceled()) {
            const std::size_t got = m_read(m_buffer.get() + kept, m_block);
            char* const end = m_buffer.get() + kept + got;
            std::memset(end, 0, kNumberPadding);
            m_bytes += got;
            const char* const rest = m_interpreter.read(m_buffer.get(), end, got == 0);
            if (got == 0)
                return result(true);
            kept = static_cast<std::size_t>(end - rest);
            std::memmove(m_buffer.get(), rest, kept);
            report();
        }
        return result(false);
    }

private:
    bool isCanceled() const
    {
        return m_options.canceled != nullptr && m_options.canceled->load(std::memory_order_relaxed);
    }

    void report()
    {
        const double progress =
            std::min(1.0, double(m_bytes) / double(std::max<std::uint64_t>(1, m_bytesExpected)));
        if (m_options.progress && progress >= m_progress + kProgressStep) {
            m_progress = progress;
            m_options.progress(progress);
        }
        if (m_options.piece && m_bytes >= m_nextPiece && m_bytes < m_bytesExpected) {
            m_nextPiece = m_bytes * kPieceFactor;
            m_options.piece(result(false));
        }
    }

    std::shared_ptr<const Toolpaths> result(bool complete)
    {
        std::shared_ptr<Toolpaths> paths = m_interpreter.snapshot();
        paths->bytes = m_bytes;
        paths->complete = complete;
        return paths;
    }

    const Read m_read;
    const std::uint64_t m_bytesExpected;
    const ParseOptions& m_options;
    const std::size_t m_block;
    const std::unique_ptr<char[]> m_buffer;
    GCodeInterpreter m_interpreter;
    std::uint64_t m_bytes = 0;
    std::uint64_t m_nextPiece = kFirstPiece;
    double m_progress = 0;
};

} // namespace

std::shared_ptr<const Toolpaths> parseGCode(std::string_view text, const ParseOptions& options)
{
    std::string_view rest = text;
    const Read read = [&rest](char* buffer, std::size_t size) {
        const std::size_t bytes = std::min(size, rest.size());
        std::memcpy(buffer, rest.data(), bytes);
        rest.remove_prefix(bytes);
        return bytes;
    };
    return Parsing(read, text.size(), options).run();
}

std::shared_ptr<const Toolpaths> parseGCodeFile(const std::string& path,
                                                const ParseOptions& options)
{
    const std::filesystem::path file = std::filesystem::u8path(path);
    const std::string name = "\"" + file.filename().u8string() + "\"";
    std::error_code error;
    const std::filesystem::file_status status = std::filesystem::status(file, error);
    if (!std::filesystem::exists(status))
        throw std::runtime_error("The file " + name + " does not exist");
    if (std::filesystem::is_directory(status))
        throw std::runtime_error(name + " is a folder");
    if (!std::filesystem::is_regular_file(status))
        throw std::runtime_error(name + " is not a file");
    const std::uint64_t bytes = std::filesystem::file_size(file, error);
    std::ifstream stream(file, std::ios::binary);
    if (error || !stream)
        throw std::runtime_error("The file " + name + " cannot be opened");
    // Read, not mapped: a mapped file that another program shortens ends this one with a signal.
    const Read read = [&](char* buffer, std::size_t size) {
        stream.read(buffer, static_cast<std::streamsize>(size));
        if (stream.bad())
            throw std::runtime_error("The file " + name + " cannot be read");
        return static_cast<std::size_t>(stream.gcount());
    };
    return Parsing(read, bytes, options).run();
}

} // namespace pathscope

#include "xyz_file.h"

#include "output_buffer.h"
#include "progress_part.h"
#include "text_words.h"

#include <vector>

namespace trovek::geometry {

namespace {

constexpr std::size_t kLinesPerReport = 16384;

std::vector<std::string_view> wordsOfLine(TextWords& words)
{
    std::vector<std::string_view> line;
    for (std::string_view word = words.nextInLine(); !word.empty(); word = words.nextInLine())
        line.push_back(word);
    return line;
}

} // namespace

PointCloud readXyz(std::string_view bytes, const Progress& progress)
{
    const ProgressPart whole(progress);
    TextWords words(bytes);
    PointCloud cloud;
    std::size_t numbers = 0;
    do {
        if (words.line() % kLinesPerReport == 0)
            whole.report(double(words.bytesRead()) / double(bytes.size()));
        const std::vector<std::string_view> line = wordsOfLine(words);
        if (line.empty() || line.front().front() == '#')
            continue;
        if (line.size() != 3 && line.size() != 6)
            words.fail("a point has three numbers, or six with its normal");
        if (numbers != 0 && line.size() != numbers)
            words.fail("a point has another number of numbers than those before it");
        numbers = line.size();
        cloud.positions.push_back(
            {words.coordinate(line[0]), words.coordinate(line[1]), words.coordinate(line[2])});
        if (numbers == 6)
            cloud.normals.push_back(
                {words.number(line[3]), words.number(line[4]), words.number(line[5])});
    } while (words.nextLine());
    if (cloud.positions.empty())
        throw FileFormatError("The file has no points");
    return cloud;
}

void writeXyz(const PointCloud& cloud, const ByteSink& sink, const Progress& progress)
{
    OutputBuffer output(sink, progress, cloud.positions.size());
    const auto write = [&output](const Vector& vector) {
        output.number(vector.x).text(" ").number(vector.y).text(" ").number(vector.z);
    };
    for (std::size_t point = 0; point < cloud.positions.size(); ++point) {
        write(cloud.positions[point]);
        if (!cloud.normals.empty()) {
            output.text(" ");
            write(cloud.normals[point]);
        }
        output.text("\n").endItem();
    }
    output.end();
}

} // namespace trovek::geometry

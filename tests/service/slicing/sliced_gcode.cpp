#include "service/slicing/sliced_gcode.h"

#include <QFile>
#include <QList>

#include <algorithm>
#include <cmath>
#include <stdexcept>

namespace {

constexpr double kSameHeight = 1e-4;

bool isModelFeature(const std::string& feature)
{
    static const std::set<std::string> others{"Support material", "Support material interface",
                                              "Skirt/Brim",       "Wipe tower",
                                              "Custom",           "Start code",
                                              "End code"};
    return others.count(feature) == 0;
}

void append(std::vector<double>& values, double value)
{
    if (values.empty() || values.back() != value)
        values.push_back(value);
}

class Reader
{
public:
    explicit Reader(SlicedGCode& file)
        : m_file(file)
    {}

    void readLine(const QByteArray& raw)
    {
        ++m_line;
        const int semicolon = raw.indexOf(';');
        if (semicolon >= 0)
            readComment(raw.mid(semicolon + 1).trimmed());
        const QByteArray code = (semicolon < 0 ? raw : raw.left(semicolon)).simplified();
        if (!code.isEmpty())
            readCode(code);
    }

private:
    [[noreturn]] void fail(const std::string& what) const
    {
        throw std::runtime_error("line " + std::to_string(m_line) + ": " + what);
    }

    void readComment(const QByteArray& comment)
    {
        if (comment == "start code") {
            m_file.hasStartCode = true;
            m_around = "Start code";
        } else if (comment == "end code") {
            m_file.hasEndCode = true;
            m_around = "End code";
        } else if (comment == "end of start code" || comment == "end of end code") {
            m_around.clear();
        } else if (comment.startsWith("TYPE:")) {
            m_feature = comment.mid(5).toStdString();
        }
        const int equals = comment.indexOf(" = ");
        if (equals > 0)
            m_file.comments[comment.left(equals).toStdString()] =
                comment.mid(equals + 3).toStdString();
    }

    void readCode(const QByteArray& text)
    {
        const QList<QByteArray> words = text.split(' ');
        const QByteArray& name = words.front();
        ++m_file.codes[name.toStdString()];
        m_words.clear();
        for (int i = 1; i < words.size(); ++i) {
            bool isNumber = true;
            const double value =
                words[i].size() > 1 ? words[i].mid(1).toDouble(&isNumber) : std::nan("");
            if (!isNumber)
                fail("no number: " + words[i].toStdString());
            m_words[words[i][0]] = value;
        }
        if (name == "G0" || name == "G1")
            move();
        else if (name == "G92")
            setPosition();
        else if (name == "G90" || name == "G91")
            m_isRelative = m_isFilamentRelative = name == "G91";
        else if (name == "M82" || name == "M83")
            m_isFilamentRelative = name == "M83";
        else if (name == "M104" || name == "M109")
            append(m_file.toolCelsius[has('T') ? static_cast<int>(m_words['T']) : m_tool],
                   word('S'));
        else if (name == "M140" || name == "M190")
            append(m_file.platformCelsius, word('S'));
        else if (name == "M106" || name == "M107")
            append(m_file.fan, name == "M107" ? 0 : word('S'));
        else if (name == "T0" || name == "T1")
            changeTool(name == "T1" ? 1 : 0);
        else if (name != "G21" && name != "G28" && name != "G4" && name != "M84" && name != "G92.1")
            fail("unexpected " + name.toStdString());
    }

    bool has(char letter) const { return m_words.count(letter) > 0; }

    double word(char letter) const
    {
        const auto found = m_words.find(letter);
        if (found == m_words.end() || std::isnan(found->second))
            fail(std::string("without ") + letter);
        return found->second;
    }

    double target(char letter, double from) const
    {
        if (!has(letter))
            return from;
        return m_isRelative ? from + word(letter) : word(letter);
    }

    void move()
    {
        if (has('F'))
            m_feed = word('F') / 60;
        const double x = target('X', m_x);
        const double y = target('Y', m_y);
        const double z = target('Z', m_z);
        double fed = 0;
        if (has('E'))
            fed = m_isFilamentRelative ? word('E') : word('E') - m_e;
        const double way = std::hypot(x - m_x, y - m_y);
        if (m_around.empty())
            record(x, y, z, way, fed);
        m_x = x;
        m_y = y;
        m_z = z;
        m_e += fed;
    }

    void record(double x, double y, double z, double way, double fed)
    {
        m_file.filament[m_tool] += fed;
        double& pulled = m_pulled[m_tool];
        pulled = std::max(0.0, pulled - fed);
        double& deepest = m_file.retraction[m_tool];
        deepest = std::max(deepest, pulled);
        double& speed = m_file.retractionSpeed[m_tool];
        if (way <= 0 && fed < 0)
            speed = std::max(speed, m_feed);
        if (way > 0 && fed <= 0)
            m_file.travels.add(way, 0, m_feed);
        if (way <= 0 || fed <= 0)
            return;

        const auto& set = m_file.toolCelsius[m_tool];
        if (set.empty() || set.back() <= 0)
            fail("extrudes with a cold tool");
        m_file.extruding.add(way, fed, m_feed);
        layerAt(z).features[m_feature][m_tool].add(way, fed, m_feed);
        m_file.minX = std::min({m_file.minX, m_x, x});
        m_file.maxX = std::max({m_file.maxX, m_x, x});
        m_file.minY = std::min({m_file.minY, m_y, y});
        m_file.maxY = std::max({m_file.maxY, m_y, y});
        m_file.maxZ = std::max(m_file.maxZ, z);
    }

    SlicedLayer& layerAt(double z)
    {
        if (m_file.layers.empty() || std::abs(m_file.layers.back().z - z) > kSameHeight) {
            m_file.layers.emplace_back();
            m_file.layers.back().z = z;
        }
        return m_file.layers.back();
    }

    void setPosition()
    {
        if (m_words.empty())
            fail("G92 of everything");
        for (const auto& [letter, value] : m_words) {
            if (letter != 'E')
                fail("G92 of a place");
            m_e = value;
        }
    }

    void changeTool(int tool)
    {
        if (tool != m_tool && m_around.empty())
            ++m_file.toolChanges;
        m_tool = tool;
    }

    SlicedGCode& m_file;
    int m_line = 0;
    /** "Start code" or "End code" inside of these. */
    std::string m_around;
    std::string m_feature;
    std::map<char, double> m_words;
    bool m_isRelative = false;
    bool m_isFilamentRelative = false;
    double m_x = 0;
    double m_y = 0;
    double m_z = 0;
    double m_e = 0;
    double m_feed = 0;
    int m_tool = 0;
    std::map<int, double> m_pulled;
};

} // namespace

void SlicedPaths::add(double way, double fed, double mmPerSecond)
{
    ++moves;
    length += way;
    filament += fed;
    slowest = std::min(slowest, mmPerSecond);
    fastest = std::max(fastest, mmPerSecond);
}

void SlicedPaths::add(const SlicedPaths& others)
{
    moves += others.moves;
    length += others.length;
    filament += others.filament;
    slowest = std::min(slowest, others.slowest);
    fastest = std::max(fastest, others.fastest);
}

bool SlicedLayer::hasModel() const
{
    return std::any_of(features.begin(), features.end(),
                       [](const auto& feature) { return isModelFeature(feature.first); });
}

std::set<int> SlicedLayer::tools() const
{
    std::set<int> all;
    for (const auto& [feature, byTool] : features) {
        for (const auto& [tool, paths] : byTool)
            all.insert(tool);
    }
    return all;
}

SlicedGCode SlicedGCode::read(const QByteArray& text)
{
    SlicedGCode file;
    Reader reader(file);
    for (const QByteArray& line : text.split('\n'))
        reader.readLine(line);
    return file;
}

SlicedGCode SlicedGCode::readFile(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        throw std::runtime_error("cannot open " + path.toStdString());
    return read(file.readAll());
}

std::vector<double> SlicedGCode::modelHeights() const
{
    std::vector<double> heights;
    for (const SlicedLayer& layer : layers) {
        if (layer.hasModel())
            heights.push_back(layer.z);
    }
    return heights;
}

SlicedPaths SlicedGCode::paths(const std::string& feature, int tool) const
{
    SlicedPaths sum;
    for (const SlicedLayer& layer : layers) {
        const auto found = layer.features.find(feature);
        if (found == layer.features.end())
            continue;
        for (const auto& [of, paths] : found->second) {
            if (tool < 0 || tool == of)
                sum.add(paths);
        }
    }
    return sum;
}

std::set<std::string> SlicedGCode::features() const
{
    std::set<std::string> all;
    for (const SlicedLayer& layer : layers) {
        for (const auto& [feature, byTool] : layer.features)
            all.insert(feature);
    }
    return all;
}

std::set<int> SlicedGCode::tools() const
{
    std::set<int> all;
    for (const SlicedLayer& layer : layers) {
        const std::set<int> used = layer.tools();
        all.insert(used.begin(), used.end());
    }
    return all;
}

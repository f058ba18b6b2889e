#include "slicing/raft_tool.h"

#include "gcode/gcode_estimate.h"
#include "slicing/slice_settings.h"

#include <trovek/text.h>

#include <QByteArray>
#include <QFile>
#include <QList>
#include <QSaveFile>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <stdexcept>

namespace trovek::service {

namespace {

constexpr char kLayer[] = ";LAYER_CHANGE";
constexpr char kFeature[] = ";TYPE:";
constexpr char kFilament[] = "; filament used [mm] = ";
constexpr char kFilamentVolume[] = "; filament used [cm3] = ";
constexpr double kNothing = 1e-6;
constexpr qint64 kLinesBetweenChecks = 1000;

[[noreturn]] void fail(const QString& reason)
{
    throw std::runtime_error("Cannot give the raft its extruder: " + toStdString(reason));
}

/** -1 when the line changes no tool. */
int toolOf(const QByteArray& line)
{
    return line == "T0" ? 0 : line == "T1" ? 1 : -1;
}

bool isFeatureOfModel(const QByteArray& line)
{
    if (!line.startsWith(kFeature))
        return false;
    const QByteArray feature = line.mid(static_cast<int>(sizeof kFeature) - 1);
    return feature != "Custom" && !feature.startsWith("Support material");
}

QByteArray distance(double millimetres)
{
    return QByteArray::number(millimetres, 'f', 5);
}

/** The E of a move; there is none without one. */
struct ExtruderWord
{
    explicit ExtruderWord(const QByteArray& line)
        : begin(line.startsWith("G1 ") ? line.indexOf(" E") + 2 : 1)
        , end(line.indexOf(' ', begin))
    {
        if (end < 0)
            end = line.size();
    }

    bool isThere() const { return begin > 1; }
    double of(const QByteArray& line) const { return line.mid(begin, end - begin).toDouble(); }

    int begin;
    int end;
};

/** Calls take(number, line) for each line, without its end, until it returns false. */
template <typename Take>
void eachLine(const QString& path, const std::function<bool()>& goOn, Take take)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        fail(file.errorString());
    for (qint64 number = 0; !file.atEnd(); ++number) {
        if (number % kLinesBetweenChecks == 0 && !goOn())
            throw GCodeCanceled();
        QByteArray line = file.readLine();
        if (line.isEmpty())
            fail(file.errorString());
        if (line.endsWith('\n'))
            line.chop(1);
        if (!take(number, line))
            return;
    }
}

/** What is below the model's first layer. */
struct Raft
{
    /** The number of the line that begins that layer; 0 when there is no raft. */
    qint64 end = 0;
    /** The tool of the model's first path. */
    int modelTool = 0;
};

Raft findRaft(const QString& path, const std::function<bool()>& goOn)
{
    Raft raft;
    bool isBelow = false;
    eachLine(path, goOn, [&](qint64 number, const QByteArray& line) {
        if (line == kLayer)
            raft.end = number;
        else if (toolOf(line) >= 0)
            raft.modelTool = toolOf(line);
        else if (isFeatureOfModel(line))
            return false;
        else if (line.startsWith(";TYPE:Support"))
            isBelow = true;
        return true;
    });
    if (!isBelow)
        raft.end = 0;
    return raft;
}

/** Takes a sliced file line by line and says what stands there instead. */
class RaftWriter
{
public:
    RaftWriter(const SliceSettings& settings, const Raft& raft, int tool)
        : m_settings(settings)
        , m_end(raft.end)
        , m_tool(tool)
    {}

    QByteArray lineFor(qint64 number, const QByteArray& line)
    {
        if (number >= m_end)
            return (number == m_end ? leaveRaft() : QByteArray()) + lineAboveRaft(line);
        if (line == kLayer)
            return enterRaft() + line + '\n';
        if (toolOf(line) >= 0)
            return changeSlicersTool(toolOf(line));
        if (line.startsWith("M109"))
            m_isHeated[toolOfTarget(line)] = true;
        return extrude(line);
    }

private:
    const ToolSettings& settingsOf(int tool) const
    {
        return m_settings.tools[static_cast<std::size_t>(tool)];
    }

    static std::size_t toolOfTarget(const QByteArray& line) { return line.contains(" T1") ? 1 : 0; }

    /** Moves the filament of the tool in use. */
    QByteArray feed(double millimetres) const
    {
        if (std::abs(millimetres) < kNothing)
            return {};
        const double mmPerMinute = settingsOf(m_tool).retractionSpeed * 60;
        return "G1 E" + distance(millimetres) + " F" + QByteArray::number(mmPerMinute, 'f', 0) +
               '\n';
    }

    QByteArray enterRaft()
    {
        if (m_isInRaft)
            return {};
        m_isInRaft = true;
        QByteArray code;
        if (!m_isHeated[static_cast<std::size_t>(m_tool)]) {
            const QByteArray target = " S" + QByteArray::number(settingsOf(m_tool).celsius) + " T" +
                                      QByteArray::number(m_tool) + '\n';
            code += "M104" + target + "M109" + target;
        }
        // A file that uses nothing but tool 0 does not name it.
        return code + use(m_tool);
    }

    /** In the raft the slicer's tools are all the same; what each has pulled back is not. */
    QByteArray changeSlicersTool(int tool)
    {
        const double difference = pulled(m_slicersTool) - pulled(tool);
        m_slicersTool = tool;
        return m_isInRaft ? feed(difference) : QByteArray();
    }

    QByteArray extrude(const QByteArray& line)
    {
        const ExtruderWord word(line);
        if (!word.isThere())
            return line + '\n';
        const double asked = word.of(line);
        double& back = m_pulled[static_cast<std::size_t>(m_slicersTool)];
        back = std::max(0.0, back - asked);
        const bool isPath = asked > 0 && (line.contains(" X") || line.contains(" Y"));
        if (!isPath)
            return line + '\n';
        const double fed = asked * lengthFor(m_tool) / lengthFor(m_slicersTool);
        m_filament[static_cast<std::size_t>(m_slicersTool)] -= asked;
        m_filament[static_cast<std::size_t>(m_tool)] += fed;
        return line.left(word.begin) + distance(fed) + line.mid(word.end) + '\n';
    }

    /** Brings both tools to where the slicer believes them. */
    QByteArray leaveRaft()
    {
        QByteArray code = feed(pulled(m_slicersTool) - pulled(m_tool));
        const int other = 1 - m_tool;
        if (m_slicersTool == other || pulled(other) > 0) {
            code += use(other);
            code += feed(-pulled(other));
        }
        return m_slicersTool == m_tool ? code : code + use(m_slicersTool);
    }

    QByteArray use(int tool)
    {
        m_tool = tool;
        return "T" + QByteArray::number(tool) + '\n';
    }

    QByteArray lineAboveRaft(const QByteArray& line) const
    {
        if (line.startsWith(kFilamentVolume))
            return {};
        if (!line.startsWith(kFilament))
            return line + '\n';
        const QList<QByteArray> used = line.mid(static_cast<int>(sizeof kFilament) - 1).split(',');
        QByteArray text = kFilament;
        for (int tool = 0; tool < 2; ++tool) {
            const double before = tool < used.size() ? used[tool].trimmed().toDouble() : 0;
            const double after = before + m_filament[static_cast<std::size_t>(tool)];
            text += (tool == 0 ? "" : ", ") + QByteArray::number(std::max(0.0, after), 'f', 2);
        }
        return text + '\n';
    }

    double pulled(int tool) const { return m_pulled[static_cast<std::size_t>(tool)]; }

    /** Of filament, for the same volume. */
    double lengthFor(int tool) const
    {
        const ToolSettings& settings = settingsOf(tool);
        return settings.flow / (settings.filamentDiameter * settings.filamentDiameter);
    }

    const SliceSettings& m_settings;
    const qint64 m_end;
    /** What prints. */
    int m_tool;
    /** What the slicer believes in. */
    int m_slicersTool = 0;
    bool m_isInRaft = false;
    std::array<bool, 2> m_isHeated{};
    /** Of each of the slicer's tools, in millimetres. */
    std::array<double, 2> m_pulled{};
    /** What each tool takes more than the slicer counts. */
    std::array<double, 2> m_filament{};
};

/** A tool's number, or that of the model where it is one and the same. */
int resolved(const SliceSettings& settings, const ExtraPart& part)
{
    return part.tool == ExtraPart::SameAsModel ? settings.modelTool : part.tool;
}

} // namespace

bool raftHasItsOwnTool(const SliceSettings& settings)
{
    return settings.tools.size() > 1 && settings.raft.isOn && settings.supports.isOn &&
           resolved(settings, settings.raft) != resolved(settings, settings.supports);
}

void printRaftWithItsTool(const SliceSettings& settings, const QString& path,
                          const std::function<bool()>& goOn)
{
    const Raft raft = findRaft(path, goOn);
    if (raft.end == 0)
        return;
    const int tool = resolved(settings, settings.raft);
    RaftWriter writer(settings, raft, tool < 0 ? raft.modelTool : tool);

    QSaveFile output(path);
    if (!output.open(QIODevice::WriteOnly))
        fail(output.errorString());
    eachLine(path, goOn, [&](qint64 number, const QByteArray& line) {
        const QByteArray text = writer.lineFor(number, line);
        if (output.write(text) != text.size())
            fail(output.errorString());
        return true;
    });
    if (!output.flush() || !output.commit())
        fail(output.errorString());
}

} // namespace trovek::service

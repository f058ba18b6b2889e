#include "slicing/prusa_output.h"

#include "gcode/machine_definition.h"
#include "gcode/number_text.h"
#include "slicing/slicer_engine.h"

#include <trovek/text.h>

#include <QFileInfo>
#include <QRegularExpression>

#include <algorithm>
#include <csignal>
#include <cstring>
#include <iterator>

namespace trovek::service {

namespace {

constexpr int kLongestLine = 4096;
constexpr int kLongestComplaints = 16384;
constexpr int kLongestStage = 60;
/** The percentages that it gives in the order in which they matter. */
constexpr double kMarks[] = {0, 10, 20, 70, 88, 90, 100};
/** After so long half of the way to the next mark is taken as done. */
constexpr double kHalfSeconds = 20;
constexpr double kMost = 99;

double markAfter(double percent)
{
    return *std::upper_bound(std::begin(kMarks), std::prev(std::end(kMarks)), percent);
}

QString stageOf(const QString& text)
{
    // "Exporting G-code to /path": where it lies meanwhile is nobody's business.
    QString stage = text.section(QStringLiteral(" to /"), 0, 0).left(kLongestStage).trimmed();
    if (stage.isEmpty())
        return QStringLiteral("Slicing");
    stage[0] = stage[0].toLower();
    return QStringLiteral("Slicing: ") + stage;
}

std::string sizeOf(const MachineDefinition& machine)
{
    const auto& volume = machine.buildVolume;
    return numberText(volume[0].length()) + " x " + numberText(volume[1].length()) + " x " +
           numberText(volume[2].length()) + " mm";
}

std::string crashText(int signalNumber)
{
    if (signalNumber == SIGTERM)
        return "The slicer was ended from outside";
#ifdef Q_OS_UNIX
    if (signalNumber == SIGKILL)
        return "The slicer was killed; the model may need more memory than there is";
    if (signalNumber == SIGXFSZ)
        return "There is not enough space on the disk for the sliced model";
    return std::string("The slicer crashed (") + ::strsignal(signalNumber) +
           "); the model may be damaged";
#else
    return "The slicer crashed; the model may be damaged";
#endif
}

/** The slicer's own last words, without the paths of the service's copies. */
std::string lastWords(const SliceJob& job, const QByteArray& complaints)
{
    QString text = QString::fromUtf8(complaints);
    for (const QString& path : {job.modelPath, job.outputPath, job.workFolder})
        text.replace(path, QFileInfo(path).fileName());
    static const QRegularExpression timeAndThread(
        QStringLiteral("\\[[^\\]]*\\] \\[0x[0-9a-f]+\\] \\[\\w+\\]\\s*"));
    text.remove(timeAndThread);
    const QStringList lines = text.split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    return toStdString(
        QStringList(lines.mid(std::max(0, lines.size() - 3))).join(QLatin1Char(' ')));
}

} // namespace

void PrusaOutput::add(const QByteArray& bytes, double now)
{
    m_rest += bytes;
    int begin = 0;
    for (int end = 0; (end = m_rest.indexOf('\n', begin)) >= 0; begin = end + 1)
        takeLine(m_rest.mid(begin, std::min(end - begin, kLongestLine)), now);
    m_rest.remove(0, begin);
    // A line without an end is not kept for ever.
    if (m_rest.size() > kLongestLine) {
        takeLine(m_rest.left(kLongestLine), now);
        m_rest.clear();
    }
}

void PrusaOutput::takeLine(QByteArray line, double now)
{
    static const QRegularExpression progress(QStringLiteral("^\\s*(\\d{1,3}) => (.+)$"));
    line = line.trimmed();
    const auto match = progress.match(QString::fromUtf8(line));
    if (match.hasMatch()) {
        // What it had crept to stays, so that nothing falls back.
        const double told = match.captured(1).toDouble();
        const double crept = percent(now);
        if (told > m_percent) {
            m_percent = std::min(std::max(told, crept), kMost);
            m_since = now;
        }
        m_stage = stageOf(match.captured(2));
        return;
    }
    if (line.isEmpty() || line.contains("[trace]"))
        return;
    m_complaints += line + '\n';
    if (m_complaints.size() > kLongestComplaints)
        m_complaints.remove(0, m_complaints.size() - kLongestComplaints);
}

int PrusaOutput::percent(double now) const
{
    const double seconds = std::max(0.0, now - m_since);
    const double share = seconds / (seconds + kHalfSeconds);
    const double next = std::max(m_percent, markAfter(m_percent) - 1);
    return static_cast<int>(std::min(kMost, m_percent + (next - m_percent) * share));
}

std::string prusaFailure(const SliceJob& job, const QByteArray& complaints, int signalNumber)
{
    const auto says = [&](const char* text) {
        return complaints.contains(text);
    };
    if (says("Is the disk full") || says("No space left on device"))
        return "There is not enough space on the disk for the sliced model";
    if (says("Unable to create convex hull"))
        return "The model is damaged: it encloses no volume";
    if (says("Objects could not fit on the bed"))
        return "The model is too large for the machine, which has " + sizeOf(*job.machine);
    if (says("No layers were detected"))
        return "The model is too small or too thin: no layer of it would be printed";
    if (says("empty file") || says("because it's empty"))
        return "The model is empty";
    if (says("Loading of a model file failed")) {
        return "The model cannot be read: it is damaged, or it is not in the format " +
               toStdString(QFileInfo(job.modelPath).suffix().toUpper());
    }
    if (says("std::bad_alloc"))
        return "The model needs more memory than there is";
    if (signalNumber != 0)
        return crashText(signalNumber);
    const std::string words = lastWords(job, complaints);
    return words.empty() ? "The slicer failed without a reason" : "The slicer failed: " + words;
}

} // namespace trovek::service

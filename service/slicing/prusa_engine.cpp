#include "slicing/prusa_engine.h"

#include "gcode/gcode_estimate.h"
#include "slicing/child_process.h"
#include "slicing/prusa_options.h"
#include "slicing/prusa_output.h"
#include "slicing/raft_tool.h"

#include <trovek/log.h>
#include <trovek/text.h>

#include <QElapsedTimer>
#include <QFile>
#include <QStandardPaths>

#include <algorithm>
#include <stdexcept>

namespace trovek::service {

static constexpr char kLogUnit[] = "service\\slicing\\prusa_engine";

namespace {

/** How long a cancel may go unseen. What the slicer says or its end is seen at once. */
constexpr int kTickMs = 50;
/** The last line of a complete result, after everything else. */
constexpr char kEndMark[] = "_config = end";
constexpr qint64 kEndBytes = 256;

QString findProgram(const QString& program)
{
    const QString path = QStandardPaths::findExecutable(program);
    if (path.isEmpty()) {
        throw std::runtime_error(toStdString(
            QStringLiteral("Models cannot be sliced: the slicer \"%1\" is not installed")
                .arg(program)));
    }
    return path;
}

void writeOptions(const QString& path, const std::string& options)
{
    QFile file(path);
    const auto size = static_cast<qint64>(options.size());
    if (!file.open(QIODevice::WriteOnly) || file.write(options.data(), size) != size ||
        !file.flush()) {
        throw std::runtime_error("Cannot write the slicer's options: " +
                                 toStdString(file.errorString()));
    }
}

ChildProcess::Command commandFor(const QString& program, const SliceJob& job,
                                 const QString& optionsPath)
{
    ChildProcess::Command command;
    command.folder = job.workFolder;
    command.lowPriority = job.lowPriority;
    command.program = program;
    command.arguments = QStringList{
        QStringLiteral("-g"), QStringLiteral("-o"),     job.outputPath, QStringLiteral("--datadir"),
        job.workFolder,       QStringLiteral("--load"), optionsPath,    job.modelPath,
    };
    // Into a pipe it would write its progress when all is over.
    const QString lineBuffer = QStandardPaths::findExecutable(QStringLiteral("stdbuf"));
    if (!lineBuffer.isEmpty()) {
        command.arguments = QStringList{QStringLiteral("-oL"), program} + command.arguments;
        command.program = lineBuffer;
    }
    return command;
}

bool isComplete(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return false;
    file.seek(std::max<qint64>(0, file.size() - kEndBytes));
    return file.readAll().trimmed().endsWith(kEndMark);
}

/** Removes what was written unless it is told that all went well. */
class OutputGuard
{
public:
    explicit OutputGuard(const QString& path)
        : m_path(path)
    {}
    OutputGuard(const OutputGuard&) = delete;
    OutputGuard& operator=(const OutputGuard&) = delete;
    ~OutputGuard()
    {
        if (m_kept)
            return;
        QFile::remove(m_path);
        QFile::remove(m_path + QStringLiteral(".tmp"));
    }

    void keep() { m_kept = true; }

private:
    const QString m_path;
    bool m_kept = false;
};

} // namespace

PrusaEngine::PrusaEngine(QString program)
    : m_program(std::move(program))
{}

std::string PrusaEngine::name() const
{
    return toStdString(m_program);
}

void PrusaEngine::slice(const SliceJob& job, Control& control) const
{
    const QString program = findProgram(m_program);
    const QString optionsPath = job.workFolder + QStringLiteral("/options.ini");
    writeOptions(optionsPath, prusaOptions(*job.machine, *job.settings));

    OutputGuard guard(job.outputPath);
    QElapsedTimer clock;
    clock.start();
    const auto now = [&clock] {
        return static_cast<double>(clock.elapsed()) / 1000;
    };
    PrusaOutput output;
    ChildProcess child(commandFor(program, job, optionsPath));
    bool isRunning = true;
    while (isRunning) {
        isRunning = child.wait(kTickMs);
        output.add(child.read(), now());
        if (control.isCanceled())
            throw GCodeCanceled();
        control.setProgress(output.percent(now()), output.stage());
    }
    // Whatever it started itself must not outlive it.
    child.stop();
    // A last line may have no end.
    output.add("\n", now());

    if (child.signalNumber() != 0 || child.exitStatus() != 0) {
        TROVEK_LOG(1) << name() << " ended with status " << child.exitStatus() << ", signal "
                      << child.signalNumber() << ": " << output.complaints().toStdString()
                      << std::endl;
        throw std::runtime_error(prusaFailure(job, output.complaints(), child.signalNumber()));
    }
    if (!isComplete(job.outputPath))
        throw std::runtime_error("The slicer ended without a complete result");
    if (raftHasItsOwnTool(*job.settings)) {
        printRaftWithItsTool(*job.settings, job.outputPath,
                             [&control] { return !control.isCanceled(); });
    }
    guard.keep();
}

} // namespace trovek::service

#include "service/slicing/bare_slices.h"

#include <slicing/model_file.h>
#include <slicing/prusa_options.h>
#include <slicing/raft_tool.h>

#include <QDir>
#include <QFile>
#include <QProcess>

#include <algorithm>
#include <mutex>
#include <stdexcept>
#include <thread>

using namespace trovek::service;

namespace {

void writeFile(const QString& path, const QByteArray& bytes)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
        throw std::runtime_error("cannot write " + path.toStdString());
}

/** As the service hands it to the slicer. */
QString copyOf(const BareSlice& slice, const SliceSettings& settings, const QString& folder)
{
    QDir().mkpath(folder);
    const QString path = folder + QStringLiteral("/original.") + slice.suffix;
    writeFile(path, slice.model);
    QFile original(path);
    if (!original.open(QIODevice::ReadOnly))
        throw std::runtime_error("cannot read the model");
    const PartTools tools = settings.modelTool < 0 ? PartTools::Kept : PartTools::Dropped;
    return copyModel(original, path.toStdString(), folder, tools, [] { return true; });
}

} // namespace

MachineDefinition machineOfType(const std::string& type)
{
    for (const MachineDefinition& machine : defaultMachineDefinitions().archetypes) {
        if (machineTypeName(machine.type) == type)
            return machine;
    }
    throw std::runtime_error("no such type: " + type);
}

SliceSettings BareSlice::settings() const
{
    return sliceSettings(machineOfType(machineType), request, profile ? &*profile : nullptr);
}

void BareSlices::add(const std::string& name, const BareSlice& slice)
{
    if (!m_slices.emplace(name, slice).second)
        throw std::runtime_error("twice: " + name);
}

void BareSlices::run()
{
    std::mutex mutex;
    std::string failure;
    auto next = m_slices.begin();
    const auto work = [&] {
        while (true) {
            std::unique_lock lock(mutex);
            if (next == m_slices.end() || !failure.empty())
                return;
            const auto current = next++;
            m_results[current->first];
            lock.unlock();
            try {
                sliceOne(current->first, current->second);
            } catch (const std::exception& error) {
                lock.lock();
                failure = current->first + ": " + error.what();
            }
        }
    };
    std::vector<std::thread> threads(std::max(2u, std::thread::hardware_concurrency()));
    for (std::thread& thread : threads)
        thread = std::thread(work);
    for (std::thread& thread : threads)
        thread.join();
    if (!failure.empty())
        throw std::runtime_error(failure);
}

QByteArray BareSlices::text(const std::string& name) const
{
    QFile file(outputPath(name));
    if (!file.open(QIODevice::ReadOnly))
        throw std::runtime_error("cannot read " + name);
    return file.readAll();
}

QString BareSlices::outputPath(const std::string& name) const
{
    return m_folder.filePath(QString::fromStdString(name)) + QStringLiteral(".gcode");
}

void BareSlices::sliceOne(const std::string& name, const BareSlice& slice)
{
    const QString base = m_folder.filePath(QString::fromStdString(name));
    const QString options = base + QStringLiteral(".ini");
    const QString output = outputPath(name);
    const SliceSettings settings = slice.settings();
    const QString model = copyOf(slice, settings, base);
    writeFile(options,
              QByteArray::fromStdString(prusaOptions(machineOfType(slice.machineType), settings)));

    QProcess slicer;
    slicer.setProcessChannelMode(QProcess::MergedChannels);
    slicer.start(QStringLiteral("prusa-slicer"),
                 {QStringLiteral("-g"), QStringLiteral("-o"), output, QStringLiteral("--datadir"),
                  m_folder.path(), QStringLiteral("--load"), options, model});
    if (!slicer.waitForFinished(-1) || slicer.exitStatus() != QProcess::NormalExit ||
        slicer.exitCode() != 0)
        throw std::runtime_error(slicer.readAll().toStdString() +
                                 slicer.errorString().toStdString());
    if (raftHasItsOwnTool(settings))
        printRaftWithItsTool(settings, output, [] { return true; });
    // Every entry is there before, so threads only write their own.
    m_results.at(name) = SlicedGCode::readFile(output);
}

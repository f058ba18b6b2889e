#include "slice_world.h"

#include <trovek/text.h>

#include <QDir>

namespace trovek {

SliceWorld::SliceWorld(const QString& slicer, int atOnce)
{
    world.options.slicer = toStdString(slicer);
    world.options.slicesAtOnce = atOnce;
    world.start();
    client.connectToDaemon(world.address());
    configuration.setHeatPlatform(false);
}

int SliceWorld::preview(const std::string& model, const std::string& out)
{
    return client.slice(archetype, model, out, configuration, materials, false);
}

int SliceWorld::exportTo(const std::string& model, const std::string& out, const char* format,
                         bool skipStartEnd)
{
    if (std::string(format) == "gcode")
        return client.slice(archetype, model, out, configuration, materials, !skipStartEnd);
    return client.printToFile(archetype, model, out, configuration, materials, skipStartEnd,
                              format);
}

int SliceWorld::print(const std::string& model, bool skipStartEnd)
{
    return client.print(machine, model, configuration, materials, skipStartEnd);
}

Job SliceWorld::conclude(int id)
{
    if (!QTest::qWaitFor([&] { return job(id).conclusion() != JobNotConcluded; }, kSliceMs))
        qWarning("The job did not conclude");
    return job(id);
}

bool SliceWorld::waitForStage(int id, const std::string& beginning)
{
    const auto isConcluded = [&] {
        return job(id).conclusion() != JobNotConcluded;
    };
    const auto isThere = [&] {
        return job(id).stage().rfind(beginning, 0) == 0;
    };
    const bool waited =
        QTest::qWaitFor([&] { return isThere() || isConcluded(); }, kSliceMs) && isThere();
    if (!waited)
        qWarning("No such stage: %s %s", job(id).stage().c_str(), job(id).failure().c_str());
    return waited;
}

QStringList SliceWorld::leftovers() const
{
    return QDir(world.stateDir() + QStringLiteral("/slices"))
        .entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
}

} // namespace trovek

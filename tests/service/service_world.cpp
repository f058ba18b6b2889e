#include "service_world.h"

#include <trovek/text.h>

#include <QDir>
#include <QFile>
#include <QTest>

#include <algorithm>
#include <iterator>
#include <stdexcept>

namespace trovek {

ServiceWorld::ServiceWorld(double timeScale)
{
    QDir(m_dir.path()).mkdir(QStringLiteral("files"));
    options.stateDir = toStdString(stateDir());
    options.socketName = toStdString(m_dir.filePath(QStringLiteral("run/s")));
    options.timeScale = timeScale;
}

ServiceWorld::~ServiceWorld() = default;

void ServiceWorld::start()
{
    m_service = std::make_unique<service::EmbeddedService>(options);
}

void ServiceWorld::stop()
{
    m_service.reset();
}

std::string ServiceWorld::path(const QString& name) const
{
    return toStdString(m_dir.filePath(QStringLiteral("files/") + name));
}

std::string ServiceWorld::writeFile(const QString& name, const QByteArray& bytes) const
{
    const std::string made = path(name);
    QFile file(toQString(made));
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
        throw std::runtime_error("The test cannot write " + made);
    return made;
}

QByteArray ServiceWorld::read(const std::string& path)
{
    QFile file(toQString(path));
    if (!file.open(QIODevice::ReadOnly))
        throw std::runtime_error("The test cannot read " + path);
    return file.readAll();
}

QString ServiceWorld::stateDir() const
{
    return m_dir.filePath(QStringLiteral("state"));
}

void ServiceWorld::openMachine(RecordingTrovek& client, const std::string& port)
{
    client.connectToPort(client.portFromName(port));
    const auto isIdle = [&] {
        const Printer* printer = client.printerFromKey(client.printerFromPortName(port));
        return printer != nullptr && printer->state() == Printer::Idle;
    };
    if (!QTest::qWaitFor(isIdle, 10000))
        throw std::runtime_error("The machine did not become idle: " + port);
}

namespace {

QByteArray squares(int rounds)
{
    QByteArray text = "G21\nG90\nM82\nG28\nM109 S210\nG92 E0\nG1 Z0.2 F600\n";
    double filament = 0;
    for (int i = 0; i < rounds; ++i) {
        const char* const corners[] = {"X60 Y50", "X60 Y110", "X110 Y110", "X110 Y50"};
        for (const char* corner : corners) {
            filament += 2;
            text += QByteArray("G1 ") + corner + " E" + QByteArray::number(filament) + " F1200\n";
        }
    }
    return text + "M104 S0\n";
}

} // namespace

QByteArray squareGCode()
{
    return squares(50);
}

QByteArray longGCode()
{
    return squares(20000);
}

bool waitForConclusion(Trovek& client, int job)
{
    return QTest::qWaitFor([&] { return client.jobFromID(job).conclusion() != JobNotConcluded; },
                           10000);
}

std::vector<std::string> eventsOf(const RecordingTrovek& client, const std::string& beginning)
{
    std::vector<std::string> found;
    std::copy_if(client.events.begin(), client.events.end(), std::back_inserter(found),
                 [&](const std::string& event) {
                     return event.compare(0, beginning.size(), beginning) == 0;
                 });
    return found;
}

std::string errorName(const JsonRpcException& error)
{
    const Json::Value& data = error.data();
    return data.isObject() && data["name"].isString() ? data["name"].asString() : std::string();
}

} // namespace trovek

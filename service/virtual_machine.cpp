#include "virtual_machine.h"

#include "plan_runner.h"
#include "state_file.h"

#include <trovek/log.h>
#include <trovek/text.h>

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QPointer>
#include <QTimer>

#include <algorithm>
#include <optional>
#include <stdexcept>

namespace trovek::service {

static constexpr char kLogUnit[] = "service\\virtual_machine";

namespace {

constexpr int kTickMs = 50;
constexpr int kSaveMs = 5000;
/** What a machine takes from the opening of its port until it answers. */
constexpr double kGreetingSeconds = 1.0;
constexpr char kErasedByte = '\xff';

double numberOr(const Json::Value& value, double fallback)
{
    return value.isNumeric() ? value.asDouble() : fallback;
}

} // namespace

class VirtualMachine::Private
{
public:
    Private(VirtualMachine& owner, const MachineDefinition& definition_, const QString& folder,
            double scale);

    void load();
    void touch();
    /** False when it cannot be written. */
    bool save();
    void tick();
    void letTimePass(double seconds);
    void letResetPass(double seconds);
    void letFirmwarePass(double seconds);
    bool keepFirmware(const std::string& version);
    void wake();
    /** Idle, with nothing under way. */
    bool isFree() const { return state == Printer::Idle && !resetImage && !newFirmware; }
    void fall(const QString& reason);

    VirtualMachine& q;
    const MachineDefinition& definition;
    const QString stateFile;
    const QString memoryFile;
    const double timeScale;
    MachineBody body;
    std::string firmwareVersion;
    QByteArray memory;
    /** What the memory will hold, while it is reset. */
    std::optional<QByteArray> resetImage;
    double resetSeconds = 0;
    /** The version that is being written. */
    std::optional<std::string> newFirmware;
    double firmwareSeconds = 0;
    std::optional<int> failsAtPercent;
    Printer::State state = Printer::UnknownState;
    double greetingSeconds = 0;
    std::optional<PlanRunner> runner;
    QTimer timer;
    QElapsedTimer sinceTick;
    /** Runs while there is something to save. */
    QTimer saveTimer;
};

VirtualMachine::Private::Private(VirtualMachine& owner, const MachineDefinition& definition_,
                                 const QString& folder, double scale)
    : q(owner)
    , definition(definition_)
    , stateFile(QDir(folder).filePath(QStringLiteral("state.json")))
    , memoryFile(QDir(folder).filePath(QStringLiteral("memory.bin")))
    , timeScale(scale)
    , body(definition)
    , firmwareVersion(definition.firmwareVersion)
{
    load();
    QFile file(memoryFile);
    if (file.open(QIODevice::ReadOnly))
        memory = file.read(kMemoryBytes);
    // A memory that was never written is erased.
    memory.append(kMemoryBytes - memory.size(), kErasedByte);
    timer.setInterval(kTickMs);
    saveTimer.setInterval(kSaveMs);
    QObject::connect(&saveTimer, &QTimer::timeout, &q, [this] { save(); });
    QObject::connect(&timer, &QTimer::timeout, &q, [this] { tick(); });
    wake();
}

void VirtualMachine::Private::load()
{
    const Json::Value saved = readStateFile(stateFile);
    if (!saved.isObject())
        return;
    if (saved["firmware_version"].isString())
        firmwareVersion = saved["firmware_version"].asString();
    const Json::Value& tools = saved["tools"];
    for (std::size_t i = 0; tools.isArray() && i < body.tools.size(); ++i) {
        const Json::Value tool = tools.get(static_cast<Json::ArrayIndex>(i), Json::Value());
        body.tools[i].setCelsius(numberOr(tool, HeaterDefinition::kRoomCelsius));
    }
    body.platform.setCelsius(numberOr(saved["platform"], HeaterDefinition::kRoomCelsius));
    const Json::Value& position = saved["position"];
    for (std::size_t i = 0; position.isArray() && i < 3; ++i) {
        const double coordinate = numberOr(
            position.get(static_cast<Json::ArrayIndex>(i), Json::Value()), body.position[i]);
        // The machines file may have made it smaller since; from far away homing would never end.
        body.position[i] = std::clamp(coordinate, body.limits[i].min, body.limits[i].max);
    }
}

/** Writing waits for the disk, so it is done now and then, not at every change. */
void VirtualMachine::Private::touch()
{
    if (!saveTimer.isActive())
        saveTimer.start();
}

bool VirtualMachine::Private::save()
{
    if (!saveTimer.isActive())
        return true;
    saveTimer.stop();
    Json::Value saved(Json::objectValue);
    saved["tools"] = Json::Value(Json::arrayValue);
    for (const Heater& tool : body.tools)
        saved["tools"].append(tool.celsius());
    saved["platform"] = body.platform.celsius();
    saved["position"] = Json::Value(Json::arrayValue);
    for (const double coordinate : body.position)
        saved["position"].append(coordinate);
    // What the definition says may change with it.
    if (firmwareVersion != definition.firmwareVersion)
        saved["firmware_version"] = firmwareVersion;
    return writeStateFile(stateFile, saved);
}

void VirtualMachine::Private::wake()
{
    const bool needed = runner.has_value() || resetImage.has_value() || newFirmware.has_value() ||
                        state == Printer::Connecting || !body.isAtRest();
    if (needed == timer.isActive())
        return;
    if (needed) {
        sinceTick.start();
        timer.start();
        touch();
    } else {
        timer.stop();
    }
}

void VirtualMachine::Private::tick()
{
    const double seconds = static_cast<double>(sinceTick.nsecsElapsed()) * 1e-9 * timeScale;
    sinceTick.restart();
    const QPointer<VirtualMachine> alive(&q);
    letTimePass(seconds);
    if (!alive)
        return;
    touch();
    wake();
    emit q.changed();
}

void VirtualMachine::Private::letResetPass(double seconds)
{
    resetSeconds -= seconds;
    if (resetSeconds > 0)
        return;
    const QByteArray image = *resetImage;
    resetImage.reset();
    emit q.memoryReset(q.writeMemory(0, image));
}

void VirtualMachine::Private::letFirmwarePass(double seconds)
{
    firmwareSeconds += seconds;
    const double percent = 100 * firmwareSeconds / kFirmwareSeconds;
    if (failsAtPercent && percent >= *failsAtPercent) {
        const int reached = *failsAtPercent;
        failsAtPercent.reset();
        newFirmware.reset();
        emit q.firmwareWritten(
            QStringLiteral("The machine took no more of the firmware after %1 percent")
                .arg(reached));
        return;
    }
    if (percent < 100)
        return;
    const std::string version = *newFirmware;
    newFirmware.reset();
    emit q.firmwareWritten(keepFirmware(version)
                               ? QString()
                               : QStringLiteral("The machine did not keep the firmware"));
}

/** The earlier one when it cannot be written: half a step would be told otherwise after a restart.
 */
bool VirtualMachine::Private::keepFirmware(const std::string& version)
{
    const std::string earlier = std::exchange(firmwareVersion, version);
    touch();
    if (save())
        return true;
    firmwareVersion = earlier;
    return false;
}

void VirtualMachine::Private::letTimePass(double seconds)
{
    if (state == Printer::Connecting) {
        body.heat(seconds);
        greetingSeconds -= seconds;
        if (greetingSeconds > 0)
            return;
        state = Printer::Idle;
        emit q.opened();
        return;
    }
    if (!runner) {
        body.heat(seconds);
        if (resetImage)
            letResetPass(seconds);
        else if (newFirmware)
            letFirmwarePass(seconds);
        return;
    }
    try {
        runner->advance(body, seconds);
    } catch (const std::exception& error) {
        fall(QString::fromUtf8(error.what()));
        return;
    }
    if (!runner->isFinished())
        return;
    runner.reset();
    state = Printer::Idle;
    emit q.finished();
}

void VirtualMachine::Private::fall(const QString& reason)
{
    TROVEK_LOG(1) << "Machine \"" << definition.key << "\" stops: " << toStdString(reason)
                  << std::endl;
    runner.reset();
    state = Printer::Idle;
    emit q.failed(reason);
}

VirtualMachine::VirtualMachine(const MachineDefinition& definition, const QString& stateFolder,
                               double timeScale, QObject* parent)
    : MachineDriver(parent)
    , d(new Private(*this, definition, stateFolder, timeScale))
{}

VirtualMachine::~VirtualMachine()
{
    d->save();
}

MachineDriver::Status VirtualMachine::status() const
{
    Status status;
    status.state = d->state;
    for (const Heater& tool : d->body.tools) {
        status.toolCelsius.push_back(tool.celsius());
        status.toolTargets.push_back(tool.target());
    }
    status.platformCelsius = d->body.platform.celsius();
    status.platformTarget = d->body.platform.target();
    status.position = d->body.position;
    if (d->runner) {
        status.doneSeconds = d->runner->doneSeconds();
        status.heating = d->runner->isHeating(d->body);
        status.waitSeconds = d->runner->waitSeconds(d->body);
    }
    return status;
}

void VirtualMachine::open()
{
    if (d->state != Printer::UnknownState)
        return;
    d->state = Printer::Connecting;
    d->greetingSeconds = kGreetingSeconds;
    d->wake();
}

void VirtualMachine::close()
{
    d->runner.reset();
    d->resetImage.reset();
    d->newFirmware.reset();
    d->state = Printer::UnknownState;
    for (Heater& tool : d->body.tools)
        tool.setTarget(0);
    d->body.platform.setTarget(0);
    d->save();
    d->wake();
}

void VirtualMachine::run(std::shared_ptr<const MotionPlan> plan)
{
    if (!d->isFree())
        throw std::logic_error("The machine is not idle");
    d->runner.emplace(std::move(plan));
    d->state = Printer::Running;
    d->wake();
}

void VirtualMachine::stop()
{
    if (!d->runner)
        return;
    d->runner.reset();
    d->state = Printer::Idle;
    d->wake();
}

void VirtualMachine::setToolTarget(int tool, int celsius)
{
    d->body.tools.at(static_cast<std::size_t>(tool)).setTarget(celsius);
    d->wake();
}

void VirtualMachine::setPlatformTarget(int celsius)
{
    d->body.platform.setTarget(celsius);
    d->wake();
}

std::string VirtualMachine::firmwareVersion() const
{
    return d->firmwareVersion;
}

bool VirtualMachine::simulateFirmware(const std::string& version)
{
    d->firmwareVersion = version;
    d->touch();
    d->save();
    return true;
}

void VirtualMachine::writeFirmware(const std::string& version, const QByteArray&)
{
    if (!d->isFree())
        throw std::logic_error("The machine is not idle");
    d->newFirmware = version;
    d->firmwareSeconds = 0;
    d->wake();
}

bool VirtualMachine::simulateUploadFailure(std::optional<int> percent)
{
    d->failsAtPercent = percent;
    return true;
}

QByteArray VirtualMachine::readMemory(int offset, int size) const
{
    return offset < 0 || size < 0 ? QByteArray() : d->memory.mid(offset, size);
}

bool VirtualMachine::writeMemory(int offset, const QByteArray& bytes)
{
    if (offset < 0 || bytes.size() > d->memory.size() || offset > d->memory.size() - bytes.size())
        return false;
    QByteArray changed = d->memory;
    changed.replace(offset, bytes.size(), bytes);
    if (!writeStateBytes(d->memoryFile, changed))
        return false;
    d->memory = changed;
    return true;
}

void VirtualMachine::resetMemory(const QByteArray& image)
{
    if (!d->isFree())
        throw std::logic_error("The machine is not idle");
    d->resetImage = image;
    d->resetSeconds = kResetSeconds;
    d->wake();
}

} // namespace trovek::service

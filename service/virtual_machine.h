#pragma once

#include "driver.h"
#include "gcode/machine_definition.h"

#include <QString>

namespace trovek::service {

/**
 * A machine that exists in this process only: its heaters follow a curve, its motion takes time.
 *
 * Temperatures, position, firmware version and onboard memory are kept in a folder and survive a
 * restart of the service, also one without warning (then as they were a few seconds before).
 * Targets do not: a machine never starts hot.
 */
class VirtualMachine : public MachineDriver
{
    Q_OBJECT

public:
    static constexpr int kMemoryBytes = 4096;
    /** Seconds of the machine. */
    static constexpr double kResetSeconds = 8;
    static constexpr double kFirmwareSeconds = 40;

    /**
     * @param definition  not owned; must outlive the machine
     * @param stateFolder where its files stand; must exist
     * @param timeScale   seconds of the machine for each second of the clock, above 0
     */
    VirtualMachine(const MachineDefinition& definition, const QString& stateFolder,
                   double timeScale, QObject* parent = nullptr);
    ~VirtualMachine() override;

    Status status() const override;
    void open() override;
    void close() override;
    void run(std::shared_ptr<const MotionPlan> plan) override;
    void stop() override;
    void setToolTarget(int tool, int celsius) override;
    void setPlatformTarget(int celsius) override;
    std::string firmwareVersion() const override;
    bool simulateFirmware(const std::string& version) override;
    void writeFirmware(const std::string& version, const QByteArray& image) override;
    bool simulateUploadFailure(std::optional<int> percent) override;
    QByteArray readMemory(int offset, int size) const override;
    bool writeMemory(int offset, const QByteArray& bytes) override;
    void resetMemory(const QByteArray& image) override;

private:
    class Private;
    const std::unique_ptr<Private> d;
};

} // namespace trovek::service

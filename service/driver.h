#pragma once

#include "motion_plan.h"

#include <trovek/printer.h>

#include <QByteArray>
#include <QObject>

#include <array>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace trovek::service {

/**
 * What the service knows of one machine's insides: everything that it sends to a machine and hears
 * from it passes here, so that a machine on a real cable is one more class.
 *
 * One plan runs at a time. All calls return at once; what takes time is told by signals, emitted
 * from the event loop of the service's thread and never inside a call.
 */
class MachineDriver : public QObject
{
    Q_OBJECT

public:
    struct Status
    {
        /** UnknownState while the port is closed. */
        Printer::State state = Printer::UnknownState;
        /** Degrees Celsius, one a toolhead. */
        std::vector<double> toolCelsius;
        std::vector<int> toolTargets;
        double platformCelsius = 0;
        int platformTarget = 0;
        /** Millimetres. */
        std::array<double, 3> position = {0, 0, 0};
        /** Of the running plan: what is done of MotionPlan::seconds. */
        double doneSeconds = 0;
        /** True while the plan waits for a temperature. */
        bool heating = false;
        /** What that waiting may still take. */
        double waitSeconds = 0;
    };

    explicit MachineDriver(QObject* parent = nullptr);
    ~MachineDriver() override;

    virtual Status status() const = 0;

    /** The machine is Connecting, then opened() comes. */
    virtual void open() = 0;
    /** Ends a running plan without a signal; heaters go off. */
    virtual void close() = 0;

    /** Starts a plan on an idle machine; finished() or failed() ends it. */
    virtual void run(std::shared_ptr<const MotionPlan> plan) = 0;
    /** Ends the plan at once and without a signal; heaters keep their targets. */
    virtual void stop() = 0;

    virtual void setToolTarget(int tool, int celsius) = 0;
    virtual void setPlatformTarget(int celsius) = 0;

    /** "MAJOR.MINOR" of the firmware that runs in the machine. */
    virtual std::string firmwareVersion() const = 0;
    /**
     * As if a closed machine had been given that firmware elsewhere.
     * @return false for a machine that is not virtual
     */
    virtual bool simulateFirmware(const std::string& version) = 0;
    /**
     * Lets an idle machine take firmware, for which it may need minutes. firmwareWritten() ends it,
     * unless the machine is closed before. Until it has all of it, it keeps the earlier one.
     */
    virtual void writeFirmware(const std::string& version, const QByteArray& image) = 0;
    /**
     * Lets the next firmware fail when so much of it is written; without a value none.
     * @return false for a machine that is not virtual
     */
    virtual bool simulateUploadFailure(std::optional<int> percent);

    /** Bytes of the onboard memory; fewer at its end. */
    virtual QByteArray readMemory(int offset, int size) const = 0;
    /**
     * All of them or, also when the power fails, none.
     * @return false when they do not fit or cannot be kept
     */
    virtual bool writeMemory(int offset, const QByteArray& bytes) = 0;
    /**
     * Lets the machine erase its memory and begin with this image, for which it may need a minute.
     * memoryReset() ends it, unless the machine is closed before: then its memory is as it was.
     */
    virtual void resetMemory(const QByteArray& image) = 0;

signals:
    void opened();
    /** Something of status() may be different. */
    void changed();
    void finished();
    /** @param kept false when the memory is as it was */
    void memoryReset(bool kept);
    /** @param failure for a user; empty when the machine has the new firmware */
    void firmwareWritten(const QString& failure);
    /** @param reason for a user */
    void failed(const QString& reason);
};

} // namespace trovek::service

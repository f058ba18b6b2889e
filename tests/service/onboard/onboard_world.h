#pragma once

#include <service/driver.h>
#include <service/onboard/onboard_map.h>

#include <json/value.h>

#include <QByteArray>

#include <functional>
#include <string>

namespace trovek {

Json::Value json(const QByteArray& text);

/** A map's source, of firmware 7.5 of a Fabrino 2, with these entries. */
Json::Value mapSource(const QByteArray& entries, const QByteArray& version = "7.5");

/** A few settings, one of each kind of place: top level, group, group in a group. */
Json::Value smallMapSource(const QByteArray& version = "7.5");

/** Sets the values of an entry of a document; the names with points between them. */
Json::Value& entryOf(Json::Value& document, const std::string& name);
void setValue(Json::Value& document, const std::string& name, const QByteArray& values);
Json::Value valueOf(const Json::Value& document, const std::string& name);

/** A machine that is nothing but its memory, with faults on request. */
class MemoryDriver : public service::MachineDriver
{
    Q_OBJECT

public:
    QByteArray memory = QByteArray(service::kOnboardBytes, service::kErasedByte);
    int writes = 0;
    /** Called in place of keeping the bytes; what it gives is what writeMemory() gives. */
    std::function<bool(int offset, const QByteArray& bytes)> onWrite;

    Status status() const override;
    void open() override {}
    void close() override {}
    void run(std::shared_ptr<const service::MotionPlan> plan) override;
    void stop() override {}
    void setToolTarget(int tool, int celsius) override;
    void setPlatformTarget(int celsius) override;
    std::string firmwareVersion() const override { return "7.5"; }
    bool simulateFirmware(const std::string& version) override;
    void writeFirmware(const std::string& version, const QByteArray& image) override;
    QByteArray readMemory(int offset, int size) const override;
    bool writeMemory(int offset, const QByteArray& bytes) override;
    /** At once; the test emits the signal. */
    void resetMemory(const QByteArray& image) override;
};

} // namespace trovek

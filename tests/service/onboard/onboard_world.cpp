#include "onboard_world.h"

#include <rpcwire/json_text.h>

#include <QString>
#include <QStringList>

namespace trovek {

Json::Value json(const QByteArray& text)
{
    Json::Value value;
    std::string error;
    if (!rpcwire::parseJson(std::string_view(text.constData(), std::size_t(text.size())), &value,
                            &error))
        qFatal("Test data is not JSON: %s in %s", error.c_str(), text.constData());
    return value;
}

Json::Value mapSource(const QByteArray& entries, const QByteArray& version)
{
    return json(R"({"machine_type": "fabrino_2", "firmware_version": ")" + version +
                R"(", "eeprom_map": )" + entries + "}");
}

Json::Value smallMapSource(const QByteArray& version)
{
    return mapSource(R"({
        "name": {"offset": "0x0010", "type": "s", "factory": ["Orvane"], "tooltip": "Whose"},
        "count": {"offset": "0x0020", "type": "B", "factory": [2], "constraints": "l,1,2"},
        "motion": {"sub_map": {
            "rates": {"offset": "0x0030", "type": "hhh", "factory": [10, 20, 30], "unit": "mm/s"},
            "advance": {"sub_map": {
                "factor": {"offset": "0x0040", "type": "f", "factory": [0.1]}}}}}})",
                     version);
}

Json::Value& entryOf(Json::Value& document, const std::string& name)
{
    Json::Value* entry = &document;
    const char* members = "eeprom_map";
    for (const QString& part : QString::fromStdString(name).split(QLatin1Char('.'))) {
        entry = &(*entry)[members][part.toStdString()];
        members = "sub_map";
    }
    return *entry;
}

void setValue(Json::Value& document, const std::string& name, const QByteArray& values)
{
    entryOf(document, name)["value"] = json(values);
}

Json::Value valueOf(const Json::Value& document, const std::string& name)
{
    Json::Value copy = document;
    return entryOf(copy, name)["value"];
}

service::MachineDriver::Status MemoryDriver::status() const
{
    Status status;
    status.state = Printer::Idle;
    return status;
}

void MemoryDriver::run(std::shared_ptr<const service::MotionPlan>) {}

void MemoryDriver::setToolTarget(int, int) {}

void MemoryDriver::setPlatformTarget(int) {}

bool MemoryDriver::simulateFirmware(const std::string&)
{
    return false;
}

void MemoryDriver::writeFirmware(const std::string&, const QByteArray&) {}

QByteArray MemoryDriver::readMemory(int offset, int size) const
{
    return memory.mid(offset, size);
}

bool MemoryDriver::writeMemory(int offset, const QByteArray& bytes)
{
    ++writes;
    if (onWrite)
        return onWrite(offset, bytes);
    memory.replace(offset, bytes.size(), bytes);
    return true;
}

void MemoryDriver::resetMemory(const QByteArray& image)
{
    writeMemory(0, image);
}

} // namespace trovek

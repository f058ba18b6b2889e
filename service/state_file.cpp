#include "state_file.h"

#include "system.h"

#include <rpcwire/json_text.h>
#include <trovek/log.h>
#include <trovek/text.h>

#include <QFile>
#include <QFileInfo>

#include <filesystem>
#include <string>
#include <system_error>

namespace trovek::service {

static constexpr char kLogUnit[] = "service\\state_file";

Json::Value readStateFile(const QString& path)
{
    QFile file(path);
    if (!file.exists())
        return Json::Value();
    if (!file.open(QIODevice::ReadOnly)) {
        TROVEK_LOG(0) << "Cannot read " << toStdString(path) << ": "
                      << toStdString(file.errorString()) << std::endl;
        return Json::Value();
    }
    const QByteArray bytes = file.readAll();
    Json::Value value;
    std::string error;
    if (!rpcwire::parseJson({bytes.constData(), static_cast<std::size_t>(bytes.size())}, &value,
                            &error)) {
        TROVEK_LOG(0) << "Cannot read " << toStdString(path) << ": " << error << std::endl;
        return Json::Value();
    }
    return value;
}

bool writeStateFile(const QString& path, const Json::Value& value)
{
    const std::string line = rpcwire::toJsonLine(value) + "\n";
    return writeStateBytes(path, QByteArray(line.data(), static_cast<int>(line.size())));
}

bool writeStateBytes(const QString& path, const QByteArray& bytes)
{
    // One name for a whole folder: what a kill leaves there goes with the next write.
    QFile file(QFileInfo(path).path() + QStringLiteral("/unfinished"));
    QString error;
    if (file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size() && file.flush() &&
        syncToDisk(file)) {
        file.close();
        std::error_code problem;
        std::filesystem::rename(file.fileName().toStdU16String(), path.toStdU16String(), problem);
        if (!problem)
            return true;
        error = QString::fromStdString(problem.message());
    } else {
        error = file.errorString();
    }
    TROVEK_LOG(0) << "Cannot write " << toStdString(path) << ": " << toStdString(error)
                  << std::endl;
    // The object would not remove what it could not write to its end.
    file.close();
    QFile::remove(file.fileName());
    return false;
}

} // namespace trovek::service

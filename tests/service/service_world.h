#pragma once

#include "platform/trovek/recording_trovek.h"

#include <service/embedded_service.h>

#include <trovek/job.h>

#include <QByteArray>
#include <QString>
#include <QTemporaryDir>

#include <memory>
#include <string>
#include <vector>

namespace trovek {

/** A service in a folder of its own, and the files that a test works with. */
class ServiceWorld
{
public:
    /** Machine seconds for a second, so that heating and printing take no time that counts. */
    static constexpr double kFast = 3000;
    static constexpr char kMachine[] = "virtual_fabrino_2";
    static constexpr char kPort[] = "virtual1";
    static constexpr char kOtherMachine[] = "virtual_fabrino_2x";
    static constexpr char kOtherPort[] = "virtual2";
    static constexpr char kArchetype[] = "archetype_fabrino_2";

    explicit ServiceWorld(double timeScale = kFast);
    ~ServiceWorld();

    void start();
    void stop();
    service::EmbeddedService& service() { return *m_service; }
    Address address() const { return m_service->address(); }
    /** Before start() only. */
    service::EmbeddedService::Options options;

    /** In a folder beside the state folder. */
    std::string path(const QString& name) const;
    std::string writeFile(const QString& name, const QByteArray& bytes) const;
    /** As a client makes it for the service to write into. */
    std::string emptyFile(const QString& name) const { return writeFile(name, QByteArray()); }
    static QByteArray read(const std::string& path);
    QString stateDir() const;

    /** Connects, opens the machine on the port and waits until it is idle. */
    static void openMachine(RecordingTrovek& client, const std::string& port = kPort);

private:
    QTemporaryDir m_dir;
    std::unique_ptr<service::EmbeddedService> m_service;
};

/** A print of a square that heats first: about ten minutes of a machine. */
QByteArray squareGCode();
/** The same with so many rounds that it lasts for hours. */
QByteArray longGCode();

/** Runs the event loop until the job has concluded, for ten seconds at most. */
bool waitForConclusion(Trovek& client, int job);

/** Events with this text at their beginning, in order. */
std::vector<std::string> eventsOf(const RecordingTrovek& client, const std::string& beginning);

/** The "name" in an error's data; empty when there is none. */
std::string errorName(const JsonRpcException& error);

/** The name of the error that `call` throws; empty when it throws none, "other" for another
 * exception. */
template <typename Call>
std::string errorOf(Call call)
{
    try {
        call();
    } catch (const JsonRpcException& error) {
        return errorName(error);
    } catch (const std::exception&) {
        return "other";
    }
    return std::string();
}

} // namespace trovek

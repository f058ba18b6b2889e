#pragma once

#include "fault_kinds.h"

#include "platform/trovek/recording_trovek.h"
#include "profile/profile_world.h"
#include "service/daemon.h"
#include "service/slicing/fake_slicer.h"

#include <service/embedded_service.h>
#include <trovek-ui/trovekqt.h>

#include <QSettings>
#include <QTemporaryDir>

#include <atomic>
#include <memory>
#include <set>
#include <string>

class QThread;

namespace trovek {

struct WindowOperation;

/** A service with one machine, the windows' client of it, and whoever lets it fail. */
class FaultScene
{
public:
    /**
     * @param facade the process's only one; connected while the scene lives
     * @param kind   what will go wrong
     */
    FaultScene(TrovekQt& facade, const WindowOperation& operation, FaultKind kind);
    ~FaultScene();

    /** Lets the next request of the operation's method meet the fault. */
    void breakIt(FaultKind kind);
    void breakIt(const SimulatedFault& fault);
    /** Whether the request has come that was to fail. */
    bool hasFailed();
    /** Waits for what ends the service in the middle of a request. */
    void joinBreaker();
    /** Everything is as it was in the beginning, but for what the windows have done. */
    void repair();

    Printer* printer() const { return facade.printerFromKey(key); }
    bool isIdle() const;
    /** Where the machine is now; it may be unplugged. */
    std::string portName();
    /** How many jobs that the service has made of that kind it still knows. */
    int jobsOf(const std::string& kind);
    void cancelJobs();
    QString path(const char* name) const { return m_folder.filePath(QString::fromLatin1(name)); }
    /** While there is such a file nothing is sliced to its end. */
    QString sliceBarrier() const { return m_slicer.path("wait"); }
    /** What a user has at hand. */
    QString model() const { return path("part.stl"); }
    QString gcode() const { return path("part.gcode"); }
    QString exportFolder() const { return path("exports"); }
    /** Of the user's own profile, "mine". */
    QString profileFolder() const { return m_profiles.path("mine"); }

    static void settle();

    TrovekQt& facade;
    const MachineName key;
    /** Another program of the same user. */
    RecordingTrovek witness;

private:
    void writeFiles();
    std::set<int> jobs() const;
    bool isServiceThere() const;
    void startService();
    void stopService();
    void connectClients();
    void plugIn();
    void unplug();
    void waitUntilUnplugged();
    void openMachine();
    void waitUntilSeen(bool present);
    void endServiceInTheMiddle(bool kill);

    const WindowOperation& m_operation;
    /** The service can be killed. */
    const bool m_ownProcess;
    const double m_timeScale;
    const QTemporaryDir m_folder;
    const ProfileWorld m_profiles;
    const FakeSlicer m_slicer;
    std::unique_ptr<service::EmbeddedService> m_embedded;
    std::unique_ptr<Daemon> m_daemon;
    Address m_address = Address::local(std::string());
    std::unique_ptr<QThread> m_breaker;
    /** The request takes the machine away. */
    bool m_pullsCable = false;
    bool m_endsLink = false;
    std::atomic<bool> m_isOver{false};

public:
    QSettings settings{m_folder.filePath(QStringLiteral("host.ini")), QSettings::IniFormat};
};

} // namespace trovek

#pragma once

#include "method_table.h"

#include <json/value.h>

#include <QObject>
#include <QString>

#include <memory>
#include <string>

namespace trovek::service {

struct ServiceOptions
{
    /** Kept between runs: job numbers, machines; made when it is missing. One service at a time
     * uses it. */
    QString stateDir;
    /** A machines file; the compiled-in one when empty. */
    QString machinesFile;
    /** Seconds of the virtual machines for each second of the clock. */
    double timeScale = 1.0;
    /** Where firmware comes from: a folder, or a "file:", "http:" or "https:" address of one; the
     * compiled-in firmware when empty. */
    QString firmwareCatalogue;
    /** The folder of downloaded firmware; one in the state folder when empty. */
    QString firmwareCache;
    /** Slices models: a name that is looked for on the PATH, or an absolute path; "prusa-slicer"
     * when empty. */
    QString slicer;
    /** Models that are sliced at a time; 0 for one a processor. */
    int slicesAtOnce = 0;
    /** Settings of the virtual scanner; the usual one when empty. */
    QString scannerFile;
};

/**
 * The service without its sockets: machines, jobs, methods and what it tells on its own.
 *
 * One thread, which needs an event loop; long work happens on a pool and comes back to it.
 */
class Service : public QObject
{
    Q_OBJECT

public:
    /** @throws std::runtime_error for a user: a state folder in use, a machines file with an error,
     * an address of firmware that is none
     */
    explicit Service(const ServiceOptions& options, QObject* parent = nullptr);
    /** Running jobs fail; machines keep their state. */
    ~Service() override;

    /** The answer may come inside the call, and before every notification of what the call changed.
     */
    void handle(const std::string& method, const Json::Value& params, Client& client,
                const Responder& respond);

signals:
    /** For subscribed clients; from the event loop, in the order of events. */
    void notification(const std::string& method, const Json::Value& params);

private:
    class Private;
    const std::unique_ptr<Private> d;
};

} // namespace trovek::service

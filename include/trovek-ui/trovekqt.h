#pragma once

#include "trovek-ui/export.h"

#include <trovek/trovek.h>

#include <QMetaType>
#include <QObject>

#include <string>

namespace trovek {

/**
 * The background service as a QObject: the client, with its notifications as signals.
 *
 * Every dialog and widget of the library takes it by reference and never owns it; it must outlive
 * them. The operations are those of Trovek. The signals come from the event loop of the thread that
 * called connectToDaemon(), never inside an operation, connected() excepted. It never connects or
 * reconnects by itself.
 */
class TROVEK_UI_EXPORT TrovekQt : public QObject, public Trovek
{
    Q_OBJECT

public:
    /** Registers the meta-types that the signals here and the method adapters carry. */
    TrovekQt();
    ~TrovekQt() override;

    /**
     * Connects and emits connected() before it returns.
     * @throws std::exception as Trovek::connectToDaemon() does; connected() is not emitted then
     */
    void connectToDaemon(const Address& address) override;

signals:
    void connected();
    /** After printerRemoved() and portDetached() for all that was there. */
    void disconnected();
    void printerAdded(Printer* printer);
    /** The object stays valid; Trovek::printerFromKey() no longer finds it. */
    void printerRemoved(Printer* printer);
    void printerChanged(Printer* printer);
    void jobAdded(trovek::Job::ID jobID);
    /** After the last jobChanged() of the job. */
    void jobConcluded(trovek::Job::ID jobID);
    void jobChanged(trovek::Job::ID jobID);
    void portAttached(std::string portName);
    void portDetached(std::string portName);
    void cameraClosed(std::string devicePath);

protected:
    void emitPrinterAdded(Printer* printer) override;
    void emitPrinterRemoved(Printer* printer) override;
    void emitPrinterChanged(Printer* printer) override;
    void emitJobAdded(int jobID) override;
    void emitJobConcluded(int jobID) override;
    void emitJobChanged(int jobID) override;
    void emitPortAttached(const std::string& portName) override;
    void emitPortDetached(const std::string& portName) override;
    void emitCameraClosed(const std::string& devicePath) override;
    void emitDisconnected() override;
};

} // namespace trovek

Q_DECLARE_METATYPE(std::string)

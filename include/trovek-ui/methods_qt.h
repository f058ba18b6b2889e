#pragma once

#include "trovek-ui/export.h"
#include "trovek-ui/methods_qt_internal.h"

#include <trovek/digitizer/ids.h>
#include <trovek/firmware_version.h>
#include <trovek/machine_name.h>
#include <trovek/methods.h>

#include <QMetaType>
#include <QObject>
#include <QString>

#include <set>
#include <string>

Q_DECLARE_METATYPE(std::set<std::string>)

/**
 * Requests as objects with signals, for those whose answer carries a value.
 *
 * They are used, owned and deleted as the ones in methods_qt_internal.h are, which has the others.
 * Each answers once: with its first signal, or with failed() when an error was answered, none can
 * come any more, or the answer has another shape; that is logged with severity 0.
 * QObject::inherits() knows them by their own name and by their request's, "connect_to_port".
 */
namespace trovek::methods::qt {

/** Opens the machine on a port. */
class TROVEK_UI_EXPORT ConnectToPort : public QObject, public connect_to_port
{
    Q_OBJECT

public:
    ConnectToPort();
    ~ConnectToPort() override;

signals:
    void connected(trovek::MachineName machineName);
    void failed();

protected:
    void handleResponse(const Json::Value& response) override;
    void handleErrorResponse(const Json::Value& error) override;
};

class TROVEK_UI_EXPORT DigitizerCameraDevicePath : public QObject,
                                                   public digitizer_camera_device_path
{
    Q_OBJECT

public:
    DigitizerCameraDevicePath();
    ~DigitizerCameraDevicePath() override;

signals:
    void pathReceived(QString path);
    void failed();

protected:
    void handleResponse(const Json::Value& response) override;
    void handleErrorResponse(const Json::Value& error) override;
};

class TROVEK_UI_EXPORT DigitizerLoadName : public QObject, public digitizer_load_name
{
    Q_OBJECT

public:
    DigitizerLoadName();
    ~DigitizerLoadName() override;

signals:
    /** As the scanner's user gave it. */
    void nameReceived(QString name);
    void failed();

protected:
    void handleResponse(const Json::Value& response) override;
    void handleErrorResponse(const Json::Value& error) override;
};

class TROVEK_UI_EXPORT DownloadFirmware : public QObject, public downloadfirmware
{
    Q_OBJECT

public:
    DownloadFirmware();
    ~DownloadFirmware() override;

signals:
    /** @param path the downloaded file, UTF-8 */
    void finished(std::string path);
    void failed();

protected:
    void handleResponse(const Json::Value& response) override;
    void handleErrorResponse(const Json::Value& error) override;
};

class TROVEK_UI_EXPORT GetDigitizerVersion : public QObject, public get_digitizer_version
{
    Q_OBJECT

public:
    GetDigitizerVersion();
    ~GetDigitizerVersion() override;

signals:
    void versionReceived(int major, int minor, int revision);
    void failed();

protected:
    void handleResponse(const Json::Value& response) override;
    void handleErrorResponse(const Json::Value& error) override;
};

/** The firmware that there is for a machine. */
class TROVEK_UI_EXPORT GetMachineVersions : public QObject, public getmachineversions
{
    Q_OBJECT

public:
    GetMachineVersions();
    ~GetMachineVersions() override;

signals:
    /** Elements of another shape are logged and left out, so the set may be empty. */
    void versionsReceived(std::set<FirmwareVersion> versions);
    /** @param internetFail true when the service could not reach the network */
    void failed(bool internetFail);

protected:
    void handleResponse(const Json::Value& response) override;
    void handleErrorResponse(const Json::Value& error) override;
};

/** The names of the kinds of machine that firmware can be sent to. */
class TROVEK_UI_EXPORT GetUploadableMachines : public QObject, public getuploadablemachines
{
    Q_OBJECT

public:
    GetUploadableMachines();
    ~GetUploadableMachines() override;

signals:
    /** Elements of another shape are logged and left out, so the set may be empty. */
    void namesReceived(std::set<std::string> names);
    void failed();

protected:
    void handleResponse(const Json::Value& response) override;
    void handleErrorResponse(const Json::Value& error) override;
};

class TROVEK_UI_EXPORT MeshCreate : public QObject, public mesh_create
{
    Q_OBJECT

public:
    MeshCreate();
    ~MeshCreate() override;

signals:
    /** The new mesh is empty, and the receiver's to destroy with mesh_destroy. */
    void meshIdReceived(trovek::digitizer::MeshID meshID);
    void failed();

protected:
    void handleResponse(const Json::Value& response) override;
    void handleErrorResponse(const Json::Value& error) override;
};

class TROVEK_UI_EXPORT PointCloudCreate : public QObject, public point_cloud_create
{
    Q_OBJECT

public:
    PointCloudCreate();
    ~PointCloudCreate() override;

signals:
    /** The new cloud is empty, and the receiver's to destroy with point_cloud_destroy. */
    void pointCloudIdReceived(trovek::digitizer::PointCloudID pointCloudID);
    void failed();

protected:
    void handleResponse(const Json::Value& response) override;
    void handleErrorResponse(const Json::Value& error) override;
};

} // namespace trovek::methods::qt

#include "trovek-ui/methods_qt.h"

#include <trovek/log.h>
#include <trovek/text.h>

#include <json/value.h>

static constexpr char kLogUnit[] = "src\\core\\methods_qt";

namespace trovek::methods::qt {

namespace {

bool isVersionTriple(const Json::Value& value)
{
    return value.isArray() && value.size() == 3 && value[0].isInt() && value[1].isInt() &&
           value[2].isInt();
}

bool isStringPair(const Json::Value& value)
{
    return value.isArray() && value.size() == 2 && value[0].isString() && value[1].isString();
}

} // namespace

// In every handler the signal comes last: a receiver may delete the adapter.

// ---- ConnectToPort

ConnectToPort::ConnectToPort() = default;
ConnectToPort::~ConnectToPort() = default;

void ConnectToPort::handleResponse(const Json::Value& response)
{
    if (!response.isObject() || !response["name"].isString()) {
        TROVEK_LOG(0) << "Missing machine name: " << response.toStyledString() << std::endl;
        handleErrorResponse(response);
        return;
    }
    emit connected(MachineName(response["name"].asString()));
}

void ConnectToPort::handleErrorResponse(const Json::Value&)
{
    emit failed();
}

// ---- DigitizerCameraDevicePath

DigitizerCameraDevicePath::DigitizerCameraDevicePath() = default;
DigitizerCameraDevicePath::~DigitizerCameraDevicePath() = default;

void DigitizerCameraDevicePath::handleResponse(const Json::Value& response)
{
    if (!response.isString()) {
        TROVEK_LOG(0) << "Digitizer camera path not a string: " << response.toStyledString()
                      << std::endl;
        handleErrorResponse(response);
        return;
    }
    emit pathReceived(toQString(response.asString()));
}

void DigitizerCameraDevicePath::handleErrorResponse(const Json::Value&)
{
    emit failed();
}

// ---- DigitizerLoadName

DigitizerLoadName::DigitizerLoadName() = default;
DigitizerLoadName::~DigitizerLoadName() = default;

void DigitizerLoadName::handleResponse(const Json::Value& response)
{
    if (!response.isString()) {
        TROVEK_LOG(0) << "Digitizer name not a string: " << response.toStyledString() << std::endl;
        handleErrorResponse(response);
        return;
    }
    emit nameReceived(toQString(response.asString()));
}

void DigitizerLoadName::handleErrorResponse(const Json::Value&)
{
    emit failed();
}

// ---- DownloadFirmware

DownloadFirmware::DownloadFirmware() = default;
DownloadFirmware::~DownloadFirmware() = default;

void DownloadFirmware::handleResponse(const Json::Value& response)
{
    if (!response.isString()) {
        TROVEK_LOG(0) << "Download path not a string: " << response.toStyledString() << std::endl;
        handleErrorResponse(response);
        return;
    }
    emit finished(response.asString());
}

void DownloadFirmware::handleErrorResponse(const Json::Value&)
{
    emit failed();
}

// ---- GetDigitizerVersion

GetDigitizerVersion::GetDigitizerVersion() = default;
GetDigitizerVersion::~GetDigitizerVersion() = default;

void GetDigitizerVersion::handleResponse(const Json::Value& response)
{
    if (!isVersionTriple(response)) {
        TROVEK_LOG(0) << "Invalid version format: " << response.toStyledString() << std::endl;
        handleErrorResponse(response);
        return;
    }
    emit versionReceived(response[0].asInt(), response[1].asInt(), response[2].asInt());
}

void GetDigitizerVersion::handleErrorResponse(const Json::Value&)
{
    emit failed();
}

// ---- GetMachineVersions

GetMachineVersions::GetMachineVersions()
{
    // A queued connection goes by the text of the signal, which leaves the namespace out.
    qRegisterMetaType<std::set<FirmwareVersion>>("std::set<FirmwareVersion>");
}

GetMachineVersions::~GetMachineVersions() = default;

void GetMachineVersions::handleResponse(const Json::Value& response)
{
    if (!response.isArray()) {
        TROVEK_LOG(0) << "Invalid version format\n" << response.toStyledString() << std::endl;
        handleErrorResponse(response);
        return;
    }
    std::set<FirmwareVersion> versions;
    for (const Json::Value& element : response) {
        if (isStringPair(element))
            versions.emplace(element[0].asString(), element[1].asString());
        else
            TROVEK_LOG(0) << "Invalid version format" << element.toStyledString() << std::endl;
    }
    emit versionsReceived(versions);
}

void GetMachineVersions::handleErrorResponse(const Json::Value& error)
{
    // What the service fetches with names itself in its errors, at whatever depth they are wrapped.
    const bool internetFail = error.toStyledString().find("urlopen") != std::string::npos;
    emit failed(internetFail);
}

// ---- GetUploadableMachines

GetUploadableMachines::GetUploadableMachines()
{
    qRegisterMetaType<std::set<std::string>>("std::set<std::string>");
}

GetUploadableMachines::~GetUploadableMachines() = default;

void GetUploadableMachines::handleResponse(const Json::Value& response)
{
    if (!response.isArray()) {
        TROVEK_LOG(0) << "Response not an array: " << response.toStyledString() << std::endl;
        handleErrorResponse(response);
        return;
    }
    std::set<std::string> names;
    for (const Json::Value& element : response) {
        if (element.isString())
            names.insert(element.asString());
        else
            TROVEK_LOG(0) << "Expected string, got: " << element.toStyledString() << std::endl;
    }
    emit namesReceived(names);
}

void GetUploadableMachines::handleErrorResponse(const Json::Value&)
{
    emit failed();
}

// ---- MeshCreate

MeshCreate::MeshCreate() = default;
MeshCreate::~MeshCreate() = default;

void MeshCreate::handleResponse(const Json::Value& response)
{
    if (!response.isInt()) {
        TROVEK_LOG(0) << "Invalid mesh ID: " << response.toStyledString() << std::endl;
        handleErrorResponse(response);
        return;
    }
    emit meshIdReceived(MeshID(response.asInt()));
}

void MeshCreate::handleErrorResponse(const Json::Value&)
{
    emit failed();
}

// ---- PointCloudCreate

PointCloudCreate::PointCloudCreate() = default;
PointCloudCreate::~PointCloudCreate() = default;

void PointCloudCreate::handleResponse(const Json::Value& response)
{
    if (!response.isInt()) {
        TROVEK_LOG(0) << "Invalid point cloud ID: " << response.toStyledString() << std::endl;
        handleErrorResponse(response);
        return;
    }
    emit pointCloudIdReceived(PointCloudID(response.asInt()));
}

void PointCloudCreate::handleErrorResponse(const Json::Value&)
{
    emit failed();
}

} // namespace trovek::methods::qt

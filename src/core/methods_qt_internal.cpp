#include "trovek-ui/methods_qt_internal.h"

#include <trovek/log.h>

#include <json/value.h>

#include <QPointer>

#include <cstring>
#include <exception>
#include <stdexcept>

// The header's place, as the log has always named it.
static constexpr char kLogUnit[] = "include\\trovek-ui/methods_qt_internal";

namespace trovek::methods::qt::internal {

namespace {

Job::ID jobIDFrom(const Json::Value& response)
{
    if (!response.isObject() || !response["id"].isInt())
        throw std::runtime_error("Missing job ID: " + response.toStyledString());
    return response["id"].asInt();
}

/** moc writes this for classes that are no templates. */
template <typename Request, typename Carrier, typename Adapter>
void* metacast(Adapter* adapter, const char* className)
{
    if (className && std::strcmp(className, Request::kName) == 0)
        return static_cast<Request*>(adapter);
    return adapter->Carrier::qt_metacast(className);
}

} // namespace

CreateJobQObject::CreateJobQObject() = default;
CreateJobQObject::~CreateJobQObject() = default;

FinishedOrFailedQObject::FinishedOrFailedQObject() = default;
FinishedOrFailedQObject::~FinishedOrFailedQObject() = default;

template <typename T>
CreateJobMethod<T>::CreateJobMethod() = default;

template <typename T>
CreateJobMethod<T>::~CreateJobMethod() = default;

template <typename T>
void* CreateJobMethod<T>::qt_metacast(const char* className)
{
    return metacast<T, CreateJobQObject>(this, className);
}

template <typename T>
void CreateJobMethod<T>::handleResponse(const Json::Value& response)
{
    // A receiver may delete the adapter and then throw.
    const QPointer<QObject> self(this);
    try {
        emit this->jobIdReceived(jobIDFrom(response));
    } catch (const std::exception& error) {
        TROVEK_LOG(0) << error.what() << std::endl;
        if (self)
            handleErrorResponse(response);
    }
}

template <typename T>
void CreateJobMethod<T>::handleErrorResponse(const Json::Value&)
{
    emit this->failed();
}

template <typename T>
FinishedOrFailedMethod<T>::FinishedOrFailedMethod() = default;

template <typename T>
FinishedOrFailedMethod<T>::~FinishedOrFailedMethod() = default;

template <typename T>
void* FinishedOrFailedMethod<T>::qt_metacast(const char* className)
{
    return metacast<T, FinishedOrFailedQObject>(this, className);
}

template <typename T>
void FinishedOrFailedMethod<T>::handleResponse(const Json::Value&)
{
    emit this->finished();
}

template <typename T>
void FinishedOrFailedMethod<T>::handleErrorResponse(const Json::Value&)
{
    emit this->failed();
}

template class CreateJobMethod<create_calibrate_camera_job>;
template class CreateJobMethod<create_calibrate_turntable_job>;
template class CreateJobMethod<print>;
template class CreateJobMethod<print_to_file>;
template class CreateJobMethod<scan>;
template class CreateJobMethod<slice>;

template class FinishedOrFailedMethod<calibratecamera>;
template class FinishedOrFailedMethod<calibratelaser>;
template class FinishedOrFailedMethod<calibrateturntable>;
template class FinishedOrFailedMethod<capture_image_auto_exposure>;
template class FinishedOrFailedMethod<captureimage>;
template class FinishedOrFailedMethod<digitizer_invalidate_user_calibration>;
template class FinishedOrFailedMethod<digitizer_save_name>;
template class FinishedOrFailedMethod<digitizer_set_enabled_lasers>;
template class FinishedOrFailedMethod<loadcalibration>;
template class FinishedOrFailedMethod<mesh_copy>;
template class FinishedOrFailedMethod<mesh_cut_plane>;
template class FinishedOrFailedMethod<mesh_destroy>;
template class FinishedOrFailedMethod<mesh_load>;
template class FinishedOrFailedMethod<mesh_place_on_platform>;
template class FinishedOrFailedMethod<mesh_reconstruct_point_cloud>;
template class FinishedOrFailedMethod<mesh_save>;
template class FinishedOrFailedMethod<point_cloud_coarse_alignment>;
template class FinishedOrFailedMethod<point_cloud_crop>;
template class FinishedOrFailedMethod<point_cloud_destroy>;
template class FinishedOrFailedMethod<point_cloud_fine_alignment>;
template class FinishedOrFailedMethod<point_cloud_load_from_id>;
template class FinishedOrFailedMethod<point_cloud_process>;
template class FinishedOrFailedMethod<point_cloud_save>;
template class FinishedOrFailedMethod<read_user_calibration_from_eeprom>;
template class FinishedOrFailedMethod<savecalibration>;
template class FinishedOrFailedMethod<uploadfirmware>;
template class FinishedOrFailedMethod<write_user_calibration_to_eeprom>;

} // namespace trovek::methods::qt::internal

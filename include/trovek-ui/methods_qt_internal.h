#pragma once

#include "trovek-ui/export.h"
#include "trovek-ui/trovekqt.h"

#include <trovek/job.h>
#include <trovek/methods.h>

#include <QObject>

/**
 * Requests as objects with signals, for those whose answer is a new job or just that it is done.
 *
 *     auto* copy = new FinishedOrFailedMethod<mesh_copy>;
 *     connect(copy, &FinishedOrFailedQObject::finished, this, &Window::showMesh);
 *     connect(copy, &FinishedOrFailedQObject::finished, copy, &QObject::deleteLater);
 *     copy->setSource(original);
 *     copy->issue(facade);
 *
 * Each answers once, with one of its two signals, from the event loop of the thread that the facade
 * lives in and never inside issue(). The caller owns it, and may delete it at any time: in the slot
 * that receives its signal, too, and before the answer, which is then dropped. When the facade is
 * destroyed first, there is no signal any more.
 *
 * The instances are those declared below, and they live in the library. methods_qt.h has the
 * requests whose answer carries something else.
 */
namespace trovek::methods::qt::internal {

/** The signals of CreateJobMethod: a template cannot have any. */
class TROVEK_UI_EXPORT CreateJobQObject : public QObject
{
    Q_OBJECT

public:
    CreateJobQObject();
    ~CreateJobQObject() override;

signals:
    /** The service made the job; watch it with a JobWatch. */
    void jobIdReceived(trovek::Job::ID scanJobId);
    /** An error was answered, or none can come any more, or the answer names no job. */
    void failed();
};

/** The signals of FinishedOrFailedMethod. */
class TROVEK_UI_EXPORT FinishedOrFailedQObject : public QObject
{
    Q_OBJECT

public:
    FinishedOrFailedQObject();
    ~FinishedOrFailedQObject() override;

signals:
    /** The service did what was asked for. */
    void finished();
    /** An error was answered, or none can come any more. */
    void failed();
};

/**
 * A request that makes a job. QObject::inherits() knows it by its carrier's name and by the name
 * of its request, such as "print".
 *
 * When a receiver of jobIdReceived() throws a std::exception, failed() follows.
 */
template <typename T>
class TROVEK_UI_EXPORT CreateJobMethod : public CreateJobQObject, public T
{
public:
    CreateJobMethod();
    ~CreateJobMethod() override;

    void* qt_metacast(const char* className) override;

protected:
    void handleResponse(const Json::Value& response) override;
    void handleErrorResponse(const Json::Value& error) override;
};

/** A request that is done or is not; known by two names as CreateJobMethod is. */
template <typename T>
class TROVEK_UI_EXPORT FinishedOrFailedMethod : public FinishedOrFailedQObject, public T
{
public:
    FinishedOrFailedMethod();
    ~FinishedOrFailedMethod() override;

    void* qt_metacast(const char* className) override;

protected:
    void handleResponse(const Json::Value& response) override;
    void handleErrorResponse(const Json::Value& error) override;
};

extern template class CreateJobMethod<create_calibrate_camera_job>;
extern template class CreateJobMethod<create_calibrate_turntable_job>;
extern template class CreateJobMethod<print>;
extern template class CreateJobMethod<print_to_file>;
extern template class CreateJobMethod<scan>;
extern template class CreateJobMethod<slice>;

extern template class FinishedOrFailedMethod<calibratecamera>;
extern template class FinishedOrFailedMethod<calibratelaser>;
extern template class FinishedOrFailedMethod<calibrateturntable>;
extern template class FinishedOrFailedMethod<capture_image_auto_exposure>;
extern template class FinishedOrFailedMethod<captureimage>;
extern template class FinishedOrFailedMethod<digitizer_invalidate_user_calibration>;
extern template class FinishedOrFailedMethod<digitizer_save_name>;
extern template class FinishedOrFailedMethod<digitizer_set_enabled_lasers>;
extern template class FinishedOrFailedMethod<loadcalibration>;
extern template class FinishedOrFailedMethod<mesh_copy>;
extern template class FinishedOrFailedMethod<mesh_cut_plane>;
extern template class FinishedOrFailedMethod<mesh_destroy>;
extern template class FinishedOrFailedMethod<mesh_load>;
extern template class FinishedOrFailedMethod<mesh_place_on_platform>;
extern template class FinishedOrFailedMethod<mesh_reconstruct_point_cloud>;
extern template class FinishedOrFailedMethod<mesh_save>;
extern template class FinishedOrFailedMethod<point_cloud_coarse_alignment>;
extern template class FinishedOrFailedMethod<point_cloud_crop>;
extern template class FinishedOrFailedMethod<point_cloud_destroy>;
extern template class FinishedOrFailedMethod<point_cloud_fine_alignment>;
extern template class FinishedOrFailedMethod<point_cloud_load_from_id>;
extern template class FinishedOrFailedMethod<point_cloud_process>;
extern template class FinishedOrFailedMethod<point_cloud_save>;
extern template class FinishedOrFailedMethod<read_user_calibration_from_eeprom>;
extern template class FinishedOrFailedMethod<savecalibration>;
extern template class FinishedOrFailedMethod<uploadfirmware>;
extern template class FinishedOrFailedMethod<write_user_calibration_to_eeprom>;

} // namespace trovek::methods::qt::internal

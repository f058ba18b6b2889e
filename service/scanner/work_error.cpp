#include "scanner/work_error.h"

#include "geometry/geometry_error.h"
#include "method_table.h"
#include "scanner/calibration_solver.h"

#include <trovek/log.h>
#include <trovek/wire.h>

#include <new>

namespace trovek::service {

static constexpr char kLogUnit[] = "service\\scanner\\work_error";

std::optional<JsonRpcException> errorOfWork(const std::function<void()>& work)
{
    using wire::makeError;
    try {
        work();
        return std::nullopt;
    } catch (const JsonRpcException& error) {
        return error;
    } catch (const geometry::Canceled& error) {
        return makeError(wire::error::kCanceled, error.what());
    } catch (const geometry::EmptyError& error) {
        return makeError(wire::error::kEmptyShape, error.what());
    } catch (const geometry::FileFormatError& error) {
        return makeError(wire::error::kFileFormat, error.what());
    } catch (const geometry::GeometryError& error) {
        return makeError(wire::error::kGeometry, error.what());
    } catch (const CalibrationError& error) {
        return makeError(wire::error::kCalibration, error.what());
    } catch (const std::bad_alloc&) {
        return makeError(wire::error::kLimit, "The service has no memory left for this");
    } catch (const std::exception& error) {
        TROVEK_LOG(0) << "Work of the scanner failed: " << error.what() << std::endl;
        return internalError(error.what());
    }
}

} // namespace trovek::service

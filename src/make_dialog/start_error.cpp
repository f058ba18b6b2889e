#include "make_dialog/start_error.h"

#include "make_dialog/tell.h"

#include "trovek-ui/messages.h"

#include <rpcwire/json_rpc_exception.h>
#include <trovek/log.h>
#include <trovek/wire.h>

#include <exception>

static constexpr char kLogUnit[] = "src\\make_dialog\\make_dialog";

namespace trovek {

namespace {

bool isPrintQueued(const JsonRpcException& error)
{
    const Json::Value& data = error.data();
    return data.isObject() && data["name"].isString() &&
           data["name"].asString() == wire::error::kPrintQueued;
}

} // namespace

void reportStartError(QWidget* parent)
{
    try {
        throw;
    } catch (const JsonRpcException& error) {
        TROVEK_LOG(0) << error.message() << std::endl;
        if (isPrintQueued(error))
            tell<message::PrinterIsBusy>(parent);
        else
            tell<message::GenericTrovekError>(parent);
    } catch (const std::exception& error) {
        TROVEK_LOG(0) << error.what() << std::endl;
        tell<message::FailedToStartPrint>(parent);
    } catch (...) {
        TROVEK_LOG(0) << "Something was thrown that is no exception" << std::endl;
        tell<message::FailedToStartPrint>(parent);
    }
}

} // namespace trovek

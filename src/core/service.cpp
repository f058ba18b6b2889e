#include "trovek-ui/service.h"

#include "core/service_control.h"
#include "core/service_manager.h"

#include "trovek-ui/messages/service.h"
#include "trovek-ui/util.h"

#include <trovek/log.h>

#include <exception>

namespace trovek::service {

static constexpr char kLogUnit[] = "src\\core\\service";

void control(ServiceManager& manager, Action action)
{
    try {
        const std::string failure = runAction(manager, action);
        if (failure.empty())
            return;
        TROVEK_LOG(0) << failure << std::endl;
        message::WindowsServiceError notice(nullptr);
        notice.exec();
        // Without a parent nobody else would.
        delete notice.box();
    } catch (const std::exception& e) {
        TROVEK_LOG(0) << e.what() << std::endl;
    }
}

void start()
{
    control(*systemServiceManager(), Action::Start);
}

void stop()
{
    control(*systemServiceManager(), Action::Stop);
}

void restart()
{
    control(*systemServiceManager(), Action::Restart);
}

bool actions_supported()
{
    return true;
}

QIcon errorIcon()
{
    return loadButtonIcon(QStringLiteral(":/printers/printer_service_error"));
}

} // namespace trovek::service

#include "service_link.h"

#include <trovek-ui/trovekqt.h>

#include <trovek/log.h>

#include <exception>

namespace ostrand {
namespace {

constexpr char kLogUnit[] = "apps\\ostrand\\service_link";

// The window stands still during an attempt: a service that accepts and then says nothing may
// hold it up for one second, not for five.
constexpr double kAttemptDeadlineScale = 0.2;

} // namespace

ServiceLink::ServiceLink(trovek::TrovekQt& facade, std::unique_ptr<ServiceSource> source,
                         std::vector<int> pausesMs, QObject* parent)
    : QObject(parent)
    , m_facade(facade)
    , m_source(std::move(source))
    , m_reconnector([this] { return attempt(); }, std::move(pausesMs))
{
    qRegisterMetaType<ServiceLink::State>();
    connect(&m_facade, &trovek::TrovekQt::connected, this, [this] { setState(Connected); });
    connect(&m_facade, &trovek::TrovekQt::disconnected, this, [this] {
        // The notice comes from the event loop; a new link may stand by then.
        if (!m_facade.isConnected())
            m_reconnector.start();
    });
    connect(&m_reconnector, &Reconnector::waiting, this, [this] { setState(Waiting); });
}

ServiceLink::~ServiceLink() = default;

void ServiceLink::connectNow()
{
    if (!m_facade.isConnected())
        m_reconnector.tryNow();
}

void ServiceLink::restartService()
{
    try {
        m_source->restart();
        m_facade.disconnectFromDaemon();
        m_reconnector.tryNow();
    } catch (const std::exception& e) {
        TROVEK_LOG(0) << e.what() << std::endl;
        m_failure = QString::fromUtf8(e.what());
        m_reconnector.start();
    }
}

bool ServiceLink::attempt()
{
    m_facade.setDeadlineScale(kAttemptDeadlineScale);
    bool worked = false;
    try {
        m_facade.connectToDaemon(m_source->address());
        m_failure.clear();
        worked = true;
    } catch (const std::exception& e) {
        TROVEK_LOG(1) << "No background service: " << e.what() << std::endl;
        m_failure = QString::fromUtf8(e.what());
    }
    m_facade.setDeadlineScale(1);
    return worked;
}

void ServiceLink::setState(State state)
{
    // Told also when nothing changes: another pause has another length and another reason.
    m_state = state;
    emit stateChanged(state);
}

} // namespace ostrand

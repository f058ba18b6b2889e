#pragma once

#include <QString>

#include <functional>

class QWidget;

namespace trovek::ui {
class OnboardPreferences;
}

namespace ostrand {

class Host;
class Pictures;
class Robot;

/**
 * Edits a machine's onboard preferences without hands: one setting of each kind is changed and
 * written, the service is restarted, and the values are found again.
 */
class OnboardTour
{
public:
    using Say = std::function<void(const QString& line)>;

    OnboardTour(Host& host, Pictures& pictures, Robot& robot, Say say);

    /** @throws std::runtime_error when anything is not as it should be */
    void run();

private:
    trovek::ui::OnboardPreferences& open();
    void close();
    void lookAround(trovek::ui::OnboardPreferences& window);
    void write(trovek::ui::OnboardPreferences& window);
    void showBackups(trovek::ui::OnboardPreferences& window);
    void showErrors();
    void photograph(QWidget& window, const QString& name, const QString& caption);

    Host& m_host;
    Pictures& m_pictures;
    Robot& m_robot;
    const Say m_say;
    QString m_machine;
};

} // namespace ostrand

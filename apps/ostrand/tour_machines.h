#pragma once

#include <QString>

#include <functional>

class QDialog;
class QWidget;

namespace trovek {
class Printer;
}

namespace ostrand {

class Host;
class Pictures;
class Robot;

/**
 * Looks after machines without hands: disconnects and connects one in the control panel, heats it
 * and feeds filament in the direct controls, and gives one with an old firmware, of which the host
 * warns, a newer one.
 */
class MachineTour
{
public:
    using Say = std::function<void(const QString& line)>;

    MachineTour(Host& host, Pictures& pictures, Robot& robot, Say say);

    /** @throws std::runtime_error when anything is not as it should be */
    void run();

private:
    void useControlPanel();
    void useDirectControls();
    void updateOldFirmware();
    void upload(QDialog& dialog);
    void photograph(QWidget& window, const QString& name, const QString& caption);
    trovek::Printer* printer() const;

    Host& m_host;
    Pictures& m_pictures;
    Robot& m_robot;
    const Say m_say;
    /** The key of the machine that is looked after. */
    QString m_machine;
};

} // namespace ostrand

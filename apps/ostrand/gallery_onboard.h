#pragma once

#include <QString>

#include <functional>

class QWidget;

namespace ostrand {

class Host;
class Robot;

/**
 * Photographs the onboard preferences of the first machine: the form in its states, the backups,
 * rows that cannot be edited, and the window without its machine, which is pulled out for it.
 *
 * @throws std::exception
 */
void photographOnboardPreferences(Host& host, Robot& robot,
                                  const std::function<void(QWidget& window, const QString& name,
                                                           const QString& caption)>& photograph);

} // namespace ostrand

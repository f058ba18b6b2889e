#pragma once

#include <QString>

#include <functional>

class QWidget;

namespace ostrand {

class Host;
class Robot;

/** The dialog that slices a model, in its states, and the one that makes a profile. */
void photographModels(Host& host, Robot& robot,
                      const std::function<void(QWidget& window, const QString& name,
                                               const QString& caption)>& photograph);

/** The windows that look after machines. */
void photographMachineTools(Host& host, Robot& robot,
                            const std::function<void(QWidget& window, const QString& name,
                                                     const QString& caption)>& photograph);

} // namespace ostrand

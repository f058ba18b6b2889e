#pragma once

#include "make_steps.h"

#include <QString>

#include <functional>

class QWidget;

namespace ostrand {

class Pictures;

/**
 * Makes the open model without hands: prints it after a look at its toolpaths, exports it for each
 * type of machine, and once more with a profile of the user's that is made and deleted on the way.
 */
class ModelTour
{
public:
    using Say = std::function<void(const QString& line)>;

    ModelTour(Host& host, Pictures& pictures, Robot& robot, Say say);

    /** @throws std::runtime_error when anything is not as it should be */
    void run(const QString& file);

private:
    void lookThroughDialog();
    void printAfterPreview();
    void exportFor(trovek::Printer::Type type);
    void exportWithProfile();
    void createProfile(QDialog& dialog, const QString& name);
    void deleteProfile(QDialog& dialog);
    QString destination(const QString& ending) const;
    void photograph(QWidget& window, const QString& name, const QString& caption);

    Host& m_host;
    Pictures& m_pictures;
    Robot& m_robot;
    const Say m_say;
    MakeSteps m_steps;
    QString m_file;
    /** That the file is made for. */
    int m_extruders = 1;
};

} // namespace ostrand

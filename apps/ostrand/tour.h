#pragma once

#include "make_steps.h"
#include "pictures.h"
#include "robot.h"

#include <trovek/job.h>

#include <QString>
#include <QStringList>

#include <functional>

class QDialog;
class QTextStream;

namespace ostrand {

class Host;

/**
 * Uses the host without hands: each file is opened, printed on a virtual machine to the end, and
 * exported through the real windows, with a picture of each step; G-code as x3g, s3g and gcode, a
 * model for each type of machine.
 *
 * Every export of G-code is compared, byte by byte, with what the service writes for the same
 * request.
 */
class Tour
{
public:
    /**
     * @param host  not owned, connected or connecting
     * @param dir   takes the pictures, and the exports below "exports"; files there are replaced
     * @param lines receives what was done, a line a step
     */
    Tour(Host& host, const QString& dir, const QStringList& files, QTextStream& lines);

    /** @return the exit status: 0 only when everything went well */
    int run();

private:
    void say(const QString& line);
    void photograph(QWidget& window, const QString& name, const QString& caption);
    void waitForMachines();
    void open(const QString& file);
    void print(const QString& file);
    void exportAs(const QString& file, const QString& suffix, const QString& filterStart);
    void compareWithService(const QString& file, const QString& exported,
                            const std::string& machine, const QString& suffix);

    Host& m_host;
    const QStringList m_files;
    QTextStream& m_lines;
    Pictures m_pictures;
    Robot m_robot;
    MakeSteps m_steps;
};

} // namespace ostrand

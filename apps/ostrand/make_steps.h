#pragma once

#include <trovek/job.h>
#include <trovek/printer.h>

#include <QString>

#include <functional>
#include <string>

class QAbstractButton;
class QDialog;

namespace ostrand {

class Host;
class Robot;

/** What tours do with a make dialog, whichever of them it is. Everything throws what went wrong. */
class MakeSteps
{
public:
    MakeSteps(Host& host, Robot& robot);

    /** Of the open file, by the button on its page; with what it shows settled. */
    QDialog& openDialog(bool exporting);
    void closeDialog();
    static QAbstractButton& button(const QDialog& dialog, const char* name);
    /** Chooses this type of machine; exports are for its archetype. */
    const trovek::Printer& chooseType(QDialog& dialog, trovek::Printer::Type type);
    /** Leaves what the dialog proposes unless the file needs more extruders than that has. */
    const trovek::Printer& chooseExtruders(QDialog& dialog, int extruders);

    /** The job that the action starts, when it shows in the list and the dialog has closed. */
    trovek::Job::ID jobStartedBy(const std::function<void()>& action);
    /** Presses the main button and gives the path in the dialog that opens. */
    trovek::Job::ID
    exportTo(QDialog& dialog, const QString& path, const QString& filterStart,
             const std::function<void(QDialog& chooser)>& beforeAccepting = nullptr);
    void waitForHalf(trovek::Job::ID job, const QString& what);
    /** @throws std::runtime_error with the job's reason when it fails */
    void waitForEnd(trovek::Job::ID job, const QString& what);
    /** Gives the reason for which the job failed; empty when it ended. */
    QString waitForConclusion(trovek::Job::ID job, const QString& what);
    /** Until the file is at its destination. */
    void waitForExport(trovek::Job::ID job);

private:
    Host& m_host;
    Robot& m_robot;
};

} // namespace ostrand

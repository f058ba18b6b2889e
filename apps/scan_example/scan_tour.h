#pragma once

#include "scan_chain.h"

#include <QString>

class QTextStream;

namespace ostrand {
class Pictures;
}

namespace scan_example {

class ScanWindow;

/** Presses every button of the window in its turn, and saves a picture after each step. */
class ScanTour
{
public:
    /**
     * @param window not owned, connected
     * @param dir    takes the pictures and the model; files there are replaced
     * @param lines  receives what was done, a line a step
     */
    ScanTour(ScanWindow& window, const QString& dir, QTextStream& lines);

    /** @return the exit status: 0 only when everything went well */
    int run();

private:
    void doStep(ScanChain::Step step, const QString& name);
    void openMakeDialog();
    void say(const QString& line);

    ScanWindow& m_window;
    const QString m_dir;
    QTextStream& m_lines;
};

} // namespace scan_example

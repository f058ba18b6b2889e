#pragma once

#include "pictures.h"
#include "robot.h"

#include <QPalette>
#include <QStringList>

#include <functional>

class QTextStream;
class QTemporaryDir;

namespace ostrand {

class Host;

/** Saves a picture of every window and message, and a page that shows them all. */
class Gallery
{
public:
    /**
     * @param files sliced files whose toolpaths are shown
     * @param lines receives what was done
     */
    Gallery(Host& host, const QString& dir, const QStringList& files, QTextStream& lines);

    /** @return the exit status */
    int run();

private:
    void photographMainWindow();
    void photographPreviews();
    void photographJobs();
    void photographMakeDialog();
    void photographWidgets();
    void photographMessages();
    void photographLostLink();
    void photograph(QWidget& window, const QString& name, const QString& caption);
    QString sampleFile(const QString& name, const QByteArray& content) const;

    using Photograph =
        std::function<void(QWidget& window, const QString& name, const QString& caption)>;

    Host& m_host;
    const QStringList m_files;
    QTextStream& m_lines;
    Pictures m_pictures;
    /** The G-code file that is open most of the time. */
    QString m_sample;
    Robot m_robot;
    int m_count = 0;
};

/** Dark colors for the Fusion style. */
QPalette darkPalette();

} // namespace ostrand

#pragma once

#include <QMenu>
#include <QStringList>

class QSettings;

namespace ostrand {

/** The files that were opened last, newest first, as a menu; kept in the settings. */
class RecentFiles : public QMenu
{
    Q_OBJECT

public:
    static constexpr int kMaximum = 10;

    /** @param settings not owned; must outlive the menu */
    explicit RecentFiles(QSettings& settings, QWidget* parent = nullptr);

    QStringList files() const;
    /** Makes the file the newest one; the surplus goes. */
    void add(const QString& path);
    void remove(const QString& path);

public slots:
    void removeAll();

signals:
    void chosen(const QString& path);

private:
    void store(const QStringList& files);
    void fill();

    QSettings& m_settings;
};

} // namespace ostrand

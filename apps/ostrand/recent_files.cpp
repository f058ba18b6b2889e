#include "recent_files.h"

#include <QDir>
#include <QFileInfo>
#include <QSettings>

namespace ostrand {
namespace {

constexpr char kKey[] = "ostrand/recentFiles";

} // namespace

RecentFiles::RecentFiles(QSettings& settings, QWidget* parent)
    : QMenu(tr("Open &Recent"), parent)
    , m_settings(settings)
{
    setObjectName(QStringLiteral("recentFiles"));
    setToolTipsVisible(true);
    fill();
}

QStringList RecentFiles::files() const
{
    return m_settings.value(QLatin1String(kKey)).toStringList().mid(0, kMaximum);
}

void RecentFiles::add(const QString& path)
{
    const QString absolute = QFileInfo(path).absoluteFilePath();
    QStringList list = files();
    list.removeAll(absolute);
    list.prepend(absolute);
    store(list.mid(0, kMaximum));
}

void RecentFiles::remove(const QString& path)
{
    QStringList list = files();
    if (list.removeAll(QFileInfo(path).absoluteFilePath()) > 0)
        store(list);
}

void RecentFiles::removeAll()
{
    store(QStringList());
}

void RecentFiles::store(const QStringList& files)
{
    m_settings.setValue(QLatin1String(kKey), files);
    fill();
}

void RecentFiles::fill()
{
    clear();
    const QStringList list = files();
    for (int i = 0; i < list.size(); ++i) {
        const QString& path = list[i];
        QString name = QFileInfo(path).fileName();
        name.replace(QLatin1Char('&'), QLatin1String("&&"));
        QString number = QString::number(i + 1);
        number.insert(number.size() - 1, QLatin1Char('&'));
        QAction* action = addAction(number + QLatin1Char(' ') + name);
        action->setToolTip(QDir::toNativeSeparators(path));
        connect(action, &QAction::triggered, this, [this, path] { emit chosen(path); });
    }
    setEnabled(!list.isEmpty());
    if (list.isEmpty())
        return;
    addSeparator();
    connect(addAction(tr("&Clear List")), &QAction::triggered, this, &RecentFiles::removeAll,
            Qt::QueuedConnection);
}

} // namespace ostrand

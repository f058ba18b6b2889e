#include "onboard/onboard_backups.h"

#include "onboard/onboard_image.h"
#include "state_file.h"
#include "system.h"

#include <trovek/log.h>
#include <trovek/text.h>

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QLocale>
#include <QRegularExpression>

#include <algorithm>
#include <stdexcept>

namespace trovek::service {

static constexpr char kLogUnit[] = "service\\onboard\\onboard_backups";

namespace {

constexpr char kDateFormat[] = "yyyyMMdd";
constexpr char kTimeFormat[] = "HHmmsszzz";

struct Backup
{
    int number = 0;
    EepromBackup backup;
};

QString suffix()
{
    return QStringLiteral(".bin");
}

QString makeName(int number, std::int64_t time)
{
    const QDateTime moment = QDateTime::fromMSecsSinceEpoch(time, Qt::UTC);
    return QStringLiteral("%1-%2T%3Z")
        .arg(number, 6, 10, QLatin1Char('0'))
        .arg(QLocale::c().toString(moment.date(), QLatin1String(kDateFormat)),
             QLocale::c().toString(moment.time(), QLatin1String(kTimeFormat)));
}

/** The numbers of a backup's name; number 0 for any other file's. */
Backup readName(const QString& name)
{
    static const QRegularExpression& form =
        *new QRegularExpression(QStringLiteral("\\A(\\d{6,9})-(\\d{8})T(\\d{9})Z\\.bin\\z"));
    Backup read;
    const QRegularExpressionMatch match = form.match(name);
    if (!match.hasMatch())
        return read;
    const QDate date = QDate::fromString(match.captured(2), QLatin1String(kDateFormat));
    const QTime time = QTime::fromString(match.captured(3), QLatin1String(kTimeFormat));
    if (!date.isValid() || !time.isValid())
        return read;
    read.number = match.captured(1).toInt();
    read.backup.name = toStdString(name.chopped(suffix().size()));
    read.backup.time = QDateTime(date, time, Qt::UTC).toMSecsSinceEpoch();
    return read;
}

/** Newest first. */
std::vector<Backup> readFolder(const QString& folder)
{
    std::vector<Backup> backups;
    for (const QString& name : QDir(folder).entryList(QDir::Files | QDir::NoSymLinks)) {
        const Backup backup = readName(name);
        if (backup.number > 0)
            backups.push_back(backup);
    }
    std::sort(backups.begin(), backups.end(),
              [](const Backup& left, const Backup& right) { return left.number > right.number; });
    return backups;
}

} // namespace

OnboardBackups::OnboardBackups(QString folder)
    : m_folder(std::move(folder))
{}

QString OnboardBackups::filePath(const std::string& name) const
{
    return QDir(m_folder).filePath(toQString(name) + suffix());
}

void OnboardBackups::add(const QByteArray& image, std::int64_t time) const
{
    makePrivateFolder(m_folder);
    const std::vector<Backup> before = readFolder(m_folder);
    const int number = before.empty() ? 1 : before.front().number + 1;
    if (!writeStateBytes(filePath(toStdString(makeName(number, time))), image))
        throw std::runtime_error("The backup of the onboard memory cannot be written");
    for (std::size_t i = kKept - 1; i < before.size(); ++i) {
        const QString path = filePath(before[i].backup.name);
        if (!QFile::remove(path))
            TROVEK_LOG(0) << "Cannot remove " << toStdString(path) << std::endl;
    }
}

std::vector<EepromBackup> OnboardBackups::list() const
{
    std::vector<EepromBackup> list;
    for (const Backup& backup : readFolder(m_folder))
        list.push_back(backup.backup);
    return list;
}

QByteArray OnboardBackups::image(const std::string& name) const
{
    const std::vector<EepromBackup> known = list();
    const bool isKnown = std::any_of(known.begin(), known.end(),
                                     [&name](const EepromBackup& b) { return b.name == name; });
    QFile file(filePath(name));
    if (!isKnown || !file.open(QIODevice::ReadOnly))
        return QByteArray();
    // One byte more than there should be tells a file that has grown.
    return file.read(kOnboardBytes + 1);
}

} // namespace trovek::service

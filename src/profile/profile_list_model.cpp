#include "trovek-ui/profile_list_model.h"

#include "profile/profile_watch.h"

#include <trovek/log.h>

#include <QDateTime>
#include <QFileInfo>
#include <QFileSystemWatcher>
#include <QHash>
#include <QScopedValueRollback>

#include <stdexcept>

static constexpr char kLogUnit[] = "src\\profile\\profile_list_model";

namespace trovek {

namespace {

std::unique_ptr<QDir>& globalProfileDirectory()
{
    static std::unique_ptr<QDir> directory;
    return directory;
}

/** Files that change twice within a tick of the clock that they are stamped by look the same. */
constexpr qint64 kClockTickMs = 100;

/** What a folder and its "profile.json" looked like when they were read. */
struct Stamp
{
    Stamp() = default;
    explicit Stamp(const QFileInfo& folder)
    {
        const QFileInfo file(folder.absoluteFilePath() + QLatin1String("/profile.json"));
        folderChanged = folder.metadataChangeTime();
        isFile = file.isFile();
        size = file.size();
        fileWritten = file.lastModified();
        fileChanged = file.metadataChangeTime();
        const QDateTime changed = isFile ? fileChanged : folderChanged;
        isSettled =
            QDateTime::currentMSecsSinceEpoch() - changed.toMSecsSinceEpoch() > kClockTickMs;
    }

    /** Whether it is sure that nothing has changed since. */
    bool isStill(const Stamp& now) const
    {
        return isSettled && folderChanged == now.folderChanged && isFile == now.isFile &&
               size == now.size && fileWritten == now.fileWritten && fileChanged == now.fileChanged;
    }

    QDateTime folderChanged;
    QDateTime fileWritten;
    QDateTime fileChanged;
    qint64 size = -1;
    bool isFile = false;
    bool isSettled = false;
};

} // namespace

void setGlobalProfileDirectory(const QDir& dir)
{
    if (globalProfileDirectory())
        throw std::runtime_error("Profile directory already set");
    globalProfileDirectory() = std::make_unique<QDir>(dir);
    // The program may go to another folder later.
    globalProfileDirectory()->makeAbsolute();
}

QDir getGlobalProfileDirectory()
{
    if (!globalProfileDirectory())
        throw std::runtime_error("Profile directory not set");
    return *globalProfileDirectory();
}

QSharedPointer<QDir> safeGetGlobalProfileDirectory()
{
    try {
        return QSharedPointer<QDir>::create(getGlobalProfileDirectory());
    } catch (const std::exception& error) {
        TROVEK_LOG(0) << error.what() << std::endl;
        return {};
    }
}

class ProfileListModel::Private
{
public:
    explicit Private(ProfileListModel* model)
        : q(model)
    {}

    bool isWanted(const Item& item) const
    {
        return !item.error().isEmpty() || item.isFor(machineTypeFilter);
    }

    void listDirectory(const QString& path)
    {
        directory = path;
        auto* const watcher = new QFileSystemWatcher(q);
        watch = std::make_unique<ProfileWatch>(*watcher, path);
        for (const auto signal :
             {&QFileSystemWatcher::directoryChanged, &QFileSystemWatcher::fileChanged}) {
            connect(watcher, signal, q, [this](const QString& changed) { readAgain(changed); });
            connect(watcher, signal, q, &ProfileListModel::update);
        }
    }

    /** At the next update, even if it was written so quickly that the file's time is the same. */
    void readAgain(const QString& changedPath)
    {
        for (const QString& path : {changedPath, QFileInfo(changedPath).path()}) {
            if (stamps.contains(path))
                stamps.insert(path, Stamp());
        }
    }

    void updateOnce()
    {
        // Before the look, so that no change falls between.
        watch->watchFolder();
        const QFileInfoList folders =
            QDir(directory).entryInfoList(QDir::Dirs | QDir::NoDotAndDotDot, QDir::Unsorted);
        QHash<QString, QFileInfo> listed;
        listed.reserve(folders.size());
        for (const QFileInfo& folder : folders)
            listed.insert(folder.absoluteFilePath(), folder);

        for (int row = q->rowCount() - 1; row >= 0; --row) {
            auto* const item = dynamic_cast<Item*>(q->item(row));
            if (item == nullptr || !item->profile().isOnDisk())
                continue;
            const QString path = item->profile().path();
            const auto folder = listed.constFind(path);
            if (folder != listed.constEnd())
                refresh(item, *folder);
            if (folder == listed.constEnd() || !isWanted(*item))
                removeRow(row, path);
        }

        QList<QStandardItem*> added;
        for (const QFileInfo& folder : folders) {
            if (!stamps.contains(folder.absoluteFilePath()))
                add(folder, &added);
        }
        if (!added.isEmpty())
            q->invisibleRootItem()->appendRows(added);
    }

    ProfileListModel* const q;
    QString directory;
    std::unique_ptr<ProfileWatch> watch;
    /** By the folder's path; of the user's profiles only. */
    QHash<QString, Stamp> stamps;
    Printer::Type machineTypeFilter = Printer::UnknownType;
    Printer::Type selectedMachineType = Printer::UnknownType;
    bool isUpdating = false;
    bool updateAgain = false;

private:
    void refresh(Item* item, const QFileInfo& folder)
    {
        const QString path = folder.absoluteFilePath();
        if (stamps.value(path).isStill(Stamp(folder)))
            return;
        watch->watchProfile(path);
        stamps.insert(path, Stamp(folder));
        item->read();
        item->judge(selectedMachineType);
    }

    void removeRow(int row, const QString& path)
    {
        stamps.remove(path);
        watch->forgetProfile(path);
        q->removeRow(row);
    }

    void add(const QFileInfo& folder, QList<QStandardItem*>* added)
    {
        const QString path = folder.absoluteFilePath();
        watch->watchProfile(path);
        const Stamp stamp(folder);
        auto item = std::make_unique<Item>(std::make_unique<DirectoryProfile>(QDir(path)));
        if (!isWanted(*item)) {
            watch->forgetProfile(path);
            return;
        }
        item->judge(selectedMachineType);
        stamps.insert(path, stamp);
        added->append(item.release());
    }
};

ProfileListModel::ProfileListModel(bool withPresets, bool withBuiltIns, QObject* parent)
    : QStandardItemModel(parent)
    , d(std::make_unique<Private>(this))
{
    if (withPresets) {
        for (const auto preset :
             {SlicerConfiguration::Low, SlicerConfiguration::Standard, SlicerConfiguration::High})
            appendRow(new Item(std::make_unique<FakeProfile>(preset)));
    }
    if (withBuiltIns) {
        const QFileInfoList folders =
            QDir(QStringLiteral(":/profiles"))
                .entryInfoList(QDir::Dirs | QDir::NoDotAndDotDot, QDir::Name);
        for (const QFileInfo& folder : folders)
            appendRow(new Item(std::make_unique<ResourceProfile>(folder.filePath())));
    }
    for (int row = 0; row < rowCount(); ++row)
        static_cast<Item*>(item(row))->judge(d->selectedMachineType);

    if (const QSharedPointer<QDir> directory = safeGetGlobalProfileDirectory())
        d->listDirectory(directory->absolutePath());
    update();
}

ProfileListModel::~ProfileListModel() = default;

Profile* ProfileListModel::profileAt(int row) const
{
    const auto* const profile = dynamic_cast<const Item*>(item(row));
    return profile == nullptr ? nullptr : &profile->profile();
}

void ProfileListModel::setMachineTypeFilter(Printer::Type type)
{
    d->machineTypeFilter = type;
    update();
}

void ProfileListModel::setSelectedMachineType(Printer::Type type)
{
    d->selectedMachineType = type;
    for (int row = 0; row < rowCount(); ++row) {
        if (auto* const profile = dynamic_cast<Item*>(item(row)))
            profile->judge(type);
    }
}

void ProfileListModel::removeProfile(const QDir& dir)
{
    update();
    // By its path, since others may be links to the same folder.
    const QString path = dir.absolutePath();
    if (!QFileInfo::exists(path))
        throw std::runtime_error("Profile already deleted");
    for (int row = 0; row < rowCount(); ++row) {
        Profile* const profile = profileAt(row);
        if (profile == nullptr || !profile->isOnDisk() || profile->path() != path)
            continue;
        try {
            profile->remove();
        } catch (const std::exception&) {
            update();
            throw;
        }
        update();
        return;
    }
    throw std::runtime_error("Not in the profile directory");
}

void ProfileListModel::update()
{
    if (!d->watch)
        return;
    // Removing a row tells views, whose owners may look again in return.
    d->updateAgain = true;
    if (d->isUpdating)
        return;
    const QScopedValueRollback<bool> guard(d->isUpdating, true);
    while (d->updateAgain) {
        d->updateAgain = false;
        d->updateOnce();
    }
}

} // namespace trovek

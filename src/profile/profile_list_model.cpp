#include "trovek-ui/profile_list_model.h"

#include "profile/profile_json.h"
#include "profile/profile_watch.h"
#include "trovek-ui/machine_types.h"

#include <trovek/log.h>
#include <trovek/text.h>

#include <QDateTime>
#include <QFileInfo>
#include <QFileSystemWatcher>
#include <QHash>
#include <QScopedValueRollback>
#include <QTextDocument>

#include <algorithm>
#include <stdexcept>

static constexpr char kLogUnit[] = "src\\profile\\profile_list_model";

namespace trovek {

namespace {

std::unique_ptr<QDir>& globalProfileDirectory()
{
    static std::unique_ptr<QDir> directory;
    return directory;
}

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
    }

    bool operator==(const Stamp& other) const
    {
        return folderChanged == other.folderChanged && isFile == other.isFile &&
               size == other.size && fileWritten == other.fileWritten &&
               fileChanged == other.fileChanged;
    }

    QDateTime folderChanged;
    QDateTime fileWritten;
    QDateTime fileChanged;
    qint64 size = -1;
    bool isFile = false;
};

/** A user profile's row, and when it was read. */
struct UserProfile
{
    ProfileListModel::Item* item = nullptr;
    Stamp stamp;
};

/** A file says itself which names it has, and they may look like markup. */
QString plainToolTip(const QString& text)
{
    return Qt::mightBeRichText(text) ? Qt::convertFromPlainText(text) : text;
}

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

ProfileListModel::Item::Item(std::unique_ptr<Profile> profile)
    : QStandardItem(profile->name())
    , m_profile(std::move(profile))
{
    setEditable(false);
    read();
}

ProfileListModel::Item::~Item() = default;

bool ProfileListModel::Item::isFor(Printer::Type machine) const
{
    return machine == Printer::UnknownType || m_profile->preset() != SlicerConfiguration::Custom ||
           std::find(m_machineTypes.begin(), m_machineTypes.end(), machine) != m_machineTypes.end();
}

void ProfileListModel::Item::read()
{
    // The presets have no files.
    if (m_profile->preset() != SlicerConfiguration::Custom)
        return;
    m_machineTypes.clear();
    m_error.clear();
    try {
        const Json::Value profileJson = m_profile->json();
        slicerOf(profileJson);
        m_machineTypes = machineTypesOf(profileJson);
    } catch (const std::exception& error) {
        m_error = toQString(error.what());
        TROVEK_LOG(1) << toStdString(m_profile->name()) << ": " << error.what() << std::endl;
    }
}

void ProfileListModel::Item::judge(Printer::Type selectedMachine)
{
    const QString reason = reasonAgainst(selectedMachine);
    // Setting an equal text would still be announced the first time.
    if (accessibleDescription() != reason) {
        setToolTip(plainToolTip(reason));
        setAccessibleDescription(reason);
    }
    // Last, so that whoever hears of it finds the reason there.
    if (isEnabled() != reason.isEmpty())
        setEnabled(reason.isEmpty());
}

QString ProfileListModel::Item::reasonAgainst(Printer::Type selectedMachine) const
{
    if (!m_error.isEmpty())
        return ProfileListModel::tr("Invalid profile: %1").arg(m_error);
    if (isFor(selectedMachine))
        return QString();
    QStringList machines;
    for (const Printer::Type type : m_machineTypes)
        machines.append(printerTypeToHumanString(type, PrinterStringWithBrand));
    const QString reason =
        ProfileListModel::tr("This profile is not for the %1.")
            .arg(printerTypeToHumanString(selectedMachine, PrinterStringWithBrand));
    return machines.isEmpty()
               ? reason
               : reason + QLatin1Char('\n') +
                     ProfileListModel::tr("It is for: %1").arg(machines.join(QLatin1String(", ")));
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
        for (const QString& folder : {changedPath, QFileInfo(changedPath).path()}) {
            const auto profile = profiles.find(folder);
            if (profile != profiles.end())
                profile->stamp = Stamp();
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
            const auto folder = listed.constFind(item->profile().path());
            if (folder != listed.constEnd())
                refresh(&profiles[folder.key()], *folder);
            if (folder == listed.constEnd() || !isWanted(*item))
                removeRow(row, item->profile().path());
        }

        QList<QStandardItem*> added;
        for (const QFileInfo& folder : folders) {
            if (!profiles.contains(folder.absoluteFilePath()))
                add(folder, &added);
        }
        if (!added.isEmpty())
            q->invisibleRootItem()->appendRows(added);
    }

    ProfileListModel* const q;
    QString directory;
    std::unique_ptr<ProfileWatch> watch;
    QHash<QString, UserProfile> profiles;
    Printer::Type machineTypeFilter = Printer::UnknownType;
    Printer::Type selectedMachineType = Printer::UnknownType;
    bool isUpdating = false;
    bool updateAgain = false;

private:
    void refresh(UserProfile* profile, const QFileInfo& folder)
    {
        if (profile->stamp == Stamp(folder))
            return;
        watch->watchProfile(folder.absoluteFilePath());
        profile->stamp = Stamp(folder);
        profile->item->read();
        profile->item->judge(selectedMachineType);
    }

    void removeRow(int row, const QString& path)
    {
        profiles.remove(path);
        watch->forgetProfile(path);
        q->removeRow(row);
    }

    void add(const QFileInfo& folder, QList<QStandardItem*>* added)
    {
        const QString path = folder.absoluteFilePath();
        watch->watchProfile(path);
        UserProfile profile;
        profile.stamp = Stamp(folder);
        auto item = std::make_unique<Item>(std::make_unique<DirectoryProfile>(QDir(path)));
        if (!isWanted(*item)) {
            watch->forgetProfile(path);
            return;
        }
        item->judge(selectedMachineType);
        profile.item = item.get();
        profiles.insert(path, profile);
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
    if (!QFileInfo::exists(dir.absolutePath()))
        throw std::runtime_error("Profile already deleted");
    const DirectoryProfile wanted(dir);
    for (int row = 0; row < rowCount(); ++row) {
        Profile* const profile = profileAt(row);
        if (profile == nullptr || !wanted.isSameAs(*profile))
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

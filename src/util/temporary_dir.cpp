#include "trovek-ui/file_system.h"

#include "util/private_directory.h"
#include "util/unused_name.h"

#include <QUuid>

#include <stdexcept>
#include <vector>

namespace trovek {

namespace {

constexpr int kNameAttempts = 3;

bool serviceRunsUnderAnotherAccount = false;

QString uniqueName()
{
    return QStringLiteral("trovek-ui-%1").arg(QUuid::createUuid().toString());
}

/** Never destroyed: at the end of the process the service may still write into the folders. */
std::vector<std::unique_ptr<TemporaryDir>>& managedDirectories()
{
    static auto* const directories = new std::vector<std::unique_ptr<TemporaryDir>>;
    return *directories;
}

} // namespace

QString unusedName(const QDir& folder, const std::function<QString()>& nextName)
{
    for (int attempt = 0; attempt < kNameAttempts; ++attempt) {
        const QString name = nextName();
        if (!folder.exists(name))
            return name;
    }
    throw std::runtime_error("UUID generation spectacularly wrong.");
}

struct TemporaryDir::State
{
    State()
        : base(tempBase())
        , name(unusedName(base, uniqueName))
    {
        if (!makePrivateDirectory(path(), serviceRunsUnderAnotherAccount))
            throw std::runtime_error("Failed to create temporary directory");
    }

    ~State()
    {
        deleteContents(QDir(path()));
        base.rmdir(name);
    }

    QString path() const { return base.absoluteFilePath(name); }

    const QDir base;
    const QString name;
};

TemporaryDir::TemporaryDir()
    : m_state(std::make_shared<const State>())
{
    setPath(m_state->path());
}

TemporaryDir::TemporaryDir(const TemporaryDir& other) = default;
TemporaryDir& TemporaryDir::operator=(const TemporaryDir& other) = default;
TemporaryDir::~TemporaryDir() = default;

QDir TemporaryDir::managedDir()
{
    managedDirectories().push_back(std::make_unique<TemporaryDir>());
    return *managedDirectories().back();
}

void TemporaryDir::cleanManagedDirectories()
{
    managedDirectories().clear();
}

void TemporaryDir::setServiceRunsUnderAnotherAccount(bool enabled)
{
    serviceRunsUnderAnotherAccount = enabled;
}

QDir TemporaryDir::tempBase()
{
    return QDir::temp();
}

void TemporaryDir::deleteContents(QDir dir)
{
    const QFileInfoList entries = dir.entryInfoList(QDir::AllEntries | QDir::NoDotAndDotDot);
    for (const QFileInfo& entry : entries) {
        if (entry.isDir() && !entry.isSymLink()) {
            deleteContents(QDir(entry.canonicalFilePath()));
            dir.rmdir(entry.fileName());
        } else {
            dir.remove(entry.fileName());
        }
    }
}

} // namespace trovek

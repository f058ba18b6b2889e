#pragma once

#include "support/file_size_limit.h"

#include <trovek-ui/machine_types.h>
#include <trovek-ui/profile_list_model.h>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <vector>

#ifdef Q_OS_UNIX
#include <sys/stat.h>
#include <unistd.h>
#endif

namespace trovek {

inline QString text(const char* utf8)
{
    return QString::fromUtf8(utf8);
}

inline void writeFile(const QString& path, const QByteArray& bytes)
{
    QVERIFY2(QDir().mkpath(QFileInfo(path).path()), qPrintable(path));
    QFile file(path);
    QVERIFY2(file.open(QIODevice::WriteOnly), qPrintable(path));
    QCOMPARE(file.write(bytes), qint64(bytes.size()));
}

inline QByteArray readFile(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("no such file");
}

/** All that is in the folder, hidden or not, as relative paths in order. */
inline QStringList tree(const QString& folder, const QString& prefix = QString())
{
    QStringList names;
    const QFileInfoList entries = QDir(folder).entryInfoList(
        QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot, QDir::Name);
    for (const QFileInfo& entry : entries) {
        names += prefix + entry.fileName();
        if (entry.isDir() && !entry.isSymLink())
            names += tree(entry.filePath(), prefix + entry.fileName() + text("/"));
    }
    return names;
}

inline QByteArray profileJson(const QByteArray& machineTypes)
{
    return R"({"machine_type": [)" + machineTypes + R"(], "slicer": "strandel"})";
}

/** A profile's four files; as a user's folder has them. */
inline void writeProfile(const QString& folder, const QByteArray& machineTypes = R"("fabrino_2")")
{
    writeFile(folder + text("/profile.json"), profileJson(machineTypes));
    writeFile(folder + text("/strandel.json"), R"({"layerHeight": 0.2})");
    writeFile(folder + text("/start.gcode"), "G28\n");
    writeFile(folder + text("/end.gcode"), "M18\n");
}

inline const std::vector<Printer::Type>& allMachineTypes()
{
    static const std::vector<Printer::Type> types = {
        Printer::FabrinoSingle, Printer::FabrinoDual, Printer::Fabrino2,
        Printer::Fabrino2X,     Printer::CubioSingle, Printer::CubioDual,
    };
    return types;
}

/** The identifiers, for a QCOMPARE that shows them. */
inline QStringList identifiers(const std::vector<Printer::Type>& types)
{
    QStringList names;
    for (const Printer::Type type : types)
        names.append(printerTypeToIdentifier(type));
    return names;
}

/** The process's profile directory, empty again for each test. */
class ProfileWorld
{
public:
    ProfileWorld()
    {
        static QTemporaryDir temporary;
        static const bool isSet = [] {
            setGlobalProfileDirectory(QDir(temporary.filePath(text("profiles"))));
            return true;
        }();
        Q_UNUSED(isSet)
        m_base = temporary.path();
        const QFileInfoList entries = QDir(m_base).entryInfoList(
            QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
        for (const QFileInfo& entry : entries) {
            if (entry.isDir() && !entry.isSymLink())
                QDir(entry.filePath()).removeRecursively();
            else
                QFile::remove(entry.filePath());
        }
        QDir().mkpath(directory());
    }

    QString base() const { return m_base; }
    QString directory() const { return m_base + text("/profiles"); }
    QString path(const QString& name) const { return directory() + text("/") + name; }
    QString path(const char* name) const { return path(text(name)); }
    QString path(const QByteArray& name) const { return path(text(name)); }

    void addProfile(const char* name, const QByteArray& machineTypes = R"("fabrino_2")") const
    {
        writeProfile(path(name), machineTypes);
    }

private:
    QString m_base;
};

inline QStringList rowsOf(const QAbstractItemModel& model)
{
    QStringList rows;
    for (int row = 0; row < model.rowCount(); ++row)
        rows.append(model.index(row, 0).data().toString());
    return rows;
}

/** The rows from `first` on, sorted: the directory's own order is the file system's. */
inline QStringList userRows(const QAbstractItemModel& model, int first = 0)
{
    QStringList rows = rowsOf(model).mid(first);
    rows.sort();
    return rows;
}

inline QStandardItem* itemOf(const QStandardItemModel& model, const QString& name)
{
    const QList<QStandardItem*> items = model.findItems(name);
    return items.isEmpty() ? nullptr : items.first();
}

#ifdef Q_OS_UNIX
/** Root reads and writes everything; here it is somebody else for a while. */
class OrdinaryUser
{
public:
    OrdinaryUser()
        : m_wasRoot(::geteuid() == 0 && ::setresuid(65534, 65534, 0) == 0)
    {}
    OrdinaryUser(const OrdinaryUser&) = delete;
    OrdinaryUser& operator=(const OrdinaryUser&) = delete;
    ~OrdinaryUser()
    {
        if (m_wasRoot && ::setresuid(0, 0, 0) != 0)
            qFatal("Cannot become root again");
    }

private:
    const bool m_wasRoot;
};
#endif

} // namespace trovek

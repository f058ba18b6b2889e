#pragma once

#include <trovek/printer.h>

#include <json/value.h>

#include <QByteArray>
#include <QString>
#include <QTemporaryDir>

#include <string>

namespace trovek {

/** An image with a right header. */
QByteArray firmwareImage(Printer::Type type, int majorVersion, int minorVersion,
                         int payloadBytes = 1000);

/** A catalogue of firmware in a folder of its own, of which a test may spoil anything. */
class CatalogueFolder
{
public:
    CatalogueFolder();

    QString path() const { return m_dir.path(); }
    QString filePath(const QString& name) const { return m_dir.filePath(name); }

    /** An image and its entry; the index is written at once. */
    void add(const std::string& machine, Printer::Type type, const std::string& version,
             const std::string& description = std::string());
    /** For whatever bytes, in a file of that name. */
    static Json::Value entryFor(const QString& file, const QByteArray& image);

    /** The member "firmware" is the list. */
    Json::Value index;
    void writeIndex() const;
    void writeFile(const QString& name, const QByteArray& bytes) const;
    QByteArray readFile(const QString& name) const;

private:
    QTemporaryDir m_dir;
};

} // namespace trovek

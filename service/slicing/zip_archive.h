#pragma once

#include <QByteArray>
#include <QtGlobal>

#include <functional>
#include <string>
#include <vector>

class QIODevice;

namespace trovek::service {

/** One file of a ZIP archive, as its directory says. */
struct ZipEntry
{
    std::string name;
    /** 0 as it is, 8 deflated. */
    quint16 method = 0;
    quint32 crc = 0;
    quint32 packedSize = 0;
    quint32 size = 0;
    /** Of its header in the archive. */
    quint32 offset = 0;
};

/** Takes bytes in order; throws to end the reading. */
using ByteTaker = std::function<void(const char* bytes, qint64 size)>;

/** Reads a ZIP archive of whatever origin: nothing that it says is believed unchecked. */
class ZipReader
{
public:
    /**
     * @param file not owned
     * @throws std::runtime_error when it is no archive, or one that is damaged, encrypted or above
     * 4 GiB
     */
    explicit ZipReader(QIODevice& file);

    const std::vector<ZipEntry>& entries() const { return m_entries; }
    /** As it lies in the archive. @throws std::runtime_error */
    void readPacked(const ZipEntry& entry, const ByteTaker& take);
    /** @throws std::runtime_error when it is damaged, also in its last byte */
    void read(const ZipEntry& entry, const ByteTaker& take);

private:
    QByteArray bytesAt(qint64 offset, qint64 size);

    QIODevice& m_file;
    std::vector<ZipEntry> m_entries;
};

/** Writes a ZIP archive. Each call throws WriteError when the file cannot be written. */
class ZipWriter
{
public:
    /** @param file open, at its beginning; not owned */
    explicit ZipWriter(QIODevice& file);

    /** Begins a file whose packed bytes come next. */
    void begin(const ZipEntry& entry);
    void write(const char* bytes, qint64 size);
    void add(const std::string& name, const QByteArray& bytes);
    void finish();

private:
    void write(const QByteArray& bytes);

    QIODevice& m_file;
    std::vector<ZipEntry> m_entries;
};

} // namespace trovek::service

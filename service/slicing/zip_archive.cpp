#include "slicing/zip_archive.h"

#include "write_all.h"

#include <QIODevice>
#include <QtEndian>

#include <zlib.h>

#include <algorithm>
#include <limits>
#include <stdexcept>

namespace trovek::service {

namespace {

constexpr quint32 kEntrySignature = 0x04034b50;
constexpr quint32 kDirectorySignature = 0x02014b50;
constexpr quint32 kEndSignature = 0x06054b50;
constexpr int kEntryBytes = 30;
constexpr int kDirectoryBytes = 46;
constexpr int kEndBytes = 22;
constexpr int kLongestComment = 0xffff;
constexpr int kMostEntries = 10000;
constexpr qint64 kPieceBytes = 1 << 18;
constexpr quint16 kStored = 0;
constexpr quint16 kDeflated = 8;
constexpr quint16 kEncrypted = 1;
constexpr quint16 kVersion = 20;
/** Where an archive above 4 GiB has its numbers elsewhere. */
constexpr quint32 kElsewhere = 0xffffffff;

[[noreturn]] void fail(const char* reason)
{
    throw std::runtime_error(reason);
}

quint16 number16(const QByteArray& bytes, int offset)
{
    return qFromLittleEndian<quint16>(bytes.constData() + offset);
}

quint32 number32(const QByteArray& bytes, int offset)
{
    return qFromLittleEndian<quint32>(bytes.constData() + offset);
}

template <typename Number>
void append(QByteArray& bytes, Number number)
{
    char raw[sizeof number];
    qToLittleEndian(number, raw);
    bytes.append(raw, sizeof raw);
}

quint32 crcOf(quint32 crc, const char* bytes, qint64 size)
{
    return static_cast<quint32>(
        ::crc32(crc, reinterpret_cast<const Bytef*>(bytes), static_cast<uInt>(size)));
}

/** zlib's state for a stream without a header. */
class Inflater
{
public:
    Inflater()
    {
        if (::inflateInit2(&m_stream, -MAX_WBITS) != Z_OK)
            fail("there is not enough memory to unpack it");
    }
    Inflater(const Inflater&) = delete;
    Inflater& operator=(const Inflater&) = delete;
    ~Inflater() { ::inflateEnd(&m_stream); }

    void take(const char* bytes, qint64 size, const ByteTaker& give)
    {
        m_stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(bytes));
        m_stream.avail_in = static_cast<uInt>(size);
        do {
            // Something stands behind the end.
            if (m_isAtEnd)
                fail("it is damaged");
            m_stream.next_out = reinterpret_cast<Bytef*>(m_output.data());
            m_stream.avail_out = static_cast<uInt>(m_output.size());
            const int status = ::inflate(&m_stream, Z_NO_FLUSH);
            if (status != Z_OK && status != Z_STREAM_END && status != Z_BUF_ERROR)
                fail("it is damaged");
            m_isAtEnd = status == Z_STREAM_END;
            give(m_output.data(), static_cast<qint64>(m_output.size() - m_stream.avail_out));
        } while (m_stream.avail_in > 0 || (m_stream.avail_out == 0 && !m_isAtEnd));
    }

    bool isAtEnd() const { return m_isAtEnd; }

private:
    z_stream m_stream{};
    std::vector<char> m_output = std::vector<char>(static_cast<std::size_t>(kPieceBytes));
    bool m_isAtEnd = false;
};

} // namespace

ZipReader::ZipReader(QIODevice& file)
    : m_file(file)
{
    const qint64 tailSize = std::min<qint64>(file.size(), kEndBytes + kLongestComment);
    const qint64 tailOffset = file.size() - tailSize;
    const QByteArray tail = bytesAt(tailOffset, tailSize);
    int end = tail.size() - kEndBytes;
    while (end >= 0 && number32(tail, end) != kEndSignature)
        --end;
    if (end < 0)
        fail("it is no archive");

    const int count = number16(tail, end + 10);
    const quint32 directorySize = number32(tail, end + 12);
    const quint32 directoryOffset = number32(tail, end + 16);
    if (directoryOffset == kElsewhere || count > kMostEntries)
        fail("it is too large");
    if (qint64(directoryOffset) + directorySize > tailOffset + end)
        fail("it is damaged");
    const QByteArray directory = bytesAt(directoryOffset, directorySize);
    int at = 0;
    qint64 packedSize = 0;
    for (int i = 0; i < count; ++i) {
        if (at + kDirectoryBytes > directory.size() ||
            number32(directory, at) != kDirectorySignature)
            fail("it is damaged");
        ZipEntry entry;
        const quint16 flags = number16(directory, at + 8);
        entry.method = number16(directory, at + 10);
        entry.crc = number32(directory, at + 16);
        entry.packedSize = number32(directory, at + 20);
        entry.size = number32(directory, at + 24);
        const int nameSize = number16(directory, at + 28);
        const int moreSize = number16(directory, at + 30) + number16(directory, at + 32);
        entry.offset = number32(directory, at + 42);
        at += kDirectoryBytes;
        if (at + nameSize + moreSize > directory.size())
            fail("it is damaged");
        entry.name = directory.mid(at, nameSize).toStdString();
        at += nameSize + moreSize;
        if ((flags & kEncrypted) != 0)
            fail("it is encrypted");
        if (entry.packedSize == kElsewhere || entry.size == kElsewhere ||
            entry.offset == kElsewhere)
            fail("it is too large");
        // Files that share their bytes would make a copy of any size.
        packedSize += entry.packedSize;
        if (packedSize > file.size())
            fail("it is damaged");
        m_entries.push_back(std::move(entry));
    }
}

QByteArray ZipReader::bytesAt(qint64 offset, qint64 size)
{
    if (size > std::numeric_limits<int>::max() || offset + size > m_file.size() ||
        !m_file.seek(offset))
        fail("it is damaged");
    QByteArray bytes = m_file.read(size);
    if (bytes.size() != size)
        fail("it is damaged");
    return bytes;
}

void ZipReader::readPacked(const ZipEntry& entry, const ByteTaker& take)
{
    const QByteArray header = bytesAt(entry.offset, kEntryBytes);
    if (number32(header, 0) != kEntrySignature)
        fail("it is damaged");
    const qint64 begin =
        qint64(entry.offset) + kEntryBytes + number16(header, 26) + number16(header, 28);
    const qint64 end = begin + entry.packedSize;
    for (qint64 at = begin; at < end; at += kPieceBytes) {
        const QByteArray piece = bytesAt(at, std::min(kPieceBytes, end - at));
        take(piece.constData(), piece.size());
    }
}

void ZipReader::read(const ZipEntry& entry, const ByteTaker& take)
{
    qint64 size = 0;
    quint32 crc = 0;
    const auto check = [&](const char* bytes, qint64 count) {
        size += count;
        // A few bytes can unpack to anything.
        if (size > entry.size)
            fail("it is damaged");
        crc = crcOf(crc, bytes, count);
        take(bytes, count);
    };
    if (entry.method == kStored) {
        readPacked(entry, check);
    } else if (entry.method == kDeflated) {
        Inflater inflater;
        readPacked(entry,
                   [&](const char* bytes, qint64 packed) { inflater.take(bytes, packed, check); });
        if (!inflater.isAtEnd())
            fail("it is damaged");
    } else {
        fail("it is packed in a way that is not known");
    }
    if (size != entry.size || crc != entry.crc)
        fail("it is damaged");
}

ZipWriter::ZipWriter(QIODevice& file)
    : m_file(file)
{}

namespace {

/** What a file's header and the directory say alike. */
QByteArray factsOf(const ZipEntry& entry)
{
    constexpr quint16 kUtf8Name = 1 << 11;
    constexpr quint32 kFirstOfJanuary1980 = 0x21 << 16;
    QByteArray facts;
    append(facts, kVersion);
    append(facts, kUtf8Name);
    append(facts, entry.method);
    append(facts, kFirstOfJanuary1980);
    append(facts, entry.crc);
    append(facts, entry.packedSize);
    append(facts, entry.size);
    append(facts, static_cast<quint16>(entry.name.size()));
    append(facts, quint16(0));
    return facts;
}

} // namespace

void ZipWriter::begin(const ZipEntry& entry)
{
    m_entries.push_back(entry);
    m_entries.back().offset = static_cast<quint32>(m_file.pos());
    QByteArray header;
    append(header, kEntrySignature);
    write(header + factsOf(entry) + QByteArray::fromStdString(entry.name));
}

void ZipWriter::write(const char* bytes, qint64 size)
{
    writeAll(m_file, bytes, size);
}

void ZipWriter::write(const QByteArray& bytes)
{
    write(bytes.constData(), bytes.size());
}

void ZipWriter::add(const std::string& name, const QByteArray& bytes)
{
    ZipEntry entry;
    entry.name = name;
    entry.crc = crcOf(0, bytes.constData(), bytes.size());
    entry.size = static_cast<quint32>(bytes.size());
    entry.packedSize = entry.size;
    begin(entry);
    write(bytes);
}

void ZipWriter::finish()
{
    const qint64 directoryOffset = m_file.pos();
    QByteArray directory;
    for (const ZipEntry& entry : m_entries) {
        append(directory, kDirectorySignature);
        append(directory, kVersion);
        directory += factsOf(entry);
        // No comment, first disk, no attributes.
        directory += QByteArray(10, '\0');
        append(directory, entry.offset);
        directory += QByteArray::fromStdString(entry.name);
    }
    const int directorySize = directory.size();
    const auto count = static_cast<quint16>(m_entries.size());
    append(directory, kEndSignature);
    append(directory, quint32(0));
    append(directory, count);
    append(directory, count);
    append(directory, static_cast<quint32>(directorySize));
    append(directory, static_cast<quint32>(directoryOffset));
    append(directory, quint16(0));
    write(directory);
}

} // namespace trovek::service

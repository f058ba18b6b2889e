#include "slicing/model_file.h"

#include "gcode/gcode_estimate.h"
#include "slicing/model_archive.h"
#include "write_all.h"

#include <trovek/text.h>

#include <QFile>
#include <QFileInfo>
#include <QStringList>
#include <QtEndian>

#include <algorithm>
#include <stdexcept>
#include <vector>

namespace trovek::service {

namespace {

constexpr int kCopyBytes = 1 << 18;

QString suffixOf(const std::string& name)
{
    return QFileInfo(toQString(name)).suffix().toLower();
}

void copyBytes(QFile& input, QFile& output, const std::function<bool()>& goOn)
{
    std::vector<char> buffer(kCopyBytes);
    for (;;) {
        if (!goOn())
            throw GCodeCanceled();
        const qint64 count = input.read(buffer.data(), kCopyBytes);
        if (count < 0)
            throw std::runtime_error(toStdString(input.errorString()));
        if (count == 0)
            return;
        writeAll(output, buffer.data(), count);
    }
}

/**
 * prusa-slicer takes an STL for binary when a byte behind the header is above 127, whatever its
 * size says: many a plain block has none such, and an umlaut makes a text binary.
 */
void makeKindPlain(QFile& output)
{
    constexpr int kHeaderBytes = 84;
    constexpr int kFacetBytes = 50;
    constexpr int kLookedAt = kHeaderBytes + 128;
    // Behind the first facet's numbers stands what nobody reads.
    constexpr int kSpareByte = kHeaderBytes + kFacetBytes - 1;

    if (!output.flush() || !output.seek(0))
        throw WriteError(output);
    QByteArray head = output.read(kLookedAt);
    if (head.size() < kLookedAt)
        return;
    const qint64 facets = qFromLittleEndian<quint32>(head.constData() + kHeaderBytes - 4);
    if (output.size() == kHeaderBytes + facets * kFacetBytes)
        head[kSpareByte] = '\xff';
    else if (head.startsWith("solid"))
        std::replace_if(
            head.begin() + kHeaderBytes, head.end(), [](char c) { return (c & 0x80) != 0; }, '?');
    output.seek(0);
    writeAll(output, head.constData(), head.size());
}

void copyAs(const QString& format, QFile& input, QFile& output, PartTools tools,
            const std::function<bool()>& goOn)
{
    if (format == QLatin1String("3mf")) {
        copyThreeMf(input, output, tools, goOn);
    } else if (format == QLatin1String("amf")) {
        copyAmf(input, output, tools, goOn);
    } else {
        copyBytes(input, output, goOn);
        if (format == QLatin1String("stl"))
            makeKindPlain(output);
    }
}

/** Empty for a thing that holds nothing to slice. */
QString formatOf(QFile& input, const std::string& name)
{
    const QString suffix = suffixOf(name);
    return suffix == QLatin1String("thing") ? QString::fromLatin1(formatOfThing(input)) : suffix;
}

template <typename Read>
auto copying(Read read)
{
    try {
        return read();
    } catch (const WriteError& error) {
        throw std::runtime_error(std::string("Cannot copy the model: ") + error.what());
    } catch (const std::runtime_error& error) {
        throw std::runtime_error(std::string("The model cannot be read: ") + error.what());
    }
}

} // namespace

bool isModelName(const std::string& path)
{
    static const QStringList suffixes{
        QStringLiteral("stl"), QStringLiteral("obj"),   QStringLiteral("3mf"),
        QStringLiteral("amf"), QStringLiteral("thing"),
    };
    return suffixes.contains(suffixOf(path));
}

QString copyModel(QFile& input, const std::string& name, const QString& folder, PartTools tools,
                  const std::function<bool()>& goOn)
{
    if (input.size() == 0)
        throw std::runtime_error("The model is empty");
    const QString format = copying([&] { return formatOf(input, name); });
    if (format.isEmpty()) {
        throw std::runtime_error("Things of this kind cannot be sliced; save the model as STL, "
                                 "OBJ, 3MF or AMF");
    }
    QFile output(folder + QStringLiteral("/model.") + format);
    copying([&] {
        if (!output.open(QIODevice::ReadWrite | QIODevice::Truncate))
            throw WriteError(output);
        if (!input.seek(0))
            throw std::runtime_error(toStdString(input.errorString()));
        copyAs(format, input, output, tools, goOn);
        if (!output.flush() || output.error() != QFileDevice::NoError)
            throw WriteError(output);
    });
    return output.fileName();
}

} // namespace trovek::service

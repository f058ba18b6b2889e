#include "slicing/model_file.h"

#include "gcode/gcode_estimate.h"

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

void copyBytes(QFile& input, const QString& path, const std::function<bool()>& goOn)
{
    QFile output(path);
    bool isWritten = output.open(QIODevice::WriteOnly);
    std::vector<char> buffer(kCopyBytes);
    while (isWritten) {
        if (!goOn())
            throw GCodeCanceled();
        const qint64 count = input.read(buffer.data(), kCopyBytes);
        if (count < 0)
            throw std::runtime_error("Cannot read the model: " + toStdString(input.errorString()));
        if (count == 0)
            break;
        isWritten = output.write(buffer.data(), count) == count;
    }
    if (!isWritten || !output.flush())
        throw std::runtime_error("Cannot copy the model: " + toStdString(output.errorString()));
}

/**
 * prusa-slicer takes an STL for binary when a byte behind the header is above 127, whatever its
 * size says: many a plain block has none such, and an umlaut makes a text binary.
 */
void makeKindPlain(const QString& path)
{
    constexpr int kHeaderBytes = 84;
    constexpr int kFacetBytes = 50;
    constexpr int kLookedAt = kHeaderBytes + 128;
    // Behind the first facet's numbers stands what nobody reads.
    constexpr int kSpareByte = kHeaderBytes + kFacetBytes - 1;

    QFile file(path);
    if (!file.open(QIODevice::ReadWrite))
        throw std::runtime_error("Cannot copy the model: " + toStdString(file.errorString()));
    QByteArray head = file.read(kLookedAt);
    if (head.size() < kLookedAt)
        return;
    const qint64 facets = qFromLittleEndian<quint32>(head.constData() + kHeaderBytes - 4);
    if (file.size() == kHeaderBytes + facets * kFacetBytes)
        head[kSpareByte] = '\xff';
    else if (head.startsWith("solid"))
        std::replace_if(
            head.begin() + kHeaderBytes, head.end(), [](char c) { return (c & 0x80) != 0; }, '?');
    if (!file.seek(0) || file.write(head) != head.size() || !file.flush())
        throw std::runtime_error("Cannot copy the model: " + toStdString(file.errorString()));
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

QString copyModel(QFile& input, const std::string& name, const QString& folder,
                  const std::function<bool()>& goOn)
{
    if (input.size() == 0)
        throw std::runtime_error("The model is empty");
    if (!input.seek(0))
        throw std::runtime_error("Cannot read the model: " + toStdString(input.errorString()));
    const QString path = folder + QStringLiteral("/model.") + suffixOf(name);
    copyBytes(input, path, goOn);
    if (suffixOf(name) == QLatin1String("stl"))
        makeKindPlain(path);
    return path;
}

} // namespace trovek::service

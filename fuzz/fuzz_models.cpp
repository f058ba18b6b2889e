#include "fuzz_target.h"

#include <gcode/gcode_estimate.h>
#include <slicing/model_archive.h>
#include <slicing/zip_archive.h>

#include <QBuffer>
#include <QByteArray>
#include <QXmlStreamReader>

#include <stdexcept>
#include <string>

using namespace trovek::service;

namespace {

bool goOn()
{
    return true;
}

/** What is copied holds shapes and nothing that a slicer takes for its configuration. */
void checkThreeMf(QByteArray archive)
{
    QBuffer buffer(&archive);
    buffer.open(QIODevice::ReadOnly);
    const ZipReader reader(buffer);
    for (const ZipEntry& entry : reader.entries()) {
        const QByteArray name = QByteArray::fromStdString(entry.name).toLower().replace('\\', '/');
        fuzz::require((name.startsWith("3d/") && name.endsWith(".model")) ||
                          name == "[content_types].xml" || name == "_rels/.rels" ||
                          name == "metadata/slic3r_pe_model.config",
                      "a copied archive holds what is known");
    }
}

void checkAmf(const QByteArray& text)
{
    QXmlStreamReader reader(text);
    reader.setNamespaceProcessing(false);
    while (!reader.atEnd()) {
        if (reader.readNext() != QXmlStreamReader::StartElement)
            continue;
        const QString type = reader.attributes().value(QLatin1String("type")).toString();
        fuzz::require(reader.name() != QLatin1String("metadata") ||
                          (!type.contains(QLatin1String("config")) &&
                           !type.contains(QLatin1String("process"))),
                      "a copied AMF holds no configuration");
    }
    fuzz::require(!reader.hasError(), "a copied AMF can be read");
}

} // namespace

/** A model; the first byte says of which format it is taken for, and what becomes of its tools. */
int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    if (size == 0)
        return 0;
    QByteArray bytes(reinterpret_cast<const char*>(data + 1), static_cast<int>(size - 1));
    QBuffer input(&bytes);
    input.open(QIODevice::ReadOnly);
    QBuffer output;
    output.open(QIODevice::ReadWrite);
    const PartTools tools = (data[0] & 2) == 0 ? PartTools::Kept : PartTools::Dropped;
    try {
        formatOfThing(input);
        input.seek(0);
        if ((data[0] & 1) == 0) {
            copyThreeMf(input, output, tools, goOn);
            checkThreeMf(output.data());
        } else {
            copyAmf(input, output, tools, goOn);
            checkAmf(output.data());
        }
    } catch (const std::runtime_error& error) {
        fuzz::require(std::string(error.what()).rfind("it is ", 0) == 0,
                      "a refusal goes on in a sentence");
    }
    return 0;
}

#include "slicing/xml_filter.h"

#include "write_all.h"

#include <QByteArray>
#include <QIODevice>

#include <stdexcept>

namespace trovek::service {

namespace {

// A few packed bytes can unpack to a text or to elements without an end.
constexpr qint64 kLongestToken = 16 << 20;
constexpr int kDeepest = 100;

} // namespace

XmlFilter::XmlFilter(QIODevice& output, IsKept isKept)
    : m_output(output)
    , m_isKept(std::move(isKept))
    , m_writer(&output)
{
    // Slicers compare names as they stand.
    m_reader.setNamespaceProcessing(false);
    m_writer.writeStartDocument();
}

void XmlFilter::take(const char* bytes, qint64 size)
{
    m_reader.addData(QByteArray(bytes, static_cast<int>(size)));
    m_unfinished += size;
    while (!m_reader.atEnd()) {
        copy(m_reader.readNext());
        if (!m_reader.hasError())
            m_unfinished = 0;
    }
    checkWritten();
    if (m_unfinished > kLongestToken)
        throw std::runtime_error("it is too large");
    if (m_reader.hasError() && m_reader.error() != QXmlStreamReader::PrematureEndOfDocumentError)
        throw std::runtime_error("it is damaged");
}

void XmlFilter::finish()
{
    if (m_reader.hasError() || m_reader.tokenType() != QXmlStreamReader::EndDocument)
        throw std::runtime_error("it is damaged");
    m_writer.writeEndDocument();
    checkWritten();
}

void XmlFilter::copy(QXmlStreamReader::TokenType token)
{
    switch (token) {
    case QXmlStreamReader::StartElement:
        if (++m_depth > kDeepest)
            throw std::runtime_error("it is damaged");
        if (m_leftOut > 0 || !m_isKept(m_reader.name(), m_reader.attributes())) {
            ++m_leftOut;
            return;
        }
        m_writer.writeStartElement(m_reader.name().toString());
        m_writer.writeAttributes(m_reader.attributes());
        return;
    case QXmlStreamReader::EndElement:
        --m_depth;
        if (m_leftOut > 0)
            --m_leftOut;
        else
            m_writer.writeEndElement();
        return;
    case QXmlStreamReader::Characters:
        if (m_leftOut == 0 && !m_reader.isWhitespace())
            m_writer.writeCharacters(m_reader.text().toString());
        return;
    default:
        return;
    }
}

void XmlFilter::checkWritten() const
{
    if (m_writer.hasError())
        throw WriteError(m_output);
}

} // namespace trovek::service

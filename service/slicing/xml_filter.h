#pragma once

#include <QXmlStreamReader>
#include <QXmlStreamWriter>

#include <functional>

class QIODevice;

namespace trovek::service {

/** Copies those elements of an XML text that it is told to, with what is in them, as the text
 * comes. */
class XmlFilter
{
public:
    /** Asked of each element whose parents are kept; names with their prefixes. */
    using IsKept = std::function<bool(const QStringRef& name, const QXmlStreamAttributes&)>;

    /** @param output not owned */
    XmlFilter(QIODevice& output, IsKept isKept);

    /** @throws std::runtime_error "it is damaged" when it is no XML, "it is too large"; WriteError
     */
    void take(const char* bytes, qint64 size);
    /** @throws as take(), also when the text was not whole */
    void finish();

private:
    void copy(QXmlStreamReader::TokenType token);
    void checkWritten() const;

    QIODevice& m_output;
    const IsKept m_isKept;
    QXmlStreamReader m_reader;
    QXmlStreamWriter m_writer;
    /** Bytes since the last whole token. */
    qint64 m_unfinished = 0;
    /** Elements that are open. */
    int m_depth = 0;
    /** Of these, from the one on that is not kept. */
    int m_leftOut = 0;
};

} // namespace trovek::service

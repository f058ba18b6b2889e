#pragma once

#include <QByteArray>
#include <QString>

#include <utility>
#include <vector>

namespace trovek {

/** A block with a corner at zero, as models of several kinds. Millimetres. */
struct Block
{
    double x = 10;
    double y = 10;
    double z = 2;

    QByteArray binaryStl() const;
    QByteArray asciiStl() const;
    QByteArray obj() const;
    /** @param metadata put into its object, for example `<metadata type="name">x</metadata>` */
    QByteArray amf(const QByteArray& metadata = QByteArray()) const;
    /** The "3D/3dmodel.model" of a 3MF. */
    QByteArray modelXml() const;
    /** @param more files besides the model's own */
    QByteArray threeMf(const std::vector<std::pair<QByteArray, QByteArray>>& more = {}) const;
};

/** A ZIP archive of files that are not compressed. */
QByteArray zipOf(const std::vector<std::pair<QByteArray, QByteArray>>& files);

/** The archive, with one of its directory's numbers changed for all files. */
QByteArray withNumber(QByteArray archive, int offset, quint32 number, int bytes = 4);

/** The names of an archive's files and what is in them. @throws std::runtime_error */
std::vector<std::pair<QByteArray, QByteArray>> filesOf(QByteArray archive);

} // namespace trovek

#pragma once

#include "widgets/form_rows.h"

#include <trovek-ui/eeprom_grama.h>
#include <trovek/eeprom_map.h>

#include <QByteArray>

#include <json/reader.h>

namespace trovek {

inline Json::Value parse(const QByteArray& text)
{
    Json::Value value;
    Json::Reader reader;
    if (!reader.parse(text.toStdString(), value))
        qFatal("%s", reader.getFormattedErrorMessages().c_str());
    return value;
}

/** A document with these entries, as the client gives it out. */
inline Json::Value documentOf(const QByteArray& entries)
{
    return EepromMap::fromService(parse("{\"eeprom_map\": {" + entries + "}, \"version\": 3}"))
        .getEepromMap();
}

inline QWidget* fieldOf(const EepromGrama& form, const char* label)
{
    const FormRows rows(form);
    return rows.field(rows.rowOf(QString::fromUtf8(label)));
}

/** The first widget in an entry's field: its editor, or the label in its place. */
inline QWidget* editorOf(const EepromGrama& form, const char* label)
{
    return fieldOf(form, label)->layout()->itemAt(0)->widget();
}

/** The label widget of an entry. */
inline QLabel* labelOf(const EepromGrama& form, const char* label)
{
    const FormRows rows(form);
    const int row = rows.rowOf(QString::fromUtf8(label));
    return rows.layout()->itemAt(row, QFormLayout::LabelRole)->widget()->findChild<QLabel*>();
}

inline QStringList words(const char* text)
{
    return QString::fromUtf8(text).split(QLatin1Char('|'));
}

} // namespace trovek

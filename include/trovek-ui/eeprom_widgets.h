#pragma once

#include "trovek-ui/double_spin_box.h"
#include "trovek-ui/export.h"
#include "trovek-ui/spin_box.h"

#include <json/value.h>

#include <QComboBox>
#include <QLineEdit>
#include <QString>
#include <QStringList>
#include <QWidget>

#include <array>

class QCheckBox;

namespace trovek {

class EepromMap;
class JsonLineEdit;

/**
 * Five check boxes "X", "Y", "Z", "A" and "B" for bits 0 to 4 of a signed JSON integer.
 *
 * The value is not owned and has to outlive the widget.
 */
class TROVEK_UI_EXPORT EepromAxisBitfield : public QWidget
{
    Q_OBJECT

public:
    /** @throws std::runtime_error "EepromAxisBitfield requires a JSON int" */
    explicit EepromAxisBitfield(Json::Value* value, QWidget* parent = nullptr);

public slots:
    /** Shows the value, without a signal; a value of another type changes nothing. */
    void reset();
    /** Writes the five bits as an integer; bits above them are cleared. */
    void slotAnyToggled();

signals:
    /** Emitted once by every edit. */
    void updated();

private:
    Json::Value* const m_value;
    std::array<QCheckBox*, 5> m_boxes;
};

/**
 * A choice among the integers that a setting allows.
 *
 * The value, a signed JSON integer, is not owned and has to outlive the widget. One that is not
 * among the items stays as it is until the user chooses another item than the one shown. The wheel
 * scrolls what is around the box.
 */
class TROVEK_UI_EXPORT EepromComboBox : public QComboBox
{
    Q_OBJECT

public:
    /**
     * @param items decimal integers; without any the box is disabled
     * @throws std::runtime_error "EepromComboBox given non-int item",
     *                            "EepromComboBox requires a JSON int"
     */
    EepromComboBox(QStringList items, Json::Value* value, QWidget* parent = nullptr);

public slots:
    /** Selects the first item that equals the value; without one nothing changes. */
    void reset();
    /**
     * Writes the integer. When an item is chosen that is none, the text below is logged instead.
     * @throws std::runtime_error "EepromComboBox changed to a non-int value"
     */
    void slotIndexChanged(const QString& text);

signals:
    void updated();

protected:
    void wheelEvent(QWheelEvent* event) override;

private slots:
    void takeChosen(const QString& text);

private:
    Json::Value* const m_value;
};

/**
 * A line for a text of at most 16 letters, digits and blanks, which is what a machine can show.
 * @throws std::runtime_error as JsonLineEdit
 */
TROVEK_UI_EXPORT JsonLineEdit* makeEepromTextLine(Json::Value* value, QWidget* parent = nullptr);

/*
 * Editors of one element of a list in an EepromMap. The map is not owned: it has to outlive its
 * editor, or to be taken away with setMap(nullptr). When an edit finds no such element, nothing is
 * written and the text that the slot throws is logged.
 */

/** A box for a whole number of 32 bits. */
class TROVEK_UI_EXPORT EepromSpinBox : public SpinBox
{
    Q_OBJECT

public:
    /**
     * Disabled and empty until there is a map.
     * @param path  as EepromMap::getInt() takes it
     * @param index counts from 0
     */
    EepromSpinBox(const QString& path, int index, QWidget* parent = nullptr);

    /** Enables the box and shows the element, when there is one; null disables and empties it. */
    void setMap(EepromMap* map);

public slots:
    /** @throws std::runtime_error "Invalid EepromSpinBox index" */
    void slotValueChanged(int value);

signals:
    /** Emitted when an edit was written. */
    void updated();

private:
    EepromMap* m_map = nullptr;
    const QString m_path;
    const int m_index;
};

/** A box for a number of single precision, shown with five decimals. */
class TROVEK_UI_EXPORT EepromFloatSpinBox : public DoubleSpinBox
{
    Q_OBJECT

public:
    /** As EepromSpinBox; the path is one for EepromMap::getFloat(). */
    EepromFloatSpinBox(const QString& path, int index, QWidget* parent = nullptr);

    void setMap(EepromMap* map);

public slots:
    /** @throws std::runtime_error "Invalid EepromFloatSpinBox index" */
    void slotValueChanged(double value);

signals:
    void updated();

private:
    EepromMap* m_map = nullptr;
    const QString m_path;
    const int m_index;
};

/** A line for a text. */
class TROVEK_UI_EXPORT EepromLineEdit : public QLineEdit
{
    Q_OBJECT

public:
    /** As EepromSpinBox; the path is one for EepromMap::getString(). */
    EepromLineEdit(const QString& path, int index, QWidget* parent = nullptr);

    void setMap(EepromMap* map);

public slots:
    /** @throws std::runtime_error "Invalid EepromLineEdit index" */
    void slotTextEdited(const QString& text);

signals:
    void updated();

private:
    EepromMap* m_map = nullptr;
    const QString m_path;
    const int m_index;
};

} // namespace trovek

#pragma once

#include "trovek-ui/export.h"
#include "trovek-ui/grama.h"

#include <json/value.h>

#include <memory>
#include <string>

namespace trovek {

/**
 * The form of a machine's onboard settings: one row an entry of its EEPROM map, nested as the
 * entries are, with one editor a value.
 *
 * Every editor writes straight into a working copy of the document that the form owns. What the
 * form does not know of the document stays in it. An entry whose value differs from the one read
 * from the machine has its label in bold with a dot behind it, and the value read as its tool tip.
 *
 * Documents are those that EepromMap::fromService() made: numbers of one kind for each type code.
 * An entry that cannot be edited shows what is wrong with it in place of its editor.
 */
class TROVEK_UI_EXPORT EepromGrama : public Grama
{
    Q_OBJECT

public:
    /** A document without an object "eeprom_map" makes an empty form. */
    explicit EepromGrama(const Json::Value& map, QWidget* parent = nullptr);
    ~EepromGrama() override;

    /** Whether the working copy differs from the document last read from the machine. */
    bool isModified() const;
    /** How many entries differ from the values last read from the machine. */
    int changedCount() const;
    /** The working copy: the document read and the edits. */
    Json::Value map() const;
    /** The document last read from the machine. */
    Json::Value reference() const;

    /**
     * Takes the values of a document that was read from the machine or written to it.
     *
     * mapReset() is emitted also when this fails; values that were taken before the failure stay,
     * and count as edits.
     * @throws std::runtime_error "Leafiness mismatch", "Value size mismatch", "Objectiness
     * mismatch", "Member size mismatch" or "Member name mismatch" for a document of another
     * structure
     */
    void resetToMap(const Json::Value& map);

    /**
     * Takes the values of a document as edits, as if a user had typed them, e.g. from a file. All
     * are taken or none; mapReset() is emitted only when they were.
     *
     * @param map need not come from EepromMap::fromService()
     * @throws std::runtime_error as resetToMap(), and for a changed value that an entry cannot hold
     *         "Wrong type of value: ", "Value out of range: " or what is wrong with the entry, and
     *         the entry's label
     */
    void loadEdits(const Json::Value& map);

    /**
     * Adds the row of an entry, and below it those of its children.
     *
     * @param json   not owned; must outlive the form; null for a row with a label only
     * @param parent null for a row at the top
     * @return null when `parent` has no row in this form
     */
    std::shared_ptr<GramaItem> addRowFromJson(const QString& name, Json::Value* const json,
                                              std::shared_ptr<GramaItem> parent);
    /**
     * The editor of an entry's values; the caller owns it.
     *
     * @throws std::runtime_error that says what is wrong with the entry
     */
    QWidget* createWidgetFromJson(Json::Value* entry);
    /**
     * The editor of one value, bound to it, or a label that says why there is none. The caller owns
     * it. Never throws.
     *
     * @param element     not owned; must outlive the editor
     * @param constraints "l," and the allowed values with "," between them, or anything else for
     *                    the type's range
     * @param unit        shown behind a number as it stands
     */
    QWidget* createScalarWidgetFromJson(Json::Value* element, char type, bool isFloatingPoint,
                                        bool isAxisBitfield, std::string constraints,
                                        const QString& unit);

public slots:
    /**
     * Leaves only rows that are changed, of those that the text filter shows. A row that changes
     * later keeps its state until the form is filtered or loaded again.
     */
    void setShowChangedOnly(bool changedOnly);

signals:
    /** Emitted when an editor changed its value, after isModified() and changedCount() follow. */
    void updated();
    /** Every editor reloads its value. */
    void mapReset();

private:
    class TROVEK_UI_NO_EXPORT Private;
    const std::unique_ptr<Private> d;
};

} // namespace trovek

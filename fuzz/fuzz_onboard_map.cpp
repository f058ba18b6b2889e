#include "fuzz_target.h"

#include <trovek-ui/eeprom_grama.h>
#include <trovek-ui/eeprom_widgets.h>
#include <trovek-ui/json_widgets.h>

#include <trovek/eeprom_map.h>

#include <json/reader.h>

#include <QApplication>

#include <algorithm>
#include <memory>
#include <stdexcept>
#include <string>

using namespace trovek;

namespace {

/** Widgets need an application; it stays until the program ends. */
void makeApplication()
{
    static int argc = 1;
    static char name[] = "fuzz_onboard_map";
    static char* argv[] = {name, nullptr};
    static const bool made = [] {
        qputenv("QT_QPA_PLATFORM", "offscreen");
        new QApplication(argc, argv);
        return true;
    }();
    (void)made;
}

bool parse(std::string_view text, Json::Value* document)
{
    const std::unique_ptr<Json::CharReader> reader(Json::CharReaderBuilder().newCharReader());
    try {
        return reader->parse(text.data(), text.data() + text.size(), document, nullptr);
    } catch (const Json::Exception&) {
        return false; // nested deeper than the reader goes
    }
}

/** Whether only values differ: the same members, of the same types. */
bool haveSameShape(const Json::Value& one, const Json::Value& other)
{
    if (one.type() != other.type() || one.size() != other.size())
        return one.type() != Json::arrayValue && one.type() == other.type();
    if (one.isObject()) {
        const auto names = one.getMemberNames();
        return names == other.getMemberNames() &&
               std::all_of(names.begin(), names.end(), [&](const std::string& name) {
                   return haveSameShape(one[name], other[name]);
               });
    }
    if (one.isArray()) {
        for (Json::ArrayIndex i = 0; i < one.size(); ++i) {
            if (!haveSameShape(one[i], other[i]))
                return false;
        }
    }
    return true;
}

/**
 * Whether an object that looks like an entry has entries inside. The form may show these, and a
 * reset passes over them, as only the values of the outer one are taken.
 */
bool hasEntryInEntry(const Json::Value& value, bool isInside = false)
{
    if (!value.isArray() && !value.isObject())
        return false;
    const bool isEntry = value.isObject() && value.isMember("offset") && value.isMember("type") &&
                         value.isMember("value");
    return (isEntry && isInside) ||
           std::any_of(value.begin(), value.end(), [&](const Json::Value& inner) {
               return hasEntryInEntry(inner, isInside || isEntry);
           });
}

/** Changes what every editor of the form holds, as far as its limits let it. */
void editEverything(EepromGrama& form)
{
    for (auto* box : form.findChildren<JsonSpinBox*>())
        box->setValue(box->value() == box->maximum() ? box->minimum() : box->maximum());
    for (auto* line : form.findChildren<JsonLineEdit*>()) {
        line->setCursorPosition(0);
        line->del();
        line->insert(QStringLiteral("Ab 9"));
    }
    for (auto* box : form.findChildren<EepromComboBox*>())
        box->setCurrentIndex(box->currentIndex() == 0 ? box->count() - 1 : 0);
    // The check boxes of an axis bit field too.
    for (auto* box : form.findChildren<QCheckBox*>())
        box->click();
}

/** False when the form refuses a document of this structure. */
bool isReset(EepromGrama& form, const Json::Value& document)
{
    try {
        form.resetToMap(document);
        return true;
    } catch (const std::runtime_error& error) {
        const std::string text = error.what();
        fuzz::require(text == "Leafiness mismatch" || text == "Value size mismatch" ||
                          text == "Objectiness mismatch" || text == "Member size mismatch" ||
                          text == "Member name mismatch",
                      "a refused document is told of in one of five texts");
        return false;
    }
}

/** `reference` is the document that the form was last made of or reset to. */
void checkEdits(const EepromGrama& form, const Json::Value& reference)
{
    fuzz::require(form.isModified() == (form.map() != reference),
                  "a form is modified exactly when its document differs");
    fuzz::require(form.isModified() || form.changedCount() == 0,
                  "a form with a changed entry is modified");
}

void checkLoading(EepromGrama& form, const Json::Value& reference, const Json::Value& loaded)
{
    const Json::Value before = form.map();
    try {
        form.loadEdits(loaded);
    } catch (const std::runtime_error&) {
        fuzz::require(form.map() == before, "a refused file changes nothing");
    }
    checkEdits(form, reference);
}

} // namespace

/** The text of a map document: a form is built of it, edited, reset, loaded and filtered. */
int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    Json::Value raw;
    if (!parse(fuzz::textOf(data, size), &raw))
        return 0;
    makeApplication();

    const Json::Value document = EepromMap::fromService(raw).getEepromMap();
    EepromGrama form(document);
    fuzz::require(!form.isModified() && form.map() == document, "a new form is not modified");

    editEverything(form);
    const Json::Value edited = form.map();
    fuzz::require(haveSameShape(document, edited), "edits change values only");
    checkEdits(form, document);

    form.setShowChangedOnly(true);
    form.filterByText(QStringLiteral("a e"));
    form.filterByText(QString());
    form.setShowChangedOnly(false);

    const bool isResetWhole = !hasEntryInEntry(document);
    if (isReset(form, document)) {
        fuzz::require(!isResetWhole || (!form.isModified() && form.map() == document),
                      "a form that was reset is not modified");
        checkLoading(form, document, edited);
        checkLoading(form, document, raw);
    }

    // What the service never sends: numbers of a kind that their type codes do not have.
    EepromGrama rawForm(raw);
    fuzz::require(!rawForm.isModified(), "a new form is not modified");
    isReset(rawForm, document);
    if (isReset(rawForm, raw) && isResetWhole)
        fuzz::require(!rawForm.isModified(), "a form that was reset is not modified");
    return 0;
}

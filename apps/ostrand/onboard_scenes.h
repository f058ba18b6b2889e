#pragma once

#include <json/value.h>

#include <QString>
#include <QStringList>

#include <memory>

class QWidget;

namespace trovek {
class EepromGrama;
}

/** What the tour and the gallery do with a form of onboard preferences, by its real widgets. */
namespace ostrand::onboard {

/** The form in the window. @throws std::runtime_error without one */
trovek::EepromGrama& formOf(QWidget& window);

/** Collapses or expands the groups at the top. */
void setCollapsed(trovek::EepromGrama& form, bool collapsed);

/** Types into the window's filter, over what is there. */
void filter(QWidget& window, const QString& text);

/** One editor of each kind. */
struct Samples
{
    explicit Samples(trovek::EepromGrama& form);

    /** Changes each of them, by keys. */
    void edit() const;
    /** What each of them shows, with its kind. */
    QStringList shown() const;

private:
    QWidget* number = nullptr;
    QWidget* fixedPoint = nullptr;
    QWidget* axes = nullptr;
    QWidget* list = nullptr;
    QWidget* line = nullptr;
    QWidget* check = nullptr;
};

/** The same form with entries that nobody can edit. */
std::unique_ptr<QWidget> makeFormWithErrors(Json::Value map);

} // namespace ostrand::onboard

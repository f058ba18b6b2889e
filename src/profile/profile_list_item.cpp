#include "trovek-ui/profile_list_model.h"

#include "profile/profile_json.h"
#include "trovek-ui/machine_types.h"

#include <trovek/log.h>
#include <trovek/text.h>

#include <QTextDocument>

#include <algorithm>
#include <exception>
#include <utility>

static constexpr char kLogUnit[] = "src\\profile\\profile_list_item";

namespace trovek {

namespace {

/** In characters. A file may have names without end, and a tooltip of them would take seconds. */
constexpr int kLongestReason = 250;

QString shortened(const QString& text)
{
    return text.size() <= kLongestReason ? text : text.left(kLongestReason - 1) + QChar(0x2026);
}

/** A file says itself which names it has, and they may look like markup. */
QString plainToolTip(const QString& text)
{
    return Qt::mightBeRichText(text) ? Qt::convertFromPlainText(text) : text;
}

} // namespace

ProfileListModel::Item::Item(std::unique_ptr<Profile> profile)
    : QStandardItem(profile->name())
    , m_profile(std::move(profile))
{
    setEditable(false);
    read();
}

ProfileListModel::Item::~Item() = default;

bool ProfileListModel::Item::isFor(Printer::Type machine) const
{
    return machine == Printer::UnknownType || m_profile->preset() != SlicerConfiguration::Custom ||
           std::find(m_machineTypes.begin(), m_machineTypes.end(), machine) != m_machineTypes.end();
}

void ProfileListModel::Item::read()
{
    // The presets have no files.
    if (m_profile->preset() != SlicerConfiguration::Custom)
        return;
    m_machineTypes.clear();
    const QString earlierError = std::exchange(m_error, QString());
    try {
        const Json::Value profileJson = m_profile->json();
        slicerOf(profileJson);
        m_machineTypes = machineTypesOf(profileJson);
    } catch (const std::exception& error) {
        m_error = toQString(error.what());
    }
    if (m_error != earlierError)
        TROVEK_LOG(1) << toStdString(m_profile->name()) << ": "
                      << (m_error.isEmpty() ? "can be read" : toStdString(m_error)) << std::endl;
}

void ProfileListModel::Item::judge(Printer::Type selectedMachine)
{
    const QString reason = shortened(reasonAgainst(selectedMachine));
    // Setting an equal text would still be announced the first time.
    if (accessibleDescription() != reason) {
        setToolTip(plainToolTip(reason));
        setAccessibleDescription(reason);
    }
    // Last, so that whoever hears of it finds the reason there.
    if (isEnabled() != reason.isEmpty())
        setEnabled(reason.isEmpty());
}

QString ProfileListModel::Item::reasonAgainst(Printer::Type selectedMachine) const
{
    if (!m_error.isEmpty())
        return ProfileListModel::tr("Invalid profile: %1").arg(m_error);
    if (isFor(selectedMachine))
        return QString();
    QStringList machines;
    for (const Printer::Type type : m_machineTypes)
        machines.append(printerTypeToHumanString(type, PrinterStringWithBrand));
    const QString reason =
        ProfileListModel::tr("This profile is not for the %1.")
            .arg(printerTypeToHumanString(selectedMachine, PrinterStringWithBrand));
    return machines.isEmpty()
               ? reason
               : reason + QLatin1Char('\n') +
                     ProfileListModel::tr("It is for: %1").arg(machines.join(QLatin1String(", ")));
}

} // namespace trovek

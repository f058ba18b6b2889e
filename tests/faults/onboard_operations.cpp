#include "fault_scene.h"
#include "window_operation.h"

#include <trovek-ui/eeprom_grama.h>
#include <trovek-ui/json_widgets.h>
#include <trovek-ui/onboard_preferences.h>

#include <trovek/wire.h>

#include <QLabel>
#include <QListWidget>
#include <QPointer>
#include <QPushButton>

namespace trovek {

namespace {

/** Writing and reading a whole memory takes its time. */
constexpr int kDeadlineMs = 180000;

const QString kGone = QStringLiteral("The printer is not connected. Connect it again to go on.");
const QString kOther = QStringLiteral("The printer has come back with other preferences");

QStringList cannotShow(const char* text)
{
    return {QStringLiteral("Error displaying onboard preferences"), QString::fromLatin1(text)};
}

/** The way to the window: the preferences are read before it is shown. */
class Opening : public WindowInUse
{
public:
    explicit Opening(FaultScene& scene)
        : m_scene(scene)
    {}
    ~Opening() override { delete m_dialog; }

    bool prepare() override
    {
        delete m_dialog;
        return true;
    }
    void press() override
    {
        m_dialog = ui::OnboardPreferences::create(m_scene.facade, m_scene.printer(), nullptr);
        if (m_dialog)
            m_dialog->show();
    }
    bool isDone() override { return m_dialog && m_dialog->isVisible(); }

protected:
    FaultScene& m_scene;
    QPointer<ui::OnboardPreferences> m_dialog;
};

/** The open window with one of its buttons. */
class Preferences : public WindowInUse
{
public:
    Preferences(FaultScene& scene, const char* button)
        : m_scene(scene)
        , m_dialog(ui::OnboardPreferences::create(scene.facade, scene.printer(), nullptr))
        , m_buttonName(QString::fromLatin1(button))
    {
        if (!m_dialog)
            throw std::runtime_error("The preferences do not open");
        m_dialog->show();
    }
    ~Preferences() override { delete m_dialog; }

    bool prepare() override { return button().isEnabled(); }
    void press() override { QTest::mouseClick(&button(), Qt::LeftButton); }
    QString told() override
    {
        const auto* const notice = m_dialog->findChild<QLabel*>(QStringLiteral("noticeText"));
        return notice->isVisibleTo(m_dialog) ? notice->text() : QString();
    }
    /** A user closes a window that says it cannot go on. */
    bool isOpen() override { return m_dialog && !told().startsWith(kOther); }

protected:
    QPushButton& button() const { return *m_dialog->findChild<QPushButton*>(m_buttonName); }
    EepromGrama& form() const { return *m_dialog->findChild<EepromGrama*>(); }
    /** What the machine itself has. */
    Json::Value memory()
    {
        return m_scene.witness.readEeprom(m_scene.witness.printerFromKey(m_scene.key))
            .getEepromMap();
    }
    bool canBeRead() const
    {
        return m_scene.witness.isConnected() && m_scene.witness.printerFromKey(m_scene.key);
    }
    /** Another value in the first box, as a user types it. */
    void edit() const
    {
        auto* const box = form().findChild<JsonSpinBox*>();
        const QString wanted = box->value() == 1 ? QStringLiteral("2") : QStringLiteral("1");
        box->setFocus();
        QTest::keyClick(box, Qt::Key_A, Qt::ControlModifier);
        QTest::keyClicks(box, wanted);
        QTest::keyClick(box, Qt::Key_Return);
    }
    FaultScene& m_scene;
    QPointer<ui::OnboardPreferences> m_dialog;
    const QString m_buttonName;
};

constexpr char kOwnName[] = "Somebody's";

Json::Value& nameIn(Json::Value& map)
{
    return map["eeprom_map"]["identity"]["sub_map"]["machine_name"]["value"][0];
}

/** Another name than the factory's; the last backup has yet another. */
FaultScene& withOwnName(FaultScene& scene)
{
    RecordingTrovek& witness = scene.witness;
    Printer* const printer = witness.printerFromKey(scene.key);
    Json::Value map = witness.readEeprom(printer).getEepromMap();
    for (const char* name : {"Another", kOwnName}) {
        nameIn(map) = name;
        witness.writeEeprom(printer, EepromMap(map));
    }
    return scene;
}

class Writing : public Preferences
{
public:
    explicit Writing(FaultScene& scene)
        : Preferences(scene, "writeButton")
    {}

    bool prepare() override
    {
        if (form().isEnabled() && !form().isModified())
            edit();
        m_wanted = form().map();
        return Preferences::prepare();
    }
    bool isDone() override { return canBeRead() && !form().isModified() && memory() == m_wanted; }

private:
    Json::Value m_wanted;
};

/** Of a memory that somebody has changed. */
class Resetting : public Preferences
{
public:
    explicit Resetting(FaultScene& scene)
        : Preferences(withOwnName(scene), "factoryResetButton")
    {}

    void announceQuestions(ModalDriver& driver) override
    {
        driver.expectMessage(
            {QStringLiteral("Are you sure you want to factory reset?"),
             QStringLiteral("All settings in the onboard preferences will be reverted to factory "
                            "defaults. This may take up to a minute, and Ostrand will be "
                            "unresponsive during this process.")},
            QStringLiteral("&Reset"));
    }
    bool isDone() override
    {
        if (!canBeRead() || form().isModified())
            return false;
        Json::Value map = memory();
        return form().map() == map && nameIn(map) != Json::Value(kOwnName);
    }
};

/** The values of a backup. */
class Loading : public Preferences
{
public:
    explicit Loading(FaultScene& scene)
        : Preferences(withOwnName(scene), "backupsButton")
    {}

    bool isDone() override { return form().isModified(); }

    void announceResult(ModalDriver& driver) override { choose(driver); }

protected:
    static void choose(ModalDriver& driver)
    {
        driver.expect([](QDialog* backups) {
            const auto* const list = backups->findChild<QListWidget*>();
            QVERIFY(list != nullptr && list->count() > 0);
            pressButton(backups, QStringLiteral("&Load"));
        });
    }
};

class LoadingOfListed : public Loading
{
public:
    using Loading::Loading;

    void announceQuestions(ModalDriver& driver) override { choose(driver); }
};

/** The machine comes back, and the window reads it by itself. */
class ReadingAgain : public Preferences
{
public:
    explicit ReadingAgain(FaultScene& scene)
        : Preferences(scene, "backupsButton")
    {}

    bool prepare() override { return m_scene.printer() != nullptr; }
    void press() override
    {
        RecordingTrovek& witness = m_scene.witness;
        witness.simulateUnplug(m_scene.key.name());
        QTRY_COMPARE_WITH_TIMEOUT(told(), kGone, 20000);
        witness.simulatePlugIn(m_scene.key.name());
        const std::string port = m_scene.portName();
        QTRY_VERIFY_WITH_TIMEOUT(hasPort(witness, port), 20000);
        witness.connectToPort(witness.portFromName(port));
        QTRY_VERIFY_WITH_TIMEOUT(m_scene.hasFailed(), 20000);
    }
    bool isDone() override { return form().isEnabled(); }

private:
    static bool hasPort(const Trovek& client, const std::string& name)
    {
        for (const Port& port : client.ports()) {
            if (port.name() == name)
                return true;
        }
        return false;
    }
};

Verdict verdict(const QStringList& message, const QString& told = QString())
{
    Verdict made;
    made.messages = {message};
    made.told = told;
    return made;
}

Verdict with(Verdict verdict, const QString& told)
{
    verdict.told = told;
    return verdict;
}

/** A window whose form is disabled. */
Verdict isGone()
{
    Verdict made;
    made.told = kGone;
    return made;
}

JsonRpcException exceptionOf(const char* name)
{
    Json::Value data(Json::objectValue);
    data["name"] = name;
    data["exception"]["name"] = name;
    return JsonRpcException(std::string("The service says ") + name, data);
}

/** What every button of the open window has in common. */
void completeForOpenWindow(WindowOperation& operation)
{
    const auto lost = with(operation.broken, kGone);
    for (const FaultKind kind : {FaultKind::Never, FaultKind::StopUnseen, FaultKind::StopDuring,
                                 FaultKind::KillDuring, FaultKind::DropBefore})
        operation.special.emplace(kind, lost);
    operation.special[FaultKind::DropBefore].effect = Verdict::Either;
    operation.special.emplace(FaultKind::UnplugAtOnce, with(operation.refused, kGone));
    operation.special.emplace(FaultKind::DropAfter, with(operation.success, kGone));
    operation.special.emplace(FaultKind::StopBefore, isGone());
    operation.special.emplace(FaultKind::UnplugBefore, isGone());
    Verdict other;
    other.told = kOther;
    operation.special.emplace(FaultKind::OtherFirmware, other);
    operation.messageAtReturn.emplace(
        FaultKind::OtherFirmware,
        QStringList{QStringLiteral("Error reading onboard preferences"),
                    QStringLiteral("An error occurred while reading the EEPROM.")});
}

WindowOperation opening()
{
    WindowOperation made =
        operation<Opening>("onboard preferences, open", "read_eeprom", kDeadlineMs);
    made.refused = made.broken = verdict(
        cannotShow("An error occurred displaying onboard preferences for firmware version 7.5."));
    // A memory of which nothing is known to anybody.
    made.special[FaultKind::OddObject] = made.success;
    made.special[FaultKind::StopBefore] = made.special[FaultKind::UnplugBefore] =
        verdict(cannotShow("Printer is not connected."));
    made.namedErrors = {
        {exceptionOf("MachineStateException"),
         verdict(cannotShow("Cannot edit onboard preferences while the printer is printing, in jog "
                            "mode, or otherwise busy."))},
        {exceptionOf("MissingEepromMapError"),
         verdict(cannotShow("No map found for this printer's firmware version."))},
        {exceptionOf("EepromWriteError"), made.refused},
    };
    made.namedErrors.back().second.logged = 2;
    return made;
}

WindowOperation writing()
{
    WindowOperation made =
        operation<Writing>("onboard preferences, write", "write_eeprom", kDeadlineMs);
    made.answerIsRead = false;
    made.success.messages = {{QStringLiteral("Successfully updated onboard preferences")}};
    made.broken = verdict({QStringLiteral("Failed to save onboard preferences")});
    made.refused = with(made.broken, QStringLiteral("The printer answered: %1"));
    made.namedErrors = {{exceptionOf("EepromValueError"), made.refused},
                        {exceptionOf("MachineStateException"), made.refused}};
    completeForOpenWindow(made);
    for (const FaultKind odd :
         {FaultKind::OddNull, FaultKind::OddText, FaultKind::OddList, FaultKind::OddObject}) {
        made.special[odd] = made.success;
        made.special[odd].effect = Verdict::NotDone;
    }
    return made;
}

const QStringList kFailedReset = {
    QStringLiteral("Error resetting onboard preferences"),
    QStringLiteral("An error occurred while reading or writing to the EEPROM.")};

WindowOperation resetting()
{
    WindowOperation made =
        operation<Resetting>("onboard preferences, reset", "reset_eeprom_completely", kDeadlineMs);
    made.answerIsRead = false;
    made.success.messages = {{QStringLiteral("Successfully reset onboard preferences")}};
    made.broken = verdict(kFailedReset);
    made.refused = with(made.broken, QStringLiteral("The printer answered: %1"));
    made.moreFaults = {FaultKind::UnplugDuring};
    completeForOpenWindow(made);
    made.special[FaultKind::UnplugDuring] = with(made.refused, kGone);
    // The link is gone before the memory can be read anew.
    made.special[FaultKind::DropAfter] = made.special[FaultKind::DropBefore];
    made.special[FaultKind::DropAfter].error = QString();
    return made;
}

WindowOperation readingAfterReset()
{
    WindowOperation made =
        operation<Resetting>("onboard preferences, read after a reset", "read_eeprom", kDeadlineMs);
    made.success.messages = {{QStringLiteral("Successfully reset onboard preferences")}};
    made.refused = made.broken = verdict(
        kFailedReset, QStringLiteral("The printer's preferences may not be those shown here."));
    completeForOpenWindow(made);
    // The form says so too.
    made.special[FaultKind::OddObject] = made.broken;
    made.special[FaultKind::OddObject].error = QString();
    made.special[FaultKind::OddObject].logged = 2;
    return made;
}

WindowOperation listing()
{
    WindowOperation made = operation<Loading>("onboard preferences, list of backups",
                                              "list_eeprom_backups", kDeadlineMs);
    made.deadlineMs = 10000;
    made.success.hasResult = true;
    made.success.told = QStringLiteral("The backup of ");
    made.refused = made.broken =
        verdict({QStringLiteral("Failed to read the backups"), QStringLiteral("%1")});
    completeForOpenWindow(made);
    // The window of the backups runs the event loop, which tells of the loss.
    made.special[FaultKind::DropAfter].effect = Verdict::NotDone;
    return made;
}

WindowOperation readingBackup()
{
    WindowOperation made = operation<LoadingOfListed>("onboard preferences, read a backup",
                                                      "read_eeprom_backup", kDeadlineMs);
    made.deadlineMs = 10000;
    made.success.told = QStringLiteral("The backup of ");
    made.refused = made.broken =
        verdict({QStringLiteral("Failed to read the backups"), QStringLiteral("%1")});
    completeForOpenWindow(made);
    // The list cannot be asked for.
    made.special[FaultKind::StopUnseen].isAsked = false;
    made.special[FaultKind::OddObject] = verdict(
        {QStringLiteral("Failed to load onboard preferences"), QStringLiteral("The backup of ")});
    made.special[FaultKind::OddObject].error = QString();
    return made;
}

WindowOperation readingAgain()
{
    WindowOperation made = operation<ReadingAgain>("onboard preferences, read when it returns",
                                                   "read_eeprom", kDeadlineMs);
    made.refused = made.broken =
        verdict({QStringLiteral("Error reading onboard preferences"),
                 QStringLiteral("An error occurred while reading the EEPROM.")},
                QStringLiteral("The printer's preferences could not be read."));
    completeForOpenWindow(made);
    made.special[FaultKind::OddObject] = with(made.broken, kOther);
    made.special[FaultKind::OddObject].error = QString();
    made.special[FaultKind::OddObject].logged = 2;
    // It is read, and gone again.
    made.special[FaultKind::DropAfter].effect = Verdict::NotDone;
    made.notMet = {FaultKind::StopUnseen, FaultKind::OtherFirmware, FaultKind::OtherPort};
    return made;
}

} // namespace

std::vector<WindowOperation> onboardOperations()
{
    return {opening(), writing(), resetting(), readingAfterReset(), readingAgain()};
}

std::vector<WindowOperation> backupOperations()
{
    return {listing(), readingBackup()};
}

} // namespace trovek

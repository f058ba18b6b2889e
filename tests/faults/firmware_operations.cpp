#include "fault_scene.h"
#include "window_operation.h"

#include "direct_controls/direct_world.h"

#include <trovek-ui/firmware_upload_dialog.h>

#include <trovek/wire.h>

#include <QComboBox>
#include <QLabel>
#include <QPointer>
#include <QPushButton>
#include <QStackedWidget>

namespace trovek {

namespace {

/** The window for firmware, which shows one page at a time. */
class Firmware : public WindowInUse
{
public:
    explicit Firmware(FaultScene& scene)
        : m_scene(scene)
    {}

    QString told() override
    {
        if (!m_dialog)
            return QString();
        QString text;
        if (isOnPage(0))
            text = label("error").isVisibleTo(m_dialog.get()) ? label("error").text() : QString();
        else if (isOnPage(1))
            text = label("readyStatus").text();
        else
            text = label("resultStatus").text();
        return text;
    }

protected:
    void open()
    {
        m_dialog = std::make_unique<ui::FirmwareUploadDialog>(m_scene.facade, m_scene.printer());
        m_dialog->show();
    }
    bool isOnPage(int page) const
    {
        return child<QStackedWidget>(*m_dialog, "pages")->currentIndex() == page;
    }
    QLabel& label(const char* name) const { return *child<QLabel>(*m_dialog, name); }
    QPushButton& button(const char* name) const { return *child<QPushButton>(*m_dialog, name); }
    bool click(const char* name) const
    {
        if (!button(name).isEnabled())
            return false;
        QTest::mouseClick(&button(name), Qt::LeftButton);
        return true;
    }

    FaultScene& m_scene;
    std::unique_ptr<ui::FirmwareUploadDialog> m_dialog;
};

/** What there is for the machine is looked up before the window is shown. */
class LookingUp : public Firmware
{
public:
    using Firmware::Firmware;

    bool prepare() override
    {
        m_dialog.reset();
        return true;
    }
    void press() override { open(); }
    bool isDone() override
    {
        return m_dialog && button("next").isEnabled() &&
               child<QComboBox>(*m_dialog, "versions")->isEnabled();
    }
};

class Downloading : public Firmware
{
public:
    explicit Downloading(FaultScene& scene)
        : Firmware(scene)
    {
        open();
    }

    bool prepare() override { return isOnPage(0) && button("next").isEnabled(); }
    void press() override { click("next"); }
    bool isDone() override { return isOnPage(1) && button("upload").isEnabled(); }
    /** The page has only "Cancel", when it has gone wrong and when it has gone well. */
    bool isOpen() override { return isOnPage(0); }
};

class Uploading : public Firmware
{
public:
    explicit Uploading(FaultScene& scene)
        : Firmware(scene)
    {
        open();
        click("next");
    }

    bool prepare() override
    {
        if (isOnPage(2) && !click("main"))
            return false;
        return m_scene.printer() != nullptr && isOnPage(1) && button("upload").isEnabled();
    }
    void press() override { click("upload"); }
    bool isDone() override
    {
        return isOnPage(2) && told() == QLatin1String("Firmware upload successful");
    }
    /** What has gone well is closed with "OK"; what has not is tried again. */
    bool isOpen() override { return !isDone(); }
};

Verdict tells(const char* text, Verdict::Effect effect = Verdict::NotDone, int logged = 1)
{
    Verdict made;
    made.told = QString::fromLatin1(text);
    made.effect = effect;
    made.logged = logged;
    return made;
}

WindowOperation lookingUp(const char* name, const char* method)
{
    WindowOperation made = operation<LookingUp>(name, method, 60000);
    made.refused = made.broken = tells("Error: %1");
    // There is no printer, then; nothing can be chosen.
    const Verdict away = tells("", Verdict::NotDone, 0);
    made.special[FaultKind::StopBefore] = away;
    made.special[FaultKind::UnplugBefore] = away;
    made.special[FaultKind::UnplugAtOnce] = away;
    made.special[FaultKind::DropAfter] = away;
    // The loss of the link is heard of after the error, and says more.
    for (const FaultKind kind : {FaultKind::Never, FaultKind::StopUnseen, FaultKind::StopDuring,
                                 FaultKind::KillDuring, FaultKind::DropBefore})
        made.special[kind] = tells("");
    Verdict offline = tells("Unable to connect to internet");
    offline.messages = {{QStringLiteral("Firmware upload failed"),
                         QStringLiteral("Unable to connect to the download site.")}};
    made.namedErrors = {
        {wire::makeError("FirmwareUnavailableError", "<urlopen error no route to host>"), offline}};
    return made;
}

WindowOperation machines()
{
    WindowOperation made = lookingUp("firmware, machines", "getuploadablemachines");
    made.special[FaultKind::OddList] = tells("", Verdict::NotDone, 0);
    // The next request may find it out.
    made.special[FaultKind::DropAfter].logged = -1;
    return made;
}

WindowOperation versions()
{
    WindowOperation made = lookingUp("firmware, versions", "getmachineversions");
    made.special[FaultKind::OddList] = tells("", Verdict::NotDone, 2);
    made.special[FaultKind::OddList].error = QStringLiteral("Firmware version left out");
    return made;
}

WindowOperation downloading()
{
    WindowOperation made = operation<Downloading>("firmware, download", "downloadfirmware", 300000);
    made.success.told = QStringLiteral("Ready to upload firmware.");
    made.refused = tells("Download failed:\n");
    made.broken = tells("Download failed\n\n%1");
    // Any text may be a path; the upload will tell.
    made.special[FaultKind::OddText] = made.success;
    // It is the service's catalogue that is asked, not the machine.
    made.special[FaultKind::UnplugAtOnce] = made.success;
    made.special[FaultKind::StopBefore] = tells("");
    made.special[FaultKind::UnplugBefore] = tells("");
    made.namedErrors = {
        {wire::makeError("FirmwareUnavailableError", "<urlopen error no route to host>"),
         made.refused}};
    return made;
}

WindowOperation uploading()
{
    WindowOperation made = operation<Uploading>("firmware, upload", "uploadfirmware", 300000);
    made.answerIsRead = false;
    made.success.told = QStringLiteral("Firmware upload successful");
    made.refused = tells("Upload failed:\nUnknown error from trovek");
    made.broken = tells("Upload failed:\nUnknown error");
    for (const FaultKind odd :
         {FaultKind::OddNull, FaultKind::OddText, FaultKind::OddList, FaultKind::OddObject})
        made.special[odd] = made.success;
    made.special[FaultKind::StopBefore] = tells("Ready to upload firmware.");
    made.special[FaultKind::UnplugBefore] = tells("Ready to upload firmware.");
    made.moreFaults = {FaultKind::UnplugDuring, FaultKind::UploadFailsAt0,
                       FaultKind::UploadFailsAt50, FaultKind::UploadFailsAt99};
    made.namedErrors = {{wire::makeError("PrinterThreadNotIdleError", "The machine is busy"),
                         tells("Upload failed:\nCannot upload firmware while printing")}};
    return made;
}

} // namespace

std::vector<WindowOperation> firmwareOperations()
{
    return {machines(), versions(), downloading(), uploading()};
}

} // namespace trovek

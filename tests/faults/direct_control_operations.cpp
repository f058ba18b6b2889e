#include "fault_scene.h"
#include "window_operation.h"

#include "direct_controls/direct_world.h"

#include <trovek-ui/direct_controls_dialog.h>
#include <trovek-ui/extruder_control_widget.h>

#include <QLabel>
#include <QPushButton>

namespace trovek {

namespace {

constexpr char kCubio[] = "virtual_cubio_single";

/** The direct controls with one of their buttons. */
class DirectControls : public WindowInUse
{
public:
    DirectControls(FaultScene& scene, const char* button)
        : m_scene(scene)
        , m_dialog(scene.facade, scene.key)
        , m_button(*child<QPushButton>(m_dialog, button))
    {
        m_dialog.show();
    }

    bool prepare() override
    {
        FaultScene::settle();
        return m_button.isEnabled();
    }
    void press() override { QTest::mouseClick(&m_button, Qt::LeftButton); }
    bool isOpen() override { return m_dialog.isVisible(); }
    QString told() override
    {
        QStringList texts;
        for (const QLabel* notice : m_dialog.findChildren<QLabel*>(QStringLiteral("notice"))) {
            if (notice->isVisibleTo(&m_dialog) && !notice->text().isEmpty())
                texts.append(notice->text());
        }
        return texts.join(QStringLiteral(" / "));
    }

protected:
    FaultScene& m_scene;
    DirectControlsDialog m_dialog;
    QPushButton& m_button;
};

/** What becomes a job of the machine. */
class Motion : public DirectControls
{
public:
    Motion(FaultScene& scene, const char* button, const char* job)
        : DirectControls(scene, button)
        , m_job(job)
    {}

    bool prepare() override
    {
        m_before = m_scene.jobsOf(m_job);
        return DirectControls::prepare();
    }
    bool isDone() override { return m_scene.jobsOf(m_job) > m_before; }

protected:
    const std::string m_job;
    int m_before = 0;
};

class Calibration : public Motion
{
public:
    explicit Calibration(FaultScene& scene)
        : Motion(scene, "calibrate", "cbo_calibration")
    {}

    void announceQuestions(ModalDriver& driver) override
    {
        driver.expectMessage({QStringLiteral("Cubio Calibration"),
                              QStringLiteral("Move the build platform until the nozzle lies in the "
                                             "center, then turn the threaded rod until the nozzle "
                                             "just touches the surface without pressing into "
                                             "it.")});
    }
};

/** Filament moves only where it is warm. */
class Jog : public Motion
{
public:
    explicit Jog(FaultScene& scene)
        : Motion(scene, "load", "jog")
    {
        heat();
    }

    bool prepare() override
    {
        heat();
        return Motion::prepare();
    }

protected:
    void heat()
    {
        const auto isWarm = [this] {
            const Printer* const printer = m_scene.witness.printerFromKey(m_scene.key);
            return printer == nullptr || printer->toolTemperature().at(0) > 220;
        };
        if (!isWarm()) {
            m_scene.witness.setToolheadTemperature(m_scene.key, Printer::RightToolhead, 230);
            QTRY_VERIFY_WITH_TIMEOUT(isWarm(), 20000);
        }
    }
};

/** The end of a jog that this window has begun. */
class Stop : public Jog
{
public:
    explicit Stop(FaultScene& scene)
        : Jog(scene)
    {}

    /** Begins the jog: when the link is gone there is none that could be stopped. */
    bool prepare() override
    {
        if (!Jog::prepare() || !m_scene.facade.isConnected())
            return false;
        QTest::mouseClick(&m_button, Qt::LeftButton);
        return QTest::qWaitFor(
            [this] {
                const Printer* const printer = m_scene.witness.printerFromKey(m_scene.key);
                return printer != nullptr && printer->state() == Printer::Running;
            },
            10000);
    }
    void press() override
    {
        QTest::mouseClick(child<QPushButton>(m_dialog, "stop"), Qt::LeftButton);
    }
    bool isDone() override
    {
        const Printer* const printer = m_scene.witness.printerFromKey(m_scene.key);
        return printer != nullptr && printer->state() == Printer::Idle;
    }
};

/** The button that heats is never disabled. */
class Heat : public DirectControls
{
public:
    explicit Heat(FaultScene& scene)
        : DirectControls(scene, "heat")
    {}

    bool prepare() override
    {
        if (m_scene.witness.printerFromKey(m_scene.key) != nullptr)
            m_scene.witness.setToolheadTemperature(m_scene.key, Printer::RightToolhead, 0);
        const auto isCold = [this] {
            return !isHot(m_scene.witness) && !isHot(m_scene.facade);
        };
        return QTest::qWaitFor(isCold, 10000) && DirectControls::prepare();
    }
    bool isDone() override { return isHot(m_scene.witness); }

private:
    bool isHot(const Trovek& client) const
    {
        const Printer* const printer = client.printerFromKey(m_scene.key);
        return printer != nullptr && printer->toolheadTargetTemperature().at(0) != 0;
    }
};

Verdict tells(const char* text)
{
    Verdict verdict;
    verdict.told = QString::fromLatin1(text);
    return verdict;
}

WindowOperation operation(const char* name, const char* method, int deadlineMs, const char* told)
{
    WindowOperation made;
    made.name = name;
    made.method = method;
    made.deadlineMs = deadlineMs;
    made.refused = tells(told);
    made.broken = tells(told);
    return made;
}

template <typename Window, typename... Arguments>
void opens(WindowOperation& operation, Arguments... arguments)
{
    operation.open = [=](FaultScene& scene) {
        return std::make_unique<Window>(scene, arguments...);
    };
}

/** A disabled button, and nothing that tells of it. */
const Verdict kSilent;

} // namespace

std::vector<WindowOperation> directControlOperations()
{
    WindowOperation home = operation("direct controls, home", "home", 60000, "Home Script: %1");
    home.answerIsRead = false;
    opens<Motion>(home, "home", "home");

    WindowOperation calibrate =
        operation("direct controls, calibrate", "cbo_calibration", 300000, "Cubio Calibration: %1");
    calibrate.answerIsRead = false;
    calibrate.machine = kCubio;
    calibrate.success.messages = {
        {QStringLiteral("Cubio Calibration"), QStringLiteral("Cubio Calibration completed!")}};
    calibrate.moreFaults = {FaultKind::UnplugDuring};
    // It has begun.
    calibrate.special[FaultKind::UnplugDuring] = calibrate.refused;
    calibrate.special[FaultKind::UnplugDuring].effect = Verdict::Either;
    opens<Calibration>(calibrate);

    WindowOperation jog = operation("direct controls, load", "jog", 10000, "%1");
    opens<Jog>(jog);

    WindowOperation stop = operation("direct controls, stop", "cancel_job", 10000, "%1");
    stop.answerIsRead = false;
    opens<Stop>(stop);

    WindowOperation heat =
        operation("direct controls, heat", "set_toolhead_temperature", 10000, "%1");
    heat.answerIsRead = false;
    opens<Heat>(heat);

    // The jog has failed already, and is not told to be unknown.
    Verdict& failed = stop.special[FaultKind::UnplugAtOnce];
    failed.logged = 0;
    failed.effect = Verdict::Either;
    // Nor does it last for as long as the window waits.
    stop.special[FaultKind::Never] = stop.broken;
    stop.special[FaultKind::Never].effect = Verdict::Either;

    std::vector<WindowOperation> operations = {home, calibrate, jog, stop};
    for (WindowOperation& one : operations) {
        one.special[FaultKind::StopBefore] = kSilent;
        one.special[FaultKind::UnplugBefore] = kSilent;
    }
    operations.push_back(heat);
    return operations;
}

} // namespace trovek

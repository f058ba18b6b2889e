#pragma once

#include "fault_scene.h"
#include "window_operation.h"

#include <trovek-ui/machine_combo_box.h>
#include <trovek-ui/make_dialog.h>

#include <QPointer>
#include <QPushButton>
#include <QRadioButton>

namespace trovek {

namespace made {
extern const QStringList kServiceError;
extern const QStringList kNotStarted;
extern const QStringList kNoService;

Verdict shows(const QStringList& message);
/** There are lines of other errors before it. */
Verdict showsAfterSomeLines(const QStringList& message);
} // namespace made

/** A make dialog that prints, or exports into a file. */
class MakeWindow : public WindowInUse
{
public:
    enum Dialog { ForThing, ForGCode };

    /** @param suffix of the file; empty to print */
    MakeWindow(FaultScene& scene, Dialog dialog, const QString& suffix);
    ~MakeWindow() override;

    bool prepare() override;
    void announceQuestions(ModalDriver& driver) override;
    void press() override;
    bool isDone() override;
    bool isOpen() override;
    QStringList leftovers() override;

protected:
    template <typename Widget>
    Widget& find(const char* name) const
    {
        return *m_dialog->findChild<Widget*>(QString::fromLatin1(name));
    }
    /** The machine that the user has is chosen; false when it is not there. */
    bool chooseMachine() const;

    FaultScene& m_scene;
    QPointer<MakeDialog> m_dialog;
    QString m_destination;

private:
    bool isPrint() const { return m_suffix.isEmpty(); }

    const QString m_suffix;
    int m_prints = 0;
};

} // namespace trovek

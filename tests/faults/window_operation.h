#pragma once

#include "fault_kinds.h"

#include "support/modal_driver.h"

#include <rpcwire/json_rpc_exception.h>

#include <QList>
#include <QStringList>

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace trovek {

class FaultScene;

/** A window and the button in it that asks the service for something. */
class WindowInUse
{
public:
    virtual ~WindowInUse();

    /** What a user does first; false when the window does not let him press the button. */
    virtual bool prepare() = 0;
    /** The questions that come when the button is pressed, and their answers. */
    virtual void announceQuestions(ModalDriver&) {}
    /** The window with the result, which is closed. */
    virtual void announceResult(ModalDriver&) {}
    virtual void press() = 0;
    /** Whether the last press has had its effect. */
    virtual bool isDone() = 0;
    /** What stands in the window about a failure. */
    virtual QString told() { return QString(); }
    /** False when it has closed, and a user has to open another one. */
    virtual bool isOpen() { return true; }
    /** What must not be there, in words, for a test that fails. */
    virtual QStringList leftovers() { return {}; }
};

/** What a user gets to see of a fault, and what has come of his wish. */
struct Verdict
{
    enum Effect { Done, NotDone, Either };

    /** What the button says, without a word. */
    static Verdict done();

    /** Read and closed with "OK", in order; the beginnings of the texts. "%1" is the error's. */
    QList<QStringList> messages;
    /** The beginning of what stands in the window. */
    QString told;
    Effect effect = NotDone;
    /** Lines of errors in the log; the first has the error's text. Below 0: whatever comes. */
    int logged = 1;
    /** Whether the button's questions come at all. */
    bool isAsked = true;
    /** What the client says of the error, where that is not as usual. */
    std::optional<QString> error = std::nullopt;
    /** Whether the window comes that shows what the button has brought. */
    bool hasResult = false;
};

/** One request of a window. */
struct WindowOperation
{
    QByteArray name;
    /** On the wire. */
    const char* method = nullptr;
    int deadlineMs = 10000;
    std::function<std::unique_ptr<WindowInUse>(FaultScene&)> open;

    /** Nothing is wrong. */
    Verdict success = Verdict::done();
    /** The service answers an error. */
    Verdict refused;
    /** There is no answer, or an odd one. */
    Verdict broken;
    /** Whether the client looks at the answer at all. */
    bool answerIsRead = true;
    /** What is otherwise than for other operations. */
    std::map<FaultKind, Verdict> special;
    /** Errors that the windows tell apart, and what they make of them. */
    std::vector<std::pair<JsonRpcException, Verdict>> namedErrors;
    /** Besides the usual ones. */
    std::vector<FaultKind> moreFaults;
    /** Of the usual ones: those that cannot come in the way of it. */
    std::set<FaultKind> notMet;
    /** What comes when the machine returns, before anything is pressed; one error line each. */
    std::map<FaultKind, QStringList> messageAtReturn;

    const char* machine = "virtual_fabrino_2";
    /** Its port is open from the beginning. */
    bool isOpen = true;

    Verdict verdictOf(FaultKind kind) const;
};

template <typename Window>
WindowOperation operation(const char* name, const char* method, int deadlineMs = 10000)
{
    WindowOperation made;
    made.name = name;
    made.method = method;
    made.deadlineMs = deadlineMs;
    made.open = [](FaultScene& scene) {
        return std::make_unique<Window>(scene);
    };
    return made;
}

std::vector<WindowOperation> directControlOperations();
std::vector<WindowOperation> controlPanelOperations();
std::vector<WindowOperation> onboardOperations();
std::vector<WindowOperation> backupOperations();
std::vector<WindowOperation> makeGCodeOperations();
std::vector<WindowOperation> makeThingOperations();
std::vector<WindowOperation> profileCheckOperations();
std::vector<WindowOperation> previewOperations();
std::vector<WindowOperation> firmwareOperations();

} // namespace trovek

#include "service_world.h"
#include "support/test_log.h"

#include "src/make_dialog/export_files.h"

#include <trovek-ui/file_system.h>
#include <trovek/text.h>

#include <QFile>
#include <QFileInfo>
#include <QTest>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include <fcntl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace trovek;

/** What another user of the machine can do: nothing. */
class tst_OtherUser : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void cannotReachTheSocket();
    void isRefusedByTheServiceItself();
    void cannotTouchAnExportOnItsWay();
};

namespace {

constexpr uid_t kNobody = 65534;

/**
 * Runs `attempt` in a child process of that user.
 * @param attempt system calls only, since the parent has threads; gives 0 or an errno
 */
template <typename Attempt>
int as(uid_t user, Attempt attempt)
{
    const pid_t child = ::fork();
    if (child == 0) {
        if (::setresgid(user, user, user) != 0 || ::setresuid(user, user, user) != 0)
            ::_exit(255);
        ::_exit(attempt());
    }
    int status = 0;
    if (child < 0 || ::waitpid(child, &status, 0) != child || !WIFEXITED(status))
        return -1;
    return WEXITSTATUS(status);
}

/** Connects to the socket and greets: 0 when the greeting is answered. */
int talkTo(const sockaddr_un& address)
{
    const int socket = ::socket(AF_UNIX, SOCK_STREAM, 0);
    if (::connect(socket, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0)
        return errno;
    constexpr char line[] = R"({"jsonrpc":"2.0","id":1,"method":"hello","params":)"
                            R"({"version":{"major":1,"minor":0}}})"
                            "\n";
    // Without a signal where the other side has closed already.
    ::send(socket, line, sizeof line - 1, MSG_NOSIGNAL);
    char byte = 0;
    return ::recv(socket, &byte, 1, 0) > 0 ? 0 : EPIPE;
}

sockaddr_un socketAddress(const Address& address)
{
    sockaddr_un result = {};
    result.sun_family = AF_UNIX;
    std::copy(address.name().begin(), address.name().end(), result.sun_path);
    return result;
}

int openFile(const char* path, int flags)
{
    return ::open(path, flags) >= 0 ? 0 : errno;
}

bool letEverybodyIn(const QString& path, mode_t mode)
{
    return ::chmod(QFile::encodeName(path).constData(), mode) == 0;
}

} // namespace

void tst_OtherUser::initTestCase()
{
    if (::geteuid() != 0)
        QSKIP("only the administrator can become another user");
}

void tst_OtherUser::cannotReachTheSocket()
{
    TestLog log;
    ServiceWorld world;
    world.start();
    // What is around the socket's own folder is not what keeps others out.
    QVERIFY(letEverybodyIn(QFileInfo(world.stateDir()).path(), 0755));
    const sockaddr_un address = socketAddress(world.address());

    QCOMPARE(as(kNobody, [&] { return talkTo(address); }), EACCES);

    // The socket alone keeps them out, too.
    QVERIFY(letEverybodyIn(QFileInfo(toQString(world.address().name())).path(), 0755));
    QCOMPARE(as(kNobody, [&] { return talkTo(address); }), EACCES);
}

void tst_OtherUser::isRefusedByTheServiceItself()
{
    TestLog log;
    ServiceWorld world;
    world.start();
    const QString socket = toQString(world.address().name());
    QVERIFY(letEverybodyIn(QFileInfo(world.stateDir()).path(), 0755));
    QVERIFY(letEverybodyIn(QFileInfo(socket).path(), 0755));
    QVERIFY(letEverybodyIn(socket, 0666));
    const sockaddr_un address = socketAddress(world.address());

    log.expectError("Refused a connection of another user");
    QCOMPARE(as(kNobody, [&] { return talkTo(address); }), EPIPE);

    QCOMPARE(as(0, [&] { return talkTo(address); }), 0);
}

void tst_OtherUser::cannotTouchAnExportOnItsWay()
{
    TestLog log;
    ServiceWorld world;
    world.start();
    RecordingTrovek client;
    client.connectToDaemon(world.address());
    const std::string input = world.writeFile(QStringLiteral("part.gcode"), squareGCode());
    const std::string output = toStdString(createServiceOutput(QStringLiteral("part.x3g")));
    const char* const path = output.c_str();

    const int job = client.printToFile(MachineName(ServiceWorld::kArchetype), input, output, {},
                                       {"pla"}, false, "x3g");
    QCOMPARE(as(kNobody, [&] { return openFile(path, O_RDONLY); }), EACCES);
    QVERIFY(waitForConclusion(client, job));

    QVERIFY(!ServiceWorld::read(output).isEmpty());
    QCOMPARE(as(kNobody, [&] { return openFile(path, O_RDONLY); }), EACCES);
    QCOMPARE(as(kNobody, [&] { return openFile(path, O_WRONLY); }), EACCES);
    QCOMPARE(as(kNobody, [&] { return ::unlink(path) == 0 ? 0 : errno; }), EACCES);
    QCOMPARE(as(0, [&] { return openFile(path, O_RDONLY); }), 0);
    TemporaryDir::cleanManagedDirectories();
}

QTEST_GUILESS_MAIN(tst_OtherUser)
#include "tst_other_user_unix.moc"

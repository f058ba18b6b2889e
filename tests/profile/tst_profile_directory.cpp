// The profile directory of the process, from before it is set.

#include "profile/profile_world.h"
#include "support/test_log.h"
#include "support/thrown_text.h"

#include <trovek-ui/create_profile_dialog.h>
#include <trovek-ui/profile_combo_box.h>

#include <QFileSystemWatcher>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTest>

#include <memory>

using namespace trovek;

class tst_ProfileDirectory : public QObject
{
    Q_OBJECT

private slots:
    void isNotThereAtFirst();
    void listsCarryOnWithoutIt();
    void deletesNothingWithoutIt();
    void createsNothingWithoutIt();
    void isSetOnce();
    void listsFromBeforeItWasSetStayAsTheyAre();

private:
    QTemporaryDir m_folder;
    std::unique_ptr<ProfileListModel> m_earlyModel;
};

namespace {

int entriesOf(const TestLog& log, const char* message)
{
    int count = 0;
    for (const LogEntry& entry : log.sink().entries()) {
        if (entry.message == message && entry.severity == 0 &&
            entry.file == "src\\profile\\profile_list_model")
            ++count;
    }
    return count;
}

} // namespace

void tst_ProfileDirectory::isNotThereAtFirst()
{
    TestLog log;
    log.expectError("Profile directory not set");

    QCOMPARE(thrownText([] { getGlobalProfileDirectory(); }),
             std::string("Profile directory not set"));
    QCOMPARE(entriesOf(log, "Profile directory not set"), 0);
    QVERIFY(safeGetGlobalProfileDirectory().isNull());
    QCOMPARE(entriesOf(log, "Profile directory not set"), 1);
}

void tst_ProfileDirectory::listsCarryOnWithoutIt()
{
    TestLog log;
    log.expectError("Profile directory not set");
    log.expectError("Profile directory not set");

    m_earlyModel = std::make_unique<ProfileListModel>(true, false);
    const ProfileListModel second(true, true);
    m_earlyModel->update();

    QCOMPARE(entriesOf(log, "Profile directory not set"), 2);
    QCOMPARE(rowsOf(*m_earlyModel), QStringList({text("Low"), text("Standard"), text("High")}));
    QCOMPARE(second.rowCount(), 3 + 13);
    QVERIFY(m_earlyModel->findChild<QFileSystemWatcher*>() == nullptr);
}

void tst_ProfileDirectory::deletesNothingWithoutIt()
{
    TestLog log;
    writeProfile(m_folder.filePath(text("a")));

    QCOMPARE(
        thrownText([this] { m_earlyModel->removeProfile(QDir(m_folder.filePath(text("a")))); }),
        std::string("Not in the profile directory"));
    QVERIFY(QFileInfo::exists(m_folder.filePath(text("a/profile.json"))));
}

void tst_ProfileDirectory::createsNothingWithoutIt()
{
    TestLog log;
    log.expectError("Profile directory not set");
    CreateProfileDialog dialog;
    dialog.show();
    log.verify();
    auto* const create = dialog.findChild<QPushButton*>(text("create"));
    auto* const error = dialog.findChild<QLabel*>(text("error"));
    QTest::keyClicks(dialog.findChild<QLineEdit*>(text("name")), text("new"));
    QVERIFY(error->isHidden());

    log.expectError("Profile directory not set");
    QTest::mouseClick(create, Qt::LeftButton);

    const LogEntry entry = log.sink().entries().back();
    QCOMPARE(entry.message, std::string("Profile directory not set"));
    QCOMPARE(entry.severity, 0);
    QCOMPARE(entry.file, std::string("src\\profile\\create_profile_dialog"));
    QVERIFY2(entry.function.find("CreateProfileDialog::createProfile()") != std::string::npos,
             entry.function.c_str());
    QVERIFY(dialog.isVisible());
    QVERIFY(error->isVisible());
    QCOMPARE(error->text(), text("The profile could not be created: Profile directory not set"));
    QVERIFY(create->isEnabled());
    QTRY_VERIFY(!error->visibleRegion().isEmpty());
}

void tst_ProfileDirectory::isSetOnce()
{
    TestLog log;
    const QString earlier = QDir::currentPath();
    QVERIFY(QDir::setCurrent(m_folder.path()));
    QDir directory(text("profiles"));

    setGlobalProfileDirectory(directory);

    QVERIFY(directory.cdUp() || directory.cd(text("/")));
    QVERIFY(QDir::setCurrent(earlier));
    // Wherever the program goes later, and whatever becomes of what it handed over.
    QCOMPARE(getGlobalProfileDirectory().absolutePath(), m_folder.filePath(text("profiles")));
    QDir copy = getGlobalProfileDirectory();
    copy.setPath(text("/elsewhere"));
    safeGetGlobalProfileDirectory()->setPath(text("/elsewhere"));
    QVERIFY(safeGetGlobalProfileDirectory() != safeGetGlobalProfileDirectory());
    QCOMPARE(safeGetGlobalProfileDirectory()->absolutePath(), m_folder.filePath(text("profiles")));
    QCOMPARE(thrownText([] { setGlobalProfileDirectory(QDir(text("/other"))); }),
             std::string("Profile directory already set"));
    QCOMPARE(getGlobalProfileDirectory().absolutePath(), m_folder.filePath(text("profiles")));
}

void tst_ProfileDirectory::listsFromBeforeItWasSetStayAsTheyAre()
{
    TestLog log;
    writeProfile(m_folder.filePath(text("profiles/a")));

    m_earlyModel->update();

    QCOMPARE(m_earlyModel->rowCount(), 3);
    QCOMPARE(rowsOf(ProfileListModel(false, false)), QStringList{text("a")});
}

QTEST_MAIN(tst_ProfileDirectory)
#include "tst_profile_directory.moc"

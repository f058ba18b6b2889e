#include "apps/ostrand/recent_files.h"

#include <QSettings>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

using namespace ostrand;

namespace {

struct World
{
    QTemporaryDir folder;
    QSettings settings{folder.filePath(QStringLiteral("host.ini")), QSettings::IniFormat};

    QString path(const QString& name) const { return folder.filePath(name); }
};

QStringList textsOf(const QMenu& menu)
{
    QStringList texts;
    for (const QAction* action : menu.actions()) {
        if (!action->isSeparator())
            texts.append(action->text());
    }
    return texts;
}

} // namespace

class tst_RecentFiles : public QObject
{
    Q_OBJECT

private slots:
    void isEmptyAtFirst();
    void theNewestComesFirst();
    void aFileStandsThereOnce();
    void keepsTenFiles();
    void survivesInTheSettings();
    void choosingGivesThePath();
    void clearsItself();
    void removesOne();
    void showsOddNames();
};

void tst_RecentFiles::isEmptyAtFirst()
{
    World world;
    RecentFiles menu(world.settings);
    QVERIFY(menu.files().isEmpty());
    QVERIFY(!menu.isEnabled());
    QVERIFY(textsOf(menu).isEmpty());
}

void tst_RecentFiles::theNewestComesFirst()
{
    World world;
    RecentFiles menu(world.settings);
    menu.add(world.path(QStringLiteral("a.gcode")));
    menu.add(world.path(QStringLiteral("b.gcode")));
    QCOMPARE(textsOf(menu), QStringList({QStringLiteral("&1 b.gcode"), QStringLiteral("&2 a.gcode"),
                                         QStringLiteral("&Clear List")}));
    QVERIFY(menu.isEnabled());
    QCOMPARE(menu.actions().first()->toolTip(), world.path(QStringLiteral("b.gcode")));
}

void tst_RecentFiles::aFileStandsThereOnce()
{
    World world;
    RecentFiles menu(world.settings);
    menu.add(world.path(QStringLiteral("a.gcode")));
    menu.add(world.path(QStringLiteral("b.gcode")));
    menu.add(world.path(QStringLiteral("./a.gcode"))
                 .replace(QStringLiteral("/./"), QStringLiteral("/")));
    QCOMPARE(menu.files(), QStringList({world.path(QStringLiteral("a.gcode")),
                                        world.path(QStringLiteral("b.gcode"))}));
}

void tst_RecentFiles::keepsTenFiles()
{
    World world;
    RecentFiles menu(world.settings);
    for (int i = 0; i < 12; ++i)
        menu.add(world.path(QStringLiteral("%1.gcode").arg(i)));
    QCOMPARE(menu.files().size(), 10);
    QCOMPARE(menu.files().first(), world.path(QStringLiteral("11.gcode")));
    QCOMPARE(menu.files().last(), world.path(QStringLiteral("2.gcode")));
    QCOMPARE(textsOf(menu).at(9), QStringLiteral("1&0 2.gcode"));
}

void tst_RecentFiles::survivesInTheSettings()
{
    World world;
    RecentFiles(world.settings).add(world.path(QStringLiteral("a.gcode")));
    RecentFiles menu(world.settings);
    QCOMPARE(menu.files(), QStringList(world.path(QStringLiteral("a.gcode"))));
    QVERIFY(menu.isEnabled());
}

void tst_RecentFiles::choosingGivesThePath()
{
    World world;
    RecentFiles menu(world.settings);
    QSignalSpy chosen(&menu, &RecentFiles::chosen);
    menu.add(world.path(QStringLiteral("a.gcode")));
    menu.add(world.path(QStringLiteral("b.gcode")));
    menu.actions().at(1)->trigger();
    QCOMPARE(chosen.count(), 1);
    QCOMPARE(chosen.first().first().toString(), world.path(QStringLiteral("a.gcode")));
}

void tst_RecentFiles::clearsItself()
{
    World world;
    RecentFiles menu(world.settings);
    menu.add(world.path(QStringLiteral("a.gcode")));
    menu.actions().last()->trigger();
    QTRY_VERIFY(menu.files().isEmpty());
    QVERIFY(!menu.isEnabled());
}

void tst_RecentFiles::removesOne()
{
    World world;
    RecentFiles menu(world.settings);
    menu.add(world.path(QStringLiteral("a.gcode")));
    menu.add(world.path(QStringLiteral("b.gcode")));
    menu.remove(world.path(QStringLiteral("b.gcode")));
    menu.remove(world.path(QStringLiteral("never.gcode")));
    QCOMPARE(menu.files(), QStringList(world.path(QStringLiteral("a.gcode"))));
}

void tst_RecentFiles::showsOddNames()
{
    World world;
    RecentFiles menu(world.settings);
    menu.add(world.path(QStringLiteral("a & b.gcode")));
    QCOMPARE(menu.actions().first()->text(), QStringLiteral("&1 a && b.gcode"));
}

QTEST_MAIN(tst_RecentFiles)
#include "tst_recent_files.moc"

#include "profile/profile_world.h"
#include "support/thrown_text.h"

#include <trovek-ui/profile.h>

#include <QTest>

using namespace trovek;

class tst_FakeProfile : public QObject
{
    Q_OBJECT

private slots:
    void isNamedAsItsPreset_data();
    void isNamedAsItsPreset();
    void hasNoFiles();
    void isTheSameForTheSamePresetOnly();
    void refusesWhatNeedsFiles();
};

void tst_FakeProfile::isNamedAsItsPreset_data()
{
    QTest::addColumn<int>("preset");
    QTest::addColumn<QString>("name");

    QTest::newRow("low") << 0 << text("Low");
    QTest::newRow("standard") << 1 << text("Standard");
    QTest::newRow("high") << 2 << text("High");
    QTest::newRow("custom") << 3 << text("Invalid Fake Profile");
    QTest::newRow("beyond") << 4 << text("Invalid Fake Profile");
    QTest::newRow("negative") << -1 << text("Invalid Fake Profile");
}

void tst_FakeProfile::isNamedAsItsPreset()
{
    QFETCH(int, preset);
    QFETCH(QString, name);

    const FakeProfile profile(static_cast<SlicerConfiguration::Preset>(preset));

    QCOMPARE(profile.name(), name);
    QCOMPARE(int(profile.preset()), preset);
}

void tst_FakeProfile::hasNoFiles()
{
    const FakeProfile profile(SlicerConfiguration::Standard);

    QVERIFY(!profile.isOnDisk());
    QCOMPARE(profile.path(), QString());
    QVERIFY(profile.json().isNull());
    QCOMPARE(thrownText([&] { profile.machineTypes(); }),
             std::string("profile.json is missing the machine_type field"));
    QCOMPARE(thrownText([&] { profile.slicer(); }),
             std::string("profile.json is missing the slicer field"));
}

void tst_FakeProfile::isTheSameForTheSamePresetOnly()
{
    const FakeProfile low(SlicerConfiguration::Low);

    QVERIFY(low.isSameAs(low));
    QVERIFY(low.isSameAs(FakeProfile(SlicerConfiguration::Low)));
    QVERIFY(!low.isSameAs(FakeProfile(SlicerConfiguration::High)));
    QVERIFY(!low.isSameAs(DirectoryProfile(QDir(text("Low")))));
    QVERIFY(!low.isSameAs(ResourceProfile(text(":/profiles/Low"))));
}

void tst_FakeProfile::refusesWhatNeedsFiles()
{
    FakeProfile profile(SlicerConfiguration::Low);

    QCOMPARE(thrownText([&] { profile.copyToDisk(QDir(), text("new"), {}); }),
             std::string("Cannot copy a fake profile to disk"));
    QCOMPARE(thrownText([&] { profile.slicerConfigPath(); }),
             std::string("Cannot pass a fake profile to Trovek"));
    QCOMPARE(thrownText([&] { profile.remove(); }), std::string("Cannot delete a fake profile"));
    QCOMPARE(thrownText([&] { profile.edit(); }), std::string("Cannot edit a fake profile"));
    QVERIFY(!QFileInfo::exists(text("new")));
}

QTEST_MAIN(tst_FakeProfile)
#include "tst_fake_profile.moc"

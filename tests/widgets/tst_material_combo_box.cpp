#include "support/test_log.h"

#include <trovek-ui/material_combo_box.h>

#include <QSignalSpy>
#include <QStandardItemModel>
#include <QTest>

using namespace trovek;

namespace {

QList<int> disabledRows(const MaterialComboBox& box)
{
    QList<int> rows;
    for (int row = 0; row < box.count(); ++row) {
        const Qt::ItemFlags flags = box.model()->flags(box.model()->index(row, 0));
        if (!flags.testFlag(Qt::ItemIsEnabled))
            rows.append(row);
    }
    return rows;
}

QStringList texts(const QComboBox& box)
{
    QStringList all;
    for (int row = 0; row < box.count(); ++row)
        all.append(box.itemText(row));
    return all;
}

const QStringList kMaterials = {QStringLiteral("Orvane ABS"), QStringLiteral("Orvane PLA"),
                                QStringLiteral("Orvane Dissolvable Filament"),
                                QStringLiteral("Orvane Flexible Filament")};

} // namespace

class tst_MaterialComboBox : public QObject
{
    Q_OBJECT

private slots:
    void listsTheFourMaterials();
    void tellsTheMaterialThatAUserChooses();
    void answersUnknownWithoutASelection();
    void selectsAMaterial_data();
    void selectsAMaterial();
    void offersWhatAMachineCanUse_data();
    void offersWhatAMachineCanUse();
    void skipsGreyedMaterialsUnderTheKeys();
    void ungreysForAnotherMachine();
    void announcesTheRefill();
};

void tst_MaterialComboBox::listsTheFourMaterials()
{
    TestLog log;
    const MaterialComboBox box;

    QCOMPARE(texts(box), kMaterials);
    QCOMPARE(int(box.material()), int(Orvane::ABS));
    for (int row = 0; row < box.count(); ++row) {
        QVERIFY(box.itemIcon(row).isNull());
        QVERIFY(!box.itemData(row).isValid());
    }
}

void tst_MaterialComboBox::tellsTheMaterialThatAUserChooses()
{
    TestLog log;
    MaterialComboBox box;
    QSignalSpy changed(&box, &MaterialComboBox::materialChanged);

    box.show();
    QTest::keyClick(&box, Qt::Key_Down);

    QCOMPARE(changed.count(), 1);
    QCOMPARE(int(changed.first().first().value<Orvane::Material>()), int(Orvane::PLA));
    QCOMPARE(int(box.material()), int(Orvane::PLA));
}

void tst_MaterialComboBox::answersUnknownWithoutASelection()
{
    TestLog log;
    MaterialComboBox box;

    box.setCurrentIndex(-1);

    QCOMPARE(int(box.material()), 4);
}

void tst_MaterialComboBox::selectsAMaterial_data()
{
    QTest::addColumn<int>("value");
    QTest::addColumn<int>("row");

    QTest::newRow("first") << 0 << 0;
    QTest::newRow("last") << 3 << 3;
    QTest::newRow("unknown") << 4 << -1;
    QTest::newRow("negative") << -1 << -1;
    QTest::newRow("far out") << 99 << -1;
}

void tst_MaterialComboBox::selectsAMaterial()
{
    TestLog log;
    QFETCH(int, value);
    MaterialComboBox box;
    box.setCurrentIndex(2);

    box.select(static_cast<Orvane::Material>(value));

    QTEST(box.currentIndex(), "row");
}

void tst_MaterialComboBox::offersWhatAMachineCanUse_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<QList<int>>("disabled");
    QTest::addColumn<int>("row");

    QTest::newRow("unknown") << 0 << QList<int>{} << 0;
    QTest::newRow("fabrino_single") << 1 << QList<int>{2, 3} << 0;
    QTest::newRow("fabrino_dual") << 2 << QList<int>{3} << 0;
    QTest::newRow("fabrino_2") << 3 << QList<int>{0, 2} << 1;
    QTest::newRow("fabrino_2x") << 4 << QList<int>{3} << 0;
    QTest::newRow("cubio_single") << 5 << QList<int>{2, 3} << 0;
    QTest::newRow("cubio_dual") << 6 << QList<int>{2, 3} << 0;
    QTest::newRow("one past the last") << 7 << QList<int>{} << 0;
    QTest::newRow("negative") << -5 << QList<int>{} << 0;
}

void tst_MaterialComboBox::offersWhatAMachineCanUse()
{
    TestLog log;
    QFETCH(int, type);
    MaterialComboBox box;
    box.setCurrentIndex(3);

    box.sanitizeForBot(static_cast<Printer::Type>(type));

    QTEST(disabledRows(box), "disabled");
    QTEST(box.currentIndex(), "row");
    QFETCH(QList<int>, disabled);
    for (int material = 0; material < Orvane::kMaterialCount; ++material)
        QCOMPARE(box.isUsable(static_cast<Orvane::Material>(material)),
                 !disabled.contains(material));
    QVERIFY(!box.isUsable(Orvane::UnknownMaterial));
    QVERIFY(!box.isUsable(static_cast<Orvane::Material>(-1)));
    QCOMPARE(texts(box), kMaterials);
}

void tst_MaterialComboBox::skipsGreyedMaterialsUnderTheKeys()
{
    TestLog log;
    MaterialComboBox box;
    box.sanitizeForBot(Printer::Fabrino2);
    box.show();

    QTest::keyClick(&box, Qt::Key_Up);
    QCOMPARE(int(box.material()), int(Orvane::PLA));
    QTest::keyClick(&box, Qt::Key_Down);
    QCOMPARE(int(box.material()), int(Orvane::Flexible));
}

void tst_MaterialComboBox::ungreysForAnotherMachine()
{
    TestLog log;
    MaterialComboBox box;

    box.sanitizeForBot(Printer::Fabrino2);
    box.sanitizeForBot(Printer::FabrinoDual);

    QCOMPARE(disabledRows(box), QList<int>{3});
    QCOMPARE(box.currentIndex(), 0);
}

void tst_MaterialComboBox::announcesTheRefill()
{
    TestLog log;
    MaterialComboBox box;
    box.setCurrentIndex(2);
    QList<int> values;
    connect(&box, &MaterialComboBox::materialChanged, &box,
            [&values](Orvane::Material material) { values.append(material); });

    box.sanitizeForBot(Printer::Fabrino2);

    QCOMPARE(values, (QList<int>{-1, 0, 1}));
}

QTEST_MAIN(tst_MaterialComboBox)
#include "tst_material_combo_box.moc"

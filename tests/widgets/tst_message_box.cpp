#include "support/modal_driver.h"
#include "support/test_log.h"

#include <trovek-ui/message_box.h>

#include <widgets/copyable_label.h>

#include <QCheckBox>
#include <QClipboard>
#include <QDesktopServices>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QVBoxLayout>

using trovek::MessageBox;
using trovek::ModalDriver;
using trovek::TestLog;
using Buttons = std::vector<MessageBox::Button>;

namespace {

QString text(const char* latin1)
{
    return QString::fromLatin1(latin1);
}

const Buttons& threeButtons()
{
    static const Buttons buttons{
        {text("&Save"), 2}, {text("&Keep"), 1, MessageBox::Button::Default}, {text("&Cancel"), 0}};
    return buttons;
}

QPushButton* button(QWidget* box, const char* label)
{
    const QList<QPushButton*> all = box->findChildren<QPushButton*>();
    for (QPushButton* candidate : all) {
        if (candidate->text() == text(label))
            return candidate;
    }
    qFatal("No button %s", label);
}

void click(QWidget* box, const char* label)
{
    QTest::mouseClick(button(box, label), Qt::LeftButton);
}

QLabel* label(QWidget* box, const char* name)
{
    return box->findChild<QLabel*>(text(name));
}

/** A style with a single icon of 32 x 32, as old icon themes have them. */
class SmallIconStyle : public QProxyStyle
{
public:
    QIcon standardIcon(StandardPixmap, const QStyleOption*, const QWidget*) const override
    {
        QPixmap pixmap(32, 32);
        pixmap.fill(Qt::red);
        return QIcon(pixmap);
    }
};

/** Says which icon was asked for. */
class RecordingStyle : public QProxyStyle
{
public:
    QIcon standardIcon(StandardPixmap which, const QStyleOption* option,
                       const QWidget* widget) const override
    {
        asked = which;
        return QProxyStyle::standardIcon(which, option, widget);
    }

    mutable int asked = -1;
};

class LinkReceiver : public QObject
{
    Q_OBJECT

public:
    QList<QUrl> opened;

public slots:
    void open(const QUrl& url) { opened += url; }
};

} // namespace

class tst_MessageBox : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void buttonRefusesUnknownFlags();
    void refusesBadButtons_data();
    void refusesBadButtons();
    void refusesAnythingButTheFourIcons();
    void refusesAnEmptyKeyOnlyWithSettings();
    void logsBeforeItRefuses();
    void drawsTheStandardIcon_data();
    void drawsTheStandardIcon();
    void drawsSmallIconsAtFullSize();
    void laysOutIconHeadingTextAndButtons();
    void headingIsPlainAndTheTextRich();
    void headingFollowsPixelFonts();
    void wrapsALongHeading();
    void hasFixedSizeAndABlankTitle();
    void hidesAnEmptyText();
    void reportsThePressedButton_data();
    void reportsThePressedButton();
    void enterPressesTheDefaultButton();
    void tabReachesEveryButton();
    void escapeRejectsAlsoWithoutARejectingButton();
    void closingTheWindowRejects();
    void ownFinishedCarriesTheCodeWhereQDialogsDoesNot();
    void forgetsTheCodeWhenShownAgain();
    void forgetsTheCodeWhenSkippedTheSecondTime();
    void storesTheChoiceOnEveryClose_data();
    void storesTheChoiceOnEveryClose();
    void skipsWhatTheUserHid();
    void showsWhatTheUserDidNotHide();
    void neverSkipsWithoutSettings();
    void survivesItsSettings();
    void survivesTheDeathOfItsParentWhileOpen();
    void canBeDeletedByItsReceiver();
    void showsWithoutBlocking();
    void guideTextWidensTheText();
    void clickCopiesTheRawText();
    void linksOpenInTheBrowser();
    void displayFunctionsShowOneButton_data();
    void displayFunctionsShowOneButton();
    void displayFallsBackToAPlainBox();
    void displaySurvivesTheDeathOfTheParent();

private:
    std::unique_ptr<QTemporaryDir> m_folder;
    std::unique_ptr<QSettings> m_settings;
    std::unique_ptr<TestLog> m_log;
};

void tst_MessageBox::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    m_settings =
        std::make_unique<QSettings>(m_folder->filePath(text("settings.ini")), QSettings::IniFormat);
    m_log = std::make_unique<TestLog>();
}

void tst_MessageBox::cleanup()
{
    m_log.reset();
    QVERIFY(QApplication::topLevelWidgets().isEmpty());
}

void tst_MessageBox::buttonRefusesUnknownFlags()
{
    for (const std::uint32_t flags : {2u, 3u, 0xffffffffu}) {
        try {
            MessageBox::Button(text("X"), 5, flags);
            QFAIL("accepted");
        } catch (const std::runtime_error& error) {
            QCOMPARE(error.what(), "Invalid flags in MessageBox::Button");
        }
    }
    const MessageBox::Button plain(text("X"), -5, 0);
    QCOMPARE(plain.text, text("X"));
    QCOMPARE(plain.code, -5);
    QCOMPARE(plain.flags, 0u);
    QCOMPARE(MessageBox::Button(text("X"), 5, 1).flags, 1u);
}

Q_DECLARE_METATYPE(Buttons)

void tst_MessageBox::refusesBadButtons_data()
{
    QTest::addColumn<Buttons>("buttons");
    QTest::addColumn<QString>("expected");

    const auto add = [](const char* name, const Buttons& buttons, const char* expected) {
        QTest::newRow(name) << buttons << text(expected);
    };
    add("none", {}, "A default MessageBox button is required");
    add("no default", {{text("A"), 1}}, "A default MessageBox button is required");
    add("equal texts", {{text("A"), 1, 1}, {text("A"), 2}}, "Duplicate text in MessageBox buttons");
    add("equal codes", {{text("A"), 1, 1}, {text("B"), 1}}, "Duplicate code in MessageBox buttons");
    add("equal texts and codes", {{text("A"), 1, 1}, {text("A"), 1}},
        "Duplicate text in MessageBox buttons");
    add("equal codes before equal texts", {{text("A"), 1, 1}, {text("B"), 1}, {text("A"), 2}},
        "Duplicate code in MessageBox buttons");
    add("two defaults", {{text("A"), 1, 1}, {text("B"), 2, 1}},
        "More than one default MessageBox button");
    add("two defaults, and the second and third share a text",
        {{text("A"), 1, 1}, {text("B"), 2, 1}, {text("B"), 3}},
        "Duplicate text in MessageBox buttons");
    add("two defaults, and the third and fourth share a text",
        {{text("A"), 1, 1}, {text("B"), 2, 1}, {text("C"), 3}, {text("C"), 4}},
        "More than one default MessageBox button");
}

void tst_MessageBox::refusesBadButtons()
{
    QFETCH(Buttons, buttons);
    QFETCH(QString, expected);
    try {
        MessageBox box(buttons, text("Title"), text("Text"), QMessageBox::NoIcon);
        QFAIL("accepted");
    } catch (const std::runtime_error& error) {
        QCOMPARE(QString::fromUtf8(error.what()), expected);
    }
    QCOMPARE(m_log->messages(), std::vector<std::string>{"Title, Text"});
}

void tst_MessageBox::refusesAnythingButTheFourIcons()
{
    for (const auto icon : {QMessageBox::NoIcon, static_cast<QMessageBox::Icon>(7)}) {
        try {
            MessageBox box(threeButtons(), text("Title"), text("Text"), icon);
            QFAIL("accepted");
        } catch (const std::runtime_error& error) {
            QCOMPARE(error.what(), "Invalid MessageBox icon");
        }
    }
}

void tst_MessageBox::refusesAnEmptyKeyOnlyWithSettings()
{
    try {
        MessageBox box({}, text("T"), text("B"), QMessageBox::Warning, m_settings.get(), QString());
        QFAIL("accepted");
    } catch (const std::runtime_error& error) {
        QCOMPARE(error.what(), "settingsKey is invalid");
    }
    QVERIFY(m_log->messages().empty());

    MessageBox box(threeButtons(), text("T"), text("B"), QMessageBox::Warning, nullptr, QString());
    QVERIFY(!box.findChild<QCheckBox*>());
}

void tst_MessageBox::logsBeforeItRefuses()
{
    MessageBox box(threeButtons(), QString::fromUtf8("Grüße"), text("line 1\nline 2"),
                   QMessageBox::Warning);
    const std::vector<trovek::LogEntry> entries = m_log->sink().entries();
    QCOMPARE(entries.size(), std::size_t(1));
    QCOMPARE(entries[0].severity, 1);
    QCOMPARE(entries[0].file, std::string("src/widgets/message_box"));
    QCOMPARE(entries[0].message, std::string("Gr\xc3\xbc\xc3\x9f"
                                             "e, line 1\nline 2"));
}

void tst_MessageBox::drawsTheStandardIcon_data()
{
    QTest::addColumn<int>("icon");
    QTest::addColumn<int>("expected");

    QTest::newRow("information") << int(QMessageBox::Information)
                                 << int(QStyle::SP_MessageBoxInformation);
    QTest::newRow("warning") << int(QMessageBox::Warning) << int(QStyle::SP_MessageBoxWarning);
    QTest::newRow("critical") << int(QMessageBox::Critical) << int(QStyle::SP_MessageBoxCritical);
    QTest::newRow("question") << int(QMessageBox::Question) << int(QStyle::SP_MessageBoxQuestion);
}

void tst_MessageBox::drawsTheStandardIcon()
{
    QFETCH(int, icon);
    QFETCH(int, expected);
    auto* style = new RecordingStyle;
    QApplication::setStyle(style);
    MessageBox box(threeButtons(), text("T"), text("B"), static_cast<QMessageBox::Icon>(icon));
    const int asked = style->asked;
    QApplication::setStyle(text("fusion"));

    QCOMPARE(asked, expected);
    const QPixmap pixmap = label(&box, "icon")->pixmap(Qt::ReturnByValue);
    QCOMPARE(pixmap.size() / pixmap.devicePixelRatio(), QSize(48, 48));
    QCOMPARE(label(&box, "icon")->sizePolicy(),
             QSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed));
}

void tst_MessageBox::drawsSmallIconsAtFullSize()
{
    QApplication::setStyle(new SmallIconStyle);
    MessageBox box(threeButtons(), text("T"), text("B"), QMessageBox::Warning);
    QApplication::setStyle(text("fusion"));

    const QImage image = label(&box, "icon")->pixmap(Qt::ReturnByValue).toImage();
    QCOMPARE(image.size() / image.devicePixelRatio(), QSize(48, 48));
    QCOMPARE(image.pixelColor(2, 2), QColor(Qt::red));
    QCOMPARE(image.pixelColor(image.width() - 3, image.height() - 3), QColor(Qt::red));
}

void tst_MessageBox::laysOutIconHeadingTextAndButtons()
{
    MessageBox box(threeButtons(), text("Heading"), text("Body"), QMessageBox::Warning,
                   m_settings.get(), text("key"));
    auto* outer = qobject_cast<QHBoxLayout*>(box.layout());
    QVERIFY(outer);
    QCOMPARE(outer->sizeConstraint(), QLayout::SetFixedSize);
    QCOMPARE(outer->itemAt(0)->widget(), label(&box, "icon"));
    QCOMPARE(int(outer->itemAt(0)->alignment()), 33);
    QCOMPARE(outer->stretch(1), 1);
    auto* column = qobject_cast<QVBoxLayout*>(outer->itemAt(1)->layout());
    QVERIFY(column);
    QCOMPARE(column->spacing(), 8);
    QCOMPARE(column->count(), 4);
    QCOMPARE(column->itemAt(0)->widget(), label(&box, "heading"));
    QCOMPARE(column->itemAt(1)->widget(), label(&box, "text"));
    auto* check = qobject_cast<QCheckBox*>(column->itemAt(2)->widget());
    QVERIFY(check);
    QCOMPARE(check->text(), text("Don't show this message again"));
    QVERIFY(!check->isChecked());
    auto* row = qobject_cast<QHBoxLayout*>(column->itemAt(3)->layout());
    QVERIFY(row);
    QCOMPARE(row->count(), 4);
    QVERIFY(row->itemAt(0)->spacerItem());
    const char* expected[] = {"&Save", "&Keep", "&Cancel"};
    for (int i = 0; i < 3; ++i) {
        auto* pushButton = qobject_cast<QPushButton*>(row->itemAt(i + 1)->widget());
        QCOMPARE(pushButton->text(), text(expected[i]));
        QCOMPARE(row->itemAt(i + 1)->alignment(), Qt::AlignRight);
        QCOMPARE(row->stretch(i + 1), 0);
        QCOMPARE(pushButton->sizePolicy().horizontalPolicy(), QSizePolicy::Fixed);
        QCOMPARE(pushButton->sizePolicy().verticalPolicy(), QSizePolicy::Minimum);
        QCOMPARE(pushButton->isDefault(), i == 1);
    }
    QVERIFY(label(&box, "text")->wordWrap());
    QFont font = box.font();
    font.setPointSizeF(font.pointSizeF() * 1.25);
    font.setWeight(75);
    QCOMPARE(label(&box, "heading")->font(), font);
}

void tst_MessageBox::headingIsPlainAndTheTextRich()
{
    MessageBox box(threeButtons(), text("<b>part</b>"), text("<b>bold</b>"), QMessageBox::Warning);
    QCOMPARE(label(&box, "heading")->textFormat(), Qt::PlainText);
    QCOMPARE(label(&box, "heading")->text(), text("<b>part</b>"));
    QCOMPARE(label(&box, "text")->textFormat(), Qt::AutoText);
    QCOMPARE(label(&box, "text")->text(), text("<b>bold</b>"));
    box.setTextFormat(Qt::PlainText);
    QCOMPARE(label(&box, "text")->textFormat(), Qt::PlainText);
    QCOMPARE(label(&box, "text")->text(), text("<b>bold</b>"));
}

void tst_MessageBox::headingFollowsPixelFonts()
{
    const QFont before = QApplication::font();
    QFont pixels = before;
    pixels.setPixelSize(16);
    QApplication::setFont(pixels);
    MessageBox box(threeButtons(), text("T"), text("B"), QMessageBox::Warning);
    const QFont heading = label(&box, "heading")->font();
    QApplication::setFont(before);

    QCOMPARE(heading.pixelSize(), 20);
    QCOMPARE(heading.weight(), 75);
}

void tst_MessageBox::wrapsALongHeading()
{
    const QString longName = text("part_").repeated(60);
    MessageBox box(threeButtons(), text("A file named ") + longName, text("B"),
                   QMessageBox::Warning);
    box.show();
    QVERIFY(QTest::qWaitForWindowExposed(&box));
    QVERIFY2(box.width() < 1000, qPrintable(QString::number(box.width())));
    const QLabel* heading = label(&box, "heading");
    QVERIFY(heading->height() > 2 * heading->fontMetrics().height());
    QCOMPARE(QString(heading->text()).remove(QChar(0x200b)), text("A file named ") + longName);
    QVERIFY(heading->text().startsWith(text("A file named p")));
}

void tst_MessageBox::hasFixedSizeAndABlankTitle()
{
    MessageBox box(threeButtons(), text("Heading"), text("Body"), QMessageBox::Warning);
    QCOMPARE(box.windowTitle(), text(" "));
    QCOMPARE(box.accessibleName(), text("Heading"));
    box.show();
    QVERIFY(QTest::qWaitForWindowExposed(&box));
    QCOMPARE(box.minimumSize(), box.size());
    QCOMPARE(box.maximumSize(), box.size());
}

void tst_MessageBox::hidesAnEmptyText()
{
    MessageBox box(threeButtons(), text("Heading"), QString(), QMessageBox::Warning);
    box.show();
    QVERIFY(!label(&box, "text")->isVisible());
    QVERIFY(label(&box, "heading")->isVisible());
}

void tst_MessageBox::reportsThePressedButton_data()
{
    QTest::addColumn<QString>("button");
    QTest::addColumn<int>("code");
    QTest::addColumn<QString>("logLine");

    QTest::newRow("code 2") << text("&Save") << 2 << text("Message box result code=2");
    QTest::newRow("code 1") << text("&Keep") << 1 << text("Message box result code=1");
    QTest::newRow("code 0") << text("&Cancel") << 0 << text("Message box rejected");
}

void tst_MessageBox::reportsThePressedButton()
{
    QFETCH(QString, button);
    QFETCH(int, code);
    QFETCH(QString, logLine);
    MessageBox box(threeButtons(), text("T"), text("B"), QMessageBox::Warning);
    QSignalSpy finished(&box, &MessageBox::finished);
    QSignalSpy accepted(&box, &QDialog::accepted);
    QSignalSpy rejected(&box, &QDialog::rejected);
    int codeDuringTheSignal = -1;
    connect(&box, &MessageBox::finished, this, [&] { codeDuringTheSignal = box.finishCode(); });
    ModalDriver driver;
    driver.expect([&](QWidget* window) { click(window, button.toLatin1().constData()); });

    QCOMPARE(box.exec(), int(code == 0 ? QDialog::Rejected : QDialog::Accepted));

    QCOMPARE(box.finishCode(), code);
    QCOMPARE(codeDuringTheSignal, code);
    QCOMPARE(finished.count(), 1);
    QCOMPARE(finished.at(0).at(0).toInt(), code);
    QCOMPARE(accepted.count(), code == 0 ? 0 : 1);
    QCOMPARE(rejected.count(), code == 0 ? 1 : 0);
    const std::vector<std::string> expected{"T, B", logLine.toStdString()};
    QCOMPARE(m_log->messages(1), expected);
}

void tst_MessageBox::enterPressesTheDefaultButton()
{
    MessageBox box(threeButtons(), text("T"), text("B"), QMessageBox::Warning);
    ModalDriver driver;
    driver.expect([&](QWidget* window) {
        QVERIFY(button(window, "&Keep")->hasFocus());
        QTest::keyClick(window, Qt::Key_Return);
    });
    box.exec();
    QCOMPARE(box.finishCode(), 1);
}

void tst_MessageBox::tabReachesEveryButton()
{
    MessageBox box(threeButtons(), text("T"), text("B"), QMessageBox::Warning);
    box.show();
    QVERIFY(QTest::qWaitForWindowActive(&box));
    QStringList reached;
    for (int i = 0; i < 3; ++i) {
        reached += qobject_cast<QPushButton*>(box.focusWidget())->text();
        QTest::keyClick(box.focusWidget(), Qt::Key_Tab);
    }
    const QStringList expected{text("&Keep"), text("&Cancel"), text("&Save")};
    QCOMPARE(reached, expected);

    QTest::keyClick(button(&box, "&Save"), Qt::Key_Space);
    QCOMPARE(box.finishCode(), 2);
}

void tst_MessageBox::escapeRejectsAlsoWithoutARejectingButton()
{
    MessageBox box({{text("&OK"), 1, 1}}, text("T"), text("B"), QMessageBox::Warning);
    QSignalSpy finished(&box, &MessageBox::finished);
    ModalDriver driver;
    driver.expect([](QWidget* window) { QTest::keyClick(window, Qt::Key_Escape); });
    QCOMPARE(box.exec(), int(QDialog::Rejected));
    QCOMPARE(box.finishCode(), 0);
    QCOMPARE(finished.count(), 1);
    QCOMPARE(finished.at(0).at(0).toInt(), 0);
}

void tst_MessageBox::closingTheWindowRejects()
{
    MessageBox box({{text("&OK"), 1, 1}}, text("T"), text("B"), QMessageBox::Warning);
    QSignalSpy finished(&box, &MessageBox::finished);
    ModalDriver driver;
    driver.expect([](QWidget* window) { window->close(); });
    box.exec();
    QCOMPARE(finished.count(), 1);
    QCOMPARE(finished.at(0).at(0).toInt(), 0);
    QVERIFY(m_log->contains("Message box rejected", 1));
}

void tst_MessageBox::ownFinishedCarriesTheCodeWhereQDialogsDoesNot()
{
    MessageBox box(threeButtons(), text("T"), text("B"), QMessageBox::Warning);
    QSignalSpy own(&box, &MessageBox::finished);
    QSignalSpy byName(&box, SIGNAL(finished(int)));
    QSignalSpy inherited(&box, &QDialog::finished);
    box.show();
    click(&box, "&Save");
    QCOMPARE(own.count(), 1);
    QCOMPARE(own.at(0).at(0).toInt(), 2);
    QCOMPARE(byName, own);
    QCOMPARE(inherited.count(), 1);
    QCOMPARE(inherited.at(0).at(0).toInt(), 1);
}

void tst_MessageBox::forgetsTheCodeWhenShownAgain()
{
    MessageBox box(threeButtons(), text("T"), text("B"), QMessageBox::Warning);
    QSignalSpy finished(&box, &MessageBox::finished);
    ModalDriver driver;
    driver.expect([](QWidget* window) { click(window, "&Save"); });
    box.exec();
    QCOMPARE(box.finishCode(), 2);
    driver.expect([&](QWidget* window) {
        QCOMPARE(box.finishCode(), 0);
        QTest::keyClick(window, Qt::Key_Escape);
    });
    box.exec();
    QCOMPARE(box.finishCode(), 0);
    QCOMPARE(finished.count(), 2);
}

void tst_MessageBox::forgetsTheCodeWhenSkippedTheSecondTime()
{
    MessageBox box(threeButtons(), text("T"), text("B"), QMessageBox::Warning, m_settings.get(),
                   text("key"));
    ModalDriver driver;
    driver.expect([](QWidget* window) {
        QTest::mouseClick(window->findChild<QCheckBox*>(), Qt::LeftButton, {}, QPoint(8, 8));
        click(window, "&Save");
    });
    QVERIFY(box.maybeShowModal());
    QCOMPARE(box.finishCode(), 2);
    QVERIFY(!box.maybeShowModal());
    QCOMPARE(box.finishCode(), 0);
}

void tst_MessageBox::storesTheChoiceOnEveryClose_data()
{
    QTest::addColumn<bool>("ticked");
    QTest::addColumn<QString>("button");

    QTest::newRow("ticked, accepted") << true << text("&Save");
    QTest::newRow("ticked, rejected") << true << text("&Cancel");
    QTest::newRow("not ticked, accepted") << false << text("&Save");
    QTest::newRow("not ticked, rejected") << false << text("&Cancel");
}

void tst_MessageBox::storesTheChoiceOnEveryClose()
{
    QFETCH(bool, ticked);
    QFETCH(QString, button);
    m_settings->setValue(text("MessageBox/key"), !ticked);
    MessageBox box(threeButtons(), text("T"), text("B"), QMessageBox::Warning, m_settings.get(),
                   text("key"));
    bool storedBeforeTheSignal = false;
    connect(&box, &MessageBox::finished, this, [&] {
        storedBeforeTheSignal = m_settings->value(text("MessageBox/key")).toBool() == ticked;
    });
    box.findChild<QCheckBox*>()->setChecked(ticked);
    box.show();
    click(&box, button.toLatin1().constData());

    QVERIFY(storedBeforeTheSignal);
    QCOMPARE(m_settings->value(text("MessageBox/key")).toBool(), ticked);
    QCOMPARE(m_settings->allKeys(), QStringList(text("MessageBox/key")));
}

void tst_MessageBox::skipsWhatTheUserHid()
{
    m_settings->setValue(text("MessageBox/key"), true);
    MessageBox box(threeButtons(), text("T"), text("B"), QMessageBox::Warning, m_settings.get(),
                   text("key"));
    QSignalSpy finished(&box, &MessageBox::finished);
    ModalDriver driver;
    QVERIFY(!box.maybeShowModal());
    QVERIFY(!box.maybeShowNonModal());
    QVERIFY(!box.isVisible());
    QCOMPARE(box.finishCode(), 0);
    QCOMPARE(finished.count(), 0);
    const std::vector<std::string> expected{"T, B", "Skipping message box", "Skipping message box"};
    QCOMPARE(m_log->messages(1), expected);
}

void tst_MessageBox::showsWhatTheUserDidNotHide()
{
    MessageBox box(threeButtons(), text("T"), text("B"), QMessageBox::Warning, m_settings.get(),
                   text("key"));
    ModalDriver driver;
    driver.expect([&](QWidget* window) {
        QVERIFY(m_log->contains("Skipping message box", 1));
        QTest::keyClick(window, Qt::Key_Escape);
    });
    QVERIFY(box.maybeShowModal());
}

void tst_MessageBox::neverSkipsWithoutSettings()
{
    MessageBox box(threeButtons(), text("T"), text("B"), QMessageBox::Warning);
    QVERIFY(!box.skip());
    QVERIFY(!m_log->contains("Skipping message box"));
}

void tst_MessageBox::survivesItsSettings()
{
    MessageBox box(threeButtons(), text("T"), text("B"), QMessageBox::Warning, m_settings.get(),
                   text("key"));
    box.show();
    m_settings.reset();
    click(&box, "&Save");
    QCOMPARE(box.finishCode(), 2);
    QVERIFY(!box.skip());
}

void tst_MessageBox::survivesTheDeathOfItsParentWhileOpen()
{
    auto* parent = new QWidget;
    auto* box = new MessageBox(threeButtons(), text("T"), text("B"), QMessageBox::Warning, parent);
    ModalDriver driver;
    driver.expect([parent](QWidget*) { delete parent; });
    QVERIFY(box->maybeShowModal());
}

void tst_MessageBox::canBeDeletedByItsReceiver()
{
    for (const char* pressed : {"&Save", "&Cancel"}) {
        QPointer<MessageBox> box =
            new MessageBox(threeButtons(), text("T"), text("B"), QMessageBox::Warning);
        connect(box, &MessageBox::finished, this, [box] { box->deleteLater(); });
        box->show();
        click(box, pressed);
        QTRY_VERIFY(!box);
    }
}

void tst_MessageBox::showsWithoutBlocking()
{
    MessageBox box(threeButtons(), text("T"), text("B"), QMessageBox::Warning);
    QVERIFY(box.maybeShowNonModal());
    QVERIFY(box.isVisible());
    QVERIFY(!box.isModal());
    QTRY_VERIFY(box.isActiveWindow());
}

void tst_MessageBox::guideTextWidensTheText()
{
    MessageBox box(threeButtons(), text("T"), text("B"), QMessageBox::Warning);
    const QString guide = text("as wide as this line is at least");
    box.setWrapGuideText(guide);
    const QLabel* body = label(&box, "text");
    QCOMPARE(body->minimumWidth(), body->fontMetrics().boundingRect(guide).width());
    QVERIFY(body->minimumWidth() > 100);
}

void tst_MessageBox::clickCopiesTheRawText()
{
    MessageBox box(threeButtons(), text("T"), text("see <b>this</b>"), QMessageBox::Warning);
    box.show();
    QCOMPARE(label(&box, "text")->toolTip(), text("Click to copy message to clipboard"));
    QGuiApplication::clipboard()->setText(text("before"));
    QTest::mousePress(label(&box, "text"), Qt::LeftButton);
    QCOMPARE(QGuiApplication::clipboard()->text(), text("see <b>this</b>"));
}

void tst_MessageBox::linksOpenInTheBrowser()
{
    LinkReceiver browser;
    QDesktopServices::setUrlHandler(text("https"), &browser, "open");
    MessageBox box(threeButtons(), text("T"),
                   text("<a href=\"https://support.orvane.example/x\">WWWWWWWWWWWWWW</a>"),
                   QMessageBox::Warning);
    box.show();
    QVERIFY(label(&box, "text")->openExternalLinks());
    QTest::mouseMove(label(&box, "text"), QPoint(20, 10));
    QTest::mouseClick(label(&box, "text"), Qt::LeftButton, {}, QPoint(20, 10));
    QDesktopServices::unsetUrlHandler(text("https"));
    QCOMPARE(browser.opened, QList<QUrl>{QUrl(text("https://support.orvane.example/x"))});
}

void tst_MessageBox::displayFunctionsShowOneButton_data()
{
    QTest::addColumn<bool>("critical");

    QTest::newRow("critical error") << true;
    QTest::newRow("OK box") << false;
}

void tst_MessageBox::displayFunctionsShowOneButton()
{
    QFETCH(bool, critical);
    QWidget parent;
    ModalDriver driver;
    driver.expect<MessageBox>([](MessageBox* box) {
        const QList<QPushButton*> buttons = box->findChildren<QPushButton*>();
        QCOMPARE(buttons.size(), 1);
        QCOMPARE(buttons[0]->text(), text("&OK"));
        QVERIFY(buttons[0]->isDefault());
        QCOMPARE(label(box, "heading")->text(), text("T"));
        QCOMPARE(label(box, "text")->text(), text("B"));
        QTest::mouseClick(buttons[0], Qt::LeftButton);
    });
    if (critical)
        trovek::displayCriticalError(text("T"), text("B"), &parent);
    else
        trovek::displayOKBox(text("T"), text("B"), QMessageBox::Information, &parent);

    auto* box = parent.findChild<MessageBox*>();
    QVERIFY(box);
    QCOMPARE(box->finishCode(), 1);
}

void tst_MessageBox::displayFallsBackToAPlainBox()
{
    m_log->expectError("Invalid MessageBox icon");
    QWidget parent;
    ModalDriver driver;
    driver.expect<QMessageBox>([](QMessageBox* box) {
        QCOMPARE(box->text(), text("Invalid MessageBox icon"));
        QCOMPARE(box->windowTitle(), text(" "));
        QCOMPARE(box->icon(), QMessageBox::Critical);
        QCOMPARE(box->standardButtons(), QMessageBox::Ok);
        box->accept();
    });
    trovek::displayOKBox(text("T"), text("B"), QMessageBox::NoIcon, &parent);
    QVERIFY(driver.isDone());
    QVERIFY(!parent.findChild<MessageBox*>());
    QVERIFY(m_log->sink().entries().back().function.find("displayOKBox") != std::string::npos);
}

void tst_MessageBox::displaySurvivesTheDeathOfTheParent()
{
    auto* parent = new QWidget;
    ModalDriver driver;
    driver.expect([parent](QWidget*) { delete parent; });
    trovek::displayCriticalError(text("T"), text("B"), parent);
    QVERIFY(driver.isDone());
}

QTEST_MAIN(tst_MessageBox)
#include "tst_message_box.moc"

#include "messages/expected_messages.h"
#include "support/modal_driver.h"
#include "support/test_log.h"

#include <QCheckBox>
#include <QLabel>
#include <QPushButton>
#include <QSet>
#include <QStyle>
#include <QTemporaryDir>

#include <memory>

using trovek::MessageBox;
using trovek::ModalDriver;
using trovek::pressButton;
using trovek::TestLog;

namespace {

QString text(const char* utf8)
{
    return QString::fromUtf8(utf8);
}

QList<QPushButton*> buttonsFromLeftToRight(const QWidget* box)
{
    QList<QPushButton*> buttons = box->findChildren<QPushButton*>();
    std::sort(buttons.begin(), buttons.end(),
              [](QPushButton* a, QPushButton* b) { return a->x() < b->x(); });
    return buttons;
}

QStyle::StandardPixmap standardPixmap(QMessageBox::Icon icon)
{
    switch (icon) {
    case QMessageBox::Information:
        return QStyle::SP_MessageBoxInformation;
    case QMessageBox::Warning:
        return QStyle::SP_MessageBoxWarning;
    case QMessageBox::Critical:
        return QStyle::SP_MessageBoxCritical;
    default:
        return QStyle::SP_MessageBoxQuestion;
    }
}

/** Draws each standard icon in a colour of its own, so that a test can tell them apart. */
class ColouredIconsStyle : public QProxyStyle
{
public:
    static QColor colour(StandardPixmap which)
    {
        return QColor::fromHsv(int(which) * 20, 255, 255).toRgb();
    }

    QIcon standardIcon(StandardPixmap which, const QStyleOption*, const QWidget*) const override
    {
        QPixmap pixmap(48, 48);
        pixmap.fill(colour(which));
        return QIcon(pixmap);
    }
};

} // namespace

class tst_Messages : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();

    void isComplete();
    void showsItsTexts_data();
    void showsItsTexts();
    void everyButtonReturnsItsCode_data();
    void everyButtonReturnsItsCode();
    void enterChoosesTheDefault_data();
    void enterChoosesTheDefault();
    void escapeReturnsZero_data();
    void escapeReturnsZero();
    void canBeHiddenOnlyWithAKeyAndSettings_data();
    void canBeHiddenOnlyWithAKeyAndSettings();
    void isAsWideAsALineIsReadable_data();
    void isAsWideAsALineIsReadable();
    void namesInTextsAreNotMarkup();
    void learnMoreClosedWithEscapeIsNeitherButton();
    void hiddenFirmwareCheckReturnsZeroAndNotNotNow();
    void okOfTheFilamentAlertStoresTheChoice();
    void copiesShareOneBox();
    void canBeShownTwice();
    void returnsZeroWhenTheParentDiesWhileOpen();
    void returnsZeroWhenTheBoxIsGone();
    void givesItsBoxToWhoeverShowsItWithoutBlocking();

private:
    void addRows();
    const ExpectedMessage& row() const;

    std::unique_ptr<QTemporaryDir> m_folder;
    std::unique_ptr<QSettings> m_settings;
    std::unique_ptr<QWidget> m_parent;
    std::unique_ptr<TestLog> m_log;
};

void tst_Messages::initTestCase()
{
    QApplication::setStyle(new ColouredIconsStyle);
}

void tst_Messages::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    m_settings =
        std::make_unique<QSettings>(m_folder->filePath(text("settings.ini")), QSettings::IniFormat);
    m_parent = std::make_unique<QWidget>();
    m_log = std::make_unique<TestLog>();
}

void tst_Messages::cleanup()
{
    m_log.reset();
    m_parent.reset();
    QVERIFY(QApplication::topLevelWidgets().isEmpty());
}

void tst_Messages::addRows()
{
    QTest::addColumn<int>("index");

    int index = 0;
    for (const ExpectedMessage& message : expectedMessages())
        QTest::newRow(message.name) << index++;
}

const ExpectedMessage& tst_Messages::row() const
{
    const int* index = static_cast<const int*>(QTest::qData("index", qMetaTypeId<int>()));
    return expectedMessages().at(std::size_t(*index));
}

void tst_Messages::isComplete()
{
    QSet<QString> names;
    for (const ExpectedMessage& message : expectedMessages())
        names += text(message.name);
    QCOMPARE(names.size(), 67);
    QCOMPARE(expectedMessages().size(), std::size_t(67));
}

void tst_Messages::showsItsTexts_data()
{
    addRows();
}

void tst_Messages::showsItsTexts()
{
    const ExpectedMessage& expected = row();
    MessageBox* box = expected.make(m_parent.get(), m_settings.get()).box;
    box->show();

    QCOMPARE(box->parentWidget(), m_parent.get());
    QCOMPARE(box->findChild<QLabel*>(text("heading"))->text(), text(expected.heading));
    QCOMPARE(box->findChild<QLabel*>(text("text"))->text(), text(expected.body));
    const QImage icon = box->findChild<QLabel*>(text("icon"))->pixmap(Qt::ReturnByValue).toImage();
    QCOMPARE(icon.pixelColor(24, 24), ColouredIconsStyle::colour(standardPixmap(expected.icon)));
    const QList<QPushButton*> buttons = buttonsFromLeftToRight(box);
    QCOMPARE(buttons.size(), int(expected.buttons.size()));
    for (int i = 0; i < buttons.size(); ++i) {
        QCOMPARE(buttons[i]->text(), text(expected.buttons[std::size_t(i)].text));
        QCOMPARE(buttons[i]->isDefault(), expected.buttons[std::size_t(i)].isDefault);
    }
    QVERIFY(m_log->contains(std::string(expected.heading) + ", " + expected.body, 1));
}

void tst_Messages::everyButtonReturnsItsCode_data()
{
    addRows();
}

void tst_Messages::everyButtonReturnsItsCode()
{
    const ExpectedMessage& expected = row();
    for (const ExpectedButton& button : expected.buttons) {
        const Shown shown = expected.make(m_parent.get(), nullptr);
        ModalDriver driver;
        driver.expect([&](QDialog* window) {
            QCOMPARE(window, shown.box);
            pressButton(window, text(button.text));
        });
        QCOMPARE(shown.exec(), button.code);
        QCOMPARE(shown.box->finishCode(), button.code);
    }
}

void tst_Messages::enterChoosesTheDefault_data()
{
    addRows();
}

void tst_Messages::enterChoosesTheDefault()
{
    const ExpectedMessage& expected = row();
    const auto chosen = std::find_if(expected.buttons.begin(), expected.buttons.end(),
                                     [](const ExpectedButton& button) { return button.isDefault; });
    const Shown shown = expected.make(m_parent.get(), nullptr);
    ModalDriver driver;
    driver.expect([](QDialog* window) { QTest::keyClick(window, Qt::Key_Return); });
    QCOMPARE(shown.exec(), chosen->code);
}

void tst_Messages::escapeReturnsZero_data()
{
    addRows();
}

void tst_Messages::escapeReturnsZero()
{
    const Shown shown = row().make(m_parent.get(), nullptr);
    ModalDriver driver;
    driver.expect([](QDialog* window) { QTest::keyClick(window, Qt::Key_Escape); });
    QCOMPARE(shown.exec(), 0);
    QVERIFY(driver.isDone());
}

void tst_Messages::canBeHiddenOnlyWithAKeyAndSettings_data()
{
    addRows();
}

void tst_Messages::canBeHiddenOnlyWithAKeyAndSettings()
{
    const ExpectedMessage& expected = row();
    const bool hideable = *expected.settingsKey != 0;
    const QString key = text("MessageBox/") + text(expected.settingsKey);

    QVERIFY(!expected.make(m_parent.get(), nullptr).box->findChild<QCheckBox*>());
    const Shown shown = expected.make(m_parent.get(), m_settings.get());
    QCOMPARE(shown.box->findChild<QCheckBox*>() != nullptr, hideable);
    if (!hideable)
        return;

    ModalDriver driver;
    driver.expect([](QDialog* window) {
        window->findChild<QCheckBox*>()->setChecked(true);
        QTest::keyClick(window, Qt::Key_Escape);
    });
    QCOMPARE(shown.exec(), 0);
    QCOMPARE(m_settings->allKeys(), QStringList(key));
    QVERIFY(m_settings->value(key).toBool());

    QCOMPARE(expected.make(m_parent.get(), m_settings.get()).exec(), 0);

    driver.expect([](QDialog* window) { QTest::keyClick(window, Qt::Key_Escape); });
    expected.make(m_parent.get(), nullptr).exec();
    QVERIFY(driver.isDone());
}

void tst_Messages::isAsWideAsALineIsReadable_data()
{
    addRows();
}

void tst_Messages::isAsWideAsALineIsReadable()
{
    const ExpectedMessage& expected = row();
    MessageBox* box = expected.make(m_parent.get(), m_settings.get()).box;
    box->show();
    const QLabel* body = box->findChild<QLabel*>(text("text"));
    const QFontMetrics metrics = body->fontMetrics();
    const QString plain = text(expected.body);
    if (Qt::mightBeRichText(plain))
        QVERIFY(body->width() > metrics.averageCharWidth() * 50);
    else if (plain.size() <= 60)
        QVERIFY2(body->heightForWidth(body->width()) < 2 * metrics.lineSpacing(),
                 "A short text wraps");
    else
        QVERIFY(body->width() >= metrics.boundingRect(plain.left(60)).width());
    QVERIFY2(box->width() < 1000, qPrintable(QString::number(box->width())));
}

void tst_Messages::namesInTextsAreNotMarkup()
{
    const QString name = text("<b>&lt;</b>");
    QWidget* parent = m_parent.get();
    const MessageBox* const boxes[] = {
        message::ConfirmCustomProfileDelete(name, parent).box(),
        message::ConnectToPortFailed(name, parent).box(),
        message::CustomProfileAlreadyExists(name, parent).box(),
        message::ErrorSavingModel(name, parent).box(),
        message::FileChooserOverwriteConfirm(name, parent).box(),
        message::FilenameTooLongForPrinter(name, parent).box(),
        message::OldFirmwareCheck(name, text("7.2"), parent, nullptr).box(),
        message::OnboardPreferencesGenericError(name, parent).box(),
    };
    for (const MessageBox* box : boxes) {
        const QLabel* heading = box->findChild<QLabel*>(text("heading"));
        const QLabel* body = box->findChild<QLabel*>(text("text"));
        const QLabel* shown = heading->text().contains(name) ? heading : body;
        QVERIFY2(shown->text().contains(name), qPrintable(heading->text()));
        QCOMPARE(shown->textFormat(), Qt::PlainText);
    }
}

void tst_Messages::learnMoreClosedWithEscapeIsNeitherButton()
{
    message::DualExtrusionHelp help(m_parent.get(), m_settings.get());
    ModalDriver driver;
    driver.expect([](QDialog* window) { QTest::keyClick(window, Qt::Key_Escape); });
    const auto result = help.exec();
    QCOMPARE(int(result), 0);
    QVERIFY(result != message::DualExtrusionHelp::OK);
    QVERIFY(result != message::DualExtrusionHelp::LearnMore);
}

void tst_Messages::hiddenFirmwareCheckReturnsZeroAndNotNotNow()
{
    m_settings->setValue(text("MessageBox/skipWarningForOldFirmware"), true);
    message::OldFirmwareCheck check(text("Fabrino"), text("6.1"), m_parent.get(), m_settings.get());
    ModalDriver driver;
    QCOMPARE(int(check.exec()), 0);
    QCOMPARE(int(message::OldFirmwareCheck::NotNow), 1);
}

void tst_Messages::okOfTheFilamentAlertStoresTheChoice()
{
    ModalDriver driver;
    driver.expect([](QDialog* window) {
        window->findChild<QCheckBox*>()->setChecked(true);
        pressButton(window, text("&OK"));
    });
    message::MaterialPCLAlert(m_parent.get(), m_settings.get()).exec();
    QVERIFY(m_settings->value(text("MessageBox/skipPCLAlert")).toBool());

    message::MaterialPCLAlert(m_parent.get(), m_settings.get()).exec();
    QVERIFY(m_log->contains("Skipping message box", 1));
}

void tst_Messages::copiesShareOneBox()
{
    const message::FileNotFound original(m_parent.get());
    message::FileNotFound copy(original);
    QCOMPARE(copy.box(), original.box());
    message::FileNotFound assigned(m_parent.get());
    QVERIFY(assigned.box() != original.box());
    assigned = original;
    QCOMPARE(assigned.box(), original.box());
}

void tst_Messages::canBeShownTwice()
{
    message::SaveBeforeClosing question(m_parent.get());
    ModalDriver driver;
    driver.expect([](QDialog* window) { pressButton(window, text("&Save")); });
    driver.expect([](QDialog* window) { QTest::keyClick(window, Qt::Key_Escape); });
    QCOMPARE(question.exec(), message::SaveBeforeClosing::Save);
    QCOMPARE(question.exec(), message::SaveBeforeClosing::Cancel);
}

void tst_Messages::returnsZeroWhenTheParentDiesWhileOpen()
{
    auto* parent = new QWidget;
    message::SaveBeforeClosing question(parent);
    ModalDriver driver;
    driver.expect([parent](QWidget*) { delete parent; });
    QCOMPARE(question.exec(), message::SaveBeforeClosing::Cancel);
    QVERIFY(!question.box());
}

void tst_Messages::returnsZeroWhenTheBoxIsGone()
{
    auto* parent = new QWidget;
    message::SaveBeforeClosing question(parent);
    message::FileNotFound notice(parent);
    delete parent;
    ModalDriver driver;
    QCOMPARE(question.exec(), message::SaveBeforeClosing::Cancel);
    notice.exec();
}

void tst_Messages::givesItsBoxToWhoeverShowsItWithoutBlocking()
{
    const message::OldFirmwareCheck check(text("Fabrino"), text("6.1"), m_parent.get(), nullptr);
    QVERIFY(check.box()->maybeShowNonModal());
    pressButton(check.box(), text("&Upgrade Firmware..."));
    QCOMPARE(check.box()->finishCode(), int(message::OldFirmwareCheck::UpgradeFirmware));
}

QTEST_MAIN(tst_Messages)
#include "tst_messages.moc"

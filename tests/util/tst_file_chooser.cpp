#include "support/modal_driver.h"
#include "support/test_log.h"
#include "support/thrown_text.h"

#include <trovek-ui/file_chooser.h>
#include <trovek-ui/messages.h>

#include <QAbstractItemView>
#include <QComboBox>
#include <QCompleter>
#include <QDialogButtonBox>
#include <QDir>
#include <QFileDialog>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTemporaryDir>

#include <memory>

using trovek::FileChooserResult;
using trovek::FileChooserValidator;
using trovek::FileFilter;
using trovek::FileFilterList;
using trovek::MessageBox;
using trovek::ModalDriver;
using trovek::pressButton;
using trovek::TestLog;

namespace {

QString text(const char* utf8)
{
    return QString::fromUtf8(utf8);
}

FileFilter stl()
{
    return FileFilter(text("Meshes"), text("stl"));
}

FileFilter obj()
{
    return FileFilter(text("Objects"), QStringList{text("obj"), text("object")});
}

QLineEdit* nameEdit(const QFileDialog* dialog)
{
    return dialog->findChild<QLineEdit*>(text("fileNameEdit"));
}

/** Types the name as a user does: only what is typed into the focus replaces the selected file. */
void accept(QFileDialog* dialog, const QString& name)
{
    QLineEdit* edit = nameEdit(dialog);
    QApplication::setActiveWindow(dialog);
    edit->setFocus();
    edit->selectAll();
    QTest::keyClicks(edit, name);
    edit->completer()->popup()->hide();
    auto* buttons = dialog->findChild<QDialogButtonBox*>(text("buttonBox"));
    const auto which = dialog->acceptMode() == QFileDialog::AcceptSave ? QDialogButtonBox::Save
                                                                       : QDialogButtonBox::Open;
    QTest::mouseClick(buttons->button(which), Qt::LeftButton);
}

void cancel(QWidget* window)
{
    QTest::keyClick(window, Qt::Key_Escape);
}

/** Gives the results it was told to, and remembers what it was asked. */
class ScriptedValidator : public FileChooserValidator
{
public:
    explicit ScriptedValidator(QList<Result> results)
        : m_results(std::move(results))
    {}

    Result validate(const QString& path, QWidget* parent) override
    {
        asked += path;
        lastParent = parent;
        if (during)
            during();
        return m_results.takeFirst();
    }

    QStringList asked;
    QWidget* lastParent = nullptr;
    std::function<void()> during;

private:
    QList<Result> m_results;
};

} // namespace

class tst_FileChooser : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();

    void filterRefusesWhatNoDialogTakes_data();
    void filterRefusesWhatNoDialogTakes();
    void filterKnowsItsDialogTexts();
    void filtersAreEqualByDescriptionAndSuffixesInOrder();
    void filterAcceptsAndFixesNames_data();
    void filterAcceptsAndFixesNames();
    void listRefusesNoFiltersAndAForeignDefault();
    void listKnowsItsDialogTexts();
    void listFindsFiltersByTheirText();
    void listFixesNames_data();
    void listFixesNames();
    void namesWithPlaceholdersStay();
    void imagesAreOneFilter();
    void cancelledResultHasOneEmptyPath();
    void opensOneFile();
    void opensSeveralFiles();
    void openIsCancelled();
    void openSurvivesTheDeathOfItsParent();
    void proposesTheNameAsItIs_data();
    void proposesTheNameAsItIs();
    void savesUnderAFixedAbsolutePath();
    void savesUnderTheFilterThatTheUserSelected();
    void saveIsCancelled();
    void asksBeforeItReplaces();
    void reopensAtTheFixedPathWhenNotReplaced();
    void validatorAccepts();
    void validatorRejects();
    void validatorReplacesThePathButTheChosenFileIsAskedAbout();
    void validatorReplacesAndTheDialogReopensAtItsPath();
    void anUnknownActionShowsTheDialogAgain();
    void saveSurvivesTheDeathOfItsParent_data();
    void saveSurvivesTheDeathOfItsParent();

private:
    QString inside(const char* name) const { return m_folder->filePath(text(name)); }
    QString touch(const char* name) const;

    std::unique_ptr<QTemporaryDir> m_folder;
    std::unique_ptr<TestLog> m_log;
};

void tst_FileChooser::initTestCase()
{
    QCoreApplication::setAttribute(Qt::AA_DontUseNativeDialogs);
}

void tst_FileChooser::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    m_log = std::make_unique<TestLog>();
}

void tst_FileChooser::cleanup()
{
    m_log.reset();
    QVERIFY(QApplication::topLevelWidgets().isEmpty());
}

QString tst_FileChooser::touch(const char* name) const
{
    QFile file(inside(name));
    if (!file.open(QIODevice::WriteOnly))
        qFatal("Cannot write %s", name);
    return file.fileName();
}

void tst_FileChooser::filterRefusesWhatNoDialogTakes_data()
{
    QTest::addColumn<QString>("description");
    QTest::addColumn<QStringList>("suffixes");
    QTest::addColumn<QString>("expected");

    const QStringList good(text("stl"));
    const QString parens = text("FileFilter description cannot contain parens");
    QTest::newRow("no description")
        << QString() << good << text("FileFilter description cannot be empty");
    QTest::newRow("neither description nor suffixes")
        << QString() << QStringList() << text("FileFilter description cannot be empty");
    QTest::newRow("parentheses") << text("Mesh (STL)") << good << parens;
    QTest::newRow("opening parenthesis") << text("Mesh (") << good << parens;
    QTest::newRow("closing parenthesis, no suffixes") << text("Mesh)") << QStringList() << parens;
    QTest::newRow("no suffixes") << text("Mesh") << QStringList()
                                 << text("FileFilter suffixes cannot be empty");
    QTest::newRow("an empty suffix among others")
        << text("Mesh") << QStringList{text("stl"), QString()}
        << text("FileFilter suffix cannot be empty");
    QTest::newRow("good") << text("Mesh") << good << text("nothing thrown");
}

void tst_FileChooser::filterRefusesWhatNoDialogTakes()
{
    QFETCH(QString, description);
    QFETCH(QStringList, suffixes);
    QFETCH(QString, expected);
    QCOMPARE(text(thrownText([&] { FileFilter(description, suffixes); }).c_str()), expected);
    QCOMPARE(thrownText([] { FileFilter(text("Mesh"), QString()); }),
             std::string("FileFilter suffix cannot be empty"));
    QCOMPARE(thrownText([] { FileFilter(text("(Mesh"), QString()); }),
             std::string("FileFilter description cannot contain parens"));
}

void tst_FileChooser::filterKnowsItsDialogTexts()
{
    const QStringList dotted{text(".obj"), text(".object")};
    QCOMPARE(obj().description(), text("Objects"));
    QCOMPARE(obj().dottedSuffixes(), dotted);
    QCOMPARE(obj().filterString(), text("Objects (*.obj *.object)"));
    QCOMPARE(stl().suffixes(), QStringList(text("stl")));
}

void tst_FileChooser::filtersAreEqualByDescriptionAndSuffixesInOrder()
{
    QVERIFY(obj() == obj());
    QVERIFY(obj() != FileFilter(text("Objects"), QStringList{text("object"), text("obj")}));
    QVERIFY(obj() != FileFilter(text("Other"), obj().suffixes()));
    QVERIFY(stl() == FileFilter(text("Meshes"), QStringList(text("stl"))));
}

void tst_FileChooser::filterAcceptsAndFixesNames_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("fixed");

    QTest::newRow("first suffix") << text("part.obj") << text("part.obj");
    QTest::newRow("second suffix") << text("part.object") << text("part.object");
    QTest::newRow("capitals") << text("PART.OBJ") << text("PART.OBJ");
    QTest::newRow("no suffix") << text("part") << text("part.obj");
    QTest::newRow("suffix without its dot") << text("partobj") << text("partobj.obj");
    QTest::newRow("another suffix") << text("part.stl") << text("part.stl.obj");
    QTest::newRow("empty") << QString() << text(".obj");
}

void tst_FileChooser::filterAcceptsAndFixesNames()
{
    QFETCH(QString, name);
    QFETCH(QString, fixed);
    QCOMPARE(obj().acceptsFileName(name), name == fixed);
    QCOMPARE(obj().fixFileName(name), fixed);
}

void tst_FileChooser::listRefusesNoFiltersAndAForeignDefault()
{
    QCOMPARE(thrownText([] { FileFilterList(std::list<FileFilter>()); }),
             std::string("FileFilterList filters cannot be empty"));
    QCOMPARE(thrownText([] { FileFilterList(std::list<FileFilter>(), stl()); }),
             std::string("FileFilterList filters cannot be empty"));
    QCOMPARE(thrownText([] { FileFilterList({stl()}, obj()); }),
             std::string("FileFilterList defaultFilter not in list"));
    QCOMPARE(FileFilterList({stl(), obj()}).defaultFilter(), stl());
    QCOMPARE(FileFilterList({stl(), obj()}, obj()).defaultFilter(), obj());
}

void tst_FileChooser::listKnowsItsDialogTexts()
{
    const FileFilterList list({stl(), obj()});
    const QStringList strings{text("Meshes (*.stl)"), text("Objects (*.obj *.object)")};
    QCOMPARE(list.filterStrings(), strings);
    QCOMPARE(list.joinedFilterString(), text("Meshes (*.stl);;Objects (*.obj *.object)"));
    QVERIFY(list.acceptsFileName(text("A.OBJECT")));
    QVERIFY(!list.acceptsFileName(text("a.txt")));
}

void tst_FileChooser::listFindsFiltersByTheirText()
{
    const FileFilterList list({stl(), obj()}, obj());
    QCOMPARE(list.findFilter(text("Meshes (*.stl)")), stl());
    QCOMPARE(list.findFilter(text("Meshes")), obj());
    QCOMPARE(list.findFilter(QString()), obj());
}

void tst_FileChooser::listFixesNames_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("fixed");

    QTest::newRow("accepted") << text("part.obj") << text("part.obj");
    QTest::newRow("accepted in capitals") << text("MODEL.OBJ") << text("MODEL.OBJ");
    QTest::newRow("known suffix") << text("part.stl") << text("part.obj");
    QTest::newRow("known suffix in capitals") << text("part.STL") << text("part.obj");
    QTest::newRow("known suffix after a dot") << text("v1.2.stl") << text("v1.2.obj");
    QTest::newRow("unknown suffix") << text("part.old") << text("part.old.obj");
    QTest::newRow("no suffix") << text("part") << text("part.obj");
    QTest::newRow("a path") << text("/a.stl/part.stl") << text("/a.stl/part.obj");
}

void tst_FileChooser::listFixesNames()
{
    QFETCH(QString, name);
    QFETCH(QString, fixed);
    QCOMPARE(FileFilterList({stl(), obj()}).fixFileName(name, obj()), fixed);
}

void tst_FileChooser::namesWithPlaceholdersStay()
{
    const FileFilter filter(text("100%1"), QStringList{text("a%2"), text("b")});
    QCOMPARE(filter.filterString(), text("100%1 (*.a%2 *.b)"));
    QCOMPARE(filter.dottedSuffixes().first(), text(".a%2"));
}

void tst_FileChooser::imagesAreOneFilter()
{
    const FileFilterList images = trovek::imageFileFilterList();
    QCOMPARE(images.filters().size(), std::size_t(1));
    QCOMPARE(images.joinedFilterString(), text("All images (*.bmp *.gif *.jpg *.png *.svg)"));
}

void tst_FileChooser::cancelledResultHasOneEmptyPath()
{
    const FileChooserResult result;
    QVERIFY(result.cancelled);
    QCOMPARE(result.paths, QStringList(QString()));
    QCOMPARE(result.filter, FileFilter(text("invalid"), text("invalid")));
    QVERIFY(!FileChooserResult(text("a"), stl()).cancelled);
    QVERIFY(!FileChooserResult(QStringList{text("a"), text("b")}, stl()).cancelled);
}

void tst_FileChooser::opensOneFile()
{
    const QString path = touch("part.obj");
    ModalDriver driver;
    driver.expect<QFileDialog>([&](QFileDialog* dialog) {
        QCOMPARE(dialog->windowTitle(), text("Open it"));
        QCOMPARE(dialog->fileMode(), QFileDialog::ExistingFile);
        QCOMPARE(dialog->options(), QFileDialog::Options());
        QCOMPARE(dialog->supportedSchemes(), QStringList(text("file")));
        QCOMPARE(dialog->directory().canonicalPath(), QDir(m_folder->path()).canonicalPath());
        QCOMPARE(dialog->nameFilters().join(text(";;")),
                 text("Meshes (*.stl);;Objects (*.obj *.object)"));
        QCOMPARE(dialog->selectedNameFilter(), text("Objects (*.obj *.object)"));
        accept(dialog, text("part.obj"));
    });
    const FileChooserResult result = trovek::chooseOpenPath(
        nullptr, text("Open it"), m_folder->path(), FileFilterList({stl(), obj()}, obj()));
    QCOMPARE(result.paths, QStringList(path));
    QCOMPARE(result.filter, obj());
    QVERIFY(!result.cancelled);
    QVERIFY(m_log->messages().empty());
}

void tst_FileChooser::opensSeveralFiles()
{
    const QStringList paths{touch("a.stl"), touch("b.stl")};
    ModalDriver driver;
    driver.expect<QFileDialog>([](QFileDialog* dialog) {
        QCOMPARE(dialog->fileMode(), QFileDialog::ExistingFiles);
        accept(dialog, text("\"a.stl\" \"b.stl\""));
    });
    const FileChooserResult result = trovek::chooseOpenPaths(
        nullptr, text("Open"), m_folder->path(), FileFilterList({stl(), obj()}));
    QCOMPARE(result.paths, paths);
    QCOMPARE(result.filter, stl());
}

void tst_FileChooser::openIsCancelled()
{
    ModalDriver driver;
    driver.expect(cancel);
    driver.expect(cancel);
    for (const auto choose : {trovek::chooseOpenPath, trovek::chooseOpenPaths}) {
        const FileChooserResult result =
            choose(nullptr, text("Open"), m_folder->path(), FileFilterList({stl()}));
        QVERIFY(result.cancelled);
        QCOMPARE(result.paths, QStringList(QString()));
        QCOMPARE(result.filter.description(), text("invalid"));
    }
}

void tst_FileChooser::openSurvivesTheDeathOfItsParent()
{
    auto* parent = new QWidget;
    ModalDriver driver;
    driver.expect<QFileDialog>([parent](QFileDialog* dialog) {
        QCOMPARE(dialog->parentWidget(), parent);
        delete parent;
    });
    QVERIFY(trovek::chooseOpenPath(parent, text("Open"), m_folder->path(), FileFilterList({stl()}))
                .cancelled);
}

void tst_FileChooser::proposesTheNameAsItIs_data()
{
    QTest::addColumn<QString>("initial");
    QTest::addColumn<QString>("folder");
    QTest::addColumn<QString>("proposed");

    QTest::newRow("suffix of the filter") << text("a.obj") << QString() << text("a.obj");
    QTest::newRow("second suffix") << text("a.object") << QString() << text("a.object");
    QTest::newRow("suffix of another filter") << text("a.stl") << QString() << text("a.stl");
    QTest::newRow("a dot in the name") << text("cube 0.2mm") << QString() << text("cube 0.2mm");
    QTest::newRow("a file that exists") << text("there.obj") << QString() << text("there.obj");
    QTest::newRow("signs of an address")
        << text("50%20#1?.obj") << QString() << text("50%20#1?.obj");
    QTest::newRow("a folder") << text("sub") << text("sub") << QString();
    QTest::newRow("a file in a folder") << text("sub/a.obj") << text("sub") << text("a.obj");
}

void tst_FileChooser::proposesTheNameAsItIs()
{
    QFETCH(QString, initial);
    QFETCH(QString, folder);
    QFETCH(QString, proposed);
    touch("there.obj");
    QVERIFY(QDir(m_folder->path()).mkdir(text("sub")));
    ModalDriver driver;
    driver.expect<QFileDialog>([&](QFileDialog* dialog) {
        QCOMPARE(nameEdit(dialog)->text(), proposed);
        QCOMPARE(dialog->directory().canonicalPath(),
                 QDir(m_folder->filePath(folder)).canonicalPath());
        QCOMPARE(dialog->selectedNameFilter(), obj().filterString());
        cancel(dialog);
    });
    trovek::chooseSavePath(nullptr, text("Save"), m_folder->filePath(initial),
                           FileFilterList({stl(), obj()}, obj()), nullptr);
}

void tst_FileChooser::savesUnderAFixedAbsolutePath()
{
    ModalDriver driver;
    driver.expect<QFileDialog>([&](QFileDialog* dialog) {
        QCOMPARE(dialog->windowTitle(), text("Save it"));
        QCOMPARE(nameEdit(dialog)->text(), text("part"));
        QCOMPARE(dialog->directory().canonicalPath(), QDir(m_folder->path()).canonicalPath());
        QVERIFY(dialog->testOption(QFileDialog::DontConfirmOverwrite));
        QVERIFY(!dialog->testOption(QFileDialog::DontUseNativeDialog));
        QCOMPARE(dialog->supportedSchemes(), QStringList(text("file")));
        accept(dialog, text("part.stl"));
    });
    const FileChooserResult result = trovek::chooseSavePath(
        nullptr, text("Save it"), inside("part"), FileFilterList({stl(), obj()}, obj()), nullptr);
    QCOMPARE(result.paths, QStringList(inside("part.obj")));
    QCOMPARE(result.filter, obj());
    const std::vector<std::string> expected{
        "Preparing to show save dialog title=Save it, initialDefaultPath=" +
            inside("part").toStdString() + ", validator=0",
        "Running QFileDialog::getSaveFileName()",
        "getSaveFileName: " + inside("part.stl").toStdString()};
    QCOMPARE(m_log->messages(1), expected);
    QCOMPARE(m_log->sink().entries().front().file, std::string("src/util/file_chooser"));
}

void tst_FileChooser::savesUnderTheFilterThatTheUserSelected()
{
    ModalDriver driver;
    driver.expect<QFileDialog>([](QFileDialog* dialog) {
        auto* types = dialog->findChild<QComboBox*>(text("fileTypeCombo"));
        QTest::keyClick(types, Qt::Key_Down);
        accept(dialog, text("part"));
    });
    const FileChooserResult result = trovek::chooseSavePath(
        nullptr, text("Save"), inside("x"), FileFilterList({stl(), obj()}), nullptr);
    QCOMPARE(result.paths, QStringList(inside("part.obj")));
    QCOMPARE(result.filter, obj());
}

void tst_FileChooser::saveIsCancelled()
{
    ModalDriver driver;
    driver.expect(cancel);
    const FileChooserResult result = trovek::chooseSavePath(nullptr, text("Save"), inside("x"),
                                                            FileFilterList({stl()}), nullptr);
    QVERIFY(result.cancelled);
    QCOMPARE(m_log->messages(1).back(), std::string("getSaveFileName: "));
}

void tst_FileChooser::asksBeforeItReplaces()
{
    touch("part.stl");
    QWidget parent;
    ModalDriver driver;
    driver.expect<QFileDialog>([](QFileDialog* dialog) { accept(dialog, text("part")); });
    driver.expect<MessageBox>([&](MessageBox* box) {
        QCOMPARE(box->parentWidget(), &parent);
        QCOMPARE(box->findChild<QLabel*>(text("heading"))->text(),
                 text("A file named \"part.stl\" already exists"));
        pressButton(box, text("&Replace"));
    });
    const FileChooserResult result = trovek::chooseSavePath(&parent, text("Save"), m_folder->path(),
                                                            FileFilterList({stl()}), nullptr);
    QCOMPARE(result.paths, QStringList(inside("part.stl")));
    QVERIFY(!result.cancelled);
}

void tst_FileChooser::reopensAtTheFixedPathWhenNotReplaced()
{
    touch("part.stl");
    QWidget parent;
    ModalDriver driver;
    driver.expect<QFileDialog>([](QFileDialog* dialog) { accept(dialog, text("part")); });
    driver.expect<MessageBox>([](MessageBox* box) { pressButton(box, text("&Cancel")); });
    driver.expect<QFileDialog>([&](QFileDialog* dialog) {
        QCOMPARE(nameEdit(dialog)->text(), text("part.stl"));
        QCOMPARE(dialog->directory().canonicalPath(), QDir(m_folder->path()).canonicalPath());
        accept(dialog, text("other"));
    });
    const FileChooserResult result = trovek::chooseSavePath(
        &parent, text("Save"), inside("first.stl"), FileFilterList({stl()}), nullptr);
    QCOMPARE(result.paths, QStringList(inside("other.stl")));
}

void tst_FileChooser::validatorAccepts()
{
    QWidget parent;
    ScriptedValidator validator({{FileChooserValidator::Accept, text("/ignored")}});
    ModalDriver driver;
    driver.expect<QFileDialog>([](QFileDialog* dialog) { accept(dialog, text("part")); });
    const FileChooserResult result = trovek::chooseSavePath(&parent, text("Save"), m_folder->path(),
                                                            FileFilterList({stl()}), &validator);
    QCOMPARE(result.paths, QStringList(inside("part.stl")));
    QCOMPARE(validator.asked, QStringList(inside("part.stl")));
    QCOMPARE(validator.lastParent, &parent);
    QVERIFY(m_log->contains(", validator=1", 1));
}

void tst_FileChooser::validatorRejects()
{
    touch("part.stl");
    ScriptedValidator validator({{FileChooserValidator::Reject, inside("proposal.stl")},
                                 {FileChooserValidator::Accept, QString()}});
    ModalDriver driver;
    driver.expect<QFileDialog>([](QFileDialog* dialog) { accept(dialog, text("part")); });
    driver.expect<QFileDialog>([](QFileDialog* dialog) {
        QCOMPARE(nameEdit(dialog)->text(), text("proposal.stl"));
        accept(dialog, text("good"));
    });
    const FileChooserResult result = trovek::chooseSavePath(nullptr, text("Save"), m_folder->path(),
                                                            FileFilterList({stl()}), &validator);
    QCOMPARE(result.paths, QStringList(inside("good.stl")));
}

void tst_FileChooser::validatorReplacesThePathButTheChosenFileIsAskedAbout()
{
    touch("short.stl");
    touch("longer.stl");
    QWidget parent;
    ScriptedValidator validator({{FileChooserValidator::Replace, inside("short.stl")},
                                 {FileChooserValidator::Replace, inside("short.stl")}});
    ModalDriver driver;
    driver.expect<QFileDialog>([](QFileDialog* dialog) { accept(dialog, text("new")); });
    FileChooserResult result = trovek::chooseSavePath(&parent, text("Save"), m_folder->path(),
                                                      FileFilterList({stl()}), &validator);
    QCOMPARE(result.paths, QStringList(inside("short.stl")));

    driver.expect<QFileDialog>([](QFileDialog* dialog) { accept(dialog, text("longer")); });
    driver.expect<MessageBox>([](MessageBox* box) {
        QCOMPARE(box->findChild<QLabel*>(text("heading"))->text(),
                 text("A file named \"longer.stl\" already exists"));
        pressButton(box, text("&Replace"));
    });
    result = trovek::chooseSavePath(&parent, text("Save"), m_folder->path(),
                                    FileFilterList({stl()}), &validator);
    QCOMPARE(result.paths, QStringList(inside("short.stl")));
}

void tst_FileChooser::validatorReplacesAndTheDialogReopensAtItsPath()
{
    touch("longer.stl");
    QWidget parent;
    ScriptedValidator validator({{FileChooserValidator::Replace, inside("short.stl")}});
    ModalDriver driver;
    driver.expect<QFileDialog>([](QFileDialog* dialog) { accept(dialog, text("longer")); });
    driver.expect<MessageBox>([](MessageBox* box) { pressButton(box, text("&Cancel")); });
    driver.expect<QFileDialog>([](QFileDialog* dialog) {
        QCOMPARE(nameEdit(dialog)->text(), text("short.stl"));
        cancel(dialog);
    });
    QVERIFY(trovek::chooseSavePath(&parent, text("Save"), m_folder->path(), FileFilterList({stl()}),
                                   &validator)
                .cancelled);
}

void tst_FileChooser::anUnknownActionShowsTheDialogAgain()
{
    ScriptedValidator validator({{7, text("/ignored/x.stl")}});
    ModalDriver driver;
    driver.expect<QFileDialog>([](QFileDialog* dialog) { accept(dialog, text("part")); });
    driver.expect<QFileDialog>([](QFileDialog* dialog) {
        QCOMPARE(nameEdit(dialog)->text(), text("part.stl"));
        cancel(dialog);
    });
    QVERIFY(trovek::chooseSavePath(nullptr, text("Save"), m_folder->path(), FileFilterList({stl()}),
                                   &validator)
                .cancelled);
}

void tst_FileChooser::saveSurvivesTheDeathOfItsParent_data()
{
    QTest::addColumn<int>("moment");

    QTest::newRow("in the file dialog") << 0;
    QTest::newRow("when the file dialog is accepted") << 1;
    QTest::newRow("in the validator") << 2;
    QTest::newRow("in the question") << 3;
}

void tst_FileChooser::saveSurvivesTheDeathOfItsParent()
{
    QFETCH(int, moment);
    touch("part.stl");
    auto* parent = new QWidget;
    ScriptedValidator validator({{FileChooserValidator::Accept, QString()}});
    ModalDriver driver;
    driver.expect<QFileDialog>([&](QFileDialog* dialog) {
        if (moment == 0) {
            delete parent;
            return;
        }
        if (moment == 1)
            connect(dialog, &QDialog::accepted, parent, &QObject::deleteLater);
        accept(dialog, text("part"));
        if (moment == 1)
            QCoreApplication::sendPostedEvents(parent, QEvent::DeferredDelete);
    });
    if (moment == 2)
        validator.during = [parent] {
            delete parent;
        };
    if (moment == 3)
        driver.expect<MessageBox>([parent](MessageBox*) { delete parent; });
    QVERIFY(trovek::chooseSavePath(parent, text("Save"), m_folder->path(), FileFilterList({stl()}),
                                   &validator)
                .cancelled);
    QVERIFY(driver.isDone());
    QCOMPARE(validator.asked.size(), moment < 2 ? 0 : 1);
}

QTEST_MAIN(tst_FileChooser)
#include "tst_file_chooser.moc"

#include "EditorTestBench.h"
#include "TestSupport.h"
#include "bricks/controls/SingleLineLabel.h"
#include "mainwindow/editors/OutputSettingsFragment.h"
#include "session/DataModel.h"
#include "session/OutputEngine.h"

#include <QApplication>
#include <QComboBox>
#include <QFile>
#include <QFileDialog>
#include <QLineEdit>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

using namespace Qt::StringLiterals;

class tst_OutputSettingsFragment : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { EditorTestBench::setUpOnce(); }
    void settingsFollowTheFormatAndTheTextIsSaved();
};

void tst_OutputSettingsFragment::settingsFollowTheFormatAndTheTextIsSaved()
{
    EditorTestBench bench;
    QTemporaryDir folder;
    const NodePtr listed = bench.readJpeg(u"listed.jpg"_s);
    QVERIFY(listed);
    DataModel &model = bench.model();
    model.sourceList.deleteAll();
    model.sourceList.add({listed->absolutePath}, false);
    const std::shared_ptr<OutputEngine> engine = OutputEngine::create(&model);
    QVERIFY(bench.show(OutputSettingsFragment::directive(model, engine)));
    engine->startListening();

    auto *copy = bench.view<QWidget>(u"copyOutputButton"_s);
    auto *save = bench.view<QWidget>(u"saveOutputButton"_s);
    auto *status = bench.view<SingleLineLabel>(u"outputStatusLabel"_s);
    const auto rowShown = [&](const char *setting) {
        return bench.view<QWidget>(QString::fromLatin1(setting) + u"Row"_s)->isVisible();
    };
    // The map format makes no text: no settings of the text formats, both commands off.
    QVERIFY(!copy->isEnabled() && !save->isEnabled());
    QVERIFY(status->stringValue().contains(u"map"_s));
    QVERIFY(!rowShown("encodingMode") && !rowShown("quoteStrings"));

    auto *format = bench.view<QComboBox>(u"outputFormatPopUp"_s);
    format->setFocus();
    QTest::keyClick(format, Qt::Key_Down);
    QCOMPARE(model.outputFormat->value(), OutputFormatIndexEnum::TSV);
    QVERIFY(rowShown("includeColumnTitlesMode") && rowShown("quoteStrings"));
    QVERIFY(!rowShown("htmlIndentationMode") && !rowShown("jsonIndentationMode"));
    QTest::keyClick(format, Qt::Key_Down);
    QCOMPARE(model.outputFormat->value(), OutputFormatIndexEnum::HTML);
    QVERIFY(rowShown("htmlIndentationMode") && rowShown("htmlColumnClassMode"));
    QVERIFY(!rowShown("includeColumnTitlesMode") && !rowShown("quoteStrings"));
    QTest::keyClick(format, Qt::Key_Up);

    QVERIFY(TestSupport::waitUntil([&] { return save->isEnabled(); }));
    QVERIFY(copy->isEnabled());
    QCOMPARE(status->stringValue(), u"The text of 1 item is ready."_s);

    // The dialog proposes the format's type; a name without one gets it.
    QString proposed;
    const QString target = folder.filePath(u"items"_s);
    QTimer::singleShot(200, this, [&] {
        auto *dialog = qobject_cast<QFileDialog *>(QApplication::activeModalWidget());
        if (!dialog)
            return;
        proposed = dialog->selectedFiles().value(0);
        // Typed into the name field, as a user does.
        auto *name = dialog->findChild<QLineEdit *>(u"fileNameEdit"_s);
        if (!name)
            return;
        name->setText(target);
        static_cast<QDialog *>(dialog)->accept();
    });
    QTest::mouseClick(save, Qt::LeftButton);
    QCOMPARE(QFileInfo(proposed).fileName(), u"File List.tsv"_s);
    QFile saved(target + u".tsv"_s);
    QVERIFY(saved.open(QIODevice::ReadOnly));
    QVERIFY(saved.readAll().startsWith("\"1-listed.jpg\"\t"));
    QVERIFY(bench.alerts.alerts.isEmpty());
    model.sourceList.deleteAll();
}

QTEST_MAIN(tst_OutputSettingsFragment)
#include "tst_OutputSettingsFragment.moc"
